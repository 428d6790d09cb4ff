#pragma once

#include <QString>
#include <QStringList>

class QObject;

namespace quillon {

struct FileIdentity;
struct PlannedToolRun;
struct RunSettings;
struct ToolRunOutcome;

// What a filter step needs from the controller that runs it. The window's
// AppDelegate, the command line and the tests implement it.
//
// The set... reports and collectForDeletionWithList are applied on the
// thread of reportContext(); a step on another thread delivers them with a
// blocking queued call so they arrive in order. writeLogFileWithMessage is
// called on the step's own (worker) thread.
class StepParent {
public:
    virtual ~StepParent() = default;

    // The settings snapshot of the current run (read-only while it runs).
    virtual const RunSettings& runSettings() const = 0;
    // The output prefix of the moment; a run without input empties it after
    // its first step.
    virtual QString outputPrefix() const = 0;

    virtual void setFilterInfoWithData(const QStringList& nameAndAuthor) = 0;
    virtual void setSourceInfoWithSource(const QString& source) = 0;
    virtual void setRenderInfoWithInfo(const QString& info) = 0;
    virtual void collectForDeletionWithList(const QStringList& paths) = 0;

    // Appends tool output to the run log, when one is open. Worker thread.
    virtual void writeLogFileWithMessage(const QString& message) = 0;

    // The object whose thread receives the reports; null delivers them
    // directly on the calling thread.
    virtual QObject* reportContext() = 0;

    // The step is about to write these files (task files, or the outputs
    // of a tool run), and then did create `path`, found as `identity`. Only
    // files reported created are ever deleted by the run. Worker thread;
    // the controller keeps the record thread-safe.
    virtual void willWriteFiles(const QStringList& paths) { (void)paths; }
    virtual void didCreateFile(const QString& path, const FileIdentity& identity)
    {
        (void)path;
        (void)identity;
    }
    // The running tool has written these outputs (seen while it runs, a
    // cheap look at the files). Worker thread.
    virtual void imagesWritten(const QStringList& paths) { (void)paths; }
    // A tool run has ended (after its files were handed over): how, and
    // which of its task files could not be written. `run` is the plan's
    // entry, or null for a step without a plan. Worker thread.
    virtual void toolRunEnded(const PlannedToolRun* run, const ToolRunOutcome& outcome)
    {
        (void)run;
        (void)outcome;
    }
};

} // namespace quillon
