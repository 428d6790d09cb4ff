#pragma once

#include "library/Record.h"
#include "batch/BatchDisplay.h"
#include "run/RunPlan.h"
#include "run/RunSettings.h"
#include "run/SafeFile.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <atomic>
#include <memory>

namespace quillon {

// Computes the whole run before it starts: the tool runs in the order the
// run makes them, the name of every output and, by the value rule with a
// generator seeded with `seed`, every parameter value. Works on copies of
// the chain's records (a record shared by two steps stays shared): the
// chain is not changed. `settings` must hold absolute paths.
// Writes the run's map choice into a chain record, as Start does: the chosen
// map kinds under "Maps" and true under "UseMaps" when `maps` is on (a
// one-filter chain with maps switched on); otherwise only "UseMaps" false.
void applyMapChoice(Record& record, const RunSettings& settings, bool maps);

// The name that names an input's outputs: photo.png gives photo;
// my.photo.png and photo stay whole.
QString inputBaseName(const QString& path);

// Stops early (an incomplete plan) once `abort` is set or a termination
// signal came.
RunPlan planRun(const RecordList& chain, const RunSettings& settings, const QStringList& inputs, quint64 seed,
    const std::atomic<bool>* abort = nullptr);

// Copies of a chain's filter records and of their parameter records; a
// record that two steps share is copied once and stays shared.
RecordList copyChain(const RecordList& chain);

// Everything a run is checked and planned from. `settings` as the user gave
// them: planning makes the paths absolute (the tool is started by path and
// the task files hold absolute paths; the inputs keep the form given).
struct PlanRequest {
    RecordList chain;
    RunSettings settings;
    // The output directory is made before the run (--mkdir): a missing one
    // passes its check.
    bool outputWillBeMade = false;
    // Set when the user aborts while the run is planned (or a termination
    // signal came): planning stops with the refusal kPlanningAborted.
    const std::atomic<bool>* abort = nullptr;
};
inline const QString kPlanningAborted = QStringLiteral("Aborted while the run was planned");

// A Start's checks and plan, or why it cannot run.
struct StartPlan {
    RunSettings settings; // with absolute paths and the seed
    QStringList inputs;
    std::shared_ptr<RunPlan> plan;
    QString refusal; // why the run cannot go; empty when it can
    QStringList notes; // said to the user, not a reason to stop (entries left out)
    QString warning; // asked before the run (the output directory inside the input)
    QStringList existingFinals; // planned final outputs that exist already
    QHash<QString, FileIdentity> finalsBefore; // every planned final output as it is now
};

// Every check of Start in its order and the whole plan: the settings, the
// inputs (listed now), the frame count, the preset of every step, then the
// plan's own checks. Reads only its argument and the file system: safe on
// any thread, and it changes nothing, so a dry run is this and no more.
StartPlan planStart(const PlanRequest& request);
// The checks of planStart on a plan made elsewhere (a cluster element's):
// fills in the refusal, the existing final outputs and their state.
void checkStartPlan(StartPlan& start, const std::atomic<bool>* abort = nullptr);
// A part of a run planned elsewhere (a cluster element's plan, every value
// fixed): its inputs are those of its first step, and checkStartPlan's
// checks are made on it.
StartPlan planPart(const RunSettings& settings, const std::shared_ptr<RunPlan>& plan);
// What the run does with planned final outputs that exist: Replace keeps
// the plan, Skip marks their tasks skipped, Cancel refuses the run.
void applyExistingPolicy(StartPlan& start, ExistingOutputs policy);

} // namespace quillon
