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

// Writes the report with QSaveFile; false with *error when it could not be.
bool saveRunReport(const QString& path, const BatchController& controller, QString* error);

} // namespace quillon
