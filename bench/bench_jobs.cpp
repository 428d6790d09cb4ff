// Parallel tool runs: a step over 64 inputs with the stand-in tool spending
// 200 ms of CPU per image, run with --jobs 1 and with --jobs N in the same
// iteration. The speed-up is the ratio of the two wall times.
#include "BenchData.h"
#include "BenchSupport.h"

#include "batch/BatchController.h"

#include <QEventLoop>
#include <QThread>

#include <benchmark/benchmark.h>

#include <sys/resource.h>

using namespace quillon;
using namespace quillon::bench;

namespace {

constexpr int kInputs = 64;
constexpr const char* kBusyMs = "200";

// CPU time of the finished children (the tool runs), in seconds.
double childCpuSeconds()
{
    rusage usage {};
    getrusage(RUSAGE_CHILDREN, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
        + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// One run to its end on this thread's event loop; its wall time in seconds,
// or a negative number when it did not start or missed outputs.
double timedRun(const RecordList& chain, RunSettings settings, int jobs)
{
    emptyDir(settings.outputPath);
    settings.toolJobs = jobs;
    BatchController controller;
    controller.setStandardOutput([](const QString&) {});
    QEventLoop loop;
    QObject::connect(&controller, &BatchController::runFinished, &loop, &QEventLoop::quit);
    const auto start = std::chrono::steady_clock::now();
    if (!controller.startBatchWithSender(chain, settings))
        return -1;
    loop.exec();
    const double seconds = secondsSince(start);
    return controller.outcome().missing.isEmpty() ? seconds : -1;
}

void BM_JobsSpeedup(benchmark::State& state)
{
    const int jobs = int(state.range(0));
    const QString definition = definitionOfSize(50 * 1024);
    const QString out = freshOutputDir(QStringLiteral("jobs"));
    RunSettings settings = benchSettings(out, 1);
    settings.toolPath = QStringLiteral(QUILLON_STANDIN_PATH);
    settings.inputMode = InputMode::Directory;
    settings.sourcePath = inputsDir(kInputs);
    qputenv("QUILLON_STANDIN_BUSY_MS", kBusyMs);

    double oneSlot = 0;
    double slots = 0;
    double toolCpu = 0;
    bool ok = true;
    for (auto _ : state) {
        const RecordList chain { chainRecordFor(definition) };
        const double cpuBefore = childCpuSeconds();
        const double one = timedRun(chain, settings, 1);
        const double many = timedRun(chain, settings, jobs);
        toolCpu += childCpuSeconds() - cpuBefore;
        ok = ok && one > 0 && many > 0;
        oneSlot += one;
        slots += many;
        state.SetIterationTime(many);
    }
    qunsetenv("QUILLON_STANDIN_BUSY_MS");
    emptyDir(out);
    if (!ok)
        state.SkipWithError("a run did not start or missed outputs");
    const double iterations = double(state.iterations());
    const int cores = QThread::idealThreadCount();
    state.counters["jobs_1_s"] = oneSlot / iterations;
    state.counters["jobs_n_s"] = slots / iterations;
    state.counters["speedup"] = oneSlot / slots;
    state.counters["target"] = 0.8 * std::min(jobs, cores);
    state.counters["cores"] = cores;
    state.counters["tool_cpu_s_per_image"] = toolCpu / iterations / (2.0 * kInputs);
}

} // namespace

BENCHMARK(BM_JobsSpeedup)
    ->ArgName("jobs")
    ->Arg(2)
    ->Arg(4)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1);
