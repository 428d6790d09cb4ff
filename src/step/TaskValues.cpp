#include "step/TaskValues.h"

#include "run/RunSettings.h"
#include "step/FilterProcessObject.h"
#include "step/XmlFiles.h"

#include <cstring>
#include <string>
#include <unordered_map>

namespace quillon {

namespace {

// The new value of one parameter, written where its kind belongs.
void writeParameterValue(controlType kind, const QVariant& value, pugi::xml_node control)
{
    QString text;
    const char* target = "Value";
    switch (kind) {
    case controlType::kTypeSlider:
    case controlType::kTypeAngle:
        text = QString::asprintf("%0.3f", value.toDouble());
        break;
    case controlType::kTypeIntSlider:
        text = QString::number(value.toLongLong());
        break;
    case controlType::kTypeCheckbox:
        text = value.toLongLong() > 0 ? QStringLiteral("true") : QStringLiteral("false");
        target = "Checked";
        break;
    case controlType::kTypeVariations:
        return;
    }
    for (pugi::xml_node child = control.first_child(); child; child = child.next_sibling()) {
        if (child.type() != pugi::node_element)
            continue;
        const bool isValue = std::strcmp(child.name(), "Value") == 0;
        const bool isChecked = std::strcmp(child.name(), "Checked") == 0;
        if (!isValue && !isChecked)
            continue;
        child.remove_attribute("value");
        if (std::strcmp(child.name(), target) == 0)
            setAttribute(child, "value", text);
    }
}

// Calls `apply(record, value)` for each value whose parameter the step's
// list holds (a position outside the list, or an empty entry, is passed
// over).
template <class Apply> void forEachValueRecord(const RecordList& components, const ParameterValues& values, Apply apply)
{
    for (const auto& [index, value] : values) {
        if (index < 0 || index >= static_cast<qsizetype>(components.size()))
            continue;
        if (const RecordPtr& parameter = components[static_cast<size_t>(index)])
            apply(*parameter, value);
    }
}

} // namespace

TaskValueSource::TaskValueSource(filterProcessObject& step)
    : m_step(step)
    , m_components(step.filterData ? step.filterData->list(key::Components) : nullptr)
{
    if (!m_components)
        return;
    const std::optional<double> frames = step.settings().frameCountReal();
    for (qsizetype i = 0; i < static_cast<qsizetype>(m_components->size()); ++i) {
        const RecordPtr& parameter = (*m_components)[static_cast<size_t>(i)];
        if (!parameter)
            continue;
        VariationCursor cursor(*parameter, frames);
        if (cursor.varies())
            m_cursors.push_back({ i, cursor });
    }
}

TaskValueSource::~TaskValueSource()
{
    for (const auto& [index, cursor] : m_cursors)
        cursor.storeInto(*(*m_components)[static_cast<size_t>(index)]);
}

ParameterValues TaskValueSource::next()
{
    ParameterValues values;
    values.reserve(static_cast<qsizetype>(m_cursors.size()));
    for (auto& [index, cursor] : m_cursors)
        values.append({ index, cursor.next(m_step.randomDraw) });
    return values;
}

ParameterValues advanceParameters(filterProcessObject& step)
{
    return TaskValueSource(step).next();
}

void storeStartValues(filterProcessObject& step, const ParameterValues& values)
{
    if (!step.advancesRecords())
        return;
    const RecordListPtr components = step.filterData ? step.filterData->list(key::Components) : nullptr;
    if (!components)
        return;
    forEachValueRecord(*components, values, [](Record& parameter, const QVariant& value) {
        if (value.typeId() == QMetaType::Double)
            parameter.setReal(key::STARTVALUE, value.toDouble());
        else
            parameter.setInteger(key::STARTVALUE, value.toLongLong());
    });
}

void applyParameters(filterProcessObject& step, const ParameterValues& values, pugi::xml_node settingsNode,
    pugi::xml_node controls)
{
    const RecordListPtr components = step.filterData->list(key::Components);
    if (!components)
        return;
    storeStartValues(step, values);
    // Controls by id, the first element of each id; built only when needed.
    std::unordered_map<std::string, pugi::xml_node> byId;
    bool indexed = false;
    forEachValueRecord(*components, values, [&](const Record& parameter, const QVariant& value) {
        const std::optional<controlType> kind = parameter.type();
        if (!kind)
            return;
        if (*kind == controlType::kTypeVariations) {
            rewriteAttribute(settingsNode, "variation", QString::number(value.toLongLong()));
            return;
        }
        if (!indexed) {
            for (pugi::xml_node control = controls.first_child(); control; control = control.next_sibling()) {
                if (control.type() == pugi::node_element)
                    byId.try_emplace(control.attribute("id").value(), control);
            }
            indexed = true;
        }
        const auto found = byId.find(parameter.string(key::CONTROL_ID).toStdString());
        if (found != byId.end())
            writeParameterValue(*kind, value, found->second);
    });
}

} // namespace quillon
