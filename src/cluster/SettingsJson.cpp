// The run settings of a cluster bundle as JSON: every setting with a JSON
// name, so each element of the job array runs with exactly the settings of
// the plan.

#include "cluster/ClusterBundle.h"

#include "run/SettingTable.h"

namespace quillon {

QJsonObject settingsToJson(const RunSettings& settings)
{
    QJsonObject json;
    for (const SettingDefinition& row : settingTable()) {
        if (row.jsonName.isEmpty())
            continue;
        if (const QJsonValue value = row.toJson(settings); !value.isUndefined())
            json.insert(row.jsonName, value);
    }
    return json;
}

RunSettings settingsFromJson(const QJsonObject& json)
{
    RunSettings settings;
    for (const SettingDefinition& row : settingTable()) {
        if (!row.jsonName.isEmpty())
            row.fromJson(settings, json.value(row.jsonName));
    }
    return settings;
}

} // namespace quillon
