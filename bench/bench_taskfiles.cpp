// Task files: one control file with its run files, against the ceiling of
// parsing and serialising the definition once per task and writing the
// result into a new file renamed over its name (no flush). Measured at two sizes
// so the cost per task (the slope) shows whether the writer stays linear.
#include "BenchData.h"
#include "BenchSupport.h"

#include "run/SafeFile.h"
#include "step/FilterProcessObject.h"
#include "step/XmlFiles.h"

#include <QFile>

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <map>
#include <string>

#include <fcntl.h>
#include <unistd.h>
#include <utility>
#include <vector>

using namespace quillon;
using namespace quillon::bench;

namespace {

constexpr qint64 kDefinitionBytes = 1024 * 1024;

class StringWriter final : public pugi::xml_writer {
public:
    std::string text;
    void write(const void* data, size_t size) override { text.append(static_cast<const char*>(data), size); }
};

// The ceiling of one task: read the definition, parse it, serialise it,
// write it to a new file and rename that over `target` (no flush).
size_t parseSerialiseAndWrite(const QString& path, const QByteArray& target)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    QByteArray bytes = file.readAll();
    pugi::xml_document document;
    document.load_buffer_inplace(bytes.data(), size_t(bytes.size()));
    StringWriter writer;
    writer.text.reserve(size_t(bytes.size()) + size_t(bytes.size()) / 4);
    document.save(writer, "  ", pugi::format_indent, pugi::encoding_utf8);
    const QByteArray temporary = target + ".tmp";
    const int fd = ::open(temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
    if (fd < 0)
        return 0;
    const bool whole = ::write(fd, writer.text.data(), writer.text.size()) == ssize_t(writer.text.size());
    ::close(fd);
    if (!whole || ::rename(temporary.constData(), target.constData()) != 0)
        return 0;
    return writer.text.size();
}

// Seconds per task of the previous size of each series, for the slope.
struct SizePoint {
    qint64 tasks = 0;
    double seconds = 0;
};
std::map<std::string, SizePoint> g_previous;

// One control file of `frames` frames (times `maps` map kinds when maps > 0)
// over the 1 MB definition, input path given as a one-filter chain has it.
void runTaskFiles(benchmark::State& state, const std::vector<std::pair<std::string, std::string>>& seriesOf,
    int frames, int maps, bool overwrite = false)
{
    const QString definition = definitionOfSize(kDefinitionBytes);
    const QString out = freshOutputDir(QStringLiteral("taskfiles"));
    const QString ceilingOut = freshOutputDir(QStringLiteral("taskfiles-ceiling"));
    SilentStepParent parent(benchSettings(out, frames));
    parent.settings.inputMode = InputMode::File;
    parent.settings.sourcePath = inputsDir(1) + QStringLiteral("/input-00000.png");
    RecordPtr filter = chainRecordFor(definition);
    QVariantList chosen;
    for (int m = 0; m < maps; ++m)
        chosen.append(QVariant::fromValue<qint64>(m));
    filter->set(key::Maps, chosen);
    filter->setBoolean(key::UseMaps, maps > 0);
    const qint64 tasks = qint64(frames) * std::max(maps, 1);

    double quillonCpu = 0;
    const auto writeControlFile = [&] {
        filterProcessObject step(filter, { parent.settings.sourcePath }, {}, true, true, 0, &parent,
            { QStringLiteral("input-00000") });
        step.outPath = out;
        const auto start = std::chrono::steady_clock::now();
        const double cpuStart = threadCpuSeconds();
        const QString control
            = step.createBatchFileWithFilepath(parent.settings.sourcePath, QStringLiteral("input-00000"));
        const double seconds = secondsSince(start);
        quillonCpu += threadCpuSeconds() - cpuStart;
        return std::make_pair(seconds, !control.isEmpty() && step.filesToRemove.size() == tasks + 1);
    };
    // Overwriting: the run files of an earlier control file are in place,
    // as for the second input of a run.
    const auto ceilingFile
        = [&](qint64 t) { return QFile::encodeName(ceilingOut + QStringLiteral("/run-%1.ffxml").arg(t)); };
    if (overwrite) {
        writeControlFile();
        for (qint64 t = 0; t < tasks; ++t)
            parseSerialiseAndWrite(definition, ceilingFile(t));
    }
    quillonCpu = 0;
    double ceilingCpu = 0;

    double quillonSeconds = 0;
    double ceilingSeconds = 0;
    bool written = true;
    for (auto _ : state) {
        // The ceiling's files meet what the control file's meet: a folder
        // emptied before, or the files of the round before in place.
        if (!overwrite)
            emptyDir(ceilingOut);
        auto start = std::chrono::steady_clock::now();
        const double cpuStart = threadCpuSeconds();
        size_t bytes = 0;
        for (qint64 t = 0; t < tasks; ++t)
            bytes += parseSerialiseAndWrite(definition, ceilingFile(t));
        benchmark::DoNotOptimize(bytes);
        written = written && bytes > 0;
        ceilingSeconds += secondsSince(start);
        ceilingCpu += threadCpuSeconds() - cpuStart;

        // A run's first control file goes into an output folder without
        // task files.
        if (!overwrite)
            emptyDir(out);
        const auto [seconds, ok] = writeControlFile();
        written = written && ok;
        quillonSeconds += seconds;
        state.SetIterationTime(seconds);
    }
    emptyDir(out);
    emptyDir(ceilingOut);
    if (!written)
        state.SkipWithError("the control file or a ceiling file was not written");

    const double n = double(state.iterations());
    const double perTask = quillonSeconds / n / double(tasks);
    state.counters["tasks"] = double(tasks);
    state.counters["quillon_ms_per_task"] = perTask * 1e3;
    state.counters["ceiling_ms_per_task"] = ceilingSeconds / n / double(tasks) * 1e3;
    state.counters["time_vs_ceiling"] = quillonSeconds / ceilingSeconds;
    state.counters["cpu_vs_ceiling"] = quillonCpu / ceilingCpu;
    for (const auto& [series, label] : seriesOf) {
        auto previous = g_previous.find(series);
        if (previous != g_previous.end() && previous->second.tasks != tasks) {
            const SizePoint& p = previous->second;
            // The marginal cost of a task between the two sizes, and how it
            // compares with the average cost at the smaller size (1 = linear).
            const double slope = (quillonSeconds / n - p.seconds) / double(tasks - p.tasks);
            state.counters["slope_" + label + "_ms_per_task"] = slope * 1e3;
            state.counters["slope_" + label + "_vs_small"] = slope / (p.seconds / double(p.tasks));
        }
        g_previous[series] = { tasks, quillonSeconds / n };
    }
}

void BM_TaskFiles(benchmark::State& state)
{
    runTaskFiles(state, { { "frames", "frames" } }, int(state.range(0)), 0);
}

void BM_TaskFilesOverwrite(benchmark::State& state)
{
    runTaskFiles(state, {}, int(state.range(0)), 0, true);
}

void BM_TaskFilesMaps(benchmark::State& state)
{
    const int frames = int(state.range(0));
    const int maps = int(state.range(1));
    // Along frames at ten maps, along maps at 500 frames.
    runTaskFiles(state,
        { { "maps-" + std::to_string(maps), "frames" }, { "frames-" + std::to_string(frames), "maps" } },
        frames, maps);
}

} // namespace

BENCHMARK(BM_TaskFiles)
    ->ArgName("frames")
    ->Arg(1000)
    ->Arg(2000)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(2);
BENCHMARK(BM_TaskFilesOverwrite)
    ->ArgName("frames")
    ->Arg(2000)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1);
BENCHMARK(BM_TaskFilesMaps)
    ->ArgNames({ "frames", "maps" })
    ->Args({ 250, 10 })
    ->Args({ 500, 5 })
    ->Args({ 500, 10 })
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1);

namespace {

// Where a run file's time goes, piece by piece, over the same definition.
void BM_RunFilePieces(benchmark::State& state)
{
    const QString definition = definitionOfSize(kDefinitionBytes);
    const QString out = freshOutputDir(QStringLiteral("pieces"));
    qint64 index = 0;
    double load = 0, serialise = 0, write = 0, ceiling = 0;
    for (auto _ : state) {
        auto start = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(parseSerialiseAndWrite(
            definition, QFile::encodeName(out + QStringLiteral("/ceiling-%1.ffxml").arg(index))));
        ceiling += secondsSince(start);

        start = std::chrono::steady_clock::now();
        pugi::xml_document document;
        QByteArray storage;
        loadXmlFile(document, definition, nullptr, &storage);
        const double loaded = secondsSince(start);
        start = std::chrono::steady_clock::now();
        const QByteArray bytes = serializeXml(document, storage.size() + storage.size() / 4 + 4096);
        const double serialised = secondsSince(start);
        start = std::chrono::steady_clock::now();
        writeFileAtomically(out + QStringLiteral("/bth-run-%1.ffxml").arg(index++), bytes);
        const double written = secondsSince(start);
        load += loaded;
        serialise += serialised;
        write += written;
        state.SetIterationTime(loaded + serialised + written);
    }
    emptyDir(out);
    const double n = double(state.iterations());
    state.counters["ceiling_ms"] = ceiling / n * 1e3;
    state.counters["load_ms"] = load / n * 1e3;
    state.counters["serialise_ms"] = serialise / n * 1e3;
    state.counters["write_ms"] = write / n * 1e3;
}

} // namespace

BENCHMARK(BM_RunFilePieces)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(200);
