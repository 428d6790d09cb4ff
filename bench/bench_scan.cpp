// Filters directory scan against its ceiling: reading the same bytes and
// parsing them with pugixml on all cores, without building records.
#include "BenchData.h"
#include "BenchSupport.h"

#include "library/FilterScan.h"

#include <QFile>
#include <QtConcurrent/QtConcurrentMap>

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <atomic>

#include <malloc.h>

using namespace quillon;
using namespace quillon::bench;

namespace {

std::atomic<qint64> g_bytes { 0 };

void readAndParse(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    QByteArray bytes = file.readAll();
    g_bytes += bytes.size();
    pugi::xml_document document;
    const pugi::xml_parse_result result = document.load_buffer_inplace(bytes.data(), size_t(bytes.size()));
    benchmark::DoNotOptimize(result.status);
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
    int iteration = 0;
    const auto ceiling = [&] {
        g_bytes = 0;
        const auto start = std::chrono::steady_clock::now();
        QtConcurrent::blockingMap(paths, readAndParse);
        ceilingSeconds += secondsSince(start);
    };
    for (auto _ : state) {
        // Every other iteration the ceiling goes second, so neither side
        // always finds the caches the other left.
        const bool ceilingFirst = iteration++ % 2 == 0;
        if (ceilingFirst)
            ceiling();

        // Memory the allocator kept from earlier work goes back first, so
        // the peak shows all the scan needs, reused memory included.
        malloc_trim(0);
        const qint64 baseline = currentRss();
        resetPeakRss();
        const auto start = std::chrono::steady_clock::now();
        RecordList library = scanFilterDirectory(libraryDir());
        const double seconds = secondsSince(start);
        scanSeconds += seconds;
        worstPeakOverBaseline = std::max(worstPeakOverBaseline, peakRss() - baseline);
        records = qsizetype(library.size());
        state.SetIterationTime(seconds);
        library.clear();

        if (!ceilingFirst)
            ceiling();
    }
    state.counters["records"] = double(records);
    state.counters["files"] = double(paths.size());
    state.counters["MB"] = double(g_bytes.load()) / (1024.0 * 1024.0);
    state.counters["scan_s"] = scanSeconds / double(state.iterations());
    state.counters["ceiling_s"] = ceilingSeconds / double(state.iterations());
    state.counters["throughput_vs_ceiling"] = ceilingSeconds / scanSeconds;
    state.counters["peak_MB_over_baseline"] = double(worstPeakOverBaseline) / (1024.0 * 1024.0);
}

} // namespace

BENCHMARK(BM_Scan)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(4);
