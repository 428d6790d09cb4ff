#pragma once

#include <QString>
#include <QVariant>

#include <memory>
#include <optional>
#include <span>

class QSettings;

namespace quillon {

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
    // writes them (PREF_RESET last); INPUT_MODE, OUTPUT_SUFFIX and the
    // window's layout follow with no reset value.
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
