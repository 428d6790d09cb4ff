#include "BenchData.h"

#include "BenchSupport.h"
#include "SyntheticLibrary.h"

#include "library/DefinitionReader.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

namespace quillon::bench {

namespace {

// Runs `write` into `dir` unless an earlier run finished it.
template <typename Write> void cached(const QString& dir, Write write)
{
    const QString marker = dir + QStringLiteral("/.complete");
    if (QFile::exists(marker))
        return;
    write();
    QFile done(marker);
    if (done.open(QIODevice::WriteOnly))
        done.close();
}

} // namespace

const QString& libraryDir()
{
    static const QString dir = [] {
        const int fromEnv = qEnvironmentVariableIntValue("QUILLON_BENCH_LIBRARY");
        const int count = fromEnv > 0 ? fromEnv : 10000;
        const QString path = benchDataDir(QStringLiteral("library-%1").arg(count));
        cached(path, [&] { writeSyntheticLibrary(path, count, 20261122); });
        return path;
    }();
    return dir;
}

QString definitionOfSize(qint64 bytes)
{
    const QString dir = benchDataDir(QStringLiteral("definition-%1").arg(bytes));
    const QString path = dir + QStringLiteral("/Definition.ffxml");
    cached(dir, [&] { writeSyntheticDefinition(path, QStringLiteral("Benchmark Filter"), bytes, 4, 7); });
    return path;
}

QString inputsDir(int count)
{
    const QString dir = benchDataDir(QStringLiteral("inputs-%1").arg(count));
    cached(dir, [&] {
        for (int i = 0; i < count; ++i) {
            QFile file(QStringLiteral("%1/input-%2.png").arg(dir).arg(i, 5, 10, QLatin1Char('0')));
            if (file.open(QIODevice::WriteOnly))
                file.write("not an image: the render tool of the benchmarks never reads it\n");
        }
    });
    return dir;
}

void emptyDir(const QString& dir)
{
    QDirIterator entries(dir, QDir::Files | QDir::Hidden | QDir::System);
    while (entries.hasNext())
        QFile::remove(entries.next());
}

QString freshOutputDir(const QString& what)
{
    const QString dir = benchDataDir(QStringLiteral("out-") + what);
    emptyDir(dir);
    return dir;
}

RecordPtr chainRecordFor(const QString& path, int sweeping)
{
    RecordPtr filter = getFilterInfoWithPath(path);
    filter->setString(key::path, path);
    loadXMLInfoWithFilterdata(filter);
    const RecordListPtr components = filter->list(key::Components);
    if (!components || components->empty())
        return filter;
    const int controls = int(components->size()) - 1; // the last is the Variations row
    for (int i = 0; i < sweeping && i < controls; ++i) {
        Record& parameter = *(*components)[size_t(i * controls / std::max(sweeping, 1))];
        parameter.setInteger(key::ACTIVE, 1);
        parameter.setInteger(key::POPSTATE, 1); // sweep
    }
    return filter;
}

QString trueTool()
{
    return QFileInfo::exists(QStringLiteral("/bin/true")) ? QStringLiteral("/bin/true")
                                                          : QStringLiteral("/usr/bin/true");
}

RunSettings benchSettings(const QString& outputPath, int frames)
{
    RunSettings settings;
    settings.toolPath = trueTool();
    settings.outputPath = outputPath;
    settings.inputMode = InputMode::None;
    settings.outputPrefix = QStringLiteral("bench_");
    settings.nameStyle = FrameStyle::FourDigit;
    settings.frameCountText = QString::number(frames);
    settings.format = QStringLiteral("PNG");
    settings.seed = 42;
    return settings;
}

} // namespace quillon::bench
