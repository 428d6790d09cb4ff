#pragma once

#include "run/RunPlan.h"

#include <QJsonObject>
#include <QList>

namespace quillon {

struct ClusterBundle;

// The elements of a run: element K is the K-th tool run of the first step
// (its input, or the one run without input) and every later tool run made
// from its outputs. Per element, the indexes of its tool runs in
// plan.toolRuns, in plan order. A later tool run without input (a first
// step without outputs) belongs to element 0.
QList<QList<qsizetype>> elementToolRuns(const RunPlan& plan);

// The plan of one element: those tool runs, in plan order.
RunPlan elementPlan(const RunPlan& plan, const QList<qsizetype>& toolRuns);

// Plans the bundle's run again from its chain, settings and inputs, marks
// the outputs plan.json marks skipped, and checks that the result is
// plan.json: every name and value as fixed when the bundle was written. A
// different plan (a definition changed since, a chain that does not come
// back the same from its file) is refused with *error.
bool replanBundle(const ClusterBundle& bundle, RunPlan* plan, QString* error);

// The refusal of an element whose bundle changed since it was written.
QString changedBundleError(const ClusterBundle& bundle);

// The result paths plan.json marks skipped.
QStringList skippedOutputs(const QJsonObject& plan);

} // namespace quillon
