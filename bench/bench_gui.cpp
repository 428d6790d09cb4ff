// GUI responsiveness: the largest gap between the ticks of a 1 ms timer on
// the controller's (GUI) thread while the library is scanned, while a
// 2,000-frame run writes its task files and while a 10,000-frame run goes
// through two steps (10,001 tool runs). A gap is how long the event loop
// could not serve the window.
#include "BenchData.h"
#include "BenchSupport.h"

#include "batch/BatchController.h"
#include "batch/BatchDisplay.h"
#include "library/FilterScan.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <algorithm>

#include <time.h>

using namespace quillon;
using namespace quillon::bench;

namespace {

qint64 threadCpuNanoseconds()
{
    timespec now {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return qint64(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
}

// Ticks every millisecond and keeps the largest gap between two ticks. It
// also keeps the largest CPU time the thread spent within one gap: a gap
// with little CPU time is the thread waiting for a processor (a loaded
// machine), one full of it is work that kept the event loop away.
class StallProbe final {
public:
    StallProbe()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(1);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { tick(); });
    }
    void start()
    {
        m_clock.start();
        m_last = 0;
        m_lastCpu = threadCpuNanoseconds();
        m_timer.start();
    }
    void stop()
    {
        tick();
        m_timer.stop();
    }
    double largestGapMs() const { return double(m_largest) / 1e6; }
    double largestBusyMs() const { return double(m_largestBusy) / 1e6; }
    double largestGapAtS() const { return double(m_largestAt) / 1e9; }
    double ticks() const { return double(m_ticks); }
    // Gaps longer than the frame budget of a 60 Hz display.
    double stalls() const { return double(m_stalls); }

private:
    void tick()
    {
        const qint64 now = m_clock.nsecsElapsed();
        const qint64 cpu = threadCpuNanoseconds();
        const qint64 gap = now - m_last;
        m_largestBusy = std::max(m_largestBusy, cpu - m_lastCpu);
        m_lastCpu = cpu;
        if (gap > m_largest) {
            m_largest = gap;
            m_largestAt = now;
        }
        if (gap > 16'000'000)
            ++m_stalls;
        m_last = now;
        ++m_ticks;
    }

    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_last = 0;
    qint64 m_lastCpu = 0;
    qint64 m_largestBusy = 0;
    qint64 m_largest = 0;
    qint64 m_largestAt = 0;
    qint64 m_ticks = 0;
    qint64 m_stalls = 0;
};

void reportProbe(benchmark::State& state, const StallProbe& probe, double seconds)
{
    state.counters["largest_gap_ms"] = probe.largestGapMs();
    state.counters["largest_gap_at_s"] = probe.largestGapAtS();
    state.counters["largest_busy_ms"] = probe.largestBusyMs();
    state.counters["gaps_over_16ms"] = probe.stalls();
    state.counters["ticks_per_s"] = probe.ticks() / seconds;
}

// What the window does with a scan's result: keeps it, dropping the last one.
void BM_GuiWhileScanning(benchmark::State& state)
{
    const QString dir = libraryDir();
    FilterFetcher fetcher;
    RecordList library;
    StallProbe probe;
    double seconds = 0;
    for (auto _ : state) {
        QEventLoop loop;
        const auto connection
            = QObject::connect(&fetcher, &FilterFetcher::fetched, &loop, [&](const RecordList& filters) {
                  library = filters;
                  loop.quit();
              });
        const auto start = std::chrono::steady_clock::now();
        probe.start();
        fetcher.launch(dir);
        loop.exec();
        probe.stop();
        seconds = secondsSince(start);
        state.SetIterationTime(seconds);
        QObject::disconnect(connection);
    }
    state.counters["records"] = double(library.size());
    reportProbe(state, probe, seconds);
}

// A display like the progress sheet: keeps the latest texts.
class SheetDisplay final : public BatchDisplay {
public:
    void showErrorAlert(const QString& message) override { alert = message; }
    void beginProgressSheet() override { }
    void endProgressSheet() override { }
    void showFilterInfo(const QString& name, const QString& author) override { filter = name + author; }
    void showSourceInfo(const QString& source) override { this->source = source; }
    void showRenderInfo(const QString& info) override { render = info; }
    int reportIntervalMs() const override { return 16; }

    QString alert, filter, source, render;
};

void BM_GuiWhileRunning(benchmark::State& state)
{
    const int frames = int(state.range(0));
    const int steps = int(state.range(1));
    const QString definition = definitionOfSize(state.range(2) * 1024);
    const QString out = freshOutputDir(QStringLiteral("gui"));
    RunSettings settings = benchSettings(out, frames);
    settings.inputMode = InputMode::File;
    settings.sourcePath = inputsDir(1) + QStringLiteral("/input-00000.png");

    SheetDisplay display;
    BatchController controller(&display);
    controller.setStandardOutput([](const QString&) {});
    StallProbe probe;
    double seconds = 0;
    double startSeconds = 0;
    bool ok = true;
    for (auto _ : state) {
        QEventLoop loop;
        QObject::connect(&controller, &BatchController::runFinished, &loop, &QEventLoop::quit);
        // A run refused once planned never finishes: its alert is reported.
        QObject::connect(&controller, &BatchController::runRefused, &loop, [&] {
            ok = false;
            loop.quit();
        });
        RecordList chain;
        for (int i = 0; i < steps; ++i)
            chain.push_back(chainRecordFor(definition));
        // Start checks and plans the run on this thread before the worker
        // begins: timed on its own, the probe then watches the run.
        const auto start = std::chrono::steady_clock::now();
        ok = controller.startBatchWithSender(chain, settings) && ok;
        startSeconds = secondsSince(start);
        probe.start();
        if (controller.isRunning())
            loop.exec();
        probe.stop();
        seconds = secondsSince(start);
        state.SetIterationTime(seconds);
    }
    emptyDir(out);
    if (!ok)
        state.SkipWithError(("the run did not start: " + display.alert.toStdString()).c_str());
    reportProbe(state, probe, seconds);
    state.counters["start_ms"] = startSeconds * 1e3;
}

} // namespace

BENCHMARK(BM_GuiWhileScanning)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(2);
BENCHMARK(BM_GuiWhileRunning)
    ->ArgNames({ "frames", "steps", "definition_kb" })
    ->Args({ 2000, 1, 1024 })
    ->Args({ 9999, 2, 50 }) // the most frames four-digit names allow
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1);
