#include "cluster/PartRunner.h"

#include "batch/BatchController.h"
#include "cluster/ElementFiles.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSysInfo>

#include <algorithm>
#include <utility>

namespace quillon {

bool prepareClusterPart(const QString& bundleDirectory, int element, ClusterPart* part, QString* error)
{
    ClusterPart prepared;
    prepared.startedMs = QDateTime::currentMSecsSinceEpoch();
    // Only this element's part of the plan is read: a bundle of 100,000
    // inputs costs an element what a bundle of one does.
    if (!loadClusterBundle(bundleDirectory, &prepared.bundle, error, false))
        return false;
    prepared.element = element;
    prepared.plan = std::make_shared<RunPlan>();
    if (!readElementPlan(prepared.bundle, element, prepared.plan.get(), &prepared.toolRuns, error))
        return false;
    prepared.settings = prepared.bundle.settings;
    // The elements share the output directory: one tool process each, and
    // the tool's output goes to the element's Slurm output file.
    prepared.settings.toolJobs = 1;
    prepared.settings.toolLog = 0;
    *part = std::move(prepared);
    return true;
}

bool writePartReport(const ClusterPart& part, const BatchController& controller, int exitCode,
    const QString& problem, QString* error)
{
    const BatchController::Outcome outcome = controller.outcome();
    QJsonObject outputs;
    for (const auto& [list, status] : { std::pair { &outcome.written, "written" },
             std::pair { &outcome.missing, "missing" }, std::pair { &outcome.notRun, "not run" } }) {
        for (const QString& path : *list)
            outputs.insert(path, QLatin1String(status));
    }
    QJsonArray toolRuns;
    const QList<ToolRunOutcome> outcomes = controller.toolRunOutcomes();
    for (qsizetype r = 0; r < outcomes.size(); ++r) {
        if (outcomes.at(r).end == ToolRunOutcome::End::NotRun)
            continue;
        QJsonObject run { { QStringLiteral("index"), part.toolRuns.value(r, -1) } };
        insertToolRunOutcome(run, outcomes.at(r));
        toolRuns.append(run);
    }
    QJsonObject report { { QStringLiteral("element"), part.element },
        { QStringLiteral("host"), QSysInfo::machineHostName() },
        { QStringLiteral("startedMs"), part.startedMs },
        { QStringLiteral("endedMs"), QDateTime::currentMSecsSinceEpoch() },
        { QStringLiteral("aborted"), controller.isAborted() }, { QStringLiteral("exitCode"), exitCode },
        { QStringLiteral("outputs"), outputs }, { QStringLiteral("toolRuns"), toolRuns } };
    if (!problem.isEmpty())
        report.insert(QStringLiteral("problem"), problem);
    return saveBundleFile(part.bundle.partReportPath(part.element),
        QJsonDocument(report).toJson(QJsonDocument::Indented), error);
}

} // namespace quillon
