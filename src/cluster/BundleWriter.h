#pragma once

#include "library/Record.h"
#include "run/RunPlan.h"
#include "run/RunSettings.h"

#include <QString>
#include <QStringList>

namespace quillon {

// What a bundle is written from: a run planned and checked like a Start.
struct BundleRequest {
    QString directory; // new or empty
    RecordList chain;
    RunSettings settings; // absolute paths; the seed is the plan's
    RunPlan plan;
    QStringList sbatchOptions; // --slurm-option values, one sbatch argument each
    QString cliPath; // the quillon-cli the jobs run
    QString reportFile; // where the collect also writes the report; may be empty
};

// Refuses a directory that exists and is not empty (or is not a directory).
bool prepareBundleDirectory(const QString& directory, QString* error);

// Writes the bundle (see ClusterBundle.h): the plan, chain, settings and the
// scripts, nothing of it run. The chain is read back from its file and the
// run planned again from the bundle: a plan that does not come back the same
// is refused. False with *error.
bool writeClusterBundle(const BundleRequest& request, QString* error);

// The paths every node must reach at the same place that lie on a local
// file system here, one "PATH (what it is)" each. Empty when every one is on
// a network or cluster file system.
QStringList unsharedPathNotes(const BundleRequest& request);

} // namespace quillon
