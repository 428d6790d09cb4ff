#include "app/Preferences.h"

#include <QSettings>

#include <vector>

namespace quillon {

namespace {

using Type = PreferenceKey::Type;

std::vector<PreferenceKey> makeTable()
{
    std::vector<PreferenceKey> resets;
    std::vector<PreferenceKey> kept;
    for (const SettingDefinition& row : settingTable()) {
        if (row.preferenceKey.isEmpty())
            continue;
        const Type type = row.preferenceIsText ? Type::String : Type::Integer;
        if (row.resets)
            resets.push_back({ row.preferenceKey, type, row.preferenceValue(row.defaultValue) });
        else
            kept.push_back({ row.preferenceKey, type, std::nullopt });
    }
    // Keys of the window alone. PREF_RESET comes last of the reset values: a
    // store that lost power half-way through a reset is reset again at the
    // next launch.
    resets.push_back({ pref::FILTERS_PATH, Type::String, QVariant(QString()) });
    resets.push_back({ pref::PREF_RESET, Type::String, QVariant(QStringLiteral("YES")) });
    // A reset keeps the window where the user put it.
    kept.push_back({ pref::WINDOW_GEOMETRY, Type::String, std::nullopt });
    kept.push_back({ pref::WINDOW_SPLITTER, Type::String, std::nullopt });
    resets.insert(resets.end(), kept.begin(), kept.end());
    return resets;
}

const std::vector<PreferenceKey>& keyTable()
{
    static const std::vector<PreferenceKey> table = makeTable();
    return table;
}

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
    return keyTable();
}

const PreferenceKey* Preferences::find(const QString& key)
{
    for (const PreferenceKey& row : keyTable()) {
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
    for (const PreferenceKey& row : keyTable()) {
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
