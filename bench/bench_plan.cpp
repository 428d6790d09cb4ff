// Planning a run: 100,000 outputs (1,000 inputs x 100 frames, one step, and
// 10,000 frames without input over two steps) computed before the first tool
// run. Reported: seconds per plan and the memory the plan adds.

#include "BenchData.h"
#include "BenchSupport.h"

#include "batch/RunPlanner.h"

#include <benchmark/benchmark.h>

namespace quillon::bench {
namespace {

void BM_PlanOutputs(benchmark::State& state)
{
    const int inputs = static_cast<int>(state.range(0));
    const int frames = static_cast<int>(state.range(1));
    const int steps = static_cast<int>(state.range(2));
    const QString definition = definitionOfSize(50 * 1024);
    RecordList chain;
    for (int i = 0; i < steps; ++i)
        chain.push_back(chainRecordFor(definition));
    RunSettings settings = benchSettings(freshOutputDir(QStringLiteral("plan")), frames);
    QStringList paths;
    for (int i = 0; i < inputs; ++i)
        paths.append(QStringLiteral("/in/image-%1.png").arg(i));
    settings.inputMode = inputs > 0 ? InputMode::Directory : InputMode::None;

    qint64 outputs = 0;
    qint64 added = 0;
    for (auto _ : state) {
        resetPeakRss();
        const qint64 before = currentRss();
        const RunPlan plan = planRun(chain, settings, paths, 42);
        added = std::max(added, peakRss() - before);
        outputs = plan.outputCount();
        benchmark::DoNotOptimize(outputs);
    }
    state.counters["outputs"] = static_cast<double>(outputs);
    state.counters["added_MB"] = static_cast<double>(added) / (1024.0 * 1024.0);
}

BENCHMARK(BM_PlanOutputs)
    ->Args({ 1000, 100, 1 })
    ->Args({ 0, 10000, 2 })
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);

} // namespace
} // namespace quillon::bench
