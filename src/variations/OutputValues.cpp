#include "variations/OutputValues.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace quillon {

namespace {

// The values a task was made with: its own, or for the later maps of a
// frame those of the frame's first map, the nearest earlier task carrying
// values in the same tool run.
ParameterValues taskValues(const PlannedToolRun& run, qsizetype taskIndex)
{
    return run.madeWith(taskIndex);
}

QString stepPrefix(int step, qsizetype steps)
{
    return steps > 1 ? QStringLiteral("%1:").arg(step + 1) : QString();
}

bool fail(QString* error, const QString& message)
{
    if (error)
        *error = message;
    return false;
}

} // namespace

QList<OutputValues> finalOutputValues(const RunPlan& plan)
{
    // Where each output came from: result path -> (tool run, task).
    QHash<QString, std::pair<qsizetype, qsizetype>> madeBy;
    for (qsizetype r = 0; r < plan.toolRuns.size(); ++r) {
        const PlannedToolRun& run = plan.toolRuns.at(r);
        for (qsizetype t = 0; t < run.tasks.size(); ++t)
            madeBy.insert(run.resultPath(t), { r, t });
    }
    QList<OutputValues> outputs;
    for (qsizetype r = 0; r < plan.toolRuns.size(); ++r) {
        const PlannedToolRun& run = plan.toolRuns.at(r);
        if (run.step != plan.steps - 1)
            continue;
        for (qsizetype t = 0; t < run.tasks.size(); ++t) {
            OutputValues output;
            output.resultPath = run.resultPath(t);
            output.frameFirst = run.tasks.at(t).carriesValues;
            output.steps.resize(std::max(plan.steps, 1));
            qsizetype runIndex = r;
            qsizetype taskIndex = t;
            // Back through the earlier steps by each tool run's input.
            for (int guard = plan.steps; guard > 0; --guard) {
                const PlannedToolRun& current = plan.toolRuns.at(runIndex);
                if (current.step >= 0 && current.step < output.steps.size())
                    output.steps[current.step] = taskValues(current, taskIndex);
                output.source = current.input;
                if (current.step == 0 || current.input.isEmpty())
                    break;
                const auto found = madeBy.constFind(current.input);
                if (found == madeBy.constEnd())
                    break;
                runIndex = found->first;
                taskIndex = found->second;
            }
            outputs.append(output);
        }
    }
    return outputs;
}

bool finalOutputValuesFromReport(
    const QByteArray& json, const RecordList& chain, QList<OutputValues>* outputs, QString* error)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (!document.isObject())
        return fail(error, QStringLiteral("not a run report: ") + parseError.errorString());
    QJsonObject root = document.object();
    if (root.value(QStringLiteral("plan")).isObject())
        root = root.value(QStringLiteral("plan")).toObject();
    if (!root.value(QStringLiteral("toolRuns")).isArray())
        return fail(error, QStringLiteral("not a run report: it holds no plan"));

    RunPlan plan;
    plan.steps = root.value(QStringLiteral("steps")).toInt();
    if (plan.steps != static_cast<int>(chain.size())) {
        return fail(error,
            QStringLiteral("the report's run had %1 filters, the chain has %2")
                .arg(plan.steps)
                .arg(chain.size()));
    }
    for (const RecordPtr& filter : chain)
        plan.stepParameters.append(filter ? parameterNames(*filter) : QStringList());
    for (const QJsonValue& runValue : root.value(QStringLiteral("toolRuns")).toArray()) {
        const QJsonObject runObject = runValue.toObject();
        PlannedToolRun run;
        run.step = runObject.value(QStringLiteral("step")).toInt(-1);
        if (run.step < 0 || run.step >= plan.steps)
            return fail(error, QStringLiteral("a tool run of the report names no step of the chain"));
        run.input = runObject.value(QStringLiteral("input")).toString();
        const QStringList& names = plan.stepParameters.at(run.step);
        for (const QJsonValue& taskValue : runObject.value(QStringLiteral("tasks")).toArray()) {
            const QJsonObject taskObject = taskValue.toObject();
            ParameterValues parsed;
            run.givenPaths.append(taskObject.value(QStringLiteral("result")).toString());
            const QJsonObject values = taskObject.value(QStringLiteral("values")).toObject();
            for (auto it = values.begin(); it != values.end(); ++it) {
                const qsizetype index = names.indexOf(it.key());
                if (index < 0) {
                    return fail(error,
                        QStringLiteral("filter %1 of the chain has no parameter %2")
                            .arg(run.step + 1)
                            .arg(it.key()));
                }
                parsed.append({ index, it.value().toVariant() });
            }
            std::sort(parsed.begin(), parsed.end(),
                [](const ParameterValue& a, const ParameterValue& b) { return a.index < b.index; });
            run.appendTask(PlannedTask(), parsed);
        }
        plan.toolRuns.append(run);
    }
    if (outputs)
        *outputs = finalOutputValues(plan);
    return true;
}

QList<std::pair<QString, QVariant>> namedOutputValues(
    const OutputValues& output, const QList<QStringList>& stepParameters)
{
    QList<std::pair<QString, QVariant>> named;
    for (qsizetype step = 0; step < output.steps.size(); ++step) {
        const QStringList names = stepParameters.value(step);
        for (const auto& [index, value] : output.steps.at(step))
            named.append(
                { stepPrefix(static_cast<int>(step), output.steps.size()) + names.value(index), value });
    }
    return named;
}

void holdParameterAt(Record& parameter, const QVariant& value)
{
    const std::optional<controlType> kind = parameter.type();
    if (!kind)
        return;
    for (const QString& valueKey : { key::STARTVALUE, key::MINVALUE, key::MAXVALUE }) {
        if (isRealKind(*kind))
            parameter.setReal(valueKey, value.toDouble());
        else
            parameter.setInteger(valueKey, value.toLongLong());
    }
    parameter.setInteger(key::ACTIVE, 1);
    parameter.setInteger(key::POPSTATE, 1);
}

RecordList chainFixedAt(const RecordList& chain, const OutputValues& output)
{
    RecordList fixed;
    fixed.reserve(chain.size());
    for (size_t position = 0; position < chain.size(); ++position) {
        const RecordPtr& original = chain[position];
        if (!original) {
            fixed.push_back(original);
            continue;
        }
        auto filter = std::make_shared<Record>(*original);
        if (const RecordListPtr components = original->list(key::Components)) {
            auto parameters = std::make_shared<RecordList>();
            for (const RecordPtr& parameter : *components)
                parameters->push_back(parameter ? std::make_shared<Record>(*parameter) : parameter);
            for (const auto& [index, value] : output.steps.value(static_cast<qsizetype>(position))) {
                if (index < 0 || index >= static_cast<qsizetype>(parameters->size()))
                    continue;
                if (Record* parameter = (*parameters)[static_cast<size_t>(index)].get())
                    holdParameterAt(*parameter, value);
            }
            filter->setList(key::Components, parameters);
        }
        fixed.push_back(filter);
    }
    return fixed;
}

QList<QVariant> testStripValues(const Record& parameter, int count)
{
    const std::optional<controlType> kind = parameter.type();
    if (!kind)
        return {};
    if (*kind == controlType::kTypeCheckbox)
        return { QVariant::fromValue<qint64>(0), QVariant::fromValue<qint64>(1) };
    const double from = parameter.real(key::MINVALUE);
    const double to = parameter.real(key::MAXVALUE);
    QList<QVariant> values;
    for (int i = 0; i < count; ++i) {
        const double value = count > 1 ? from + (to - from) * i / (count - 1) : from;
        const QVariant typed = isRealKind(*kind) ? QVariant::fromValue<double>(value)
                                                 : QVariant::fromValue<qint64>(std::llround(value));
        if (!values.contains(typed))
            values.append(typed);
    }
    return values;
}

RecordList testStripChain(const RecordList& chain, int position, qsizetype index, const QVariant& value)
{
    OutputValues held;
    for (size_t p = 0; p < chain.size(); ++p) {
        ParameterValues values;
        const RecordListPtr components = chain[p] ? chain[p]->list(key::Components) : nullptr;
        for (qsizetype i = 0; components && i < static_cast<qsizetype>(components->size()); ++i) {
            const RecordPtr& parameter = (*components)[static_cast<size_t>(i)];
            if (static_cast<int>(p) == position && i == index)
                values.append({ i, value });
            else if (parameter && parameter->integer(key::ACTIVE) == 1)
                values.append({ i, parameter->value(key::STARTVALUE) });
        }
        held.steps.append(values);
    }
    return chainFixedAt(chain, held);
}

} // namespace quillon
