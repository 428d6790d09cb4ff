// A cluster bundle's costs that grow with its size: one element getting
// ready to render (its part of the plan read, the bundle checked) in a bundle
// of 100,000 inputs, and the collect of 10,000 report parts. Reported:
// milliseconds, and the memory an element adds to the process.

#include "BenchData.h"
#include "BenchSupport.h"

#include "batch/RunPlanner.h"
#include "cluster/BundleWriter.h"
#include "cluster/ClusterBundle.h"
#include "cluster/Collector.h"
#include "cluster/PartRunner.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <benchmark/benchmark.h>

#include <malloc.h>

namespace quillon::bench {
namespace {

// A bundle of `inputs` inputs, one frame each, one step; written once per
// size and reused.
QString bundleOf(int inputs, RunPlan* planned = nullptr)
{
    const QString directory = freshOutputDir(QStringLiteral("bundle-%1").arg(inputs)) + QStringLiteral("/b");
    BundleRequest request;
    request.directory = directory;
    request.chain.push_back(chainRecordFor(definitionOfSize(50 * 1024)));
    request.settings = benchSettings(freshOutputDir(QStringLiteral("bundle-out-%1").arg(inputs)), 1);
    request.settings.inputMode = InputMode::Directory;
    QStringList paths;
    for (int i = 0; i < inputs; ++i)
        paths.append(QStringLiteral("/in/image-%1.png").arg(i));
    request.plan = planRun(request.chain, request.settings, paths, 42);
    request.cliPath = QStringLiteral("/usr/bin/quillon-cli");
    QString error;
    if (!writeClusterBundle(request, &error))
        qFatal("bundle: %s", qPrintable(error));
    if (planned)
        *planned = std::move(request.plan);
    return directory;
}

void BM_ClusterElement(benchmark::State& state)
{
    const int inputs = static_cast<int>(state.range(0));
    const QString bundle = bundleOf(inputs);
    int element = 0;
    double slowest = 0;
    qint64 added = 0;
    for (auto _ : state) {
        malloc_trim(0);
        resetPeakRss();
        const qint64 before = currentRss();
        const auto start = std::chrono::steady_clock::now();
        ClusterPart part;
        QString error;
        if (!prepareClusterPart(bundle, element, &part, &error))
            state.SkipWithError(qPrintable(error));
        slowest = std::max(slowest, secondsSince(start));
        added = std::max(added, peakRss() - before);
        element = (element + 7919) % inputs;
    }
    state.counters["slowest_ms"] = slowest * 1000.0;
    state.counters["added_MB"] = static_cast<double>(added) / (1024.0 * 1024.0);
}

// Every element reported (all outputs written), then one collect.
void BM_ClusterCollect(benchmark::State& state)
{
    const int inputs = static_cast<int>(state.range(0));
    RunPlan plan;
    const QString bundle = bundleOf(inputs, &plan);
    for (qsizetype r = 0; r < plan.toolRuns.size(); ++r) {
        QJsonObject outputs;
        for (qsizetype t = 0; t < plan.toolRuns.at(r).tasks.size(); ++t)
            outputs.insert(plan.toolRuns.at(r).resultPath(t), QStringLiteral("written"));
        const QJsonObject part { { QStringLiteral("element"), r }, { QStringLiteral("exitCode"), 0 },
            { QStringLiteral("startedMs"), 1000 + r }, { QStringLiteral("endedMs"), 2000 + r },
            { QStringLiteral("outputs"), outputs },
            { QStringLiteral("toolRuns"),
                QJsonArray { QJsonObject { { QStringLiteral("index"), r }, { QStringLiteral("end"), "exited" },
                    { QStringLiteral("exitCode"), 0 } } } } };
        QFile file(QDir(bundle).filePath(QStringLiteral("parts/part-%1.json").arg(r)));
        if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(part).toJson()) < 0)
            qFatal("cannot write %s", qPrintable(file.fileName()));
    }
    qsizetype written = 0;
    for (auto _ : state) {
        CollectOutcome outcome;
        QString error;
        if (!collectClusterParts(bundle, &outcome, &error))
            state.SkipWithError(qPrintable(error));
        written = outcome.written;
    }
    state.counters["written"] = static_cast<double>(written);
}

BENCHMARK(BM_ClusterElement)->Arg(100000)->ArgName("inputs")->Unit(benchmark::kMillisecond)->Iterations(20);
BENCHMARK(BM_ClusterCollect)->Arg(10000)->ArgName("parts")->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace
} // namespace quillon::bench
