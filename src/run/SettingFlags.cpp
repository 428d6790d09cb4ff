// How a row of the setting table reads a flag, and writes its value to JSON
// and to the preferences; the flags that read in a way of their own.

#include "run/SettingFlags.h"

#include "run/RunSettings.h"
#include "run/SettingTable.h"

#include <QJsonArray>
#include <QThread>

#include <algorithm>
#include <limits>
#include <optional>

namespace quillon {

namespace {

using Kind = SettingKind;

std::optional<qint64> wholeNumber(const QString& text)
{
    bool ok = false;
    const qint64 value = text.trimmed().toLongLong(&ok);
    return ok ? std::optional<qint64>(value) : std::nullopt;
}

bool refuse(QString* error, const QString& message)
{
    if (error)
        *error = message;
    return false;
}

bool holdsText(Kind kind)
{
    return kind == Kind::Path || kind == Kind::Text || kind == Kind::WholeNumber || kind == Kind::Name;
}

} // namespace

namespace settingflags {

bool parseWine(RunSettings& settings, const QString& value, QString* /*error*/)
{
    settings.toolWine = 1;
    settings.winePrefix = value;
    return true;
}

bool parseInputFile(RunSettings& settings, const QString& value, QString* /*error*/)
{
    settings.inputMode = InputMode::File;
    settings.sourcePath = value;
    return true;
}

bool parseInputDirectory(RunSettings& settings, const QString& value, QString* /*error*/)
{
    settings.inputMode = InputMode::Directory;
    settings.sourcePath = value;
    return true;
}

bool parseFormat(RunSettings& settings, const QString& value, QString* error)
{
    const QString format = value.toUpper();
    if (!findSetting(QStringLiteral("format"))->choices.contains(format))
        return refuse(error, QStringLiteral("Unknown format: ") + value);
    settings.format = format;
    return true;
}

bool parsePreset(RunSettings& settings, const QString& value, QString* error)
{
    const auto preset = wholeNumber(value);
    if (!preset || *preset < 0 || *preset > std::numeric_limits<int>::max())
        return refuse(error, QStringLiteral("--preset needs a preset index from 0"));
    settings.presetIndex = static_cast<int>(*preset);
    return true;
}

bool parseMaps(RunSettings& settings, const QString& value, QString* error)
{
    const QStringList& names = findSetting(QStringLiteral("mapBoxes"))->choices;
    settings.activateMaps = 1;
    settings.mapBoxes.fill(0);
    for (const QString& name : value.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const qsizetype index = names.indexOf(name.trimmed().toLower());
        if (index < 0)
            return refuse(error, QStringLiteral("Unknown map kind: ") + name);
        settings.mapBoxes[static_cast<size_t>(index)] = 1;
    }
    if (std::find(settings.mapBoxes.cbegin(), settings.mapBoxes.cend(), 1) == settings.mapBoxes.cend())
        return refuse(error, QStringLiteral("--maps needs at least one map kind"));
    return true;
}

bool parseSeed(RunSettings& settings, const QString& value, QString* error)
{
    bool ok = false;
    const quint64 seed = value.trimmed().toULongLong(&ok);
    if (!ok)
        return refuse(error, QStringLiteral("--seed needs a non-negative whole number"));
    settings.seed = seed;
    return true;
}

bool parseJobs(RunSettings& settings, const QString& value, QString* error)
{
    const auto jobs = wholeNumber(value);
    if (!jobs || *jobs < 0 || *jobs > 1024)
        return refuse(error, QStringLiteral("--jobs needs a number of processes from 0 to 1024"));
    settings.toolJobs = *jobs == 0 ? std::max(1, QThread::idealThreadCount()) : static_cast<int>(*jobs);
    return true;
}

} // namespace settingflags

bool SettingDefinition::applyFlag(RunSettings& settings, const QString& value, QString* error) const
{
    if (parseFlag)
        return parseFlag(settings, value, error);
    if (flagValueName.isEmpty()) {
        set(settings, 1);
        return true;
    }
    switch (kind) {
    case Kind::WholeNumber:
        if (!wholeNumber(value))
            return refuse(error, QStringLiteral("--%1 needs a whole number").arg(flag));
        set(settings, value.trimmed());
        return true;
    case Kind::Switch:
    case Kind::MixedSwitch: {
        const QString state = value.toLower();
        if (state != QLatin1String("on") && state != QLatin1String("off"))
            return refuse(error, QStringLiteral("--%1 takes on or off").arg(flag));
        set(settings, state == QLatin1String("on") ? 1 : 0);
        return true;
    }
    case Kind::Choice: {
        const qsizetype code = choices.indexOf(value.toLower());
        if (code < 0)
            return refuse(error, QStringLiteral("--%1 takes %2").arg(flag, choices.join(QLatin1Char('|'))));
        set(settings, static_cast<int>(code));
        return true;
    }
    default:
        set(settings, value);
        return true;
    }
}

QJsonValue SettingDefinition::toJson(const RunSettings& settings) const
{
    const QVariant value = get(settings);
    if (holdsText(kind))
        return value.toString();
    switch (kind) {
    case Kind::Maps:
        return QJsonArray::fromVariantList(value.toList());
    case Kind::Seed:
        // 64 bits do not fit a JSON number.
        return value.isValid() ? QJsonValue(QString::number(value.toULongLong()))
                               : QJsonValue(QJsonValue::Undefined);
    default:
        return value.toInt();
    }
}

void SettingDefinition::fromJson(RunSettings& settings, const QJsonValue& value) const
{
    if (holdsText(kind)) {
        if (value.isString())
            set(settings, value.toString());
        return;
    }
    switch (kind) {
    case Kind::Maps: {
        QVariantList boxes;
        for (const QJsonValue box : value.toArray())
            boxes.append(box.toInt());
        set(settings, boxes);
        return;
    }
    case Kind::Seed: {
        bool ok = false;
        const quint64 seed = value.toString().toULongLong(&ok);
        if (ok)
            set(settings, QVariant::fromValue<qulonglong>(seed));
        return;
    }
    default:
        if (value.isDouble())
            set(settings, value.toInt());
        return;
    }
}

QVariant SettingDefinition::preferenceValue(const QVariant& value) const
{
    if (preferenceIsText)
        return value.toString();
    return QVariant(static_cast<qint64>(leadingInteger(value.toString()).value_or(0)));
}

} // namespace quillon
