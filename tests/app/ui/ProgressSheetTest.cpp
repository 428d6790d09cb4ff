#include "app/ui/ProgressSheet.h"
#include "app/ui/WindowBatchDisplay.h"

#include <QLabel>
#include <QMainWindow>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <gtest/gtest.h>

namespace quillon {
namespace {

TEST(ProgressSheetTest, PlannedToolRunsFollowTheChain)
{
    // The first step runs once per input (or once without); every later step
    // once per image the step before rendered.
    EXPECT_EQ(ProgressSheet::plannedToolRuns(0, 1, 10), 1);
    EXPECT_EQ(ProgressSheet::plannedToolRuns(4, 1, 10), 4);
    EXPECT_EQ(ProgressSheet::plannedToolRuns(0, 2, 3), 1 + 3);
    EXPECT_EQ(ProgressSheet::plannedToolRuns(2, 3, 5), 2 + 2 * 10);
    EXPECT_EQ(ProgressSheet::plannedToolRuns(1, 2, 0), 2);
    EXPECT_EQ(ProgressSheet::plannedToolRuns(3, 0, 10), 0);
}

class ProgressSheetWindowTest : public ::testing::Test {
protected:
    QLabel* label(const char* name) const { return m_sheet->findChild<QLabel*>(QString::fromLatin1(name)); }
    QProgressBar* bar() const { return m_sheet->findChild<QProgressBar*>(QStringLiteral("prRunProgress")); }

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
    EXPECT_EQ(bar()->maximum(), 3);
    EXPECT_EQ(label("prElapsedField")->text(), QStringLiteral("0:00"));
    EXPECT_EQ(label("prStepField")->text(), QString());

    m_sheet->showFilterInfo(QStringLiteral("Soft Glow"), QStringLiteral("Quillon Samples"));
    m_sheet->showSourceInfo(QStringLiteral("<no source>"));
    m_sheet->showRenderInfo(QStringLiteral("rendering 1 of 3"));
    EXPECT_EQ(label("psFilterField")->text(), QStringLiteral("Soft Glow"));
    EXPECT_EQ(label("prAuthorField")->text(), QStringLiteral("Quillon Samples"));
    EXPECT_EQ(label("prSourceField")->text(), QStringLiteral("<no source>"));
    EXPECT_EQ(label("prProgress")->text(), QStringLiteral("rendering 1 of 3"));
    EXPECT_EQ(label("prStepField")->text(), QStringLiteral("1 of 3"));
    EXPECT_EQ(bar()->value(), 0); // the first run is still going

    m_sheet->showFilterInfo(QStringLiteral("Vignette"), QStringLiteral("Quillon Samples"));
    EXPECT_EQ(label("prStepField")->text(), QStringLiteral("2 of 3"));
    m_sheet->showSourceInfo(QStringLiteral("a.png"));
    EXPECT_EQ(bar()->value(), 1);
    m_sheet->finishRun();
    EXPECT_EQ(bar()->value(), 2);

    m_sheet->endRun();
    EXPECT_FALSE(m_sheet->isVisible());
    m_sheet->endRun(); // a second end is harmless
    EXPECT_EQ(label("psFilterField")->text(), QStringLiteral("Vignette"));

    // A new run counts from the first filter again.
    m_sheet->beginRun(1);
    EXPECT_EQ(m_sheet->stepsStarted(), 0);
    m_sheet->showFilterInfo(QStringLiteral("Stone Wall"), QStringLiteral("Quillon Samples"));
    EXPECT_EQ(label("prStepField")->text(), QStringLiteral("1 of 3"));
    m_sheet->endRun();
}

TEST_F(ProgressSheetWindowTest, MoreRunsThanPlannedStretchTheBar)
{
    m_sheet->beginRun(1);
    for (int i = 0; i < 3; ++i)
        m_sheet->showSourceInfo(QStringLiteral("x"));
    EXPECT_EQ(bar()->maximum(), 3);
    EXPECT_EQ(bar()->value(), 2);
    m_sheet->endRun();
}

TEST_F(ProgressSheetWindowTest, AnimationShowsTheFrameItIsGiven)
{
    EXPECT_EQ(m_sheet->shownFrame(), -1);
    m_sheet->showAnimationFrame(4);
    EXPECT_EQ(m_sheet->shownFrame(), 4);
    EXPECT_EQ(label("prAmination")->pixmap().toImage(), ProgressSheet::loadAnimationFrames()[4].toImage());
    m_sheet->showAnimationFrame(9); // no such frame
    EXPECT_EQ(m_sheet->shownFrame(), 4);
}

TEST_F(ProgressSheetWindowTest, AbortButtonAndEscapeBothAskForAnAbort)
{
    QSignalSpy aborts(m_sheet, &ProgressSheet::abortRequested);
    m_sheet->beginRun(1);
    m_sheet->findChild<QPushButton*>(QStringLiteral("abortButton"))->click();
    m_sheet->reject();
    EXPECT_EQ(aborts.count(), 2);
    // Only the run's end closes the sheet.
    EXPECT_TRUE(m_sheet->isVisible());
    m_sheet->endRun();
}

TEST(ProgressTail, ShortOutputIsShownWholeAndLongOutputByItsLastLines)
{
    EXPECT_EQ(WindowBatchDisplay::tailForDisplay(QStringLiteral("Rendering task 1/2")),
        QStringLiteral("Rendering task 1/2"));
    EXPECT_EQ(WindowBatchDisplay::tailForDisplay(QStringLiteral("a\nb\nc\nd")), QStringLiteral("a\nb\nc\nd"));
    EXPECT_EQ(
        WindowBatchDisplay::tailForDisplay(QStringLiteral("a\nb\nc\nd\ne\nf")), QStringLiteral("c\nd\ne\nf"));
    const QString longLine = QString(2000, QLatin1Char('x')) + QStringLiteral("end");
    EXPECT_EQ(
        WindowBatchDisplay::tailForDisplay(longLine), longLine.right(WindowBatchDisplay::kShownCharacters));
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

} // namespace
} // namespace quillon
