#pragma once

#include "run/SettingTable.h"

#include <QString>
#include <QVariant>

#include <memory>
#include <optional>
#include <span>

class QSettings;

namespace quillon {

// One row of the preference table: the key, how its value is stored, and the
// value a reset writes (none for keys a reset leaves alone).
struct PreferenceKey {
    enum class Type { String, Integer };
    QString key;
    Type type;
    std::optional<QVariant> resetValue;
};

// The per-user preferences store: a thin wrapper over QSettings with the
// store's typed getters. Writes go to memory first; sync() saves to disk
// (QSettings replaces the file atomically).
class Preferences final {
public:
    // The user's store: QSettings in the native format at the user's config
    // location, organisation and application "Quillon".
    Preferences();
    // A store in the file at `filePath` (tests, the demo profile).
    explicit Preferences(const QString& filePath);
    ~Preferences();
    Preferences(const Preferences&) = delete;
    Preferences& operator=(const Preferences&) = delete;

    // Every key with its stored type and reset value, in the order a reset
    // writes them (PREF_RESET last): the settings of the setting table the
    // window keeps, the Filters directory, PREF_RESET, then the keys without
    // a reset value (INPUT_MODE, OUTPUT_SUFFIX, the window's layout).
    static std::span<const PreferenceKey> table();
    static const PreferenceKey* find(const QString& key);

    // The text under `key`; none when absent. A stored empty text is present,
    // and a stored integer reads as its decimal text.
    std::optional<QString> stringForKey(const QString& key) const;
    // The integer under `key`; 0 when absent or not a number (a decimal text
    // gives its number).
    qint64 integerForKey(const QString& key) const;
    bool contains(const QString& key) const;

    // The stored value, or the table's reset value when nothing is stored
    // (an invalid QVariant for keys without one).
    QVariant value(const QString& key) const;
    // Stores `value` as the key's type in the table (text or integer). False,
    // and nothing stored, for a key not in the table or a value that is not
    // of that type (a text that is no decimal number for an integer key).
    bool set(const QString& key, const QVariant& value);

    void setString(const QString& key, const QString& value);
    void setInteger(const QString& key, qint64 value);
    void remove(const QString& key);

    // Writes every reset value in table order, then saves.
    void prefsReset();
    // Saves pending writes to disk and picks up changes made by others.
    // False when the store could not be written.
    bool sync();

    QString fileName() const;

private:
    std::unique_ptr<QSettings> m_settings;
};

} // namespace quillon
