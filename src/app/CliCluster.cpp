// The command line's cluster modes: --slurm-bundle writes a run as a bundle
// for a Slurm job array, --run-part renders one element of it, --collect
// merges the elements' report parts into the run report.

#include "app/CliOptions.h"
#include "app/CliRun.h"
#include "batch/BatchController.h"
#include "batch/PlanChecks.h"
#include "batch/RunReport.h"
#include "cluster/BundleWriter.h"
#include "cluster/ClusterBundle.h"
#include "cluster/Collector.h"
#include "cluster/PartRunner.h"
#include "run/Console.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>

#include <utility>

#include <unistd.h>

namespace quillon {

namespace {

QString absolute(const QString& path)
{
    return path.isEmpty() ? path : QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

} // namespace

void CliRun::waitForRun(BatchController& controller, CliDisplay& display)
{
    QEventLoop loop;
    connect(&controller, &BatchController::runFinished, &loop, &QEventLoop::quit);
    connect(&controller, &BatchController::runRefused, &loop, &QEventLoop::quit);
    connect(this, &CliRun::abortRequested, &controller, &BatchController::abortProcessWithSender);
    if (m_interrupted.load())
        controller.abortProcessWithSender();
    if (controller.isRunning())
        loop.exec();
    display.finishProgress();
}

int CliRun::execBundle(const CliOptions& options, const RecordList& chain)
{
    QString error;
    if (!prepareBundleDirectory(options.slurmBundle, &error)) {
        writeCliError(error);
        return kCliExitFailed;
    }
    // Every node reads the same paths: none may depend on a working directory.
    RunSettings settings = options.settings;
    for (QString* path : { &settings.toolPath, &settings.outputPath, &settings.sourcePath })
        *path = absolute(*path);
    CliDisplay display;
    display.existingPolicy = options.existing;
    BatchController controller(&display);
    RunPlan plan;
    if (!controller.planBatch(chain, settings, &plan, &error)) {
        if (options.existing == ExistingOutputs::Cancel && !error.isEmpty())
            writeCliError(error);
        return kCliExitFailed;
    }
    settings.seed = plan.seed;
    if (display.replaced > 0)
        consoleLine(lcFiles(), QStringLiteral("the run will replace %1 existing files").arg(display.replaced));
    const BundleRequest request { absolute(options.slurmBundle), chain, settings, plan, options.slurmOptions,
        QCoreApplication::applicationFilePath(), absolute(options.reportFile) };
    if (!writeClusterBundle(request, &error)) {
        writeCliError(error);
        return kCliExitFailed;
    }
    if (const QStringList local = unsharedPathNotes(request); !local.isEmpty())
        writeCliError(
            QStringLiteral("note: on a local file system here, so every node must reach them at these same "
                           "paths: ")
            + local.join(QStringLiteral(", ")));
    if (settings.toolLog == 1)
        writeCliError(
            QStringLiteral("note: --log: each element's tool output goes to %1/logs/part-K.out, not to "
                           "a run log in the output directory")
                .arg(request.directory));
    if (lcPlan().isInfoEnabled()) {
        for (const QString& line : plan.describe().split(QLatin1Char('\n')))
            consoleLine(lcPlan(), QStringLiteral("plan: ") + line);
    }
    qsizetype elements = 0;
    for (const PlannedToolRun& run : std::as_const(plan.toolRuns))
        elements += run.step == 0 ? 1 : 0;
    writeCliError(
        QStringLiteral("bundle of %1 elements, %2 tool runs, %3 outputs -> %4; submit it with %4/submit.sh")
            .arg(elements)
            .arg(plan.toolRunCount())
            .arg(plan.outputCount())
            .arg(request.directory));
    return kCliExitOk;
}

int CliRun::execPart(const CliOptions& options)
{
    chooseConsoleLines(options);
    QString error;
    ClusterPart part;
    if (!prepareClusterPart(options.runPartBundle, options.runPartElement, &part, &error)) {
        writeCliError(error);
        return kCliExitFailed;
    }
    CliDisplay display;
    display.terminal = ::isatty(STDERR_FILENO) == 1;
    BatchController controller(&display);
    controller.setRunPart(BatchController::RunPart { part.plan, part.element });
    const bool accepted = controller.startBatchWithSender(part.bundle.chain, part.settings, &error);
    if (accepted)
        waitForRun(controller, display);
    if (!accepted || !controller.refusal().isEmpty()) {
        QString ignored;
        writePartReport(part, controller, kCliExitFailed, accepted ? controller.refusal() : error, &ignored);
        return kCliExitFailed;
    }
    writeCliError(QStringLiteral("element %1: ").arg(part.element) + controller.outcomeLine());
    int code = kCliExitOk;
    if (m_interrupted.load() || controller.isAborted())
        code = kCliExitInterrupted;
    else if (!controller.outcome().missing.isEmpty() || controller.hasFailedToolRun())
        code = kCliExitIncomplete;
    if (!writePartReport(part, controller, code, QString(), &error)) {
        writeCliError(error);
        return code == kCliExitOk ? kCliExitFailed : code;
    }
    return code;
}

int CliRun::execCollect(const CliOptions& options)
{
    chooseConsoleLines(options);
    QString error;
    CollectOutcome outcome;
    int code = kCliExitFailed;
    if (collectClusterParts(options.collectBundle, &outcome, &error)) {
        for (const QString& path : std::as_const(outcome.deleted))
            consoleLine(lcFiles(), QStringLiteral("deleted ") + path);
        for (const QString& problem : std::as_const(outcome.problems))
            writeCliError(problem);
        if (outcome.failedToolRuns > 0)
            writeCliError(QStringLiteral("%1 tool runs failed").arg(outcome.failedToolRuns));
        writeCliError(outcome.line());
        code = outcome.complete() ? kCliExitOk : kCliExitIncomplete;
    } else {
        writeCliError(error);
    }
    // Whoever waits for the collect (a script, a test) sees it end here.
    const QString status = QDir(options.collectBundle).filePath(bundle::kCollectStatus);
    if (!saveBundleFile(status, QByteArray::number(code) + '\n', &error))
        writeCliError(error);
    return code;
}

} // namespace quillon
