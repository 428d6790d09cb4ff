#pragma once

// The values a task carries: the value rule over a step's varying
// parameters, the records it advances, and the values written into a run
// file's preset.

#include "library/Record.h"
#include "run/RunPlan.h"
#include "variations/ValueRule.h"

#include <pugixml.hpp>

#include <utility>
#include <vector>

namespace quillon {

class filterProcessObject;

// The value rule over a step's varying parameters for a series of tasks:
// each parameter's record is read once, and left where the rule leaves it
// when the series ends.
class TaskValueSource final {
public:
    explicit TaskValueSource(filterProcessObject& step);
    ~TaskValueSource();
    TaskValueSource(const TaskValueSource&) = delete;
    TaskValueSource& operator=(const TaskValueSource&) = delete;

    // The values of the next task.
    ParameterValues next();

private:
    filterProcessObject& m_step;
    RecordListPtr m_components;
    std::vector<std::pair<qsizetype, VariationCursor>> m_cursors;
};

// The values of the filter's varying parameters for its next task, by the
// value rule (which advances each record).
ParameterValues advanceParameters(filterProcessObject& step);

// Leaves each record where the value rule leaves it after a task with
// these values.
void storeStartValues(filterProcessObject& step, const ParameterValues& values);

// Writes the task's values into the preset's Settings and Controls.
void applyParameters(filterProcessObject& step, const ParameterValues& values, pugi::xml_node settingsNode,
    pugi::xml_node controls);

} // namespace quillon
