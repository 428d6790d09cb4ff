#pragma once

#include "run/RunPlan.h"

#include <QString>
#include <QStringList>

namespace quillon {

struct RunSettings;

// Why the plan cannot run as it is, in the words of a failed check: two
// tasks with one Result path, or an interim output (deleted at the end of
// the run) whose name a file in the output directory already has. Empty
// when it can run.
QString planRefusal(const RunPlan& plan);

// The planned final outputs that exist already.
QStringList existingFinalOutputs(const RunPlan& plan);

// The warning for an output directory inside the input directory (its
// outputs would be inputs of the next run), or an empty string.
QString outputInsideInputWarning(const RunSettings& settings);

// "a.png, b.png, c.png and 12 more": a few file names of a long list.
QString nameSome(const QStringList& paths);

} // namespace quillon
