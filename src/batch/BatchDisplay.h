#pragma once

#include <QString>
#include <QStringList>

namespace quillon {

// What to do with planned final outputs that exist already.
enum class ExistingOutputs { Replace, Skip, Cancel };

// What a batch run shows to its user. The main window implements it with the
// progress sheet and alerts; the command line prints; tests record.
//
// Every call arrives on the controller's thread, in the order the run issues
// it: the filter of a step first, then each source, then the tool's output.
class BatchDisplay {
public:
    virtual ~BatchDisplay() = default;

    // A failed Start check: the window shows the "Error:" alert with the
    // message as informative text and one "OK" button.
    virtual void showErrorAlert(const QString& message) = 0;

    // The progress sheet is shown when a run starts and ended when it
    // completes or is aborted (ending it twice must be harmless).
    virtual void beginProgressSheet() = 0;
    virtual void endProgressSheet() = 0;

    virtual void showFilterInfo(const QString& name, const QString& author) = 0;
    // The input file's name, or "<no source>".
    virtual void showSourceInfo(const QString& source) = 0;
    // The latest non-empty output of the render tool (may hold line ends).
    virtual void showRenderInfo(const QString& info) = 0;

    // The size of the run, once its inputs are collected and before its first
    // step: inputs of the first step (0 without input), steps, frames.
    virtual void planRun(int inputCount, int steps, qint64 frames)
    {
        (void)inputCount;
        (void)steps;
        (void)frames;
    }

    // Some planned final outputs exist already (`paths`): replace them, skip
    // their tasks, or cancel the run. Asked before anything is written.
    virtual ExistingOutputs askExistingOutputs(const QStringList& paths)
    {
        (void)paths;
        return ExistingOutputs::Replace;
    }
    // Something the user should know about the run that does not stop it
    // (entries of the input directory left out).
    virtual void showNotice(const QString& message) { (void)message; }
    // A warning the user may dismiss (true) or heed by not starting (false).
    virtual bool confirmWarning(const QString& message)
    {
        (void)message;
        return true;
    }

    // Progress in images: `done` of `total` outputs written, the latest one,
    // and the time left estimated from the rate so far (negative while too
    // few are in to tell).
    virtual void showImageProgress(
        qint64 done, qint64 total, qint64 elapsedMs, qint64 leftMs, const QString& latest)
    {
        (void)done;
        (void)total;
        (void)elapsedMs;
        (void)leftMs;
        (void)latest;
    }

    // The run is over (the interim files are deleted); aborted tells whether
    // the user stopped it.
    virtual void runFinished(bool aborted) { (void)aborted; }

    // Start was refused because a run (or an aborted run's wind-down) is
    // still going.
    virtual void beep() { }

    // A display that shows only the latest source, tool output and progress
    // (a window) gets them at most once per this many milliseconds, merged
    // (DisplayRelay); 0: every report as it comes.
    virtual int reportIntervalMs() const { return 0; }
    // Merged sources: `count` tool runs started since the last report, the
    // latest of them `latest`.
    virtual void showSourcesInfo(const QString& latest, int count)
    {
        for (int i = 0; i < count; ++i)
            showSourceInfo(latest);
    }
};

} // namespace quillon
