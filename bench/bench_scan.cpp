// Filters directory scan against its ceiling: reading the same bytes and
// parsing them with pugixml on all cores, without building records.
#include "BenchSupport.h"
#include "SyntheticLibrary.h"

#include "library/FilterScan.h"

#include <QCoreApplication>
#include <QFile>
#include <QtConcurrent/QtConcurrentMap>

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <atomic>

using namespace quillon;
using namespace quillon::bench;

namespace {

int libraryCount()
{
    const int fromEnv = qEnvironmentVariableIntValue("QUILLON_BENCH_LIBRARY");
    return fromEnv > 0 ? fromEnv : 10000;
}

const QString& libraryDir()
{
    static const QString dir = [] {
        const int count = libraryCount();
        const QString path = benchDataDir(QStringLiteral("library-%1").arg(count));
        const QString marker = path + QStringLiteral("/.complete");
        if (!QFile::exists(marker)) {
            writeSyntheticLibrary(path, count, 20261122);
            QFile done(marker);
            done.open(QIODevice::WriteOnly);
        }
        return path;
    }();
    return dir;
}

std::atomic<qint64> g_bytes{0};

void readAndParse(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QByteArray bytes = file.readAll();
    g_bytes += bytes.size();
    pugi::xml_document document;
    const pugi::xml_parse_result result = document.load_buffer(bytes.constData(), size_t(bytes.size()));
    benchmark::DoNotOptimize(result.status);
}

// The ceiling alone.
void BM_ScanCeiling(benchmark::State& state)
{
    const QStringList paths = loadFilterNamesAndArrayWithPath(libraryDir());
    for (auto _ : state) {
        g_bytes = 0;
        QtConcurrent::blockingMap(paths, readAndParse);
    }
    state.SetBytesProcessed(state.iterations() * g_bytes.load());
    state.counters["files"] = double(paths.size());
}

// The scan, with the ceiling measured in the same iteration so the ratio
// holds on a noisy machine.
void BM_Scan(benchmark::State& state)
{
    const QStringList paths = loadFilterNamesAndArrayWithPath(libraryDir());
    double scanSeconds = 0;
    double ceilingSeconds = 0;
    qint64 worstPeakOverBaseline = 0;
    qsizetype records = 0;
    for (auto _ : state) {
        auto start = std::chrono::steady_clock::now();
        QtConcurrent::blockingMap(paths, readAndParse);
        ceilingSeconds += secondsSince(start);

        const qint64 baseline = currentRss();
        resetPeakRss();
        start = std::chrono::steady_clock::now();
        RecordList library = scanFilterDirectory(libraryDir());
        const double seconds = secondsSince(start);
        scanSeconds += seconds;
        worstPeakOverBaseline = std::max(worstPeakOverBaseline, peakRss() - baseline);
        records = qsizetype(library.size());
        state.SetIterationTime(seconds);
    }
    state.counters["records"] = double(records);
    state.counters["scan_s"] = scanSeconds / double(state.iterations());
    state.counters["ceiling_s"] = ceilingSeconds / double(state.iterations());
    state.counters["throughput_vs_ceiling"] = ceilingSeconds / scanSeconds;
    state.counters["peak_MB_over_baseline"] = double(worstPeakOverBaseline) / (1024.0 * 1024.0);
}

} // namespace

BENCHMARK(BM_ScanCeiling)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_Scan)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(3);

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    libraryDir();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
