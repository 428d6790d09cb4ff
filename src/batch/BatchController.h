#pragma once

#include "batch/DisplayRelay.h"
#include "batch/InputListing.h"
#include "batch/RunCleanup.h"
#include "batch/RunJournal.h"
#include "batch/RunLog.h"
#include "batch/RunPlanner.h"
#include "library/Record.h"
#include "run/RunPlan.h"
#include "run/RunSettings.h"
#include "run/ToolRunOutcome.h"

#include <QElapsedTimer>
#include <QFutureWatcher>
#include <QHash>
#include <QList>
#include <QMutex>
#include <QObject>
#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

class QLoggingCategory;
class QThread;

namespace quillon {

class BatchDisplay;
class RunWorker;

// Wires a batch run for the window and the command line: Start's quick
// checks, the lock and the log; planning (checks and plan) off this thread;
// the questions; the worker on a thread of its own; its reports to the
// display; the outcome and the end of the run.
//
// Lives on one thread (the GUI thread in the window, the main thread in the
// command line) and is used only there.
class BatchController final : public QObject {
    Q_OBJECT
public:
    // The run log's file name in the output directory and its title.
    static const QString& kLogFileName;
    static const QString& kLogTitle;

    explicit BatchController(BatchDisplay* display = nullptr, QObject* parent = nullptr);
    // Aborts a run still going and waits for its worker.
    ~BatchController() override;
    Q_DISABLE_COPY_MOVE(BatchController)

    void setDisplay(BatchDisplay* display)
    {
        m_relay.setTarget(display);
        m_display = m_relay.entry();
    }
    BatchDisplay* display() const { return m_relay.target(); }

    // Where the run's own standard output lines go (tool output, "deleted "
    // lines, the log creation error); each call is one text without its line
    // end. Default: the console route.
    void setStandardOutput(std::function<void(const QString&)> sink);

    // Starts a run of `chain` (records shared with the caller: UseMaps/Maps
    // are written into them and the value rule advances their parameters).
    // The checks that need no listing are made now: false when one fails
    // (the message to the display's alert and to *error) or when a run is
    // still going (beep). Otherwise the run is planned on another thread and
    // then either starts (runStarted ... runFinished) or is refused
    // (runRefused, with the alert). Returns at once either way.
    bool startBatchWithSender(const RecordList& chain, const RunSettings& settings, QString* error = nullptr);
    // Stops the running tool runs; the run then winds down on its own.
    void abortProcessWithSender();
    // A dry run: the checks, the plan and the answers to the questions of a
    // Start, on this thread, without writing, running or changing anything.
    // False with *error (and the alert) when the run would be refused.
    bool planBatch(const RecordList& chain, const RunSettings& settings, RunPlan* plan,
        QString* error = nullptr, bool outputWillBeMade = false);
    // The second half of planBatch, for a plan made on another thread.
    bool settlePlanned(StartPlan& start, RunPlan* plan, QString* error = nullptr);
    // The plan of the run going (or of the last one); null before the first.
    std::shared_ptr<const RunPlan> plan() const { return m_plan; }
    // Why the last Start was refused after planning; empty otherwise.
    const QString& refusal() const { return m_refusal; }

    // A part of a run planned elsewhere (a cluster bundle): Start runs
    // `plan` as it is, under a lock and journal of the part's own and with
    // every task file in .quillon/job-<jobFolder>/.
    struct RunPart {
        std::shared_ptr<RunPlan> plan;
        int jobFolder = 0;
    };
    void setRunPart(std::optional<RunPart> part) { m_part = std::move(part); }

    // What became of the planned final outputs of the last run: written
    // (there, not empty, and new or changed since Start), missing, or not
    // run (skipped, or left by an abort).
    struct Outcome {
        QStringList written;
        QStringList missing;
        QStringList notRun;
        qint64 elapsedMs = 0;
    };
    Outcome outcome() const;
    // "N written, M missing, K not run in 1:23 -> OUTPUT DIR"
    QString outcomeLine() const;
    // How each tool run of the plan ended, in plan order.
    QList<ToolRunOutcome> toolRunOutcomes() const { return m_toolRunOutcomes; }
    bool hasFailedToolRun() const;
    // Each missing output with how its tool run ended, then the failed tool
    // runs whose outputs were all written; at most `limit` missing named.
    QStringList outcomeDetails(qsizetype limit = 20) const;

    // True from an accepted Start until the run has finished or was refused.
    bool isRunning() const { return m_running; }
    bool isAborted() const { return m_isAborted; }

    // Every entry under `directory`, deep, sorted by path (see InputListing).
    static QStringList loadImagesFromSourceFolder(const QString& directory)
    {
        return listInputDirectory(directory).paths;
    }
    // photo.png gives photo; my.photo.png and photo stay whole.
    static QString inputBaseName(const QString& path) { return quillon::inputBaseName(path); }

    // The settings of the latest Start (absolute paths once planned).
    const RunSettings& runSettings() const { return m_settings; }
    // The files the last run handed over for deletion, in order.
    QStringList interimFiles() const { return m_cleanup.files(); }
    bool isLogOpen() const { return m_log.isOpen(); }
    // The chain of the latest Start (shared records).
    const RecordList& chain() const { return m_chain; }

Q_SIGNALS:
    void runStarted();
    void runRefused(const QString& message);
    void runFinished(bool aborted);

private:
    // A refused Start: the message to *error and, with `alert`, to the
    // display's error alert (a question the user answered needs none).
    bool refuse(const QString& message, QString* error, bool alert = true);
    void printLine(const QLoggingCategory& category, const QString& text) const;
    bool takeOutputDirectory(QString* error);
    // The questions a planned run asks (the warning, existing outputs) and
    // the notes it gives; false with *error when it does not go.
    bool settle(StartPlan& start, QString* error);
    void planned();
    void startWorker();
    void workerFinished(const QStringList& deletedLines);
    void showProgress(const QStringList& written);

    DisplayRelay m_relay; // merges a window's reports per frame interval
    BatchDisplay* m_display = nullptr; // the relay or the display itself
    std::function<void(const QString&)> m_standardOutput;

    RecordList m_chain;
    RunSettings m_settings;
    std::shared_ptr<RunPlan> m_plan;
    QHash<QString, FileIdentity> m_finalBefore; // planned final outputs at Start
    QList<ToolRunOutcome> m_toolRunOutcomes; // by plan position
    QStringList m_inputs;
    QString m_refusal;
    QElapsedTimer m_clock;
    qint64 m_imagesDone = 0;
    qint64 m_imagesPlanned = 0;
    qint64 m_elapsedMs = 0;
    RunLog m_log;
    RunCleanup m_cleanup;
    RunJournal m_journal; // lock, journal and created files of the run
    std::optional<RunPart> m_part;
    QFutureWatcher<StartPlan> m_planning;

    bool m_isAborted = false;
    std::atomic<bool> m_planAbort { false }; // read by the planning thread
    bool m_running = false;
    QThread* m_thread = nullptr;
    RunWorker* m_worker = nullptr;
};

} // namespace quillon
