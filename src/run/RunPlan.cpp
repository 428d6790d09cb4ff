#include "run/RunPlan.h"

#include "run/WineTool.h"

#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

namespace quillon {

QString plannedValueText(const QVariant& value)
{
    if (value.typeId() == QMetaType::Double)
        return QString::asprintf("%0.3f", value.toDouble());
    return value.toString();
}

bool PlannedToolRun::hasWork() const
{
    // A tool run without any task still starts the tool: its control file
    // holds only the global settings.
    if (tasks.isEmpty())
        return true;
    for (const PlannedTask& task : tasks) {
        if (!task.skipped)
            return true;
    }
    return false;
}

QStringList RunPlan::finalOutputs() const
{
    QStringList outputs;
    for (const PlannedToolRun& run : toolRuns) {
        if (run.step != steps - 1)
            continue;
        for (const PlannedTask& task : run.tasks)
            outputs.append(task.resultPath);
    }
    return outputs;
}

QStringList RunPlan::interimOutputs() const
{
    QStringList outputs;
    for (const PlannedToolRun& run : toolRuns) {
        if (run.step == steps - 1)
            continue;
        for (const PlannedTask& task : run.tasks)
            outputs.append(task.resultPath);
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
        for (PlannedTask& task : run.tasks)
            task.skipped = task.skipped || skipped.contains(task.resultPath);
    }
}

QStringList RunPlan::collisions() const
{
    QHash<QString, QString> firstInput; // result path -> input that names it first
    QStringList found;
    QSet<QString> reported;
    for (const PlannedToolRun& run : toolRuns) {
        const QString input
            = run.input.isEmpty() ? QStringLiteral("no input") : QFileInfo(run.input).fileName();
        for (const PlannedTask& task : run.tasks) {
            const auto known = firstInput.constFind(task.resultPath);
            if (known == firstInput.cend()) {
                firstInput.insert(task.resultPath, run.input.isEmpty() ? QString() : run.input);
                continue;
            }
            if (reported.contains(task.resultPath))
                continue;
            reported.insert(task.resultPath);
            const QString other = known.value().isEmpty() ? QStringLiteral("no input") : known.value();
            found.append(QStringLiteral("%1 (inputs %2 and %3)")
                             .arg(QFileInfo(task.resultPath).fileName(), other,
                                 run.input.isEmpty() ? input : run.input));
        }
    }
    return found;
}

QString RunPlan::describe() const
{
    QString text;
    for (const PlannedToolRun& run : toolRuns) {
        const QStringList names = stepParameters.value(run.step);
        ParameterValues values;
        for (const PlannedTask& task : run.tasks) {
            if (task.carriesValues)
                values = task.values;
            text += task.resultPath;
            if (wine)
                text += QStringLiteral(" = ") + wine->windowsPath(task.resultPath);
            if (task.skipped)
                text += QStringLiteral("  (skipped: exists)");
            for (const auto& [index, value] : values) {
                if (index < names.size())
                    text += QStringLiteral("  %1=%2").arg(names.at(index), plannedValueText(value));
            }
            text += QLatin1Char('\n');
        }
    }
    text += QStringLiteral("%1 tool runs, %2 outputs").arg(toolRunCount()).arg(outputCount());
    return text;
}

QJsonObject RunPlan::toJsonObject(
    const QHash<QString, QString>* statuses, const QList<ToolRunOutcome>* outcomes) const
{
    QJsonArray runs;
    for (qsizetype r = 0; r < toolRuns.size(); ++r) {
        const PlannedToolRun& run = toolRuns.at(r);
        const QStringList names = stepParameters.value(run.step);
        QJsonArray tasks;
        ParameterValues values;
        for (const PlannedTask& task : run.tasks) {
            if (task.carriesValues)
                values = task.values;
            QJsonObject parameters;
            for (const auto& [index, value] : values) {
                if (index < names.size())
                    parameters.insert(names.at(index), QJsonValue::fromVariant(value));
            }
            QJsonObject entry { { QStringLiteral("index"), task.index },
                { QStringLiteral("result"), task.resultPath }, { QStringLiteral("values"), parameters },
                { QStringLiteral("skipped"), task.skipped } };
            if (task.mapKind)
                entry.insert(QStringLiteral("map"), *task.mapKind);
            if (wine)
                entry.insert(QStringLiteral("windowsResult"), wine->windowsPath(task.resultPath));
            if (statuses && statuses->contains(task.resultPath))
                entry.insert(QStringLiteral("status"), statuses->value(task.resultPath));
            tasks.append(entry);
        }
        QJsonObject entry { { QStringLiteral("step"), run.step }, { QStringLiteral("input"), run.input },
            { QStringLiteral("baseName"), run.baseName }, { QStringLiteral("tasks"), tasks } };
        if (wine && !run.input.isEmpty())
            entry.insert(QStringLiteral("windowsInput"), wine->windowsPath(run.input));
        if (outcomes)
            insertToolRunOutcome(entry, outcomes->value(r));
        runs.append(entry);
    }
    QJsonObject root { { QStringLiteral("schema"), QStringLiteral("quillon-plan/1") },
        { QStringLiteral("seed"), QString::number(seed) }, { QStringLiteral("steps"), steps },
        { QStringLiteral("toolRuns"), runs } };
    if (wine) {
        QJsonObject drives;
        for (const WinePaths::Drive& drive : wine->paths().drives()) {
            if (!drives.contains(QString(drive.letter) + QLatin1Char(':')))
                drives.insert(QString(drive.letter) + QLatin1Char(':'), drive.root);
        }
        root.insert(QStringLiteral("wine"),
            QJsonObject { { QStringLiteral("binary"), wine->binary() },
                { QStringLiteral("prefix"), wine->paths().prefix() }, { QStringLiteral("drives"), drives } });
    }
    return root;
}

QByteArray RunPlan::toJson() const
{
    return QJsonDocument(toJsonObject()).toJson(QJsonDocument::Indented);
}

} // namespace quillon
