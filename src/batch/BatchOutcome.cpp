// What a run made: images counted as the tool writes them, and the fate of
// every planned final output when the run is over.

#include "batch/BatchController.h"

#include "batch/BatchDisplay.h"

#include "run/SafeFile.h"

#include <QMetaObject>
#include <QMutexLocker>

#include <algorithm>

namespace quillon {

void BatchController::imagesWritten(const QStringList& paths)
{
    QMetaObject::invokeMethod(
        this,
        [this, paths] {
            if (!m_running)
                return;
            m_imagesDone += paths.size();
            const qint64 elapsed = m_clock.elapsed();
            // The rate means something once a few images are in.
            constexpr qint64 kImagesBeforeEstimate = 3;
            // Rounded up to whole seconds: never "0:00 left" while work remains.
            const qint64 remaining = std::max<qint64>(m_imagesPlanned - m_imagesDone, 0);
            const qint64 left = m_imagesDone >= kImagesBeforeEstimate
                ? (elapsed * remaining / m_imagesDone + 999) / 1000 * 1000
                : -1;
            if (m_display)
                m_display->showImageProgress(m_imagesDone, m_imagesPlanned, elapsed, left, paths.last());
        },
        Qt::QueuedConnection);
}

BatchController::Outcome BatchController::outcome() const
{
    Outcome result;
    result.elapsedMs = m_elapsedMs;
    if (!m_plan)
        return result;
    const bool aborted = m_isAborted.load();
    for (const PlannedToolRun& run : std::as_const(m_plan->toolRuns)) {
        if (run.step != m_plan->steps - 1)
            continue;
        for (const PlannedTask& task : run.tasks) {
            const FileIdentity now = regularFileIdentity(task.resultPath);
            const FileIdentity before = m_finalBefore.value(task.resultPath);
            if (task.skipped)
                result.notRun.append(task.resultPath);
            else if (now.isValid() && now.size > 0 && (!before.isValid() || now.changedSince(before)))
                result.written.append(task.resultPath);
            else if (aborted)
                result.notRun.append(task.resultPath);
            else
                result.missing.append(task.resultPath);
        }
    }
    return result;
}

void BatchController::toolRunEnded(const PlannedToolRun* run, const ToolRunEnd& end)
{
    if (!run)
        return;
    const QMutexLocker locker(&m_endsMutex);
    m_toolRunEnds.insert(run, end);
}

QHash<qsizetype, ToolRunEnd> BatchController::toolRunEnds() const
{
    QHash<qsizetype, ToolRunEnd> ends;
    if (!m_plan)
        return ends;
    const QMutexLocker locker(&m_endsMutex);
    for (qsizetype i = 0; i < m_plan->toolRuns.size(); ++i) {
        if (const auto found = m_toolRunEnds.constFind(&m_plan->toolRuns.at(i));
            found != m_toolRunEnds.cend())
            ends.insert(i, found.value());
    }
    return ends;
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
