#pragma once

#include <QJsonValue>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <span>

namespace quillon {

struct RunSettings;

// Preference keys. Each setting of the window persists under one of these.
namespace pref {
inline const QString PREF_RESET = QStringLiteral("PREF_RESET");
inline const QString TOOL_PATH = QStringLiteral("TOOL_PATH");
inline const QString TOOL_JOBS = QStringLiteral("TOOL_JOBS");
inline const QString TOOL_WINE = QStringLiteral("TOOL_WINE");
inline const QString FILTERS_PATH = QStringLiteral("FILTERS_PATH");
inline const QString OUTPUT_DIR = QStringLiteral("OUTPUT_DIR");
inline const QString INPUT_PATH = QStringLiteral("INPUT_PATH");
inline const QString INPUT_MODE = QStringLiteral("INPUT_MODE");
inline const QString SET_WIDTH = QStringLiteral("SET_WIDTH");
inline const QString SET_HEIGHT = QStringLiteral("SET_HEIGHT");
inline const QString NUM_FRAMES = QStringLiteral("NUM_FRAMES");
inline const QString OUT_PREFIX = QStringLiteral("OUT_PREFIX");
inline const QString OUTPUT_SUFFIX = QStringLiteral("OUTPUT_SUFFIX");
inline const QString CB_ANTIALIAS = QStringLiteral("CB_ANTIALIAS");
inline const QString CB_MT = QStringLiteral("CB_MT");
inline const QString CB_NORMALFLIP = QStringLiteral("CB_NORMALFLIP");
inline const QString CB_DITHER = QStringLiteral("CB_DITHER");
inline const QString CB_PROGRESSIVE = QStringLiteral("CB_PROGRESSIVE");
inline const QString CB_CLEANUP = QStringLiteral("CB_CLEANUP");
inline const QString CB_TOOLLOG = QStringLiteral("CB_TOOLLOG");
inline const QString EXPORT_FORMAT = QStringLiteral("EXPORT_FORMAT");
inline const QString JPEG_FULLPRECISION = QStringLiteral("JPEG_FULLPRECISION");
inline const QString JPEG_QUALITY = QStringLiteral("JPEG_QUALITY");
inline const QString PNG_BITDEPTH = QStringLiteral("PNG_BITDEPTH");
inline const QString PNG_COMPRESSION = QStringLiteral("PNG_COMPRESSION");
inline const QString PNG_INCLUDETRANS = QStringLiteral("PNG_INCLUDETRANS");
inline const QString TIFF_BITDEPTH = QStringLiteral("TIFF_BITDEPTH");
inline const QString TIFF_COMPRESSION = QStringLiteral("TIFF_COMPRESSION");
inline const QString TIFF_INCLUDETRANS = QStringLiteral("TIFF_INCLUDETRANS");
inline const QString TIFF_FLOATFORMAT = QStringLiteral("TIFF_FLOATFORMAT");
inline const QString TGA_BITDEPTH = QStringLiteral("TGA_BITDEPTH");
inline const QString TGA_INCLUDETRANS = QStringLiteral("TGA_INCLUDETRANS");
inline const QString TGA_FLIPORDER = QStringLiteral("TGA_FLIPORDER");
// The window's place and size, and the split between chain and pages.
inline const QString WINDOW_GEOMETRY = QStringLiteral("WINDOW_GEOMETRY");
inline const QString WINDOW_SPLITTER = QStringLiteral("WINDOW_SPLITTER");
} // namespace pref

// What a setting holds; it decides how the value is read from a flag,
// written to JSON and shown by the settings page.
enum class SettingKind {
    Path, // a path (text)
    Text, // free text
    WholeNumber, // text holding a whole number, as a field keeps it
    Integer, // a number the run keeps as an int
    Switch, // 1 on, 0 off
    MixedSwitch, // 1 on, 0 off, -1 mixed
    Choice, // the index of one of `choices`
    Name, // one of `choices`, kept as its text
    Maps, // the ten map boxes
    Seed, // an optional 64-bit seed
};

// What the value of a command-line flag is, for the help and the completions.
enum class FlagValue { None, Text, File, Directory, Command, Choice };

// One setting of a run: every place that stores, shows, parses or writes it
// reads this row. Adding a setting means adding its RunSettings field, one
// row in SettingTable.cpp and, for the window, its control.
struct SettingDefinition {
    QString key; // the RunSettings field
    SettingKind kind = SettingKind::Text;
    QVariant defaultValue; // as get() gives it; a RunSettings starts with it

    QString preferenceKey; // empty: the window does not keep it
    bool preferenceIsText = false; // stored as text, else as an integer
    bool resets = true; // Reset Preferences writes the default

    QString flag; // quillon-cli's long option, without "--"; empty: none
    QString flagValueName; // empty: a flag without value that turns it on
    QString flagHelp;
    FlagValue flagValue = FlagValue::Text;
    QStringList choices; // Choice, Name: the values a flag takes (by code)
    // A flag that sets more than the field, or checks its value its own way:
    // false and *error for a bad value.
    bool (*parseFlag)(RunSettings& settings, const QString& value, QString* error) = nullptr;

    QString jsonName; // in a cluster bundle's settings; empty: not there
    QString reportName; // in the run report's settings; empty: not there
    // The report's value when it is not the JSON value.
    QJsonValue (*reportValue)(const RunSettings& settings) = nullptr;

    QVariant (*get)(const RunSettings& settings) = nullptr;
    void (*set)(RunSettings& settings, const QVariant& value) = nullptr;

    // The value as a flag gives it (trimmed, checked by kind); false and
    // *error ("--frames needs a whole number") when it is not one.
    bool applyFlag(RunSettings& settings, const QString& value, QString* error) const;
    // The value in JSON (bundle and report) and back; a JSON value of the
    // wrong type leaves the setting alone.
    QJsonValue toJson(const RunSettings& settings) const;
    void fromJson(RunSettings& settings, const QJsonValue& value) const;
    // The stored form of `value` in the preferences (text or integer).
    QVariant preferenceValue(const QVariant& value) const;
};

// Every setting, in the order quillon-cli lists their flags.
std::span<const SettingDefinition> settingTable();
// The row of `key` (a RunSettings field), of a preference key, of a flag;
// null when there is none.
const SettingDefinition* findSetting(const QString& key);
const SettingDefinition* findSettingByPreference(const QString& preferenceKey);
const SettingDefinition* findSettingByFlag(const QString& flag);

} // namespace quillon
