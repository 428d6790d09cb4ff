#include "cluster/ElementPlan.h"

#include "batch/RunPlanner.h"
#include "cluster/ClusterBundle.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>

namespace quillon {

QList<QList<qsizetype>> elementToolRuns(const RunPlan& plan)
{
    QList<QList<qsizetype>> elements;
    QHash<QString, qsizetype> elementOfOutput; // result path -> element
    for (qsizetype r = 0; r < plan.toolRuns.size(); ++r) {
        const PlannedToolRun& run = plan.toolRuns.at(r);
        qsizetype element = 0;
        if (run.step == 0) {
            element = elements.size();
            elements.append(QList<qsizetype>());
        } else {
            element = elementOfOutput.value(run.input, 0);
            if (elements.isEmpty())
                elements.append(QList<qsizetype>());
        }
        elements[element].append(r);
        for (qsizetype t = 0; t < run.tasks.size(); ++t)
            elementOfOutput.insert(run.resultPath(t), element);
    }
    return elements;
}

RunPlan elementPlan(const RunPlan& plan, const QList<qsizetype>& toolRuns)
{
    RunPlan part;
    part.steps = plan.steps;
    part.seed = plan.seed;
    part.stepParameters = plan.stepParameters;
    for (const qsizetype r : toolRuns)
        part.toolRuns.append(plan.toolRuns.at(r));
    return part;
}

QStringList skippedOutputs(const QJsonObject& plan)
{
    QStringList skipped;
    for (const QJsonValue& run : plan.value(QStringLiteral("toolRuns")).toArray()) {
        for (const QJsonValue& task : run.toObject().value(QStringLiteral("tasks")).toArray()) {
            if (task.toObject().value(QStringLiteral("skipped")).toBool())
                skipped.append(task.toObject().value(QStringLiteral("result")).toString());
        }
    }
    return skipped;
}

bool replanBundle(const ClusterBundle& bundle, RunPlan* plan, QString* error)
{
    if (!bundle.settings.seed) {
        *error = QStringLiteral("The bundle's settings hold no seed");
        return false;
    }
    RunPlan again = planRun(bundle.chain, bundle.settings, bundle.inputs, *bundle.settings.seed);
    again.skipOutputs(skippedOutputs(bundle.plan));
    // Compared as text: the file's numbers read back as the same text.
    const auto text
        = [](const QJsonObject& object) { return QJsonDocument(object).toJson(QJsonDocument::Compact); };
    if (text(again.toJsonObject()) != text(bundle.plan)) {
        *error = changedBundleError(bundle);
        return false;
    }
    *plan = std::move(again);
    return true;
}

QString changedBundleError(const ClusterBundle& bundle)
{
    return QStringLiteral("The run planned again differs from %1/%2: a filter definition or the chain changed "
                          "since the bundle was written. Write a new bundle.")
        .arg(bundle.directory, bundle::kPlan);
}

} // namespace quillon
