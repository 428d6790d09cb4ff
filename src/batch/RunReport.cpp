#include "batch/RunReport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <algorithm>

namespace quillon {

namespace {

QJsonObject settingsJson(const RunSettings& s)
{
    static const char* const kModes[] = { "file", "directory", "none" };
    return {
        { QStringLiteral("tool"), s.toolPath },
        { QStringLiteral("output"), s.outputPath },
        { QStringLiteral("source"), s.sourcePath },
        { QStringLiteral("inputMode"), QLatin1String(kModes[static_cast<int>(s.inputMode)]) },
        { QStringLiteral("prefix"), s.outputPrefix },
        { QStringLiteral("frameStyle"), static_cast<int>(s.nameStyle) },
        { QStringLiteral("frames"), s.frameCountText },
        { QStringLiteral("width"), s.widthText },
        { QStringLiteral("height"), s.heightText },
        { QStringLiteral("format"), s.format },
        { QStringLiteral("preset"), s.presetIndex },
        { QStringLiteral("maps"), s.activateMaps == 1 },
    };
}

QJsonObject withOutcome(QJsonObject run, const ToolRunOutcome& outcome)
{
    static const char* const kEnds[] = { "not run", "exited", "signal", "start failed", "aborted" };
    run.insert(QStringLiteral("end"), QLatin1String(kEnds[static_cast<int>(outcome.end)]));
    if (outcome.end == ToolRunOutcome::End::Exited)
        run.insert(QStringLiteral("exitCode"), outcome.exitCode);
    if (outcome.end == ToolRunOutcome::End::Crashed)
        run.insert(QStringLiteral("signal"), outcome.signal);
    if (!outcome.startError.isEmpty())
        run.insert(QStringLiteral("startError"), outcome.startError);
    run.insert(QStringLiteral("failed"), outcome.failed());
    run.insert(QStringLiteral("unwrittenTaskFiles"), QJsonArray::fromStringList(outcome.unwrittenTaskFiles));
    return run;
}

} // namespace

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

    QJsonArray chain;
    for (const RecordPtr& record : controller.chain()) {
        chain.append(QJsonObject { { QStringLiteral("name"), record ? record->string(key::name) : QString() },
            { QStringLiteral("path"), record ? record->string(key::path) : QString() } });
    }
    QJsonObject root {
        { QStringLiteral("written"), outcome.written.size() },
        { QStringLiteral("missing"), outcome.missing.size() },
        { QStringLiteral("notRun"), outcome.notRun.size() },
        { QStringLiteral("aborted"), controller.isAborted() },
        { QStringLiteral("elapsedMs"), outcome.elapsedMs },
        { QStringLiteral("chain"), chain },
        { QStringLiteral("settings"), settingsJson(controller.runSettings()) },
    };
    const QList<ToolRunOutcome> outcomes = controller.toolRunOutcomes();
    root.insert(QStringLiteral("failedToolRuns"),
        static_cast<qint64>(std::count_if(
            outcomes.cbegin(), outcomes.cend(), [](const ToolRunOutcome& o) { return o.failed(); })));
    if (const auto plan = controller.plan()) {
        QJsonObject planJson = plan->toJsonObject(&statuses);
        QJsonArray runs = planJson.value(QStringLiteral("toolRuns")).toArray();
        for (qsizetype i = 0; i < runs.size(); ++i)
            runs[i] = withOutcome(runs.at(i).toObject(), outcomes.value(i));
        planJson.insert(QStringLiteral("toolRuns"), runs);
        root.insert(QStringLiteral("plan"), planJson);
    }
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

bool saveRunReport(const QString& path, const BatchController& controller, QString* error)
{
    QSaveFile file(path);
    const QByteArray bytes = runReportJson(controller);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    if (error)
        *error = QStringLiteral("Cannot write the report %1: %2").arg(path, file.errorString());
    return false;
}

} // namespace quillon
