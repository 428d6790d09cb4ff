// The progress and results sheets on their own, fed as a run feeds them.

#include "app/ui/DialogSeams.h"
#include "app/ui/ProgressSheet.h"
#include "app/ui/ResultsSheet.h"
#include "app/ui/WindowBatchDisplay.h"

#include <QAbstractItemModelTester>
#include <QImage>
#include <QLabel>
#include <QMainWindow>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

namespace quillon {
namespace {

TEST(ProgressSheetTest, PlannedToolRunsFollowTheChain)
{
    // The first step runs once per input (or once without); every later step
    // once per image the step before rendered.
    const struct {
        int inputs, steps, frames, runs;
    } cases[] = { { 0, 1, 10, 1 }, { 4, 1, 10, 4 }, { 0, 2, 3, 1 + 3 }, { 2, 3, 5, 2 + 2 * 10 },
        { 1, 2, 0, 2 }, { 3, 0, 10, 0 } };
    for (const auto& c : cases)
        EXPECT_EQ(ProgressSheet::plannedToolRuns(c.inputs, c.steps, c.frames), c.runs) << c.inputs << c.steps;
}

class ProgressSheetWindowTest : public ::testing::Test {
protected:
    // Filter, author, source, tool output and step as shown, then the bar
    // as "value/maximum".
    QStringList shown() const
    {
        QStringList texts;
        for (const char* name :
            { "psFilterField", "prAuthorField", "prSourceField", "prProgress", "prStepField" })
            texts.append(m_sheet->findChild<QLabel*>(QString::fromLatin1(name))->text());
        const auto* bar = m_sheet->findChild<QProgressBar*>(QStringLiteral("prRunProgress"));
        return texts << QStringLiteral("%1/%2").arg(bar->value()).arg(bar->maximum());
    }

    QMainWindow m_window;
    ProgressSheet* m_sheet = new ProgressSheet(&m_window);
};

TEST_F(ProgressSheetWindowTest, ShowsReportsAndCountsToolRunsAgainstThePlan)
{
    m_window.show();
    m_sheet->setPlannedSteps(3);
    m_sheet->beginRun(3);
    EXPECT_TRUE(m_sheet->isVisible());
    EXPECT_EQ(m_sheet->windowModality(), Qt::WindowModal);
    EXPECT_EQ(shown(), (QStringList { "", "", "", "", "", "0/3" }));
    EXPECT_EQ(m_sheet->findChild<QLabel*>(QStringLiteral("prElapsedField"))->text(), QStringLiteral("0:00"));

    m_sheet->showFilterInfo(QStringLiteral("Soft Glow"), QStringLiteral("Quillon Samples"));
    m_sheet->showSourceInfo(QStringLiteral("<no source>"));
    m_sheet->showRenderInfo(QStringLiteral("rendering 1 of 3"));
    // The first run is still going.
    EXPECT_EQ(shown(),
        (QStringList { "Soft Glow", "Quillon Samples", "<no source>", "rendering 1 of 3", "1 of 3", "0/3" }));

    m_sheet->showFilterInfo(QStringLiteral("Vignette"), QStringLiteral("Quillon Samples"));
    m_sheet->showSourceInfo(QStringLiteral("a.png"));
    m_sheet->finishRun();
    EXPECT_EQ(shown().mid(4), (QStringList { "2 of 3", "2/3" }));
    m_sheet->endRun();
    EXPECT_FALSE(m_sheet->isVisible());

    // A new run counts from the first filter again; more runs than planned
    // stretch the bar.
    m_sheet->beginRun(1);
    m_sheet->showFilterInfo(QStringLiteral("Stone Wall"), QStringLiteral("Quillon Samples"));
    for (int i = 0; i < 3; ++i)
        m_sheet->showSourceInfo(QStringLiteral("x"));
    EXPECT_EQ(shown().mid(4), (QStringList { "1 of 3", "2/3" }));
    m_sheet->endRun();

    // Without a planned count of steps, the step is counted alone.
    ProgressSheet unplanned(&m_window);
    unplanned.beginRun(1);
    unplanned.showFilterInfo(QStringLiteral("Stone Wall"), QString());
    EXPECT_EQ(unplanned.findChild<QLabel*>(QStringLiteral("prStepField"))->text(), QStringLiteral("1"));
    unplanned.endRun();
}

TEST_F(ProgressSheetWindowTest, AbortButtonAndEscapeBothAskForAnAbort)
{
    QSignalSpy aborts(m_sheet, &ProgressSheet::abortRequested);
    m_sheet->beginRun(1);
    m_sheet->findChild<QPushButton*>(QStringLiteral("abortButton"))->click();
    m_sheet->reject();
    EXPECT_EQ(aborts.count(), 2);
    // Once images are rendered, Escape asks first; No keeps the run going.
    MessageBoxes& boxes = MessageBoxes::instance();
    boxes.setRecording(true);
    boxes.clearShownMessages();
    m_sheet->showImageProgress(2, 6, 1000);
    m_sheet->reject();
    EXPECT_EQ(aborts.count(), 2);
    boxes.setNextAnswer(true);
    m_sheet->reject();
    EXPECT_EQ(aborts.count(), 3);
    EXPECT_EQ(boxes.shownMessages().size(), 2);
    boxes.setRecording(false);
    // Only the run's end closes the sheet.
    EXPECT_TRUE(m_sheet->isVisible());
    m_sheet->endRun();
}

TEST(ProgressTail, ShortOutputIsShownWholeAndLongOutputByItsLastLines)
{
    const QString longLine = QString(2000, QLatin1Char('x')) + QStringLiteral("end");
    const std::pair<QString, QString> cases[] = { { "Rendering task 1/2", "Rendering task 1/2" },
        { "a\nb\nc\nd", "a\nb\nc\nd" }, { "a\nb\nc\nd\ne\nf", "c\nd\ne\nf" },
        { longLine, longLine.right(WindowBatchDisplay::kShownCharacters) } };
    for (const auto& [output, tail] : cases)
        EXPECT_EQ(WindowBatchDisplay::tailForDisplay(output), tail);
    // A character outside the BMP is never cut in half.
    QString pairs;
    for (int i = 0; i < 1000; ++i)
        pairs += QStringLiteral("\U0001D11E");
    pairs += QLatin1Char('z'); // the plain cut would fall between the halves of a pair
    ASSERT_TRUE(pairs.at(pairs.size() - WindowBatchDisplay::kShownCharacters).isLowSurrogate());
    const QString shownPairs = WindowBatchDisplay::tailForDisplay(pairs);
    EXPECT_FALSE(shownPairs.at(0).isLowSurrogate());
    EXPECT_EQ(shownPairs.size(), WindowBatchDisplay::kShownCharacters - 1);
    EXPECT_TRUE(pairs.endsWith(shownPairs));
}

TEST(WindowBatchDisplayTest, HowARunEndedGoesToTheStatusLineWithWhatCameAfterAnAbort)
{
    QMainWindow window;
    QStringList status;
    WindowBatchDisplay display(
        new ProgressSheet(&window), {}, [&status](const QString& s) { status.append(s); });
    display.beginProgressSheet();
    display.showRenderInfo(QStringLiteral("Rendering task 1/1"));
    display.runFinished(false);
    // Abort closes the sheet; the last line reported while the run winds
    // down (a tool that had to be killed) is added, for that run only.
    display.beginProgressSheet();
    display.endProgressSheet();
    display.showRenderInfo(
        QStringLiteral("Rendering task 1/2\nThe render tool did not stop; it was killed.\n"));
    display.runFinished(true);
    display.beginProgressSheet();
    display.endProgressSheet();
    display.runFinished(true);
    EXPECT_EQ(status,
        (QStringList {
            "Run finished.", "Run aborted. The render tool did not stop; it was killed.", "Run aborted." }));
}

TEST(ResultsSheetTest, ThousandsOfOutputsDecodeOnlyWhatIsShownAndMissingOnesSaySo)
{
    QTemporaryDir dir;
    ResultsSheet sheet;
    QAbstractItemModelTester tester(sheet.model());
    QList<ResultItem> items;
    for (int i = 0; i < 5000; ++i)
        items.append({ dir.filePath(QStringLiteral("gone-%1.png").arg(i)), OutputStatus::Written });
    items[1].status = OutputStatus::Missing;
    items[2].status = OutputStatus::NotRun;
    items[0].valueNames = QStringList { QStringLiteral("Amount") };
    sheet.showResults(QStringLiteral("summary"), dir.path(), items);
    // No output chosen yet: there are no values to use.
    EXPECT_FALSE(sheet.findChild<QPushButton*>(QStringLiteral("useValuesButton"))->isEnabled());
    const auto text = [&sheet](int row) { return sheet.model()->index(row).data().toString(); };
    EXPECT_EQ(text(1), QStringLiteral("gone-1.png\nmissing"));
    EXPECT_EQ(text(2), QStringLiteral("gone-2.png\nnot run"));
    // Their tiles are framed placeholders.
    const QImage tile = sheet.model()->index(1).data(Qt::DecorationRole).value<QPixmap>().toImage();
    for (const QPoint& edge : { QPoint(0, tile.height() / 2), QPoint(tile.width() - 1, tile.height() / 2),
             QPoint(tile.width() / 2, 0), QPoint(tile.width() / 2, tile.height() - 1) })
        EXPECT_EQ(tile.pixelColor(edge), QColor(0x50, 0x50, 0x50)) << edge.x() << "," << edge.y();
    // The first decode finds the file gone.
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return text(0).startsWith(QStringLiteral("gone-0.png\nwritten, missing\nAmount=")); }, 60000));
    EXPECT_LT(sheet.model()->decodesRequested(), 200);
}

} // namespace
} // namespace quillon
