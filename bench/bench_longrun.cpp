// Memory of a long run: a run over 10,000 inputs, sampled as each source is
// shown. Past the first inputs the heap may only grow by the entries of the
// lists a run keeps (outputs, their names for later steps, interim files).
#include "BenchData.h"
#include "BenchSupport.h"

#include "batch/BatchController.h"
#include "batch/BatchDisplay.h"

#include <QEventLoop>

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <vector>

using namespace quillon;
using namespace quillon::bench;

namespace {

qint64 heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return qint64(info.uordblks + info.hblkhd);
}

struct Sample {
    qint64 heap = 0;
    qint64 rss = 0;
};

// Samples the heap every `every` sources.
class SamplingDisplay final : public BatchDisplay {
public:
    explicit SamplingDisplay(int every)
        : m_every(every)
    {
    }
    void showErrorAlert(const QString& message) override { alert = message; }
    void beginProgressSheet() override { }
    void endProgressSheet() override { }
    void showFilterInfo(const QString&, const QString&) override { }
    void showSourceInfo(const QString& source) override
    {
        this->source = source;
        if (++m_sources % m_every == 0)
            samples.push_back({ heapInUse(), currentRss() });
    }
    void showRenderInfo(const QString&) override { }

    QString alert, source;
    std::vector<Sample> samples;

private:
    int m_every;
    int m_sources = 0;
};

void BM_LongRunMemory(benchmark::State& state)
{
    const int inputs = int(state.range(0));
    const int every = inputs / 10;
    const QString in = inputsDir(inputs);
    const QString out = freshOutputDir(QStringLiteral("longrun"));
    RunSettings settings = benchSettings(out, 1);
    settings.inputMode = InputMode::Directory;
    settings.sourcePath = in;
    const QString definition = definitionOfSize(50 * 1024);

    SamplingDisplay display(every);
    bool ok = true;
    Sample before;
    Sample after;
    for (auto _ : state) {
        BatchController controller(&display);
        controller.setStandardOutput([](const QString&) {});
        QEventLoop loop;
        QObject::connect(&controller, &BatchController::runFinished, &loop, &QEventLoop::quit);
        before = { heapInUse(), currentRss() };
        const auto start = std::chrono::steady_clock::now();
        if (controller.startBatchWithSender({ chainRecordFor(definition) }, settings))
            loop.exec();
        else
            ok = false;
        state.SetIterationTime(secondsSince(start));
        after = { heapInUse(), currentRss() };
    }
    emptyDir(out);
    if (!ok || display.samples.size() < 10) {
        state.SkipWithError(
            ("the run did not go through every input: " + display.alert.toStdString()).c_str());
        return;
    }
    // From the first tenth of the inputs to the last.
    const Sample& first = display.samples.front();
    const Sample& last = display.samples.back();
    const double span = double(inputs - every);
    state.counters["heap_MB_at_first_tenth"] = double(first.heap - before.heap) / (1024.0 * 1024.0);
    state.counters["heap_MB_at_end"] = double(last.heap - before.heap) / (1024.0 * 1024.0);
    state.counters["heap_bytes_per_input"] = double(last.heap - first.heap) / span;
    state.counters["rss_bytes_per_input"] = double(last.rss - first.rss) / span;
    state.counters["heap_MB_after_run"] = double(after.heap - before.heap) / (1024.0 * 1024.0);
}

} // namespace

BENCHMARK(BM_LongRunMemory)
    ->ArgName("inputs")
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1);
