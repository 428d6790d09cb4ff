#pragma once

#include "run/ToolRunOutcome.h"

#include <QByteArray>
#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <optional>

namespace quillon {

class WineTool;

// The value one task gives one parameter of its filter: the parameter's
// position in the filter's list and the value (a double or an integer).
struct ParameterValue {
    qsizetype index = 0;
    QVariant value;
};
// Only the parameters that vary, by ascending position.
using ParameterValues = QList<ParameterValue>;
// A planned value as the plan shows it: reals with three decimals.
QString plannedValueText(const QVariant& value);

// One task of a tool run: one image the tool is to write.
struct PlannedTask {
    qint64 index = 0; // the task's number in its control file (names bth-run-<index>.ffxml)
    std::optional<qint64> mapKind; // the map rendered, for map tasks
    QString resultPath; // the output's full path
    // The first (or only) task of a frame carries the values of the
    // parameters that vary; the other maps of a frame reuse them.
    bool carriesValues = true;
    bool valuesKnown = false;
    ParameterValues values;
    bool skipped = false; // left out (its output exists and is kept); values still advance
};

// One start of the render tool: one input (or none) of one step.
struct PlannedToolRun {
    int step = 0;
    QString input; // empty without input
    QString baseName; // the name its outputs are named after; empty without input
    QList<PlannedTask> tasks;

    // Whether the tool starts: it has a task that is not skipped, or no
    // task at all.
    bool hasWork() const;
};

// A whole run, computed before its first tool run: every tool run in the
// order the run makes them, every output and every value.
struct RunPlan {
    QList<PlannedToolRun> toolRuns;
    int steps = 0;
    quint64 seed = 0;
    QList<QStringList> stepParameters; // per step, the parameter names in the filter's order
    // A tool run under Wine: the launcher, the drives and the Windows form of
    // every path; null for a native tool.
    std::shared_ptr<WineTool> wine;

    // The outputs of the last step, in plan order (skipped ones included).
    QStringList finalOutputs() const;
    // Every output of a step that is not the last.
    QStringList interimOutputs() const;
    qsizetype outputCount() const;
    qsizetype toolRunCount() const;

    // Marks the final outputs at these paths as skipped.
    void skipOutputs(const QStringList& paths);

    // Two tasks with the same Result path: "NAME (inputs A and B)" for each
    // name written twice; empty when every output has a name of its own.
    QStringList collisions() const;

    // One line per output ("PATH  name=value ..."; under Wine
    // "PATH = WINDOWS PATH  name=value ..."), then "N tool runs, M outputs".
    QString describe() const;
    // The plan as JSON (the schema is in docs/run-plan.md); with `statuses`
    // (result path -> status), each task also says what became of it; with
    // `outcomes` (by position in toolRuns), each tool run says how it ended.
    QJsonObject toJsonObject(const QHash<QString, QString>* statuses = nullptr,
        const QList<ToolRunOutcome>* outcomes = nullptr) const;
    QByteArray toJson() const;
};

} // namespace quillon
