// Tool runs: a step over 1,000 inputs with a render tool that does nothing,
// against a plain loop that spawns and waits for the same tool as often.
// Quillon's time per tool run is taken without its task-file writing, which
// is measured on its own in the same iteration. And ToolRun alone (its event
// loop, output routing and abort handling) against a bare QProcess started
// and waited for in a loop.
#include "BenchData.h"
#include "BenchSupport.h"

#include "batch/BatchController.h"
#include "step/FilterProcessObject.h"
#include "step/ToolRun.h"

#include <QDir>
#include <QEventLoop>
#include <QProcess>

#include <benchmark/benchmark.h>

#include <spawn.h>
#include <sys/wait.h>

extern char** environ;

using namespace quillon;
using namespace quillon::bench;

namespace {

constexpr qint64 kDefinitionBytes = 50 * 1024;

// The ceiling: spawn the tool with its one argument and wait for it.
bool spawnAndWait(const QByteArray& tool, const QByteArray& argument)
{
    char* argv[] = { const_cast<char*>(tool.constData()), const_cast<char*>(argument.constData()), nullptr };
    pid_t pid = 0;
    if (posix_spawn(&pid, tool.constData(), nullptr, nullptr, argv, environ) != 0)
        return false;
    int status = 0;
    return waitpid(pid, &status, 0) == pid;
}

// Runs one batch to its end on this thread's event loop.
bool runBatch(BatchController& controller, const RecordList& chain, const RunSettings& settings)
{
    QEventLoop loop;
    QObject::connect(&controller, &BatchController::runFinished, &loop, &QEventLoop::quit);
    if (!controller.startBatchWithSender(chain, settings))
        return false;
    loop.exec();
    return true;
}

void BM_ToolRuns(benchmark::State& state)
{
    const int inputs = int(state.range(0));
    const QString definition = definitionOfSize(kDefinitionBytes);
    const QString in = inputsDir(inputs);
    const QString out = freshOutputDir(QStringLiteral("toolruns"));
    RunSettings settings = benchSettings(out, 1);
    settings.inputMode = InputMode::Directory;
    settings.sourcePath = in;
    const QByteArray tool = QFile::encodeName(settings.toolPath);
    const QByteArray argument = QFile::encodeName(QDir(out).filePath(QStringLiteral("controlfile.xml")));
    const QStringList files = BatchController::loadImagesFromSourceFolder(in);

    BatchController controller;
    controller.setStandardOutput([](const QString&) {});
    double runSeconds = 0;
    double writeSeconds = 0;
    double ceilingSeconds = 0;
    bool ok = true;
    for (auto _ : state) {
        auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < inputs; ++i)
            ok = spawnAndWait(tool, argument) && ok;
        ceilingSeconds += secondsSince(start);

        // The task files of the same step alone, as the worker writes them.
        {
            SilentStepParent parent(settings);
            filterProcessObject step(chainRecordFor(definition), files, {}, true, true, 0, &parent, {});
            step.outPath = out;
            start = std::chrono::steady_clock::now();
            for (const QString& file : files)
                ok = !step.createBatchFileWithFilepath(file, BatchController::inputBaseName(file)).isEmpty()
                    && ok;
            writeSeconds += secondsSince(start);
        }

        start = std::chrono::steady_clock::now();
        ok = runBatch(controller, { chainRecordFor(definition) }, settings) && ok;
        const double seconds = secondsSince(start);
        runSeconds += seconds;
        state.SetIterationTime(seconds);
    }
    emptyDir(out);
    if (!ok)
        state.SkipWithError("a run or a spawn failed");

    const double runs = double(state.iterations()) * inputs;
    const double quillon = (runSeconds - writeSeconds) / runs;
    const double ceiling = ceilingSeconds / runs;
    state.counters["quillon_ms_per_run"] = quillon * 1e3;
    state.counters["task_files_ms_per_run"] = writeSeconds / runs * 1e3;
    state.counters["ceiling_ms_per_run"] = ceiling * 1e3;
    state.counters["ms_above_ceiling"] = (quillon - ceiling) * 1e3;
}

void BM_ToolRunOverhead(benchmark::State& state)
{
    const int runs = int(state.range(0));
    const QString tool = trueTool();
    const QStringList arguments { QStringLiteral("controlfile.xml") };
    double toolRunSeconds = 0;
    double bareSeconds = 0;
    bool ok = true;
    for (auto _ : state) {
        // Alternating which goes first, in halves, so both meet the same machine.
        for (int half = 0; half < 2; ++half) {
            const auto timeBare = [&] {
                const auto start = std::chrono::steady_clock::now();
                for (int i = 0; i < runs / 2; ++i) {
                    QProcess process;
                    process.start(tool, arguments, QIODevice::ReadOnly);
                    ok = process.waitForFinished(-1) && process.exitCode() == 0 && ok;
                }
                bareSeconds += secondsSince(start);
            };
            const auto timeToolRun = [&] {
                const auto start = std::chrono::steady_clock::now();
                for (int i = 0; i < runs / 2; ++i) {
                    ToolRun run(tool, arguments);
                    const ToolRunOutcome outcome = run.exec();
                    ok = outcome.end == ToolRunOutcome::End::Exited && outcome.exitCode == 0 && ok;
                }
                const double seconds = secondsSince(start);
                toolRunSeconds += seconds;
                return seconds;
            };
            if (half == 0) {
                timeBare();
                state.SetIterationTime(timeToolRun());
            } else {
                timeToolRun();
                timeBare();
            }
        }
    }
    if (!ok)
        state.SkipWithError("a tool run failed");
    const double total = double(state.iterations()) * (runs / 2 * 2);
    state.counters["toolrun_ms_per_run"] = toolRunSeconds / total * 1e3;
    state.counters["bare_qprocess_ms_per_run"] = bareSeconds / total * 1e3;
    state.counters["ms_above_bare"] = (toolRunSeconds - bareSeconds) / total * 1e3;
}

} // namespace

BENCHMARK(BM_ToolRunOverhead)
    ->ArgName("runs")
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(2);
BENCHMARK(BM_ToolRuns)
    ->ArgName("inputs")
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(2);
