#include "app/ui/WindowBatchDisplay.h"

#include "app/ui/DialogSeams.h"
#include "app/ui/ProgressSheet.h"
#include "batch/PlanChecks.h"

#include <algorithm>

namespace quillon {

WindowBatchDisplay::WindowBatchDisplay(ProgressSheet* sheet, std::function<void(const QString&)> showAlert,
    std::function<void(const QString&)> showStatus)
    : m_sheet(sheet)
    , m_showAlert(std::move(showAlert))
    , m_showStatus(std::move(showStatus))
{
}

void WindowBatchDisplay::showErrorAlert(const QString& message)
{
    if (m_showAlert)
        m_showAlert(message);
}

void WindowBatchDisplay::beginProgressSheet()
{
    m_sheetOpen = true;
    m_reportedAfterClose.clear();
    m_sheet->beginRun(0);
}

void WindowBatchDisplay::planRun(int inputCount, int steps, qint64 frames)
{
    m_sheet->setPlannedSteps(steps);
    m_sheet->setPlannedToolRuns(ProgressSheet::plannedToolRuns(inputCount, steps, frames));
}

void WindowBatchDisplay::endProgressSheet()
{
    m_sheetOpen = false;
    m_sheet->endRun();
}

void WindowBatchDisplay::showFilterInfo(const QString& name, const QString& author)
{
    m_sheet->showFilterInfo(name, author);
}

void WindowBatchDisplay::showSourceInfo(const QString& source)
{
    m_sheet->showSourceInfo(source);
}

void WindowBatchDisplay::showSourcesInfo(const QString& latest, int count)
{
    m_sheet->showSourceInfo(latest, count);
}

void WindowBatchDisplay::showNotice(const QString& message)
{
    m_sheet->showRenderInfo(message);
}

void WindowBatchDisplay::showRenderInfo(const QString& info)
{
    if (!m_sheetOpen) {
        const QString last = info.trimmed().section(QLatin1Char('\n'), -1);
        if (!last.isEmpty())
            m_reportedAfterClose = last;
    }
    m_sheet->showRenderInfo(tailForDisplay(info));
}

QString WindowBatchDisplay::tailForDisplay(const QString& info)
{
    qsizetype start = 0;
    qsizetype lines = 0;
    for (qsizetype i = info.size(); i-- > 0;) {
        if (info.at(i) == QLatin1Char('\n') && ++lines == kShownLines) {
            start = i + 1;
            break;
        }
    }
    start = std::max(start, info.size() - kShownCharacters);
    // Never begin with the second half of a surrogate pair.
    if (start > 0 && start < info.size() && info.at(start).isLowSurrogate())
        ++start;
    return start == 0 ? info : info.mid(start);
}

void WindowBatchDisplay::runFinished(bool aborted)
{
    m_sheet->finishRun();
    const Results results = m_results ? m_results() : Results {};
    if (m_showStatus) {
        QString status = aborted ? tr("Run aborted.") : tr("Run finished.");
        if (aborted && !m_reportedAfterClose.isEmpty())
            status += QLatin1Char(' ') + m_reportedAfterClose.left(kShownCharacters);
        // The counts, and the first reason where something is missing.
        if (!results.summary.isEmpty())
            status += QLatin1Char(' ') + results.summary;
        if (!results.details.isEmpty())
            status += tr(" — %1").arg(results.details.first().left(kShownCharacters));
        m_showStatus(status);
    }
    if (m_results && m_showResults)
        m_showResults(results);
}

ExistingOutputs WindowBatchDisplay::askExistingOutputs(const QStringList& paths)
{
    return MessageBoxes::instance().askExistingOutputs(m_sheet->parentWidget(),
        tr("%1 of the planned outputs exist already (%2). Replace them, or skip their tasks?")
            .arg(paths.size())
            .arg(nameSome(paths)));
}

bool WindowBatchDisplay::confirmWarning(const QString& message)
{
    return MessageBoxes::instance().confirm(
        m_sheet->parentWidget(), message + QLatin1Char(' ') + tr("Start anyway?"));
}

void WindowBatchDisplay::showImageProgress(
    qint64 done, qint64 total, qint64 elapsedMs, qint64 leftMs, const QString& latest)
{
    (void)elapsedMs;
    m_sheet->showImageProgress(done, total, leftMs);
    m_sheet->showLatestOutput(latest);
}

void WindowBatchDisplay::beep()
{
    MessageBoxes::instance().beep();
}

} // namespace quillon
