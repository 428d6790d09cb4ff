#pragma once

#include "library/Record.h"
#include "run/RunPlan.h"

#include <QList>
#include <QString>

namespace quillon {

struct ClusterBundle;

// What an element of a bundle reads instead of the whole plan:
//   elements.jsonl  one line per element: its tool runs as plan.json holds
//                   them, each with its position in the whole plan
//                   ("planIndex"), compact
//   elements.idx    the fingerprint of what the plan was made from (the
//                   bundle's chain and settings, each definition the chain
//                   names), then the offset of every line in elements.jsonl,
//                   fixed width, and the file's end
// so element K reads its own line and nothing of the other elements.

// The fingerprint of the bundle in `directory` (its chain.qlch and
// settings.json already written) and of the definitions `chain` names.
QByteArray bundleFingerprint(const QString& directory, const RecordList& chain);

// Writes both files for `elements` (per element, its tool runs in `plan`).
bool writeElementFiles(const QString& directory, const RunPlan& plan, const QList<QList<qsizetype>>& elements,
    const QByteArray& fingerprint, QString* error);

// The plan of element `element` (the bundle loaded without its plan.json),
// every name and value as written, and its tool runs' positions in the whole
// plan. Refused with *error when there is no such element, or when the
// chain, the settings or a definition changed since the bundle was written.
bool readElementPlan(
    const ClusterBundle& bundle, int element, RunPlan* plan, QList<qsizetype>* toolRuns, QString* error);

} // namespace quillon
