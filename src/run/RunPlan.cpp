#include "run/RunPlan.h"

#include "run/WineTool.h"

#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <algorithm>
#include <vector>

namespace quillon {

QString plannedValueText(const QVariant& value)
{
    if (value.typeId() == QMetaType::Double)
        return QString::asprintf("%0.3f", value.toDouble());
    return value.toString();
}

QStringList RunPlan::finalOutputs() const
{
    QStringList outputs;
    for (const PlannedToolRun& run : toolRuns) {
        if (run.step != steps - 1)
            continue;
        for (qsizetype t = 0; t < run.tasks.size(); ++t)
            outputs.append(run.resultPath(t));
    }
    return outputs;
}

QStringList RunPlan::interimOutputs() const
{
    QStringList outputs;
    for (const PlannedToolRun& run : toolRuns) {
        if (run.step == steps - 1)
            continue;
        for (qsizetype t = 0; t < run.tasks.size(); ++t)
            outputs.append(run.resultPath(t));
    }
    return outputs;
}

qsizetype RunPlan::outputCount() const
{
    qsizetype count = 0;
    for (const PlannedToolRun& run : toolRuns)
        count += run.tasks.size();
    return count;
}

qsizetype RunPlan::toolRunCount() const
{
    qsizetype count = 0;
    for (const PlannedToolRun& run : toolRuns)
        count += run.hasWork() ? 1 : 0;
    return count;
}

void RunPlan::skipOutputs(const QStringList& paths)
{
    const QSet<QString> skipped(paths.cbegin(), paths.cend());
    for (PlannedToolRun& run : toolRuns) {
        if (run.step != steps - 1)
            continue;
        for (qsizetype t = 0; t < run.tasks.size(); ++t)
            run.tasks[t].skipped = run.tasks[t].skipped || skipped.contains(run.resultPath(t));
    }
}

QStringList RunPlan::collisions(const std::function<bool()>& stopped) const
{
    // First a hash of every result path; only the paths whose hash comes up
    // twice are then compared as text, so a million distinct names never
    // sit in one table.
    std::vector<size_t> hashes;
    hashes.reserve(static_cast<size_t>(outputCount()));
    for (const PlannedToolRun& run : toolRuns) {
        if (stopped && stopped())
            return {};
        for (qsizetype t = 0; t < run.tasks.size(); ++t)
            hashes.push_back(qHash(run.resultPath(t)));
    }
    std::sort(hashes.begin(), hashes.end());
    QSet<size_t> twice;
    for (size_t i = 1; i < hashes.size(); ++i) {
        if (hashes[i] == hashes[i - 1])
            twice.insert(hashes[i]);
    }
    if (twice.isEmpty())
        return {};

    QHash<QString, QString> firstInput; // result path -> input that names it first
    QStringList found;
    QSet<QString> reported;
    for (const PlannedToolRun& run : toolRuns) {
        const QString input
            = run.input.isEmpty() ? QStringLiteral("no input") : QFileInfo(run.input).fileName();
        for (qsizetype t = 0; t < run.tasks.size(); ++t) {
            const QString resultPath = run.resultPath(t);
            if (!twice.contains(qHash(resultPath)))
                continue;
            const auto known = firstInput.constFind(resultPath);
            if (known == firstInput.cend()) {
                firstInput.insert(resultPath, run.input.isEmpty() ? QString() : run.input);
                continue;
            }
            if (reported.contains(resultPath))
                continue;
            reported.insert(resultPath);
            const QString other = known.value().isEmpty() ? QStringLiteral("no input") : known.value();
            found.append(QStringLiteral("%1 (inputs %2 and %3)")
                             .arg(QFileInfo(resultPath).fileName(), other,
                                 run.input.isEmpty() ? input : run.input));
        }
    }
    return found;
}

QString RunPlan::describe() const
{
    QByteArray text;
    writeDescription([&text](const QByteArray& piece) {
        text += piece;
        return true;
    });
    text.chop(1); // the final newline
    return QString::fromUtf8(text);
}

bool RunPlan::writeDescription(const std::function<bool(const QByteArray&)>& write) const
{
    for (const PlannedToolRun& run : toolRuns) {
        const QStringList names = stepParameters.value(run.step);
        ParameterValues values;
        QString text;
        for (qsizetype t = 0; t < run.tasks.size(); ++t) {
            const PlannedTask& task = run.tasks.at(t);
            if (task.carriesValues)
                values = run.values(t);
            const QString resultPath = run.resultPath(t);
            text += resultPath;
            if (wine)
                text += QStringLiteral(" = ") + wine->windowsPath(resultPath);
            if (task.skipped)
                text += QStringLiteral("  (skipped: exists)");
            for (const auto& [index, value] : values) {
                if (index < names.size())
                    text += QStringLiteral("  %1=%2").arg(names.at(index), plannedValueText(value));
            }
            text += QLatin1Char('\n');
        }
        if (!write(text.toUtf8()))
            return false;
    }
    return write(QStringLiteral("%1 tool runs, %2 outputs\n").arg(toolRunCount()).arg(outputCount()).toUtf8());
}

QJsonObject RunPlan::toolRunJson(
    qsizetype r, const QHash<QString, QString>* statuses, const QList<ToolRunOutcome>* outcomes) const
{
    const PlannedToolRun& run = toolRuns.at(r);
    const QStringList names = stepParameters.value(run.step);
    QJsonArray tasks;
    ParameterValues values;
    for (qsizetype t = 0; t < run.tasks.size(); ++t) {
        const PlannedTask& task = run.tasks.at(t);
        if (task.carriesValues)
            values = run.values(t);
        QJsonObject parameters;
        for (const auto& [index, value] : values) {
            if (index < names.size())
                parameters.insert(names.at(index), QJsonValue::fromVariant(value));
        }
        const QString resultPath = run.resultPath(t);
        QJsonObject entry { { QStringLiteral("index"), task.index }, { QStringLiteral("result"), resultPath },
            { QStringLiteral("values"), parameters }, { QStringLiteral("skipped"), task.skipped } };
        if (task.map >= 0)
            entry.insert(QStringLiteral("map"), task.map);
        if (wine)
            entry.insert(QStringLiteral("windowsResult"), wine->windowsPath(resultPath));
        if (statuses) {
            const auto status = statuses->constFind(resultPath);
            if (status != statuses->cend())
                entry.insert(QStringLiteral("status"), *status);
        }
        tasks.append(entry);
    }
    QJsonObject entry { { QStringLiteral("step"), run.step }, { QStringLiteral("input"), run.input },
        { QStringLiteral("baseName"), run.baseName }, { QStringLiteral("tasks"), tasks } };
    if (wine && !run.input.isEmpty())
        entry.insert(QStringLiteral("windowsInput"), wine->windowsPath(run.input));
    if (outcomes)
        insertToolRunOutcome(entry, outcomes->value(r));
    return entry;
}

QJsonObject RunPlan::wineJson() const
{
    QJsonObject drives;
    for (const WinePaths::Drive& drive : wine->paths().drives()) {
        if (!drives.contains(QString(drive.letter) + QLatin1Char(':')))
            drives.insert(QString(drive.letter) + QLatin1Char(':'), drive.root);
    }
    return QJsonObject { { QStringLiteral("binary"), wine->binary() },
        { QStringLiteral("prefix"), wine->paths().prefix() }, { QStringLiteral("drives"), drives } };
}

QJsonObject RunPlan::toJsonObject(
    const QHash<QString, QString>* statuses, const QList<ToolRunOutcome>* outcomes) const
{
    QJsonArray runs;
    for (qsizetype r = 0; r < toolRuns.size(); ++r)
        runs.append(toolRunJson(r, statuses, outcomes));
    QJsonObject root { { QStringLiteral("schema"), QStringLiteral("quillon-plan/1") },
        { QStringLiteral("seed"), QString::number(seed) }, { QStringLiteral("steps"), steps },
        { QStringLiteral("toolRuns"), runs } };
    if (wine)
        root.insert(QStringLiteral("wine"), wineJson());
    return root;
}

namespace {

// An indented JSON value as a member of an object or array `depth` levels
// down: every line after the first indented by four spaces a level.
QByteArray nested(const QJsonObject& object, int depth)
{
    QByteArray text = QJsonDocument(object).toJson(QJsonDocument::Indented);
    text.chop(1); // the document's final newline
    const QByteArray indent(4 * depth, ' ');
    text.replace("\n", "\n" + indent);
    return text;
}

} // namespace

bool RunPlan::writeJson(const std::function<bool(const QByteArray&)>& write) const
{
    // The same bytes as QJsonDocument(toJsonObject()).toJson(): the members
    // in key order (schema, seed, steps, toolRuns, wine), four spaces a level.
    const QByteArray head = "{\n    \"schema\": \"quillon-plan/1\",\n    \"seed\": \"" + QByteArray::number(seed)
        + "\",\n    \"steps\": " + QByteArray::number(steps) + ",\n    \"toolRuns\": [";
    if (!write(head))
        return false;
    for (qsizetype r = 0; r < toolRuns.size(); ++r) {
        if (!write((r == 0 ? "\n        " : ",\n        ") + nested(toolRunJson(r), 2)))
            return false;
    }
    QByteArray tail = "\n    ]";
    if (wine)
        tail += ",\n    \"wine\": " + nested(wineJson(), 1);
    return write(tail + "\n}\n");
}

QByteArray RunPlan::toJson() const
{
    QByteArray text;
    writeJson([&text](const QByteArray& piece) {
        text += piece;
        return true;
    });
    return text;
}

} // namespace quillon
