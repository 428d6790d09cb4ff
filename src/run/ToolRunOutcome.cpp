#include "run/ToolRunOutcome.h"

#include <QJsonArray>
#include <QJsonObject>

#include <array>

namespace quillon {

namespace {

// By ToolRunOutcome::End.
constexpr std::array<const char*, 5> kEnds { "not run", "exited", "signal", "start failed", "aborted" };

} // namespace

void insertToolRunOutcome(QJsonObject& run, const ToolRunOutcome& outcome)
{
    run.insert(QStringLiteral("end"), QLatin1String(kEnds.at(static_cast<size_t>(outcome.end))));
    if (outcome.end == ToolRunOutcome::End::Exited)
        run.insert(QStringLiteral("exitCode"), outcome.exitCode);
    if (outcome.end == ToolRunOutcome::End::Crashed)
        run.insert(QStringLiteral("signal"), outcome.signal);
    if (!outcome.startError.isEmpty())
        run.insert(QStringLiteral("startError"), outcome.startError);
    run.insert(QStringLiteral("failed"), outcome.failed());
    run.insert(QStringLiteral("unwrittenTaskFiles"), QJsonArray::fromStringList(outcome.unwrittenTaskFiles));
}

ToolRunOutcome toolRunOutcomeFromJson(const QJsonObject& run)
{
    ToolRunOutcome outcome;
    const QString end = run.value(QStringLiteral("end")).toString();
    for (size_t i = 0; i < kEnds.size(); ++i) {
        if (end == QLatin1String(kEnds.at(i)))
            outcome.end = static_cast<ToolRunOutcome::End>(i);
    }
    outcome.exitCode = run.value(QStringLiteral("exitCode")).toInt();
    outcome.signal = run.value(QStringLiteral("signal")).toInt();
    outcome.startError = run.value(QStringLiteral("startError")).toString();
    for (const QJsonValue& path : run.value(QStringLiteral("unwrittenTaskFiles")).toArray())
        outcome.unwrittenTaskFiles.append(path.toString());
    return outcome;
}

qsizetype failedToolRuns(const QList<ToolRunOutcome>& outcomes)
{
    qsizetype failed = 0;
    for (const ToolRunOutcome& outcome : outcomes)
        failed += outcome.failed() ? 1 : 0;
    return failed;
}

} // namespace quillon
