// Runs and previews started from the window with the stand-in tool: the
// progress sheet, the status line, the results sheet and the files left.

#include "support/WindowFixture.h"

#include "app/ui/ChainPreview.h"
#include "app/ui/LatestThumbnail.h"
#include "app/ui/MainWindow.h"
#include "app/ui/ProgressSheet.h"
#include "app/ui/ResultsSheet.h"
#include "batch/BatchController.h"

#include <QAction>
#include <QLabel>
#include <QListView>
#include <QSignalSpy>
#include <QTableWidget>

namespace quillon::test {
namespace {

// Every value of every filter and parameter record of a chain.
QList<QMap<QString, QVariant>> recordValues(const RecordList& chain)
{
    QList<QMap<QString, QVariant>> values;
    for (const RecordPtr& filter : chain) {
        values.append(filter->values());
        for (const RecordPtr& parameter : *filter->list(key::Components))
            values.append(parameter->values());
    }
    return values;
}

class WindowRunTest : public SettingsWindowTest {
protected:
    void SetUp() override
    {
        SettingsWindowTest::SetUp();
        writeLibrary({ QStringLiteral("Glow"), QStringLiteral("Rust") });
        delegate().applicationDidFinishLaunching();
    }

    ProgressSheet* sheet() { return delegate().progressSheet(); }
    // Presses Start and waits until the run is planned and refused (or asked
    // about and cancelled).
    void clickStartUntilSettled()
    {
        click("startButton");
        ASSERT_TRUE(waitFor([&] { return !delegate().batchController()->isRunning(); }));
    }
    // Starts the run and waits until `ready` holds with its first tool run going.
    template <class Ready> void startUntil(Ready ready)
    {
        click("startButton");
        ASSERT_TRUE(waitFor([&] { return sheet()->isVisible() || !delegate().batchController()->isRunning(); }));
        ASSERT_TRUE(sheet()->isVisible()) << alerts().join(QStringLiteral("; ")).toStdString();
        ASSERT_TRUE(waitFor([&] { return sheet()->toolRunsStarted() >= 1 && ready(); }));
    }
};

TEST_F(WindowRunTest, AFullRunDeletesItsInterimFilesAndShowsEveryOutputInTheResults)
{
    BatchEnvGuard delay("QUILLON_STANDIN_DELAY_MS", "150"); // time for the animation to tick
    prepareRun(2, QStringLiteral("3"), QStringLiteral("res"));
    box("toollogCB")->click();
    QSignalSpy finished(delegate().batchController(), &BatchController::runFinished);
    click("startButton");
    // The first step once without input, the second once per frame.
    ASSERT_TRUE(waitFor([&] { return sheet()->toolRunsPlanned() == 4; }));

    ASSERT_TRUE(waitFor([&] { return finished.count() == 1; }));
    EXPECT_FALSE(sheet()->isVisible());
    EXPECT_EQ(sheet()->toolRunsStarted(), 4);
    EXPECT_TRUE(status().startsWith(QStringLiteral("Run finished. 3 written, 0 missing, 0 not run")))
        << status().toStdString();
    // Only the last step's images stay; the first step's were its inputs, and
    // no task file is left.
    EXPECT_EQ(batchDirectoryNames(outputDir()),
        (QStringList { "qlrn_logfile.txt", "res-1.png", "res-2.png", "res-3.png" }));

    auto* thumbnail = sheet()->findChild<LatestThumbnail*>(QStringLiteral("prThumbnail"));
    ASSERT_NE(thumbnail, nullptr);
    ASSERT_TRUE(waitFor([thumbnail] { return !thumbnail->pixmap().isNull(); }));
    EXPECT_LE(thumbnail->pixmap().width(), 256);

    ResultsSheet* results = delegate().resultsSheet();
    EXPECT_TRUE(results->isVisible());
    auto* view = results->findChild<QListView*>(QStringLiteral("resultsView"));
    ASSERT_NE(view, nullptr);
    ASSERT_EQ(view->model()->rowCount(), 3);
    ASSERT_TRUE(waitFor([results] { return results->model()->decodesFinished() == 3; }));
    // A double-click opens the output, the button the folder.
    const QRect second = view->visualRect(view->model()->index(1, 0));
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, second.center());
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, second.center());
    results->findChild<QPushButton*>(QStringLiteral("openOutputFolderButton"))->click();
    EXPECT_EQ(m_openedUrls,
        QList<QUrl>({ QUrl::fromLocalFile(view->model()->index(1, 0).data(ResultsModel::PathRole).toString()),
            QUrl::fromLocalFile(outputDir()) }));
}

TEST_F(WindowRunTest, MissingOutputsAndFailedOpeningsSayWhyWhereTheUserLooks)
{
    BatchEnvGuard crash("QUILLON_STANDIN_CRASH", "1");
    prepareRun(1, QStringLiteral("2"), QStringLiteral("bad"));
    QSignalSpy finished(delegate().batchController(), &BatchController::runFinished);
    click("startButton");
    ASSERT_TRUE(waitFor([&] { return finished.count() == 1; }));
    EXPECT_TRUE(status().contains(QStringLiteral("0 written, 2 missing"))) << status().toStdString();
    EXPECT_TRUE(status().contains(QStringLiteral("signal"))) << status().toStdString();

    ResultsSheet* results = delegate().resultsSheet();
    const QString details = results->findChild<QLabel*>(QStringLiteral("resultsDetails"))->text();
    EXPECT_EQ(details.count(QStringLiteral("missing ")), 2) << details.toStdString();
    EXPECT_TRUE(
        results->model()->index(1).data(Qt::ToolTipRole).toString().contains(QStringLiteral("signal")));

    delegate().setUrlOpener([](const QUrl&) { return false; });
    results->findChild<QPushButton*>(QStringLiteral("openOutputFolderButton"))->click();
    EXPECT_EQ(status(), QStringLiteral("Nothing could open %1.").arg(outputDir()));
}

TEST_F(WindowRunTest, TheAnimationSwingsUntilQuittingAsksFirstAndAbortsTheRun)
{
    // Tool runs long enough for eleven ticks; the abort ends them early.
    BatchEnvGuard delay("QUILLON_STANDIN_DELAY_MS", "30000");
    prepareRun(1, QStringLiteral("2"), QStringLiteral("win"));
    QSignalSpy frames(sheet(), &ProgressSheet::animationFrameShown);
    QSignalSpy finished(delegate().batchController(), &BatchController::runFinished);
    startUntil([&frames] { return frames.count() >= 11; });
    QList<int> shown;
    for (int i = 0; i < 11; ++i)
        shown.append(frames.at(i).first().toInt());
    EXPECT_EQ(shown, (QList<int> { 0, 1, 2, 3, 4, 5, 4, 3, 2, 1, 0 }));

    EXPECT_FALSE(delegate().window()->close()); // answered No
    EXPECT_TRUE(delegate().batchController()->isRunning());
    MessageBoxes::instance().setNextAnswer(true);
    EXPECT_TRUE(delegate().window()->close());
    ASSERT_TRUE(waitFor([&] { return finished.count() == 1; }));
    EXPECT_TRUE(finished.first().first().toBool());
}

TEST_F(WindowRunTest, ImagesAreCountedAndThePlanChecksAskOrRefuse)
{
    BatchEnvGuard delay("QUILLON_STANDIN_DELAY_MS", "400");
    prepareRun(1, QStringLiteral("3"), QStringLiteral("win"));
    QSignalSpy finished(delegate().batchController(), &BatchController::runFinished);

    // The plan first: three outputs, nothing written.
    delegate().window()->findChild<QAction*>(QStringLiteral("actionPreviewRun"))->trigger();
    QTableWidget* preview = nullptr;
    ASSERT_TRUE(waitFor([&] {
        preview = delegate().window()->findChild<QTableWidget*>(QStringLiteral("planPreviewTable"));
        return preview != nullptr;
    }));
    EXPECT_EQ(preview->rowCount(), 3);
    EXPECT_EQ(preview->item(2, 0)->text(), QStringLiteral("NX_win-3.png"));
    EXPECT_TRUE(preview->window()
                    ->findChild<QLabel*>(QStringLiteral("planPreviewSummary"))
                    ->text()
                    .endsWith(QStringLiteral("Output format: PNG")));
    preview->window()->close();
    EXPECT_TRUE(QDir(outputDir()).isEmpty());

    // One tool run renders all three frames; the bar counts each image.
    startUntil([&] { return sheet()->imagesShown() >= 1 && finished.isEmpty(); });
    EXPECT_EQ(sheet()->toolRunsStarted(), 1);
    ASSERT_TRUE(waitFor([&] { return finished.count() == 1; }));
    EXPECT_EQ(sheet()->imagesShown(), 3);
    ASSERT_FALSE(alerts().isEmpty());
    EXPECT_TRUE(alerts().last().startsWith(QStringLiteral("3 written, 0 missing, 0 not run")))
        << alerts().last().toStdString();

    // The outputs exist now: the user is asked, and Cancel starts nothing.
    MessageBoxes::instance().setNextExistingAnswer(ExistingOutputs::Cancel);
    clickStartUntilSettled();
    EXPECT_TRUE(alerts().last().startsWith(QStringLiteral("3 of the planned outputs exist already")));
    EXPECT_FALSE(sheet()->isVisible());
    MessageBoxes::instance().setNextExistingAnswer(ExistingOutputs::Replace);

    // A source folder holding the output folder and two images of one name:
    // refused with the name; with one of them gone, the user is warned that
    // the outputs would become inputs, and No starts nothing.
    const QString photos = m_dir.filePath(QStringLiteral("photos"));
    ASSERT_TRUE(QDir().mkpath(photos + QStringLiteral("/out")));
    for (const char* name : { "/photo.png", "/photo.jpg" })
        ASSERT_TRUE(QFile(photos + QLatin1String(name)).open(QIODevice::WriteOnly));
    locate("locateOutputButton", photos);
    choose(popup("sourceTypePopup"), 1);
    typeInto("sourcePathField", photos);
    clickStartUntilSettled();
    EXPECT_TRUE(alerts().last().startsWith(QStringLiteral("Outputs would overwrite each other: ")))
        << alerts().last().toStdString();
    ASSERT_TRUE(QFile::remove(photos + QStringLiteral("/photo.jpg")));
    clickStartUntilSettled();
    EXPECT_TRUE(alerts().last().contains(QStringLiteral("is the input directory"))) << alerts().last().toStdString();
    EXPECT_FALSE(sheet()->isVisible());
    EXPECT_EQ(finished.count(), 1);
}

TEST_F(WindowRunTest, APreviewShowsFrameOneAndLeavesTheOutputFolderAndTheRecordsAlone)
{
    prepareRun(2, QStringLiteral("3"), QStringLiteral("win"));
    const QList<QMap<QString, QVariant>> before = recordValues(delegate().chain());
    ChainPreview* preview = delegate().window()->chainPreview();
    QSignalSpy ended(preview, &ChainPreview::previewFinished);
    click("previewButton");
    EXPECT_TRUE(preview->isRunning());
    ASSERT_TRUE(waitFor([&] { return ended.count() == 1; }));
    EXPECT_TRUE(ended.first().first().toBool()) << preview->statusLine()->text().toStdString();
    ASSERT_TRUE(waitFor([this] { return !widget<LatestThumbnail>("previewImage")->pixmap().isNull(); }));
    EXPECT_TRUE(preview->statusLine()->text().startsWith(QStringLiteral("Frame 1 in ")));
    EXPECT_TRUE(QDir(outputDir()).isEmpty());
    EXPECT_TRUE(recordValues(delegate().chain()) == before);

    // A slow one is cancelled.
    BatchEnvGuard delay("QUILLON_STANDIN_DELAY_MS", "30000");
    click("previewButton");
    click("previewCancelButton");
    ASSERT_TRUE(waitFor([&] { return ended.count() == 2; }));
    EXPECT_FALSE(ended.last().first().toBool());
    EXPECT_EQ(preview->statusLine()->text(), QStringLiteral("Preview cancelled."));

    // So is one whose input directory is still being listed.
    choose(popup("sourceTypePopup"), 1);
    locate("locateSourceButton", m_dir.path());
    click("previewButton");
    click("previewCancelButton");
    ASSERT_TRUE(waitFor([&] { return ended.count() == 3; }));
    EXPECT_FALSE(ended.last().first().toBool());
    EXPECT_EQ(preview->statusLine()->text(), QStringLiteral("Preview cancelled."));
}

} // namespace
} // namespace quillon::test
