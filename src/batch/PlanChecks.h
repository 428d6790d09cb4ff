#pragma once

#include "library/Record.h"
#include "run/RunPlan.h"
#include "run/SafeFile.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <functional>

namespace quillon {

struct RunSettings;

// The checks of Start before the run takes its output directory, in their
// order: the chain, the render tool, the output directory (with
// `outputWillBeMade` a missing one passes: it is made before the run), the
// prefix. The message of the first that fails, or an empty string.
QString settingsRefusal(const RecordList& chain, const RunSettings& settings, bool outputWillBeMade = false);
// The input checks of Start by input mode, then the frame count (not
// negative, within what the naming style can number).
QString inputRefusal(const RunSettings& settings);
// The preset every step takes (`presetIndex`) must be in each step's filter
// definition: the message names the first filter without it.
QString presetRefusal(const RecordList& chain, qint64 presetIndex);

// The names of the task files of a plan in its task folder: the control
// file and a run file for every task index up to the largest.
QStringList taskFileNames(const RunPlan& plan);

// The planned outputs as they are now: the output directory is listed once,
// and each output is then looked up in the listing (a million outputs would
// otherwise take a million system calls). `stopped` is asked between tool
// runs; once it says yes the rest is not looked at and `stopped` is set.
struct OutputsNow {
    QStringList collisions; // RunPlan::collisions
    QStringList takenTaskFiles; // task-file names held by an entry of the output directory
    QStringList takenInterims; // interim outputs that exist
    QStringList existingFinals; // final outputs that exist, in plan order
    QStringList unusableFinals; // final outputs held by anything but a regular file
    QHash<QString, FileIdentity> finalIdentities; // the final outputs that are regular files
    bool stopped = false;
};
OutputsNow outputsNow(
    const RunPlan& plan, const QString& outputDir, const std::function<bool()>& stopped = {});

// Why the plan cannot run as it is, in the words of a failed check: two
// tasks with one Result path; an entry at a task-file name in the output
// directory or at an interim output name (both overwritten, then deleted at
// the end of the run); a final output name held by anything but a regular
// file (a link, a folder, a pipe, a device). Empty when it can run.
QString planRefusal(const OutputsNow& now);

// The warning for an output directory that is the input directory (its
// outputs would be inputs of the next run), or an empty string.
QString outputInsideInputWarning(const RunSettings& settings);

// "a.png, b.png, c.png and 12 more": a few file names of a long list.
QString nameSome(const QStringList& paths);

} // namespace quillon
