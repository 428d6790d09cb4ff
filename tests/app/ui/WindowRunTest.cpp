#include "support/WindowFixture.h"

#include "app/ui/ProgressSheet.h"
#include "batch/BatchController.h"
#include "support/BatchFixtures.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMainWindow>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTableView>
#include <QTableWidget>
#include <QTimer>

#include <functional>

namespace quillon::test {
namespace {

constexpr int kRunTimeoutMs = 60000;

class WindowRunTest : public SettingsWindowTest {
protected:
    void SetUp() override
    {
        SettingsWindowTest::SetUp();
        ASSERT_TRUE(QDir().mkpath(filtersDir()));
        ASSERT_TRUE(QDir().mkpath(outputDir()));
        for (const QString& name : { QStringLiteral("Glow"), QStringLiteral("Rust") })
            writeBatchDefinition(
                filtersDir(), name + QStringLiteral(".ffxml"), name, QStringLiteral("Window Test"));
        delegate().applicationDidFinishLaunching();
    }

    QString filtersDir() const { return m_dir.filePath(QStringLiteral("filters")); }
    QString outputDir() const { return m_dir.filePath(QStringLiteral("out")); }

    void locate(const char* button, const QString& path)
    {
        FileDialogs::instance().setNextFileName(path);
        widget<QPushButton>(button)->click();
    }

    // Scans the Filters directory and adds the library's first `count`
    // filters to the chain through the add sheet.
    void buildChain(int count)
    {
        locate("locateFiltersButton", filtersDir());
        QTRY_VERIFY_WITH_TIMEOUT(delegate().library() && delegate().library()->size() == 2, 10000);
        auto* library = widget<QTableView>("addFilterList");
        for (int row = 0; row < count; ++row) {
            library->clearSelection();
            library->selectRow(row);
            delegate().chainPanel()->addFilterToListWithSender();
        }
        ASSERT_EQ(static_cast<int>(delegate().chain().size()), count);
    }

    // Everything but the chain set for a run without input.
    void prepareRunWithoutInput(const QString& frames)
    {
        locate("locateRenderToolButton", QStringLiteral(QUILLON_STANDIN_PATH));
        locate("locateOutputButton", outputDir());
        choose(popup("sourceTypePopup"), 2);
        field("outputFilenamePrefixField")->setText(QStringLiteral("win"));
        field("numberOfFramesField")->setText(frames);
        widget<QTabWidget>("formatTabControl")->setCurrentIndex(1); // PNG
    }

    QStringList taskFilesLeft() const
    {
        return QDir(outputDir())
            .entryList({ QStringLiteral("controlfile.xml"), QStringLiteral("bth-run-*") }, QDir::Files);
    }

    // Starts and, once the tool runs and `ready` holds, aborts: the sheet
    // goes at once. Notes the running 0.1 s animation timer.
    void startAndAbort(const std::function<bool()>& ready = [] { return true; })
    {
        widget<QPushButton>("startButton")->click();
        ASSERT_TRUE(delegate().progressSheet()->isVisible())
            << alerts().join(QStringLiteral("; ")).toStdString();
        QTRY_VERIFY_WITH_TIMEOUT(
            delegate().progressSheet()->toolRunsStarted() >= 1 && ready(), kRunTimeoutMs);
        for (QTimer* timer : delegate().progressSheet()->findChildren<QTimer*>()) {
            if (timer->isActive() && timer->interval() == 100)
                m_animation = timer;
        }
        ASSERT_NE(m_animation, nullptr) << "no 0.1 s animation timer running";
        delegate().progressSheet()->findChild<QPushButton*>(QStringLiteral("abortButton"))->click();
        EXPECT_FALSE(delegate().progressSheet()->isVisible());
    }

    QTimer* m_animation = nullptr;
};

TEST_F(WindowRunTest, AFullRunCompletesClosesTheSheetAndDeletesTheInterimFiles)
{
    // Slow enough tool runs for the animation to tick.
    BatchEnvGuard delay("QUILLON_STANDIN_DELAY_MS", "150");
    buildChain(2);
    prepareRunWithoutInput(QStringLiteral("3"));
    box("toollogCB")->click();

    QSignalSpy finished(delegate().batchController(), &BatchController::runFinished);
    widget<QPushButton>("startButton")->click();
    EXPECT_TRUE(alerts().isEmpty()) << alerts().join(QStringLiteral("; ")).toStdString();
    EXPECT_TRUE(delegate().progressSheet()->isVisible());
    EXPECT_EQ(delegate().progressSheet()->windowModality(), Qt::WindowModal);
    // The first step once without input, the second once per frame.
    EXPECT_EQ(delegate().progressSheet()->toolRunsPlanned(), 4);

    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, kRunTimeoutMs);
    EXPECT_FALSE(finished.first().first().toBool());
    EXPECT_FALSE(delegate().progressSheet()->isVisible());
    EXPECT_EQ(delegate().progressSheet()->toolRunsStarted(), 4);
    EXPECT_EQ(delegate().progressSheet()->stepsStarted(), 2);
    EXPECT_EQ(delegate().window()->statusBar()->currentMessage(), QStringLiteral("Run finished."));

    EXPECT_TRUE(taskFilesLeft().isEmpty()) << taskFilesLeft().join(QLatin1Char(' ')).toStdString();
    const QStringList images = QDir(outputDir()).entryList({ QStringLiteral("*.png") }, QDir::Files);
    // Only the last step's images stay; the first step's were its inputs.
    EXPECT_EQ(images.size(), 3) << images.join(QLatin1Char(' ')).toStdString();

    QFile log(QDir(outputDir()).filePath(QStringLiteral("qlrn_logfile.txt")));
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    EXPECT_TRUE(log.readAll().startsWith("Quillon log"));
}

TEST_F(WindowRunTest, AToolThatHadToBeKilledIsNamedInTheStatusLine)
{
    BatchEnvGuard hang("QUILLON_STANDIN_HANG", "ignore-term");
    buildChain(1);
    prepareRunWithoutInput(QStringLiteral("1"));
    QSignalSpy finished(delegate().batchController(), &BatchController::runFinished);
    // The tool ignores SIGTERM from before its first line: abort once it shows.
    const auto* progress = delegate().progressSheet()->findChild<QLabel*>(QStringLiteral("prProgress"));
    startAndAbort([progress] { return progress->text().contains(QLatin1String("stand-in")); });
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, kRunTimeoutMs);
    EXPECT_EQ(delegate().window()->statusBar()->currentMessage(),
        QStringLiteral("Run aborted. The render tool did not stop; it was killed."));
    EXPECT_TRUE(taskFilesLeft().isEmpty()) << taskFilesLeft().join(QLatin1Char(' ')).toStdString();
}

TEST_F(WindowRunTest, TheAnimationSwingsBackAndForthUntilAnAbortWindsTheRunDown)
{
    // Tool runs long enough for eleven ticks; the abort ends them early.
    BatchEnvGuard delay("QUILLON_STANDIN_DELAY_MS", "30000");
    buildChain(1);
    prepareRunWithoutInput(QStringLiteral("2"));
    QSignalSpy frames(delegate().progressSheet(), &ProgressSheet::animationFrameShown);
    QSignalSpy finished(delegate().batchController(), &BatchController::runFinished);
    startAndAbort([&frames] { return frames.count() >= 11; });

    QList<int> shown;
    for (int i = 0; i < 11; ++i)
        shown.append(frames.at(i).first().toInt());
    EXPECT_EQ(shown, (QList<int> { 0, 1, 2, 3, 4, 5, 4, 3, 2, 1, 0 }));

    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, kRunTimeoutMs);
    EXPECT_TRUE(finished.first().first().toBool());
    EXPECT_FALSE(delegate().batchController()->isRunning());
    EXPECT_FALSE(m_animation->isActive());
    EXPECT_TRUE(taskFilesLeft().isEmpty()) << taskFilesLeft().join(QLatin1Char(' ')).toStdString();
}

TEST_F(WindowRunTest, QuittingDuringARunAsksFirstAndAbortsTheRun)
{
    BatchEnvGuard delay("QUILLON_STANDIN_DELAY_MS", "30000");
    buildChain(1);
    prepareRunWithoutInput(QStringLiteral("2"));
    QSignalSpy finished(delegate().batchController(), &BatchController::runFinished);
    widget<QPushButton>("startButton")->click();
    QTRY_VERIFY_WITH_TIMEOUT(delegate().progressSheet()->toolRunsStarted() >= 1, kRunTimeoutMs);

    EXPECT_FALSE(delegate().window()->close()); // answered No
    EXPECT_TRUE(delegate().batchController()->isRunning());
    MessageBoxes::instance().setNextAnswer(true);
    EXPECT_TRUE(delegate().window()->close());
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, kRunTimeoutMs);
    EXPECT_TRUE(finished.first().first().toBool());
}

TEST_F(WindowRunTest, ImagesAreCountedAsTheyComeAndExistingOutputsAreAskedAbout)
{
    BatchEnvGuard delay("QUILLON_STANDIN_DELAY_MS", "400");
    buildChain(1);
    prepareRunWithoutInput(QStringLiteral("3"));
    QSignalSpy finished(delegate().batchController(), &BatchController::runFinished);
    ProgressSheet* sheet = delegate().progressSheet();

    // The plan first: three outputs, nothing written.
    delegate().window()->findChild<QAction*>(QStringLiteral("actionPreviewRun"))->trigger();
    auto* preview = delegate().window()->findChild<QTableWidget*>(QStringLiteral("planPreviewTable"));
    ASSERT_NE(preview, nullptr);
    EXPECT_EQ(preview->rowCount(), 3);
    EXPECT_EQ(preview->item(2, 0)->text(), QStringLiteral("NX_win-3.png"));
    preview->window()->close();
    EXPECT_TRUE(QDir(outputDir()).isEmpty());

    // One tool run renders all three frames; the bar counts each image.
    widget<QPushButton>("startButton")->click();
    QTRY_VERIFY_WITH_TIMEOUT(sheet->imagesShown() >= 1 && finished.isEmpty(), kRunTimeoutMs);
    EXPECT_EQ(sheet->toolRunsStarted(), 1);
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, kRunTimeoutMs);
    EXPECT_EQ(sheet->imagesShown(), 3);
    ASSERT_FALSE(alerts().isEmpty());
    EXPECT_TRUE(alerts().last().startsWith(QStringLiteral("3 written, 0 missing, 0 not run")))
        << alerts().last().toStdString();

    // The outputs exist now: Cancel starts nothing, Skip renders nothing.
    MessageBoxes::instance().setNextExistingAnswer(ExistingOutputs::Cancel);
    widget<QPushButton>("startButton")->click();
    EXPECT_TRUE(alerts().last().startsWith(QStringLiteral("3 of the planned outputs exist already")));
    EXPECT_FALSE(sheet->isVisible());
    MessageBoxes::instance().setNextExistingAnswer(ExistingOutputs::Skip);
    widget<QPushButton>("startButton")->click();
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 2, kRunTimeoutMs);
    EXPECT_TRUE(alerts().last().startsWith(QStringLiteral("0 written, 0 missing, 3 not run")))
        << alerts().last().toStdString();
    MessageBoxes::instance().setNextExistingAnswer(ExistingOutputs::Replace);
}

} // namespace
} // namespace quillon::test
