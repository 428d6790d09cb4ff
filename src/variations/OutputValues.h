#pragma once

#include "library/Record.h"
#include "run/RunPlan.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <utility>

namespace quillon {

// One final output of a run and the values it was made with: for each chain
// position, the values its varying parameters had in the task that led to
// this output (traced back through the inputs of the later steps).
struct OutputValues {
    QString resultPath;
    QString source; // the input of the first step; empty without input
    bool frameFirst = true; // false for the later maps of a frame
    QList<ParameterValues> steps; // by chain position
};

// Every final output of the plan, in plan order, with its values.
QList<OutputValues> finalOutputValues(const RunPlan& plan);

// The same, read from a run report (or a plan) as `--report` and
// `--dry-run --json` write it. The report names parameters; each name is
// looked up among the parameters of the chain filter at that position.
// False with *error when the text is not such a report or does not fit the
// chain.
bool finalOutputValuesFromReport(
    const QByteArray& json, const RecordList& chain, QList<OutputValues>* outputs, QString* error);

// The values of one output by name, in chain order: "Amount", or with
// several filters "2:Amount" (the filter's position from 1).
QList<std::pair<QString, QVariant>> namedOutputValues(
    const OutputValues& output, const QList<QStringList>& stepParameters);

// Holds one parameter at a value: the value as its range's both ends and
// its start value, active, in sweep (toggle) mode.
void holdParameterAt(Record& parameter, const QVariant& value);

// A chain that makes the output again: a new record for every position
// (shared records are split), and every parameter that varied held at the
// output's value: the value as its range's both ends and its start value,
// active, in sweep (toggle) mode, which the value rule keeps at that value.
// Everything else is as in `chain`.
RecordList chainFixedAt(const RecordList& chain, const OutputValues& output);

// A test strip: `count` values spread evenly from the parameter's from to
// its to value (integers rounded, repeats dropped; a check box gives 0 and
// 1), of the kind's value type.
QList<QVariant> testStripValues(const Record& parameter, int count);
// The chain of one test-strip image: the parameter at `index` of chain
// position `position` held at `value`, every other active parameter held at
// its start value (what chainFixedAt makes).
RecordList testStripChain(const RecordList& chain, int position, qsizetype index, const QVariant& value);

} // namespace quillon
