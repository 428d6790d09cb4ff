#pragma once

#include "library/Record.h"
#include "run/RunSettings.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace quillon {

// A cluster bundle: a run planned on one machine and rendered as a Slurm job
// array, one element per input. The directory holds
//   plan.json       the plan, every value fixed (docs/run-plan.md)
//   chain.qlch      the chain it was planned from
//   settings.json   the run settings (absolute paths, the seed)
//   bundle.json     the inputs in plan order, the element count, the report path
//   elements.jsonl, elements.idx   each element's own part of the plan
//   submit.sh       submits the array (part.sh) and the collect job (collect.sh)
//   parts/          one report part per element (part-K.json)
//   logs/           Slurm's output files
//   report.json, collect.status   written by the collect
namespace bundle {
inline const QString kPlan = QStringLiteral("plan.json");
inline const QString kChain = QStringLiteral("chain.qlch");
inline const QString kSettings = QStringLiteral("settings.json");
inline const QString kManifest = QStringLiteral("bundle.json");
inline const QString kSubmit = QStringLiteral("submit.sh");
inline const QString kPartScript = QStringLiteral("part.sh");
inline const QString kCollectScript = QStringLiteral("collect.sh");
inline const QString kParts = QStringLiteral("parts");
inline const QString kLogs = QStringLiteral("logs");
inline const QString kReport = QStringLiteral("report.json");
inline const QString kCollectStatus = QStringLiteral("collect.status");
inline const QString kElements = QStringLiteral("elements.jsonl"); // see ElementFiles.h
inline const QString kElementIndex = QStringLiteral("elements.idx");
} // namespace bundle

struct ClusterBundle {
    QString directory; // absolute
    RunSettings settings;
    RecordList chain;
    QStringList inputs; // the run's inputs in plan order; empty without input
    int elements = 0; // one per input, or one without input
    QJsonObject plan;
    QString reportFile; // --report given with the bundle, or empty

    QString partReportPath(int element) const;
};

// Reads a bundle written by writeClusterBundle. False with *error when a
// file is missing or damaged. Without `withPlan`, neither plan.json nor
// bundle.json (the inputs) is read: an element reads its own part of the
// plan from elements.jsonl, and the element count from elements.idx.
bool loadClusterBundle(const QString& directory, ClusterBundle* bundle, QString* error, bool withPlan = true);

// Writes `bytes` to `path` as a new file renamed over the name (saveUserFile:
// flushed, never through a link, which is refused); `executable` adds the
// execute bits.
bool saveBundleFile(const QString& path, const QByteArray& bytes, QString* error, bool executable = false);

// Every field of the settings as the bundle's settings.json holds them, and
// back (unknown keys are ignored, missing ones keep their defaults).
QJsonObject settingsToJson(const RunSettings& settings);
RunSettings settingsFromJson(const QJsonObject& json);

} // namespace quillon
