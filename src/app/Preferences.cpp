#include "app/Preferences.h"

#include <QSettings>

#include <array>

namespace quillon {

namespace {

using Type = PreferenceKey::Type;

PreferenceKey text(const QString& key, const QString& reset)
{
    return { key, Type::String, QVariant(reset) };
}

PreferenceKey integer(const QString& key, qint64 reset)
{
    return { key, Type::Integer, QVariant(reset) };
}

// Reset order matters only in that PREF_RESET comes last: a store that lost
// power half-way through a reset is reset again at the next launch.
const std::array<PreferenceKey, 35> kTable { {
    integer(pref::CB_ANTIALIAS, 1),
    integer(pref::CB_MT, 1),
    integer(pref::CB_NORMALFLIP, 0),
    integer(pref::CB_DITHER, 0),
    integer(pref::CB_PROGRESSIVE, 1),
    integer(pref::CB_CLEANUP, 1),
    integer(pref::CB_TOOLLOG, 0),
    text(pref::SET_WIDTH, QStringLiteral("600")),
    text(pref::SET_HEIGHT, QStringLiteral("600")),
    text(pref::OUT_PREFIX, QStringLiteral("my-export")),
    // The field's text, as typed; the run reads its leading number.
    text(pref::NUM_FRAMES, QStringLiteral("10")),
    text(pref::TOOL_JOBS, QStringLiteral("1")),
    text(pref::TOOL_PATH, QString()),
    // The tool is a Windows program run under Wine.
    integer(pref::TOOL_WINE, 0),
    text(pref::OUTPUT_DIR, QString()),
    text(pref::INPUT_PATH, QString()),
    text(pref::FILTERS_PATH, QString()),
    integer(pref::JPEG_FULLPRECISION, 1),
    integer(pref::JPEG_QUALITY, 80),
    integer(pref::PNG_BITDEPTH, 0),
    integer(pref::PNG_COMPRESSION, 0),
    integer(pref::PNG_INCLUDETRANS, 0),
    integer(pref::TIFF_BITDEPTH, 0),
    integer(pref::TIFF_COMPRESSION, 0),
    integer(pref::TIFF_INCLUDETRANS, 1),
    integer(pref::TIFF_FLOATFORMAT, 0),
    integer(pref::TGA_BITDEPTH, 0),
    integer(pref::TGA_INCLUDETRANS, 1),
    integer(pref::TGA_FLIPORDER, 0),
    text(pref::EXPORT_FORMAT, QStringLiteral("JPEG")),
    text(pref::PREF_RESET, QStringLiteral("YES")),
    // Written by their pop-ups only; a reset keeps the user's choice.
    { pref::INPUT_MODE, Type::String, std::nullopt },
    { pref::OUTPUT_SUFFIX, Type::String, std::nullopt },
    // A reset keeps the window where the user put it.
    { pref::WINDOW_GEOMETRY, Type::String, std::nullopt },
    { pref::WINDOW_SPLITTER, Type::String, std::nullopt },
} };

} // namespace

Preferences::Preferences()
    : m_settings(std::make_unique<QSettings>(
        QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("Quillon"), QStringLiteral("Quillon")))
{
}

Preferences::Preferences(const QString& filePath)
    : m_settings(std::make_unique<QSettings>(filePath, QSettings::IniFormat))
{
}

Preferences::~Preferences() = default;

std::span<const PreferenceKey> Preferences::table()
{
    return kTable;
}

const PreferenceKey* Preferences::find(const QString& key)
{
    for (const PreferenceKey& row : kTable) {
        if (row.key == key)
            return &row;
    }
    return nullptr;
}

std::optional<QString> Preferences::stringForKey(const QString& key) const
{
    const QVariant value = m_settings->value(key);
    if (!value.isValid())
        return std::nullopt;
    return value.toString();
}

qint64 Preferences::integerForKey(const QString& key) const
{
    const QVariant value = m_settings->value(key);
    bool ok = false;
    const qint64 number = value.toLongLong(&ok);
    if (ok)
        return number;
    // A decimal text with surrounding blanks still gives its number.
    const qint64 trimmed = value.toString().trimmed().toLongLong(&ok);
    return ok ? trimmed : 0;
}

bool Preferences::contains(const QString& key) const
{
    return m_settings->contains(key);
}

QVariant Preferences::value(const QString& key) const
{
    const QVariant stored = m_settings->value(key);
    if (stored.isValid())
        return stored;
    const PreferenceKey* row = find(key);
    return row && row->resetValue ? *row->resetValue : QVariant();
}

bool Preferences::set(const QString& key, const QVariant& value)
{
    const PreferenceKey* row = find(key);
    if (!row || !value.isValid())
        return false;
    if (row->type == Type::String) {
        if (!value.canConvert<QString>())
            return false;
        m_settings->setValue(key, value.toString());
        return true;
    }
    bool ok = false;
    const qint64 number = value.toLongLong(&ok);
    if (!ok)
        return false;
    m_settings->setValue(key, number);
    return true;
}

void Preferences::setString(const QString& key, const QString& value)
{
    m_settings->setValue(key, value);
}

void Preferences::setInteger(const QString& key, qint64 value)
{
    m_settings->setValue(key, value);
}

void Preferences::remove(const QString& key)
{
    m_settings->remove(key);
}

void Preferences::prefsReset()
{
    for (const PreferenceKey& row : kTable) {
        if (row.resetValue)
            m_settings->setValue(row.key, *row.resetValue);
    }
    sync();
}

bool Preferences::sync()
{
    m_settings->sync();
    return m_settings->status() == QSettings::NoError;
}

QString Preferences::fileName() const
{
    return m_settings->fileName();
}

} // namespace quillon
