#include "batch/RunReport.h"

#include "run/SafeFile.h"
#include "run/SettingTable.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace quillon {

QJsonObject runReportSettings(const RunSettings& settings)
{
    QJsonObject json;
    for (const SettingDefinition& row : settingTable()) {
        if (!row.reportName.isEmpty())
            json.insert(row.reportName, row.reportValue ? row.reportValue(settings) : row.toJson(settings));
    }
    return json;
}

QJsonArray runReportChain(const RecordList& records)
{
    QJsonArray chain;
    for (const RecordPtr& record : records) {
        chain.append(QJsonObject { { QStringLiteral("name"), record ? record->string(key::name) : QString() },
            { QStringLiteral("path"), record ? record->string(key::path) : QString() } });
    }
    return chain;
}

void addInterimStatuses(const RunPlan& plan, const QList<ToolRunOutcome>& outcomes, QHash<QString, QString>* statuses)
{
    for (qsizetype r = 0; r < plan.toolRuns.size(); ++r) {
        const PlannedToolRun& run = plan.toolRuns.at(r);
        if (run.step == plan.steps - 1)
            continue;
        const ToolRunOutcome::End end = outcomes.value(r).end;
        const bool started = end != ToolRunOutcome::End::NotRun && end != ToolRunOutcome::End::Aborted;
        for (qsizetype t = 0; t < run.tasks.size(); ++t) {
            statuses->insert(run.resultPath(t),
                started && !run.tasks.at(t).skipped ? QStringLiteral("interim") : QStringLiteral("not run"));
        }
    }
}

QByteArray runReportJson(const BatchController& controller)
{
    const BatchController::Outcome outcome = controller.outcome();
    QHash<QString, QString> statuses;
    for (const QString& path : outcome.written)
        statuses.insert(path, QStringLiteral("written"));
    for (const QString& path : outcome.missing)
        statuses.insert(path, QStringLiteral("missing"));
    for (const QString& path : outcome.notRun)
        statuses.insert(path, QStringLiteral("not run"));

    const QList<ToolRunOutcome> outcomes = controller.toolRunOutcomes();
    if (const auto plan = controller.plan())
        addInterimStatuses(*plan, outcomes, &statuses);
    QJsonObject root {
        { QStringLiteral("schema"), QStringLiteral("quillon-report/1") },
        { QStringLiteral("written"), outcome.written.size() },
        { QStringLiteral("missing"), outcome.missing.size() },
        { QStringLiteral("notRun"), outcome.notRun.size() },
        { QStringLiteral("failedToolRuns"), failedToolRuns(outcomes) },
        { QStringLiteral("aborted"), controller.isAborted() },
        { QStringLiteral("elapsedMs"), outcome.elapsedMs },
        { QStringLiteral("chain"), runReportChain(controller.chain()) },
        { QStringLiteral("settings"), runReportSettings(controller.runSettings()) },
    };
    if (const auto plan = controller.plan())
        root.insert(QStringLiteral("plan"), plan->toJsonObject(&statuses, &outcomes));
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

bool saveRunReport(const QString& path, const BatchController& controller, QString* error)
{
    QString why;
    if (saveUserFile(path, runReportJson(controller), &why))
        return true;
    if (error)
        *error = QStringLiteral("Cannot write the report: ") + why;
    return false;
}

} // namespace quillon
