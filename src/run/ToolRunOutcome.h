#pragma once

#include <QList>
#include <QString>
#include <QStringList>

class QJsonObject;

namespace quillon {

// How one start of the render tool ended, for the report and the exit code.
struct ToolRunOutcome {
    enum class End {
        NotRun, // never started: nothing to do, or the run was aborted first
        Exited, // exited on its own with exitCode
        Crashed, // ended by signal `signal`
        StartFailed, // could not be started (startError says why)
        Aborted, // stopped by the user's abort: not a failure
    };

    End end = End::NotRun;
    int exitCode = 0;
    int signal = 0;
    QString startError;
    QStringList unwrittenTaskFiles; // task files of this run that could not be written

    // A non-zero exit, a crash or a failed start; an abort never counts.
    bool failed() const
    {
        return end == End::Crashed || end == End::StartFailed || (end == End::Exited && exitCode != 0);
    }
};

// A tool run's JSON object (report, cluster parts) gets "end", and as it
// applies "exitCode", "signal", "startError", then "failed" and
// "unwrittenTaskFiles"; the schema is in docs/run-plan.md.
void insertToolRunOutcome(QJsonObject& run, const ToolRunOutcome& outcome);
// The outcome such an object describes.
ToolRunOutcome toolRunOutcomeFromJson(const QJsonObject& run);
// How many of `outcomes` failed.
qsizetype failedToolRuns(const QList<ToolRunOutcome>& outcomes);

} // namespace quillon
