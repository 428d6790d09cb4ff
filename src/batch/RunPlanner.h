#pragma once

#include "library/Record.h"
#include "run/RunPlan.h"
#include "run/SafeFile.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <memory>

namespace quillon {

struct RunSettings;

// Computes the whole run before it starts: the tool runs in the order the
// run makes them, the name of every output and, by the value rule with a
// generator seeded with `seed`, every parameter value. Works on copies of
// the chain's records (a record shared by two steps stays shared): the
// chain is not changed. `settings` must hold absolute paths.
// Writes the run's map choice into a chain record, as Start does: the chosen
// map kinds under "Maps" and true under "UseMaps" when `maps` is on (a
// one-filter chain with maps switched on); otherwise only "UseMaps" false.
void applyMapChoice(Record& record, const RunSettings& settings, bool maps);

RunPlan planRun(
    const RecordList& chain, const RunSettings& settings, const QStringList& inputs, quint64 seed);

// Copies of a chain's filter records and of their parameter records; a
// record that two steps share is copied once and stays shared.
RecordList copyChain(const RecordList& chain);

// The first part of a Start that may take long: the inputs listed, the run
// planned with `settings.seed` (absolute paths) and the plan checked. The
// inputs are named from `source`, the input path as the user gave it.
// Safe on any thread: it reads only its arguments and the file system.
struct StartPlan {
    QStringList inputs;
    std::shared_ptr<RunPlan> plan;
    QString refusal; // why the run cannot go; empty when it can
    QStringList existingFinals; // planned final outputs that exist already
    QHash<QString, FileIdentity> finalsBefore; // every planned final output as it is now
};
StartPlan planStart(const RecordList& chain, const RunSettings& settings, const QString& source);
// The checks of planStart on a plan made elsewhere: fills in the refusal,
// the existing final outputs and their state.
void checkStartPlan(StartPlan& start);

} // namespace quillon
