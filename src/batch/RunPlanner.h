#pragma once

#include "library/Record.h"
#include "run/RunPlan.h"

#include <QStringList>

namespace quillon {

struct RunSettings;

// Computes the whole run before it starts: the tool runs in the order the
// run makes them, the name of every output and, by the value rule with a
// generator seeded with `seed`, every parameter value. Works on copies of
// the chain's records (a record shared by two steps stays shared): the
// chain is not changed. `settings` must hold absolute paths.
RunPlan planRun(
    const RecordList& chain, const RunSettings& settings, const QStringList& inputs, quint64 seed);

} // namespace quillon
