// The results window on a run's outputs: the values of each output, sorting
// by one, Use These Values, the contact sheet and the animation.

#include "support/WindowFixture.h"

#include "app/ui/ResultsExports.h"
#include "app/ui/ResultsSheet.h"
#include "app/ui/TestStrip.h"
#include "batch/BatchController.h"
#include "chain/ui/ChainListModel.h"
#include "variations/OutputValues.h"

#include <QFileInfo>
#include <QImage>
#include <QListView>
#include <QSignalSpy>
#include <QStandardPaths>

#include <algorithm>

namespace quillon::test {
namespace {

class ExploreWindowTest : public SettingsWindowTest {
protected:
    void SetUp() override
    {
        SettingsWindowTest::SetUp();
        writeLibrary({ QStringLiteral("Glow"), QStringLiteral("Rust") });
        delegate().applicationDidFinishLaunching();
    }

    // Starts a run with the stand-in copying its run files into `keep`.
    void runKeeping(const QString& keep)
    {
        ASSERT_TRUE(QDir().mkpath(keep));
        BatchEnvGuard guard("QUILLON_STANDIN_KEEP", keep.toUtf8());
        QSignalSpy finished(delegate().batchController(), &BatchController::runFinished);
        click("startButton");
        ASSERT_TRUE(waitFor([&] { return finished.count() == 1; })) << alerts().join(';').toStdString();
    }

    // File name -> bytes of the files in `directory`.
    static QMap<QString, QByteArray> files(const QString& directory)
    {
        QMap<QString, QByteArray> named;
        for (const QString& name : batchDirectoryNames(directory))
            named.insert(name, fileBytes(QDir(directory).filePath(name)));
        return named;
    }

    ResultsSheet* results() { return delegate().resultsSheet(); }
};

TEST_F(ExploreWindowTest, UseTheseValuesMakesTheChosenOutputAgain)
{
    prepareRun(2, QStringLiteral("4"), QStringLiteral("res"));
    (*delegate().chain()[0]->list(key::Components))[0]->setInteger(key::ACTIVE, 1); // Amount varies too
    runKeeping(m_dir.filePath(QStringLiteral("keep")));

    QListView* view = results()->view();
    ASSERT_EQ(view->model()->rowCount(), 4);
    const QString tip = view->model()->index(2, 0).data(Qt::ToolTipRole).toString();
    EXPECT_TRUE(
        tip.contains(QStringLiteral("\n1:Amount=")) && tip.contains(QStringLiteral("\n2:Variations=")))
        << tip.toStdString();
    results()->sortByParameter(QStringLiteral("2:Variations"));
    QList<qint64> sorted;
    for (int row = 0; row < 4; ++row)
        sorted.append(view->model()->index(row, 0).data(ResultsModel::SortRole).toLongLong());
    EXPECT_TRUE(std::is_sorted(sorted.cbegin(), sorted.cend()));
    const QString chosen = view->model()->index(1, 0).data(ResultsModel::PathRole).toString();

    // The second tile in that order is the one kept.
    view->setCurrentIndex(view->model()->index(1, 0));
    QSignalSpy changed(delegate().chainPanel()->chainModel(), &ChainListModel::chainChanged);
    results()->findChild<QPushButton*>(QStringLiteral("useValuesButton"))->click();
    EXPECT_EQ(changed.count(), 1);
    const std::shared_ptr<const RunPlan> plan = delegate().batchController()->plan();
    const QList<OutputValues> outputs = finalOutputValues(*plan);
    const auto kept = std::find_if(outputs.cbegin(), outputs.cend(),
        [&](const OutputValues& output) { return output.resultPath == chosen; });
    ASSERT_NE(kept, outputs.cend());
    for (size_t position = 0; position < 2; ++position) {
        const RecordList& parameters = *delegate().chain()[position]->list(key::Components);
        for (const auto& [index, value] : kept->steps.at(static_cast<qsizetype>(position))) {
            const Record& parameter = *parameters[static_cast<size_t>(index)];
            EXPECT_EQ(parameter.integer(key::ACTIVE), 1);
            EXPECT_EQ(parameter.integer(key::POPSTATE), 1);
            for (const QString& valueKey : { key::STARTVALUE, key::MINVALUE, key::MAXVALUE })
                EXPECT_EQ(plannedValueText(parameter.value(valueKey)), plannedValueText(value))
                    << valueKey.toStdString();
        }
    }
    // The run files of the kept output's two steps, byte for byte.
    QString interim;
    for (const PlannedToolRun& run : plan->toolRuns) {
        if (run.step == 1 && run.resultPath(0) == chosen)
            interim = run.input;
    }
    const auto original = files(m_dir.filePath(QStringLiteral("keep")));
    QList<QByteArray> expected { original.value(QFileInfo(interim).fileName() + ".ffxml"),
        original.value(QFileInfo(chosen).fileName() + ".ffxml") };

    field("numberOfFramesField")->setText(QStringLiteral("1"));
    field("outputFilenamePrefixField")->setText(QStringLiteral("again"));
    runKeeping(m_dir.filePath(QStringLiteral("keep2")));
    QList<QByteArray> again = files(m_dir.filePath(QStringLiteral("keep2"))).values();
    std::sort(expected.begin(), expected.end());
    std::sort(again.begin(), again.end());
    EXPECT_FALSE(expected.contains(QByteArray()));
    EXPECT_EQ(again, expected);
    EXPECT_EQ(fileBytes(QDir(outputDir()).filePath(QStringLiteral("again-1.png"))), fileBytes(chosen));
}

TEST_F(ExploreWindowTest, TheContactSheetAndTheAnimationOfTheResults)
{
    prepareRun(1, QStringLiteral("3"), QStringLiteral("res"));
    runKeeping(m_dir.filePath(QStringLiteral("keep")));
    // With one filter the values go without a step number.
    const QString tip = results()->view()->model()->index(0, 0).data(Qt::ToolTipRole).toString();
    EXPECT_TRUE(tip.contains(QStringLiteral("\nVariations="))) << tip.toStdString();
    const auto before = files(outputDir());
    QSignalSpy saved(results()->exports(), &ResultsExports::saved);

    const QString sheet = m_dir.filePath(QStringLiteral("sheet.png"));
    FileDialogs::instance().setNextFileName(sheet);
    results()->findChild<QPushButton*>(QStringLiteral("saveContactSheetButton"))->click();
    ASSERT_TRUE(waitFor([&] { return saved.count() == 1; })) << alerts().join(';').toStdString();
    EXPECT_EQ(QImage(sheet).width(), 2 * (256 + 12) + 12);

    // Without ffmpeg nothing is saved: the user is told why.
    {
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", m_dir.path().toUtf8());
        FileDialogs::instance().setNextFileName(m_dir.filePath(QStringLiteral("none.gif")));
        results()->findChild<QPushButton*>(QStringLiteral("makeAnimationButton"))->click();
        const bool told = waitFor([&] { return alerts().join(';').contains(QStringLiteral("ffmpeg was not found")); });
        qputenv("PATH", path);
        ASSERT_TRUE(told) << alerts().join(';').toStdString();
        EXPECT_EQ(saved.count(), 1);
    }
    if (QStandardPaths::findExecutable(QStringLiteral("ffmpeg")).isEmpty())
        GTEST_SKIP() << "ffmpeg is not installed";
    const QString animation = m_dir.filePath(QStringLiteral("frames.gif"));
    FileDialogs::instance().setNextFileName(animation);
    results()->findChild<QPushButton*>(QStringLiteral("makeAnimationButton"))->click();
    ASSERT_TRUE(waitFor([&] { return saved.count() == 2; })) << alerts().join(';').toStdString();
    EXPECT_TRUE(fileBytes(animation).startsWith("GIF89a"));
    EXPECT_EQ(files(outputDir()), before) << "the frames are left as they were";
}

TEST_F(ExploreWindowTest, ATestStripRendersFiveValuesAndHoldsTheChosenOne)
{
    prepareRun(1, QStringLiteral("3"), QStringLiteral("res"));
    Record& amount = *(*delegate().chain()[0]->list(key::Components))[0];
    amount.setInteger(key::ACTIVE, 1);
    widget<QTabWidget>("mainTabControl")->setCurrentIndex(1);
    widget<QTableView>("filterList")->selectRow(0);
    widget<QTableView>("filterParamList")->selectRow(0);
    QSignalSpy finished(delegate().testStrip(), &TestStrip::finished);
    click("testStripButton");
    ASSERT_TRUE(waitFor([&] { return finished.count() == 1; }));
    EXPECT_EQ(delegate().testStrip()->shown(), 5);
    EXPECT_TRUE(batchDirectoryNames(outputDir()).isEmpty()) << "nothing in the output directory";

    auto* middle = delegate().testStrip()->findChild<QPushButton*>(QStringLiteral("testStripChoice2"));
    ASSERT_NE(middle, nullptr);
    EXPECT_EQ(middle->text(), QStringLiteral("Amount = 0.500"));
    middle->click();
    EXPECT_EQ(amount.real(key::MINVALUE), 0.5);
    EXPECT_EQ(amount.real(key::MAXVALUE), 0.5);
    EXPECT_EQ(amount.integer(key::POPSTATE), 1);
}

} // namespace
} // namespace quillon::test
