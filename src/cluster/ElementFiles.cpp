#include "cluster/ElementFiles.h"

#include "cluster/ClusterBundle.h"
#include "cluster/ElementPlan.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace quillon {

namespace {

constexpr qint64 kOffsetWidth = 20; // digits of an offset, then a newline

qint64 headerSize(const QByteArray& fingerprint)
{
    return fingerprint.size() + 1;
}

bool addFile(QCryptographicHash& hash, const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    return hash.addData(&file);
}

// Reads one tool run of an element's line; false when one of its values
// names no parameter of its step.
bool toolRunFromJson(const QJsonObject& object, const QStringList& names, PlannedToolRun* read)
{
    PlannedToolRun run;
    run.step = object.value(QStringLiteral("step")).toInt();
    run.input = object.value(QStringLiteral("input")).toString();
    run.baseName = object.value(QStringLiteral("baseName")).toString();
    const QJsonArray tasks = object.value(QStringLiteral("tasks")).toArray();
    qint32 firstMap = -1;
    for (const QJsonValue& value : tasks) {
        const QJsonObject entry = value.toObject();
        PlannedTask task;
        task.index = entry.value(QStringLiteral("index")).toInteger();
        task.map = entry.value(QStringLiteral("map")).toInt(-1);
        if (run.tasks.isEmpty())
            firstMap = task.map;
        // A frame's maps begin with the first map kind chosen: that task
        // carries the frame's values, the others reuse them.
        task.carriesValues = task.map < 0 || task.map == firstMap;
        task.valuesKnown = true;
        task.skipped = entry.value(QStringLiteral("skipped")).toBool();
        ParameterValues values;
        const QJsonObject named = entry.value(QStringLiteral("values")).toObject();
        for (auto it = named.begin(); it != named.end(); ++it) {
            const qsizetype index = names.indexOf(it.key());
            if (index < 0)
                return false;
            values.append({ index, it.value().toVariant() });
        }
        std::sort(values.begin(), values.end(),
            [](const ParameterValue& a, const ParameterValue& b) { return a.index < b.index; });
        run.givenPaths.append(entry.value(QStringLiteral("result")).toString());
        run.appendTask(task, values);
    }
    *read = std::move(run);
    return true;
}

} // namespace

QByteArray bundleFingerprint(const QString& directory, const RecordList& chain)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const QDir dir(directory);
    for (const QString& name : { bundle::kChain, bundle::kSettings })
        hash.addData(addFile(hash, dir.filePath(name)) ? "\n" : "missing\n");
    for (const RecordPtr& filter : chain) {
        const QString path = filter ? filter->string(key::path) : QString();
        hash.addData(path.toUtf8() + '\0');
        hash.addData(addFile(hash, path) ? "\n" : "missing\n");
    }
    return hash.result().toHex();
}

bool writeElementFiles(const QString& directory, const RunPlan& plan, const QList<QList<qsizetype>>& elements,
    const QByteArray& fingerprint, QString* error)
{
    QByteArray lines;
    QByteArray offsets = fingerprint + '\n';
    for (const QList<qsizetype>& runs : elements) {
        offsets += QByteArray::number(lines.size()).rightJustified(kOffsetWidth, '0') + '\n';
        QJsonArray toolRuns;
        for (const qsizetype r : runs) {
            QJsonObject run = plan.toolRunJson(r);
            run.insert(QStringLiteral("planIndex"), r);
            toolRuns.append(run);
        }
        lines += QJsonDocument(QJsonObject { { QStringLiteral("toolRuns"), toolRuns } })
                     .toJson(QJsonDocument::Compact)
            + '\n';
    }
    offsets += QByteArray::number(lines.size()).rightJustified(kOffsetWidth, '0') + '\n';
    const QDir dir(directory);
    return saveBundleFile(dir.filePath(bundle::kElements), lines, error)
        && saveBundleFile(dir.filePath(bundle::kElementIndex), offsets, error);
}

bool readElementPlan(
    const ClusterBundle& bundle, int element, RunPlan* plan, QList<qsizetype>* toolRuns, QString* error)
{
    const QDir dir(bundle.directory);
    QFile index(dir.filePath(bundle::kElementIndex));
    QFile lines(dir.filePath(bundle::kElements));
    const QByteArray fingerprint = bundleFingerprint(bundle.directory, bundle.chain);
    if (!index.open(QIODevice::ReadOnly) || !lines.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("Cannot read %1: %2")
                     .arg(index.isOpen() ? lines.fileName() : index.fileName(),
                         index.isOpen() ? lines.errorString() : index.errorString());
        return false;
    }
    if (index.read(headerSize(fingerprint)) != fingerprint + '\n') {
        *error = changedBundleError(bundle);
        return false;
    }
    const qint64 elements = (index.size() - headerSize(fingerprint)) / (kOffsetWidth + 1) - 1;
    if (element < 0 || element >= elements) {
        *error = QStringLiteral("The bundle has elements 0 to %1, not %2").arg(elements - 1).arg(element);
        return false;
    }
    const qint64 line = headerSize(fingerprint) + element * (kOffsetWidth + 1);
    QByteArray range;
    if (index.seek(line))
        range = index.read(2 * (kOffsetWidth + 1));
    const qint64 begin = range.left(kOffsetWidth).toLongLong();
    const qint64 end = range.mid(kOffsetWidth + 1, kOffsetWidth).toLongLong();
    QJsonObject object;
    if (range.size() == 2 * (kOffsetWidth + 1) && end > begin && lines.seek(begin))
        object = QJsonDocument::fromJson(lines.read(end - begin)).object();
    if (object.isEmpty()) {
        *error = QStringLiteral("%1 is damaged").arg(lines.fileName());
        return false;
    }
    RunPlan part;
    part.steps = static_cast<int>(bundle.chain.size());
    part.seed = bundle.settings.seed.value_or(0);
    for (const RecordPtr& filter : bundle.chain)
        part.stepParameters.append(filter ? parameterNames(*filter) : QStringList());
    toolRuns->clear();
    for (const QJsonValue& value : object.value(QStringLiteral("toolRuns")).toArray()) {
        const QJsonObject run = value.toObject();
        const int step = run.value(QStringLiteral("step")).toInt(-1);
        PlannedToolRun planned;
        if (step < 0 || step >= part.steps || !toolRunFromJson(run, part.stepParameters.at(step), &planned)) {
            *error = QStringLiteral("%1 is damaged").arg(lines.fileName());
            return false;
        }
        part.toolRuns.append(std::move(planned));
        toolRuns->append(run.value(QStringLiteral("planIndex")).toInteger(-1));
    }
    *plan = std::move(part);
    return true;
}

} // namespace quillon
