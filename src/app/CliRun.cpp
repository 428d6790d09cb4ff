#include "app/CliRun.h"

#include "app/CliOptions.h"
#include "batch/BatchController.h"
#include "batch/RunPlanner.h"
#include "batch/RunReport.h"
#include "run/Console.h"
#include "run/SafeFile.h"
#include "run/Termination.h"

#include <QFileInfo>
#include <QLoggingCategory>

#include <cstdio>
#include <utility>

#include <unistd.h>

namespace quillon {

namespace {

void writeLine(std::FILE* stream, const QString& text)
{
    const QByteArray bytes = text.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stream);
    std::fflush(stream);
}

// Every line on standard error carries the program's name.
void writeError(const QString& message)
{
    const QString prefix = QStringLiteral("quillon-cli: ");
    writeLine(stderr, prefix + QString(message).replace(QLatin1Char('\n'), QLatin1Char('\n') + prefix));
}

} // namespace

void writeCliError(const QString& message)
{
    writeError(message);
}

void chooseConsoleLines(const CliOptions& options)
{
    if (options.quiet) {
        QLoggingCategory::setFilterRules(
            QStringLiteral("quillon.tool.info=false\nquillon.files.info=false\nquillon.progress.info=false"));
    } else if (options.verbose) {
        QLoggingCategory::setFilterRules(QStringLiteral("quillon.plan.info=true"));
    }
}

void CliDisplay::showErrorAlert(const QString& message)
{
    writeError(message);
}

QString progressLine(qint64 done, qint64 total, qint64 elapsedMs, qint64 leftMs, const QString& latest)
{
    const auto clock = [](qint64 ms) {
        const qint64 seconds = ms / 1000;
        return QStringLiteral("%1:%2")
            .arg(seconds / 60, 2, 10, QLatin1Char('0'))
            .arg(seconds % 60, 2, 10, QLatin1Char('0'));
    };
    const int width = static_cast<int>(QString::number(total).size());
    QString line = QStringLiteral("[%1/%2] %3% %4 elapsed")
                       .arg(done, width)
                       .arg(total)
                       .arg(total > 0 ? done * 100 / total : 0)
                       .arg(clock(elapsedMs));
    if (leftMs >= 0 && done < total)
        line += QStringLiteral(", about %1 left").arg(clock(leftMs));
    return line + QStringLiteral("  ") + QFileInfo(latest).fileName();
}

void CliDisplay::showImageProgress(
    qint64 done, qint64 total, qint64 elapsedMs, qint64 leftMs, const QString& latest)
{
    if (!lcProgress().isInfoEnabled())
        return;
    const QString line = progressLine(done, total, elapsedMs, leftMs, latest);
    if (terminal) {
        showTransientLine(line);
        return;
    }
    // Into a pipe or a file: a line per written output, at most one a second.
    if (done < total && m_lastPlainLineMs >= 0 && elapsedMs - m_lastPlainLineMs < 1000)
        return;
    m_lastPlainLineMs = elapsedMs;
    consoleLine(lcProgress(), line);
}

void CliDisplay::finishProgress()
{
    if (terminal)
        showTransientLine(QString());
}

void CliDisplay::showFilterInfo(const QString& name, const QString& author)
{
    consoleLine(lcProgress(),
        author.isEmpty() ? QStringLiteral("Filter: ") + name
                         : QStringLiteral("Filter: %1 (%2)").arg(name, author));
}

void CliDisplay::showSourceInfo(const QString& source)
{
    consoleLine(lcProgress(), QStringLiteral("Source: ") + source);
}

ExistingOutputs CliDisplay::askExistingOutputs(const QStringList& paths)
{
    if (existingPolicy == ExistingOutputs::Replace)
        replaced = paths.size();
    return existingPolicy;
}

void CliDisplay::showNotice(const QString& message)
{
    writeLine(stderr, QStringLiteral("quillon-cli: note: ") + message);
}

bool CliDisplay::confirmWarning(const QString& message)
{
    writeLine(stderr, QStringLiteral("quillon-cli: warning: ") + message);
    return true;
}

CliRun::CliRun(QObject* parent)
    : QObject(parent)
{
}

void CliRun::requestAbort()
{
    m_interrupted.store(true);
    Q_EMIT abortRequested();
}

int CliRun::exec(const QStringList& arguments)
{
    CliOptions options;
    QString error;
    switch (parseCliArguments(arguments, &options, &error)) {
    case CliParseResult::Help:
        writeLine(stdout, cliHelpText());
        return kCliExitOk;
    case CliParseResult::Version:
        writeLine(stdout, QStringLiteral("quillon-cli " QUILLON_VERSION));
        return kCliExitOk;
    case CliParseResult::Completions: {
        const QString script = cliCompletionScript(options.completionShell);
        if (script.isEmpty()) {
            writeError(QStringLiteral("--completions takes bash, zsh or fish"));
            return kCliExitFailed;
        }
        std::fputs(qPrintable(script), stdout);
        return kCliExitOk;
    }
    case CliParseResult::UsageError:
        if (!error.isEmpty())
            writeError(error);
        writeError(cliUsageLine());
        return kCliExitFailed;
    case CliParseResult::Run:
        break;
    }
    if (m_interrupted.load())
        return kCliExitInterrupted;
    if (!options.runPartBundle.isEmpty())
        return execPart(options);
    if (!options.collectBundle.isEmpty())
        return execCollect(options);
    if (!options.fromReport.isEmpty())
        return execFromReport(options);

    RecordList chain;
    if (!loadCliChain(options, &chain, &error) || !resolveCliPaths(&options, &error)) {
        writeError(error);
        return kCliExitFailed;
    }
    // The window shows its maps box only for a chain of one filter.
    if (options.settings.activateMaps == 1 && chain.size() > 1) {
        writeError(
            QStringLiteral("--maps needs a chain of one filter; %1 gave %2")
                .arg(options.chainFile.isEmpty() ? QStringLiteral("--filter") : QStringLiteral("--chain"))
                .arg(chain.size()));
        return kCliExitFailed;
    }
    const bool reportToStandardOutput = options.reportFile == QLatin1String("-");
    // Standard output then carries the report alone.
    if (reportToStandardOutput)
        sendConsoleToStandardError();

    chooseConsoleLines(options);
    if (!options.slurmBundle.isEmpty())
        return execBundle(options, chain);
    CliDisplay display;
    display.existingPolicy = options.existing;
    display.terminal = ::isatty(STDERR_FILENO) == 1;
    BatchController controller(&display);
    if (options.dryRun) {
        RunPlan plan;
        if (!controller.planBatch(chain, options.settings, &plan, &error, options.makeOutputDirectory)) {
            if (error == kPlanningAborted)
                return kCliExitInterrupted;
            if (options.existing == ExistingOutputs::Cancel && !error.isEmpty())
                writeError(error);
            return kCliExitFailed;
        }
        if (display.replaced > 0)
            writeError(QStringLiteral("the run would replace %1 existing files").arg(display.replaced));
        // A tool run at a time: a million outputs are never one document,
        // and SIGTERM (or a reader gone) ends the listing between tool runs.
        const auto print = [](const QByteArray& text) {
            if (terminationRequested().load())
                return false;
            std::fwrite(text.constData(), 1, static_cast<size_t>(text.size()), stdout);
            return true;
        };
        const bool listed = options.json ? plan.writeJson(print) : plan.writeDescription(print);
        return listed ? kCliExitOk : kCliExitInterrupted;
    }
    connect(&controller, &BatchController::runStarted, this, [&controller] {
        if (!lcPlan().isInfoEnabled() || !controller.plan())
            return;
        for (const QString& line : controller.plan()->describe().split(QLatin1Char('\n')))
            consoleLine(lcPlan(), QStringLiteral("plan: ") + line);
    });
    // A report that could not be written would lose the run's record.
    if (const QString problem = options.reportFile.isEmpty() || options.reportFile == QLatin1String("-")
            ? QString()
            : saveTargetProblem(options.reportFile);
        !problem.isEmpty()) {
        writeError(QStringLiteral("Cannot write the report %1: %2").arg(options.reportFile, problem));
        return kCliExitFailed;
    }
    // The check's message already went to standard error through the display.
    if (!controller.startBatchWithSender(chain, options.settings, &error))
        return kCliExitFailed;
    waitForRun(controller, display);
    if (!controller.refusal().isEmpty()) {
        if (options.existing == ExistingOutputs::Cancel)
            writeError(controller.refusal());
        return kCliExitFailed;
    }
    if (display.replaced > 0)
        consoleLine(lcFiles(), QStringLiteral("replaced %1 existing files").arg(display.replaced));
    writeError(controller.outcomeLine());
    for (const QString& line : controller.outcomeDetails())
        writeError(line);
    int code = kCliExitOk;
    if (m_interrupted.load() || controller.isAborted())
        code = kCliExitInterrupted;
    else if (!controller.outcome().missing.isEmpty() || controller.hasFailedToolRun())
        code = kCliExitIncomplete;
    if (reportToStandardOutput) {
        const QByteArray report = runReportJson(controller);
        std::fwrite(report.constData(), 1, static_cast<size_t>(report.size()), stdout);
        std::fflush(stdout);
    } else if (!options.reportFile.isEmpty() && !saveRunReport(options.reportFile, controller, &error)) {
        // The run happened, its record did not.
        writeError(error);
        if (code == kCliExitOk)
            code = kCliExitIncomplete;
    }
    if (!options.contactSheet.isEmpty() || !options.animation.isEmpty()) {
        const int made = writeRunResults(options, controller);
        if (made != kCliExitOk && code == kCliExitOk)
            code = made;
    }
    if (!options.saveChainFile.isEmpty()) {
        if (!saveCliChain(options.saveChainFile, controller.chain(), &error)) {
            writeError(error);
            if (code == kCliExitOk)
                code = kCliExitIncomplete;
        }
    }
    return code;
}

} // namespace quillon
