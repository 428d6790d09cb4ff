#pragma once

#include "batch/BatchDisplay.h"
#include "library/Record.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <atomic>

namespace quillon {

class BatchController;
struct CliOptions;

// Exit codes of quillon-cli.
inline constexpr int kCliExitOk = 0;
inline constexpr int kCliExitFailed = 2; // a failed check, a bad flag, an unreadable chain
// The run ended with planned outputs missing or a failed tool run (a non-zero
// exit, a crash, a failed start).
inline constexpr int kCliExitIncomplete = 3;
inline constexpr int kCliExitInterrupted = 130; // SIGINT or SIGTERM

// The command line's progress display: filter and source lines on standard
// output (the controller prints the tool's output and the "deleted " lines
// itself), alerts on standard error.
class CliDisplay final : public BatchDisplay {
public:
    void showErrorAlert(const QString& message) override;
    void beginProgressSheet() override { }
    void endProgressSheet() override { }
    void showFilterInfo(const QString& name, const QString& author) override;
    void showSourceInfo(const QString& source) override;
    void showRenderInfo(const QString& info) override { (void)info; }
    ExistingOutputs askExistingOutputs(const QStringList& paths) override;
    bool confirmWarning(const QString& message) override;
    void showNotice(const QString& message) override;

    void showImageProgress(
        qint64 done, qint64 total, qint64 elapsedMs, qint64 leftMs, const QString& latest) override;
    // Ends an updating progress line on a terminal.
    void finishProgress();

    ExistingOutputs existingPolicy = ExistingOutputs::Replace;
    qsizetype replaced = 0; // existing outputs the run was allowed to replace
    bool terminal = false; // standard error is a terminal: one updating line

private:
    qint64 m_lastPlainLineMs = -1;
};

// Every line on standard error begins with "quillon-cli: ".
void writeCliError(const QString& message);
// Lets --quiet and --verbose choose the console's categories.
void chooseConsoleLines(const CliOptions& options);

// "[ 37/300] 12% 00:14 elapsed, about 01:40 left  stone-0037.png"
QString progressLine(qint64 done, qint64 total, qint64 elapsedMs, qint64 leftMs, const QString& latest);

// Builds the chain the options name: a chain file, or definitions read into
// new records in the order given. False with *error on a file that cannot be
// read.
bool loadCliChain(const CliOptions& options, RecordList* chain, QString* error);
// Writes the chain to a chain file and prints "Saveres=" with the outcome.
bool saveCliChain(const QString& path, const RecordList& chain, QString* error);

// One quillon-cli invocation: parse, check, run to the end, clean up.
class CliRun final : public QObject {
    Q_OBJECT
public:
    explicit CliRun(QObject* parent = nullptr);

    // Runs with the controller on the calling thread's event loop and
    // returns the exit code.
    int exec(const QStringList& arguments);

public Q_SLOTS:
    // A termination request (SIGINT/SIGTERM): the run is aborted like the
    // Abort button and ends with kCliExitInterrupted.
    void requestAbort();

Q_SIGNALS:
    void abortRequested();

private:
    // The cluster modes (CliCluster.cpp): --slurm-bundle, --run-part, --collect.
    int execBundle(const CliOptions& options, const RecordList& chain);
    int execPart(const CliOptions& options);
    int execCollect(const CliOptions& options);
    // CliExplore.cpp: --from-report, the chain that makes one output again;
    // after a run, --contact-sheet and --animation (an exit code).
    int execFromReport(const CliOptions& options);
    int writeRunResults(const CliOptions& options, const BatchController& controller);
    // Runs the started run to its end, aborting it on a termination request.
    void waitForRun(BatchController& controller, CliDisplay& display);

    std::atomic<bool> m_interrupted { false };
};

} // namespace quillon
