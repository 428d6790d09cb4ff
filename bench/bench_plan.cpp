// Planning a run: outputs computed before the first tool run (1,000 and
// 10,000 inputs x 100 frames, one step; 10,000 frames without input over
// two steps). Reported: CPU seconds per plan, the memory the plan adds per
// output, and the memory the streamed --json text adds beyond the plan.

#include "BenchData.h"
#include "BenchSupport.h"

#include "batch/RunPlanner.h"

#include <benchmark/benchmark.h>

#include <malloc.h>

namespace quillon::bench {
namespace {

struct PlanInput {
    RecordList chain;
    RunSettings settings;
    QStringList paths;
};

PlanInput planInput(const benchmark::State& state)
{
    const int inputs = static_cast<int>(state.range(0));
    const int steps = static_cast<int>(state.range(2));
    PlanInput input;
    const QString definition = definitionOfSize(50 * 1024);
    for (int i = 0; i < steps; ++i)
        input.chain.push_back(chainRecordFor(definition));
    input.settings = benchSettings(freshOutputDir(QStringLiteral("plan")), static_cast<int>(state.range(1)));
    for (int i = 0; i < inputs; ++i)
        input.paths.append(QStringLiteral("/in/image-%1.png").arg(i));
    input.settings.inputMode = inputs > 0 ? InputMode::Directory : InputMode::None;
    return input;
}

// The peak resident size is sampled around the plan alone: the heap is
// trimmed first, so memory freed by an earlier iteration does not hide
// what the plan takes.
void BM_PlanOutputs(benchmark::State& state)
{
    const PlanInput input = planInput(state);
    qint64 outputs = 0;
    qint64 added = 0;
    double cpu = 0;
    for (auto _ : state) {
        malloc_trim(0);
        resetPeakRss();
        const qint64 before = currentRss();
        const double cpuBefore = threadCpuSeconds();
        const RunPlan plan = planRun(input.chain, input.settings, input.paths, 42);
        cpu = std::max(cpu, threadCpuSeconds() - cpuBefore);
        added = std::max(added, peakRss() - before);
        outputs = plan.outputCount();
        benchmark::DoNotOptimize(outputs);
    }
    state.counters["outputs"] = static_cast<double>(outputs);
    state.counters["cpu_s"] = cpu;
    state.counters["added_MB"] = static_cast<double>(added) / (1024.0 * 1024.0);
    state.counters["bytes_per_output"] = static_cast<double>(added) / static_cast<double>(std::max<qint64>(outputs, 1));
}

// The --json text of a plan, written a tool run at a time into a sink that
// counts it: what the writing adds to the peak beyond the plan.
void BM_PlanJson(benchmark::State& state)
{
    const PlanInput input = planInput(state);
    const RunPlan plan = planRun(input.chain, input.settings, input.paths, 42);
    qint64 bytes = 0;
    qint64 added = 0;
    for (auto _ : state) {
        bytes = 0;
        malloc_trim(0);
        resetPeakRss();
        const qint64 before = currentRss();
        plan.writeJson([&bytes](const QByteArray& piece) {
            bytes += piece.size();
            return true;
        });
        added = std::max(added, peakRss() - before);
    }
    state.counters["outputs"] = static_cast<double>(plan.outputCount());
    state.counters["json_MB"] = static_cast<double>(bytes) / (1024.0 * 1024.0);
    state.counters["added_MB"] = static_cast<double>(added) / (1024.0 * 1024.0);
}

BENCHMARK(BM_PlanOutputs)
    ->Args({ 1000, 100, 1 })
    ->Args({ 10000, 100, 1 })
    ->Args({ 0, 10000, 2 })
    ->ArgNames({ "inputs", "frames", "steps" })
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);

BENCHMARK(BM_PlanJson)
    ->Args({ 1000, 100, 1 })
    ->Args({ 10000, 100, 1 })
    ->ArgNames({ "inputs", "frames", "steps" })
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);

} // namespace
} // namespace quillon::bench
