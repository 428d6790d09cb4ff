#pragma once

#include "batch/BatchController.h"

#include <QByteArray>
#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>

namespace quillon {

// The run report as JSON (schema in docs/run-plan.md): the counts, every
// planned output with its status and values, the seed, the chain and the
// settings, so a run can be audited and made again.
QByteArray runReportJson(const BatchController& controller);

// The report's "settings" and "chain" values.
QJsonObject runReportSettings(const RunSettings& settings);
QJsonArray runReportChain(const RecordList& chain);

// Gives the tasks of the steps before the last their status: "interim" when
// their tool run started (the output, if made, was removed at the end of the
// run), "not run" otherwise. `outcomes` are in plan order.
void addInterimStatuses(
    const RunPlan& plan, const QList<ToolRunOutcome>& outcomes, QHash<QString, QString>* statuses);

// Writes the report with QSaveFile; false with *error when it could not be.
bool saveRunReport(const QString& path, const BatchController& controller, QString* error);

} // namespace quillon
