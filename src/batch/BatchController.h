#pragma once

#include "batch/RunJournal.h"
#include "library/Record.h"
#include "run/RunPlan.h"
#include "run/RunSettings.h"
#include "run/ToolRunOutcome.h"
#include "step/StepParent.h"

#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QList>
#include <QMutex>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QLoggingCategory;
class QThread;
class QTimer;

namespace quillon {

class BatchDisplay;
class RunRandom;
class filterProcessObject;

// The batch run control: Start with its checks, the launch queue and its
// worker thread, completion with the deletion of interim files, abort, the
// step reports and the run log.
//
// Lives on one thread (the GUI thread in the window, the main thread in the
// command line); every public function except writeLogFileWithMessage and
// isAborted() is called there. The steps run on one worker thread per run
// and report back with blocking queued calls, so reports arrive in order.
class BatchController final : public QObject, public StepParent {
    Q_OBJECT
public:
    // The run log's file name in the output directory and its title.
    static const QString kLogFileName; // "qlrn_logfile.txt"
    static const QString kLogTitle; // "Quillon log"

    explicit BatchController(BatchDisplay* display = nullptr, QObject* parent = nullptr);
    // Aborts a run still going and waits for its wind-down.
    ~BatchController() override;
    Q_DISABLE_COPY_MOVE(BatchController)

    void setDisplay(BatchDisplay* display) { m_display = display; }
    BatchDisplay* display() const { return m_display; }

    // Where the run's own standard output lines go (tool output, "deleted "
    // lines, the log creation error); each call is one text without its line
    // end. Default: written to stdout with a line end and flushed.
    void setStandardOutput(std::function<void(const QString&)> sink);

    // ---- Start, abort, completion (controller thread) --------------------
    // Checks the settings and starts a run of `chain` (records shared with the
    // caller: UseMaps/Maps are written into them and the value rule advances
    // their parameters). Returns false when a check failed (the message went
    // to showErrorAlert and to *error) or when a run or an aborted run's
    // wind-down is still going (beep, *error set, nothing changed).
    bool startBatchWithSender(const RecordList& chain, const RunSettings& settings, QString* error = nullptr);
    // Stops the running step's tool and the worker; the run then winds down
    // on its own and completes.
    void abortProcessWithSender();
    // The checks and the plan of a Start, without writing, running or
    // changing anything: for a dry run. False with *error (and the alert)
    // when a check fails.
    bool planBatch(
        const RecordList& chain, const RunSettings& settings, RunPlan* plan, QString* error = nullptr);
    // The plan of the run going (or of the last one); null before the first.
    std::shared_ptr<const RunPlan> plan() const { return m_plan; }

    // A part of a run planned elsewhere (a cluster bundle). With one set,
    // Start runs `plan` as it is (every value fixed; the inputs of its first
    // step are the run's inputs) instead of computing a plan, under a lock
    // and journal of the part's own (RunJournal::beginPart) and with every
    // task file in .quillon/job-<jobFolder>/, so the parts of one run can
    // share the output directory. The settings' tool jobs should be 1.
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
    // How each tool run of the plan ended, in plan order (NotRun for those
    // that never started).
    QList<ToolRunOutcome> toolRunOutcomes() const;
    // Some tool run exited with a non-zero code, crashed or could not start.
    bool hasFailedToolRun() const;
    // The closing report below the count: each missing output with how its
    // tool run ended, then the failed tool runs whose outputs were all
    // written; at most `limit` missing outputs are named.
    QStringList outcomeDetails(qsizetype limit = 20) const;
    // The end of every run; called by the worker through a blocking call.
    void operationComplete();

    // True from a successful Start until operationComplete has run.
    bool isRunning() const { return m_running; }
    bool isAborted() const { return m_isAborted.load(); }

    // ---- Pieces of Start, usable on their own ----------------------------
    // Every entry under `directory`, deep, files and subdirectories alike,
    // skipping entries whose relative path begins with "."; sorted by path.
    // Empty when the directory cannot be listed.
    static QStringList loadImagesFromSourceFolder(const QString& directory);
    // The name that names an input's outputs: photo.png gives photo;
    // my.photo.png and photo stay whole.
    static QString inputBaseName(const QString& path);

    // ---- StepParent ------------------------------------------------------
    const RunSettings& runSettings() const override { return m_settings; }
    QString outputPrefix() const override { return m_outputPrefix; }
    void setFilterInfoWithData(const QStringList& nameAndAuthor) override;
    void setSourceInfoWithSource(const QString& source) override;
    // Shows the text and prints it on standard output.
    void setRenderInfoWithInfo(const QString& info) override;
    // Appends the paths the run generated; anything outside the output
    // directory, the output directory itself and the run's original inputs
    // are refused.
    void collectForDeletionWithList(const QStringList& paths) override;
    // Worker thread: appends the text's UTF-8 bytes to the open log.
    void writeLogFileWithMessage(const QString& message) override;
    QObject* reportContext() override { return this; }
    // Worker thread: recorded in the run's journal.
    void willWriteFiles(const QStringList& paths) override { m_journal.intend(paths); }
    void didCreateFile(const QString& path, const FileIdentity& identity) override
    {
        m_journal.recordCreated(path, identity);
    }
    // Worker thread: counted on the controller's thread.
    void imagesWritten(const QStringList& paths) override;
    // Worker thread: kept for the outcome.
    void toolRunEnded(const PlannedToolRun* run, const ToolRunOutcome& outcome) override;

    // ---- State, for the window and tests ---------------------------------
    const QStringList& interimFiles() const { return m_interimFiles; }
    bool isLogOpen() const;
    // The chain of the latest Start (shared records).
    const RecordList& chain() const { return m_chain; }

Q_SIGNALS:
    void runStarted();
    // Emitted at the end of operationComplete.
    void runFinished(bool aborted);

private:
    using LaunchQueue = std::vector<std::unique_ptr<filterProcessObject>>;

    // A refused Start: the message to *error and, with `alert`, to the
    // display's error alert (a question the user answered needs none).
    bool failCheck(const QString& message, QString* error, bool alert = true);
    // The checks of Start, before and after the run takes the directory;
    // checkInputs lists the inputs into m_inputs and ends with the run's
    // plan in m_plan.
    bool checkSettings(QString* error);
    bool checkInputs(QString* error);
    void openRunLog();
    void closeRunLog();
    void printLine(const QLoggingCategory& category, const QString& text) const;
    void buildLaunchQueue();
    // Worker thread.
    void runLaunchQueue(LaunchQueue& queue);
    // Runs the tool runs of one step on `slots` threads at once.
    void runStepInSlots(filterProcessObject& step, int slots);
    // Runs `call` on the controller's thread and waits for it.
    void callOnControllerThread(const std::function<void()>& call);
    // Canonical parent directories already resolved, by the parent as given.
    using ParentCache = QHash<QString, QString>;
    bool isDeletable(const QString& path, ParentCache& parents) const;
    // The completion in its three parts: the first and last run on the
    // controller thread; the deletion pass in between touches no member that
    // changes during a run, so the worker runs it and the window keeps
    // serving its events while thousands of files go.
    QStringList beginCompletion();
    QStringList deleteInterimFiles(const QStringList& paths);
    void finishCompletion(const QStringList& deletedLines);
    void reapWorker();

    BatchDisplay* m_display = nullptr;
    std::function<void(const QString&)> m_standardOutput;

    RecordList m_chain;
    RunSettings m_settings;
    QString m_outputPrefix;
    QStringList m_inputs; // collected at Start, handed to the first step
    std::shared_ptr<RunPlan> m_plan;
    QHash<QString, FileIdentity> m_finalBefore; // planned final outputs at Start
    QStringList m_existingFinals; // those of them that exist already
    QList<ToolRunOutcome> m_toolRunOutcomes; // by plan position; under m_outcomeMutex
    mutable QMutex m_outcomeMutex;
    QElapsedTimer m_clock;
    qint64 m_imagesDone = 0;
    qint64 m_imagesPlanned = 0;
    qint64 m_elapsedMs = 0;
    QStringList m_interimFiles;
    QSet<QString> m_interimSet; // the same paths, to keep the list free of repeats
    QSet<QString> m_originalInputs; // canonical paths of the run's user inputs
    QString m_canonicalOutputDir;
    bool m_dolog = false;
    std::unique_ptr<QFile> m_logfh;
    RunJournal m_journal; // lock, journal and created files of the run
    std::optional<RunPart> m_part;

    std::atomic<bool> m_isAborted { false };
    bool m_running = false;
    QList<filterProcessObject*> m_runningFilters; // touched on the controller thread only
    QMutex m_logMutex;
    std::unique_ptr<RunRandom> m_random;
    QThread* m_worker = nullptr;
    QList<QThread*> m_retiredWorkers; // past completion, not yet finished
};

} // namespace quillon
