// The benchmark suite's entry point: one QCoreApplication for the whole run
// (the GUI benchmarks drive its event loop), then Google Benchmark.
#include "app/MemoryTuning.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

int main(int argc, char** argv)
{
    quillon::keepFreedMemoryForReuse();
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
