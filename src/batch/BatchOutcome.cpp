// What a run made: images counted as the tool writes them, and the fate of
// every planned final output when the run is over.

#include "batch/BatchController.h"

#include "batch/BatchDisplay.h"

#include "run/SafeFile.h"

#include <QFileInfo>

#include <algorithm>

namespace quillon {

namespace {

// How a tool run ended, as the closing report says it.
QString describeEnd(const ToolRunOutcome& outcome)
{
    QString text;
    switch (outcome.end) {
    case ToolRunOutcome::End::NotRun:
        text = QStringLiteral("the render tool did not run");
        break;
    case ToolRunOutcome::End::Exited:
        text = QStringLiteral("the render tool exited with code %1").arg(outcome.exitCode);
        break;
    case ToolRunOutcome::End::Crashed:
        text = QStringLiteral("the render tool was ended by signal %1").arg(outcome.signal);
        break;
    case ToolRunOutcome::End::StartFailed:
        text = QStringLiteral("the render tool could not be started (%1)").arg(outcome.startError);
        break;
    case ToolRunOutcome::End::Aborted:
        text = QStringLiteral("the tool run was aborted");
        break;
    }
    if (!outcome.unwrittenTaskFiles.isEmpty())
        text += QStringLiteral("; task files not written: ")
            + outcome.unwrittenTaskFiles.join(QStringLiteral(", "));
    return text;
}

} // namespace

bool BatchController::hasFailedToolRun() const
{
    const QList<ToolRunOutcome> outcomes = toolRunOutcomes();
    return std::any_of(
        outcomes.cbegin(), outcomes.cend(), [](const ToolRunOutcome& o) { return o.failed(); });
}

QStringList BatchController::outcomeDetails(qsizetype limit) const
{
    QStringList lines;
    if (!m_plan)
        return lines;
    const Outcome result = outcome();
    const QSet<QString> missing(result.missing.cbegin(), result.missing.cend());
    const QList<ToolRunOutcome> outcomes = toolRunOutcomes();
    qsizetype named = 0;
    QList<bool> mentioned(m_plan->toolRuns.size(), false);
    for (qsizetype i = 0; i < m_plan->toolRuns.size(); ++i) {
        const PlannedToolRun& run = m_plan->toolRuns.at(i);
        for (qsizetype t = 0; t < run.tasks.size(); ++t) {
            const QString resultPath = run.resultPath(t);
            if (!missing.contains(resultPath))
                continue;
            mentioned[i] = true;
            if (named++ < limit)
                lines.append(QStringLiteral("missing %1: %2").arg(resultPath, describeEnd(outcomes.value(i))));
        }
    }
    if (named > limit)
        lines.append(QStringLiteral("and %1 more missing").arg(named - limit));
    for (qsizetype i = 0; i < outcomes.size(); ++i) {
        if (mentioned.at(i) || !outcomes.at(i).failed())
            continue;
        const PlannedToolRun& run = m_plan->toolRuns.at(i);
        const QString input
            = run.input.isEmpty() ? QStringLiteral("no input") : QFileInfo(run.input).fileName();
        lines.append(QStringLiteral("tool run of step %1 on %2: %3")
                         .arg(run.step + 1)
                         .arg(input, describeEnd(outcomes.at(i))));
    }
    return lines;
}

void BatchController::showProgress(const QStringList& written)
{
    if (!m_running || written.isEmpty())
        return;
    m_imagesDone += written.size();
    const qint64 elapsed = m_clock.elapsed();
    // The rate means something once a few images are in; rounded up to whole
    // seconds: never "0:00 left" while work remains.
    constexpr qint64 kImagesBeforeEstimate = 3;
    const qint64 remaining = std::max<qint64>(m_imagesPlanned - m_imagesDone, 0);
    const qint64 left = m_imagesDone >= kImagesBeforeEstimate
        ? (elapsed * remaining / m_imagesDone + 999) / 1000 * 1000
        : -1;
    if (m_display)
        m_display->showImageProgress(m_imagesDone, m_imagesPlanned, elapsed, left, written.last());
}

BatchController::Outcome BatchController::outcome() const
{
    Outcome result;
    result.elapsedMs = m_elapsedMs;
    if (!m_plan)
        return result;
    const bool aborted = m_isAborted;
    for (const PlannedToolRun& run : std::as_const(m_plan->toolRuns)) {
        if (run.step != m_plan->steps - 1)
            continue;
        for (qsizetype t = 0; t < run.tasks.size(); ++t) {
            const QString resultPath = run.resultPath(t);
            const FileIdentity now = regularFileIdentity(resultPath);
            const FileIdentity before = m_finalBefore.value(resultPath);
            if (run.tasks.at(t).skipped)
                result.notRun.append(resultPath);
            else if (now.isValid() && now.size > 0 && (!before.isValid() || now.changedSince(before)))
                result.written.append(resultPath);
            else if (aborted)
                result.notRun.append(resultPath);
            else
                result.missing.append(resultPath);
        }
    }
    return result;
}

QString BatchController::outcomeLine() const
{
    const Outcome result = outcome();
    const qint64 seconds = result.elapsedMs / 1000;
    return QStringLiteral("%1 written, %2 missing, %3 not run in %4:%5 -> %6")
        .arg(result.written.size())
        .arg(result.missing.size())
        .arg(result.notRun.size())
        .arg(seconds / 60)
        .arg(seconds % 60, 2, 10, QLatin1Char('0'))
        .arg(m_settings.outputPath);
}

} // namespace quillon
