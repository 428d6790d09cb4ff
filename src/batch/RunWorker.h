#pragma once

#include "library/Record.h"
#include "run/RunPlan.h"
#include "run/RunSettings.h"
#include "run/ToolRunOutcome.h"
#include "step/StepParent.h"

#include <QList>
#include <QMutex>
#include <QObject>
#include <QSemaphore>
#include <QString>
#include <QStringList>

#include <atomic>
#include <memory>

namespace quillon {

class RunCleanup;
class RunJournal;
class RunLog;
class filterProcessObject;

// A run's worker: lives on a thread of its own and walks the plan's tool
// runs in order, step by step, writing each tool run's files from its
// planned entry and running the render tool on them. Everything it has to
// say goes out as queued signals, in the order it happens.
class RunWorker final : public QObject, public StepParent {
    Q_OBJECT
public:
    struct Job {
        std::shared_ptr<const RunPlan> plan;
        RecordList chain; // the chain's own records: the values advance in them
        RunSettings settings; // absolute paths
        RunJournal* journal = nullptr; // the run's: outlive the worker
        RunLog* log = nullptr;
        RunCleanup* cleanup = nullptr;
        // The folder of every task file; empty: the output directory (or
        // .quillon/job-K per slot when the tool runs of a step share out).
        QString taskFolder;
    };

    explicit RunWorker(Job job);
    ~RunWorker() override;
    Q_DISABLE_COPY_MOVE(RunWorker)

    // Stops the running tool runs and starts no other. Any thread.
    void abort();
    // The receiver of toolOutput has handled one report. A tool that floods
    // its output waits while kOutputsInFlight reports are still queued, so
    // the receiving event loop is never buried. Any thread.
    static constexpr int kOutputsInFlight = 32;
    void outputHandled() { m_outputRoom.release(); }
    // Lets every waiting report through (the receiver goes away).
    void releaseOutputs() { m_outputRoom.release(1 << 20); }

    // StepParent, on the worker's threads.
    const RunSettings& runSettings() const override { return m_job.settings; }
    QString outputPrefix() const override { return m_job.settings.outputPrefix; }
    void setFilterInfoWithData(const QStringList& nameAndAuthor) override;
    void setSourceInfoWithSource(const QString& source) override;
    void setRenderInfoWithInfo(const QString& info) override;
    void collectForDeletionWithList(const QStringList& paths) override;
    void writeLogFileWithMessage(const QString& message) override;
    QObject* reportContext() override { return nullptr; }
    void willWriteFiles(const QStringList& paths) override;
    void didCreateFile(const QString& path, const FileIdentity& identity) override;
    void imagesWritten(const QStringList& paths) override;
    void toolRunEnded(const PlannedToolRun* run, const ToolRunOutcome& outcome) override;

public Q_SLOTS:
    // The whole run, then the log closed and the interim files deleted.
    void run();

Q_SIGNALS:
    void filterStarted(const QString& name, const QString& author);
    void sourceStarted(const QString& source);
    void toolOutput(const QString& text);
    void outputsWritten(const QStringList& paths);
    // `index`: the tool run's position in the plan.
    void toolRunFinished(qsizetype index, const quillon::ToolRunOutcome& outcome);
    // The run is over; "deleted PATH" for each interim file removed.
    void finished(const QStringList& deletedLines);

private:
    void runStep(int step, const QList<const PlannedToolRun*>& runs);
    // The tool runs of one step on `slots` threads at once, each slot with
    // its task files in a folder of its own. False when the folders cannot
    // be made (the step then runs one tool run at a time).
    bool runStepInSlots(filterProcessObject& step, int slots);
    void setRunning(const QList<filterProcessObject*>& steps);

    Job m_job;
    std::atomic<bool> m_aborted { false };
    QSemaphore m_outputRoom { kOutputsInFlight };
    QMutex m_runningMutex;
    QList<filterProcessObject*> m_running;
};

} // namespace quillon
