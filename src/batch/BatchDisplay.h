#pragma once

#include <QString>

namespace quillon {

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

    // The run is over (the interim files are deleted); aborted tells whether
    // the user stopped it.
    virtual void runFinished(bool aborted) { (void)aborted; }

    // Start was refused because a run (or an aborted run's wind-down) is
    // still going.
    virtual void beep() { }
};

} // namespace quillon
