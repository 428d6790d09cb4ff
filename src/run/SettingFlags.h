#pragma once

#include <QString>

// The flags of the setting table that set more than their field or check
// their value in their own way (see SettingTable.cpp).

namespace quillon {

struct RunSettings;

namespace settingflags {
bool parseWine(RunSettings& settings, const QString& value, QString* error);
bool parseInputFile(RunSettings& settings, const QString& value, QString* error);
bool parseInputDirectory(RunSettings& settings, const QString& value, QString* error);
bool parseFormat(RunSettings& settings, const QString& value, QString* error);
bool parsePreset(RunSettings& settings, const QString& value, QString* error);
bool parseMaps(RunSettings& settings, const QString& value, QString* error);
bool parseSeed(RunSettings& settings, const QString& value, QString* error);
bool parseJobs(RunSettings& settings, const QString& value, QString* error);
} // namespace settingflags

} // namespace quillon
