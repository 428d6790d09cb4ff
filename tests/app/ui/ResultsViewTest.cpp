#include "support/WindowFixture.h"

#include "app/ui/ChainPreview.h"
#include "app/ui/LatestThumbnail.h"
#include "app/ui/ProgressSheet.h"
#include "app/ui/ResultsSheet.h"
#include "batch/BatchController.h"
#include "support/BatchFixtures.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QListView>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>

namespace quillon::test {
namespace {

constexpr int kRunTimeoutMs = 60000;

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

class ResultsViewTest : public SettingsWindowTest {
protected:
    void SetUp() override
    {
        SettingsWindowTest::SetUp();
        ASSERT_TRUE(QDir().mkpath(filtersDir()) && QDir().mkpath(outputDir()));
        for (const QString& name : { QStringLiteral("Glow"), QStringLiteral("Rust") })
            writeBatchDefinition(filtersDir(), name + QStringLiteral(".ffxml"), name, QStringLiteral("Test"));
        delegate().applicationDidFinishLaunching();
    }

    QString filtersDir() const { return m_dir.filePath(QStringLiteral("filters")); }
    QString outputDir() const { return m_dir.filePath(QStringLiteral("out")); }

    void locate(const char* button, const QString& path)
    {
        FileDialogs::instance().setNextFileName(path);
        widget<QPushButton>(button)->click();
    }

    // A chain of both library filters, run without input, PNG, `frames` frames.
    void prepareRun(const QString& frames)
    {
        locate("locateFiltersButton", filtersDir());
        QTRY_VERIFY_WITH_TIMEOUT(delegate().library() && delegate().library()->size() == 2, 10000);
        auto* library = widget<QTableView>("addFilterList");
        for (int row = 0; row < 2; ++row) {
            library->clearSelection();
            library->selectRow(row);
            delegate().chainPanel()->addFilterToListWithSender();
        }
        locate("locateRenderToolButton", QStringLiteral(QUILLON_STANDIN_PATH));
        locate("locateOutputButton", outputDir());
        choose(popup("sourceTypePopup"), 2);
        field("outputFilenamePrefixField")->setText(QStringLiteral("res"));
        field("numberOfFramesField")->setText(frames);
        widget<QTabWidget>("formatTabControl")->setCurrentIndex(1); // PNG
    }
};

TEST_F(ResultsViewTest, ARunShowsItsNewestOutputThenEveryOutputInTheResultsGrid)
{
    prepareRun(QStringLiteral("3"));
    QSignalSpy finished(delegate().batchController(), &BatchController::runFinished);
    widget<QPushButton>("startButton")->click();
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, kRunTimeoutMs);
    auto* thumbnail = delegate().progressSheet()->findChild<LatestThumbnail*>(QStringLiteral("prThumbnail"));
    ASSERT_NE(thumbnail, nullptr);
    QTRY_VERIFY_WITH_TIMEOUT(!thumbnail->pixmap().isNull(), kRunTimeoutMs);
    EXPECT_LE(thumbnail->pixmap().width(), 256);

    ResultsSheet* sheet = delegate().resultsSheet();
    EXPECT_EQ(sheet->objectName(), QStringLiteral("resultsSheet"));
    EXPECT_TRUE(sheet->isVisible());
    auto* view = sheet->findChild<QListView*>(QStringLiteral("resultsView"));
    ASSERT_NE(view, nullptr);
    ASSERT_EQ(view->model()->rowCount(), 3);
    EXPECT_EQ(view->model()->index(0, 0).data().toString(), QStringLiteral("res-1.png\nwritten"));
    QTRY_COMPARE_WITH_TIMEOUT(sheet->model()->decodesFinished(), 3, kRunTimeoutMs);

    // A double-click opens the output, the button the folder.
    const QRect second = view->visualRect(view->model()->index(1, 0));
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, second.center());
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, second.center());
    ASSERT_FALSE(m_openedUrls.isEmpty());
    EXPECT_EQ(m_openedUrls.last(),
        QUrl::fromLocalFile(view->model()->index(1, 0).data(ResultsModel::PathRole).toString()));
    sheet->findChild<QPushButton*>(QStringLiteral("openOutputFolderButton"))->click();
    EXPECT_EQ(m_openedUrls.last(), QUrl::fromLocalFile(outputDir()));
}

TEST_F(ResultsViewTest, ThousandsOfOutputsDecodeOnlyWhatIsShownAndMissingOnesSaySo)
{
    ResultsSheet sheet;
    new QAbstractItemModelTester(sheet.model(), &sheet);
    QList<ResultItem> items;
    for (int i = 0; i < 5000; ++i)
        items.append({ m_dir.filePath(QStringLiteral("gone-%1.png").arg(i)), OutputStatus::Written });
    items[1].status = OutputStatus::Missing;
    items[2].status = OutputStatus::NotRun;
    sheet.showResults(QStringLiteral("summary"), m_dir.path(), items);
    QTRY_VERIFY(sheet.model()->decodesFinished() >= 1);
    EXPECT_LT(sheet.model()->decodesRequested(), 200);
    const auto text = [&sheet](int row) { return sheet.model()->index(row).data().toString(); };
    EXPECT_EQ(text(1), QStringLiteral("gone-1.png\nmissing"));
    EXPECT_EQ(text(2), QStringLiteral("gone-2.png\nnot run"));
    QTRY_COMPARE(text(0), QStringLiteral("gone-0.png\nwritten, missing"));
}

TEST_F(ResultsViewTest, APreviewShowsFrameOneAndLeavesTheOutputFolderAndTheRecordsAlone)
{
    prepareRun(QStringLiteral("3"));
    const QList<QMap<QString, QVariant>> before = recordValues(delegate().chain());
    ChainPreview* preview = delegate().window()->chainPreview();
    QSignalSpy ended(preview, &ChainPreview::previewFinished);
    widget<QPushButton>("previewButton")->click();
    EXPECT_TRUE(preview->isRunning());
    QTRY_COMPARE_WITH_TIMEOUT(ended.count(), 1, kRunTimeoutMs);
    EXPECT_TRUE(ended.first().first().toBool()) << preview->statusLine()->text().toStdString();
    QTRY_VERIFY_WITH_TIMEOUT(!widget<LatestThumbnail>("previewImage")->pixmap().isNull(), kRunTimeoutMs);
    EXPECT_TRUE(preview->statusLine()->text().startsWith(QStringLiteral("Frame 1 in ")));
    EXPECT_TRUE(QDir(outputDir()).isEmpty());
    EXPECT_TRUE(recordValues(delegate().chain()) == before);

    // A slow one is cancelled.
    BatchEnvGuard delay("QUILLON_STANDIN_DELAY_MS", "30000");
    widget<QPushButton>("previewButton")->click();
    widget<QPushButton>("previewCancelButton")->click();
    QTRY_COMPARE_WITH_TIMEOUT(ended.count(), 2, kRunTimeoutMs);
    EXPECT_FALSE(ended.last().first().toBool());
    EXPECT_EQ(preview->statusLine()->text(), QStringLiteral("Preview cancelled."));
}

} // namespace
} // namespace quillon::test
