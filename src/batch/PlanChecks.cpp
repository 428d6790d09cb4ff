#include "batch/PlanChecks.h"

#include "batch/InputListing.h"
#include "run/RunSettings.h"
#include "run/SafeFile.h"
#include "step/XmlFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <cerrno>

#include <dirent.h>

namespace quillon {

namespace {

bool exists(const QString& path)
{
    return QFileInfo(path).exists() || QFileInfo(path).isSymLink();
}

// The names of one directory's entries (links, broken or not, included),
// listed once. A path in that directory exists when its name is listed; a
// path elsewhere, or any path when the listing failed, is looked at itself.
class DirectoryEntries final {
public:
    explicit DirectoryEntries(const QString& directory)
    {
        if (directory.isEmpty())
            return;
        m_prefix = QDir::cleanPath(directory) + QLatin1Char('/');
        DIR* dir = ::opendir(QFile::encodeName(directory).constData());
        if (!dir) {
            // A directory that is not there yet holds nothing.
            m_listed = errno == ENOENT;
            return;
        }
        while (const dirent* entry = ::readdir(dir))
            m_names.insert(QFile::decodeName(entry->d_name));
        ::closedir(dir);
        m_listed = true;
    }

    bool exists(const QString& path) const
    {
        if (!m_listed || !path.startsWith(m_prefix) || path.indexOf(QLatin1Char('/'), m_prefix.size()) >= 0)
            return quillon::exists(path);
        return m_names.contains(path.mid(m_prefix.size()));
    }

private:
    QString m_prefix;
    QSet<QString> m_names;
    bool m_listed = false;
};

// A described check message, with the path it is about on a line of its own.
QString withPath(const QString& message, const QString& path)
{
    return path.isEmpty() ? message : message + QLatin1Char('\n') + path;
}

} // namespace

QString settingsRefusal(const RecordList& chain, const RunSettings& settings, bool outputWillBeMade)
{
    if (chain.empty())
        return QStringLiteral("No filters in the queue");
    if (settings.toolPath.isEmpty() || !QFileInfo::exists(settings.toolPath))
        return withPath(QStringLiteral("No Batchrender tool selected"), settings.toolPath);
    const QFileInfo output(settings.outputPath);
    const bool made = outputWillBeMade && !settings.outputPath.isEmpty() && !output.exists() && !output.isSymLink();
    if (!made && (settings.outputPath.isEmpty() || !output.exists() || !output.isDir()))
        return withPath(QStringLiteral("No output path selected"), settings.outputPath);
    // Output names are the prefix followed by more name: a slash would put
    // them in another directory.
    if (settings.outputPrefix.contains(QLatin1Char('/')) || settings.outputPrefix.contains(QChar(0)))
        return QStringLiteral("The file name prefix cannot contain a slash");
    return {};
}

QString inputRefusal(const RunSettings& settings)
{
    const QString& source = settings.sourcePath;
    switch (settings.inputMode) {
    case InputMode::File:
        if (source.isEmpty() || !QFileInfo::exists(source))
            return QStringLiteral("Input file does not exist");
        break;
    case InputMode::Directory: {
        const QFileInfo directory(source);
        if (source.isEmpty() || !directory.exists() || !directory.isDir())
            return QStringLiteral("Input directory does not exist");
        if (!directory.isReadable() || !directory.isExecutable())
            return QStringLiteral("Error scanning input directory");
        if (!hasAnyEntry(source))
            return QStringLiteral("Input directory empty");
        break;
    }
    case InputMode::None:
        if (settings.outputPrefix.isEmpty())
            return QStringLiteral("No filename gives (file prefix when running without input)");
        break;
    }
    if (const auto frames = settings.frameCountReal(); frames && *frames < 0)
        return QStringLiteral("Number of frames must not be negative");
    if (const qint64 limit = frameLimit(settings.nameStyle); settings.frameCount() > limit)
        return QStringLiteral("Number of frames must not be more than %1 with %2 frame names")
            .arg(limit)
            .arg(frameStyleName(settings.nameStyle));
    return {};
}

QString presetRefusal(const RecordList& chain, qint64 presetIndex)
{
    QSet<QString> checked;
    for (size_t i = 0; i < chain.size(); ++i) {
        const RecordPtr& record = chain[i];
        const QString path = record ? record->string(key::path) : QString();
        if (path.isEmpty() || checked.contains(path))
            continue;
        checked.insert(path);
        pugi::xml_document document;
        // An unreadable definition fails its tool runs as it always did.
        if (!loadXmlFile(document, path))
            continue;
        const pugi::xml_node presets = document.document_element().child("Presets");
        qint64 count = 0;
        for (pugi::xml_node preset = presets.first_child(); preset; preset = preset.next_sibling())
            count += preset.type() == pugi::node_element ? 1 : 0;
        if (presetIndex < 0 || presetIndex >= count)
            return QStringLiteral("The filter %1 (step %2) has no preset at index %3: it has %4")
                .arg(record->string(key::name))
                .arg(i + 1)
                .arg(presetIndex)
                .arg(count == 1 ? QStringLiteral("1 preset") : QStringLiteral("%1 presets").arg(count));
    }
    return {};
}

QString nameSome(const QStringList& paths)
{
    constexpr qsizetype kNamed = 5;
    QStringList names;
    for (qsizetype i = 0; i < paths.size() && i < kNamed; ++i)
        names.append(QFileInfo(paths.at(i)).fileName());
    QString text = names.join(QStringLiteral(", "));
    if (paths.size() > kNamed)
        text += QStringLiteral(" and %1 more").arg(paths.size() - kNamed);
    return text;
}

QStringList taskFileNames(const RunPlan& plan)
{
    qint64 largest = -1;
    for (const PlannedToolRun& run : plan.toolRuns) {
        for (const PlannedTask& task : run.tasks)
            largest = std::max(largest, task.index);
    }
    QStringList names { QStringLiteral("controlfile.xml") };
    for (qint64 index = 0; index <= largest; ++index)
        names.append(QStringLiteral("bth-run-%1.ffxml").arg(index));
    return names;
}

OutputsNow outputsNow(const RunPlan& plan, const QString& outputDir, const std::function<bool()>& stopped)
{
    OutputsNow now;
    now.collisions = plan.collisions(stopped);
    if (stopped && stopped()) {
        now.stopped = true;
        return now;
    }
    const DirectoryEntries entries(outputDir);
    if (!outputDir.isEmpty()) {
        const QDir directory(outputDir);
        for (const QString& name : taskFileNames(plan)) {
            if (entries.exists(directory.filePath(name)))
                now.takenTaskFiles.append(name);
        }
    }
    for (const PlannedToolRun& run : plan.toolRuns) {
        if (stopped && stopped()) {
            now.stopped = true;
            return now;
        }
        const bool final = run.step == plan.steps - 1;
        for (qsizetype t = 0; t < run.tasks.size(); ++t) {
            const QString path = run.resultPath(t);
            if (!entries.exists(path))
                continue;
            if (!final) {
                now.takenInterims.append(path);
                continue;
            }
            now.existingFinals.append(path);
            // The tool opens its output name as it finds it: a link would be
            // written through, a pipe would block it, a directory fail it.
            const FileIdentity identity = regularFileIdentity(path);
            if (identity.isValid())
                now.finalIdentities.insert(path, identity);
            else
                now.unusableFinals.append(path);
        }
    }
    return now;
}

QString planRefusal(const OutputsNow& now)
{
    if (!now.collisions.isEmpty())
        return QStringLiteral("Outputs would overwrite each other: ") + now.collisions.join(QStringLiteral(", "));
    // The task files are written over whatever has their names and deleted
    // at the end, like interim outputs. A leftover of a killed run is gone
    // by now: the journal's clean-up comes before the plan.
    const QStringList taken = now.takenTaskFiles + now.takenInterims;
    if (!taken.isEmpty()) {
        return QStringLiteral("The output directory holds files this run would overwrite and delete: %1. "
                              "Move them or choose another directory.")
            .arg(nameSome(taken));
    }
    if (!now.unusableFinals.isEmpty()) {
        return QStringLiteral("The output directory holds links, folders or other entries that are not "
                              "files at output names: %1. Move them or choose another directory.")
            .arg(nameSome(now.unusableFinals));
    }
    return {};
}

QString outputInsideInputWarning(const RunSettings& settings)
{
    if (settings.inputMode != InputMode::Directory || settings.sourcePath.isEmpty())
        return {};
    const QString input = QFileInfo(settings.sourcePath).canonicalFilePath();
    const QString output = QFileInfo(settings.outputPath).canonicalFilePath();
    if (input.isEmpty() || output.isEmpty())
        return {};
    // A folder under the input directory is left out of its listing; the
    // input directory itself cannot be.
    if (output != input)
        return {};
    return QStringLiteral("The output directory is the input directory: the images this run makes "
                          "will be inputs of the next run.");
}

} // namespace quillon
