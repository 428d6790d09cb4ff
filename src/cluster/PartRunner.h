#pragma once

#include "cluster/ClusterBundle.h"
#include "run/RunPlan.h"

#include <QHash>
#include <QString>

#include <memory>

namespace quillon {

class BatchController;

// One element of a bundle's job array, ready to run: its tool runs (the
// plan's names and values) and the settings of the whole run.
struct ClusterPart {
    ClusterBundle bundle;
    int element = 0;
    QList<qsizetype> toolRuns; // indexes in the whole plan
    std::shared_ptr<RunPlan> plan; // those tool runs only
    RunSettings settings; // one tool process at a time, no run log in the output directory
    qint64 startedMs = 0; // epoch milliseconds
};

// Loads the bundle without its whole plan and reads element `element`'s
// part of it (refused when the chain or a definition changed since the
// bundle was written). False with *error.
bool prepareClusterPart(const QString& bundleDirectory, int element, ClusterPart* part, QString* error);

// The element's report part, parts/part-K.json: every final output with its
// status, how each tool run ended (by its index in the whole plan), the
// host, the times and the exit code the element ended with; `problem` is
// why it did not start, when it did not.
bool writePartReport(const ClusterPart& part, const BatchController& controller, int exitCode,
    const QString& problem, QString* error);

} // namespace quillon
