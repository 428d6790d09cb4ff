#pragma once

#include "run/RunSettings.h"
#include "run/ToolRunOutcome.h"

#include <QByteArray>
#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>
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

// The frame part of an output name: -1, -0001 or -a for task index 0.
QString frameSuffix(FrameStyle style, qint64 index);
// The map part of an output name: _base, _alpha, ... _metallic.
QString mapSuffix(qint64 mapKind);

// How a tool run names its outputs: head, the frame suffix of the task's
// index (when the run has one), the map suffix of a map task, extension.
// One per tool run, so a task keeps no name of its own.
struct OutputNaming {
    QString head; // the output directory and the name up to the frame suffix
    QString extension;
    FrameStyle style = FrameStyle::Plain;
    bool numbered = true; // whether the frame suffix is part of the name
};

// One task of a tool run: one image the tool is to write. Its name and
// values live in its tool run (PlannedToolRun::resultPath, ::values).
struct PlannedTask {
    qint64 index = 0; // the task's number in its control file (names bth-run-<index>.ffxml)
    qint32 map = -1; // the map rendered, for map tasks; -1 otherwise
    // The first (or only) task of a frame carries the values of the
    // parameters that vary; the other maps of a frame reuse them.
    bool carriesValues = true;
    bool valuesKnown = false;
    bool skipped = false; // left out (its output exists and is kept); values still advance
    quint32 valueStart = 0; // its values in the tool run's value cells
    quint32 valueCount = 0;

    std::optional<qint64> mapKind() const { return map < 0 ? std::nullopt : std::optional<qint64>(map); }
};

// One varying value, as a tool run stores it: 16 bytes.
struct PlannedValue {
    enum Kind : qint16 { Real, Integer, Other };
    qint32 parameter = 0;
    Kind kind = Real;
    union {
        double real = 0;
        qint64 integer; // an Other value: its position in otherValues
    };
};

// One start of the render tool: one input (or none) of one step.
struct PlannedToolRun {
    int step = 0;
    QString input; // empty without input
    QString baseName; // the name its outputs are named after; empty without input
    QList<PlannedTask> tasks;
    OutputNaming naming;
    // Result paths given whole, by task (a plan read back from its JSON);
    // empty when `naming` makes them.
    QStringList givenPaths;
    QList<PlannedValue> valueCells;
    QVariantList otherValues; // values that are neither reals nor integers

    // Appends a task with its values (kept only when it carries values; a
    // task with the same values as the task before shares their cells).
    void appendTask(PlannedTask task, const ParameterValues& values = {});
    // The output's full path of task `t`, made when it is asked for.
    QString resultPath(qsizetype t) const;
    // The values task `t` carries (none for the later maps of a frame).
    ParameterValues values(qsizetype t) const;
    // The values task `t` was made with: its own or its frame's first map's.
    ParameterValues madeWith(qsizetype t) const;
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
    // `stopped` is asked between tool runs: once it says yes, the answer is
    // empty.
    QStringList collisions(const std::function<bool()>& stopped = {}) const;

    // One line per output ("PATH  name=value ..."; under Wine
    // "PATH = WINDOWS PATH  name=value ..."), then "N tool runs, M outputs".
    QString describe() const;
    // The same text with a final newline, written a tool run at a time to
    // `write`, which stops the writing by returning false (then false).
    bool writeDescription(const std::function<bool(const QByteArray&)>& write) const;
    // The plan as JSON (the schema is in docs/run-plan.md); with `statuses`
    // (result path -> status), each task also says what became of it; with
    // `outcomes` (by position in toolRuns), each tool run says how it ended.
    QJsonObject toJsonObject(const QHash<QString, QString>* statuses = nullptr,
        const QList<ToolRunOutcome>* outcomes = nullptr) const;
    // One entry of toolRuns in the JSON.
    QJsonObject toolRunJson(qsizetype r, const QHash<QString, QString>* statuses = nullptr,
        const QList<ToolRunOutcome>* outcomes = nullptr) const;
    // The indented JSON of toJsonObject, written piece by piece (a tool run
    // at a time) to `write`: the whole document is never held. `write` stops
    // the writing by returning false (then false).
    bool writeJson(const std::function<bool(const QByteArray&)>& write) const;
    QByteArray toJson() const;

private:
    QJsonObject wineJson() const;
};

} // namespace quillon
