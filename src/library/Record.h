#pragma once

#include <QMap>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <optional>
#include <vector>

namespace quillon {

// The five kinds of filter parameter, in declaration order; the in-memory
// value of each case is its position.
enum class controlType { kTypeVariations, kTypeSlider, kTypeIntSlider, kTypeAngle, kTypeCheckbox };

class Record;
using RecordPtr = std::shared_ptr<Record>;
using RecordList = std::vector<RecordPtr>;
// A list of records held by reference: "Components" stores one, and the
// parameter editor works on that very list.
using RecordListPtr = std::shared_ptr<RecordList>;

// Record keys. Filter records use lower-case or capitalised keys, parameter
// records upper case with underscores.
namespace key {
inline const QString name = QStringLiteral("name");
inline const QString author = QStringLiteral("author");
inline const QString path = QStringLiteral("path");
inline const QString filtertype = QStringLiteral("filtertype");
inline const QString Components = QStringLiteral("Components");
inline const QString Presets = QStringLiteral("Presets");
inline const QString PresetCount = QStringLiteral("PresetCount");
inline const QString ChoosenPreset = QStringLiteral("ChoosenPreset");
inline const QString UseMaps = QStringLiteral("UseMaps");
inline const QString Maps = QStringLiteral("Maps");

inline const QString CONTROL_ID = QStringLiteral("CONTROL_ID");
inline const QString CONTROL_NAME = QStringLiteral("CONTROL_NAME");
inline const QString CONTROL_TYPE = QStringLiteral("CONTROL_TYPE");
inline const QString CONTROL_MAX = QStringLiteral("CONTROL_MAX");
inline const QString CONTROL_PROXY = QStringLiteral("CONTROL_PROXY");
inline const QString ACTIVE = QStringLiteral("ACTIVE");
inline const QString POPSTATE = QStringLiteral("POPSTATE");
inline const QString STARTVALUE = QStringLiteral("STARTVALUE");
inline const QString MINVALUE = QStringLiteral("MINVALUE");
inline const QString MAXVALUE = QStringLiteral("MAXVALUE");
} // namespace key

// The id of the Variations row, the last parameter of every chain filter.
inline const QString kVariationsId = QStringLiteral("##@@##");

// A filter or parameter record: a string-keyed dictionary of variant values,
// shared by reference between the library, the chain and the editor.
//
// Values are QString, qint64, double, bool, controlType, QVariantList,
// QVariantMap or RecordListPtr (for "Components"). The typed accessors never
// throw: a missing key or a value of another type gives the fallback.
class Record final {
public:
    Record() = default;
    static RecordPtr create() { return std::make_shared<Record>(); }

    bool contains(const QString& key) const { return m_values.contains(key); }
    QVariant value(const QString& key) const { return m_values.value(key); }
    void set(const QString& key, const QVariant& value) { m_values.insert(key, value); }
    void remove(const QString& key) { m_values.remove(key); }
    QStringList keys() const { return m_values.keys(); }
    const QMap<QString, QVariant>& values() const { return m_values; }
    bool isEmpty() const { return m_values.isEmpty(); }

    void setString(const QString& key, const QString& value) { set(key, value); }
    void setInteger(const QString& key, qint64 value) { set(key, QVariant::fromValue<qint64>(value)); }
    void setReal(const QString& key, double value) { set(key, QVariant::fromValue<double>(value)); }
    void setBoolean(const QString& key, bool value) { set(key, QVariant::fromValue<bool>(value)); }
    void setType(const QString& key, controlType value) { set(key, QVariant::fromValue(value)); }
    void setList(const QString& key, const RecordListPtr& list) { set(key, QVariant::fromValue(list)); }

    // A string value; anything else gives the fallback.
    QString string(const QString& key, const QString& fallback = {}) const;
    // A number (integer, real truncated toward zero and clamped, boolean);
    // anything else gives the fallback.
    qint64 integer(const QString& key, qint64 fallback = 0) const;
    // A number as a real; anything else gives the fallback.
    double real(const QString& key, double fallback = 0.0) const;
    // A boolean, or a number compared with zero.
    bool boolean(const QString& key, bool fallback = false) const;
    // True when the key holds a real.
    bool holdsReal(const QString& key) const;
    std::optional<controlType> type(const QString& key = key::CONTROL_TYPE) const;
    // The record list under the key, or null when there is none.
    RecordListPtr list(const QString& key) const;
    QVariantMap dict(const QString& key) const;
    // A list of integers (for "Maps"); entries that are not numbers are skipped.
    QList<qint64> integers(const QString& key) const;

private:
    QMap<QString, QVariant> m_values;
};

// The Variations row: CONTROL_ID "##@@##", CONTROL_NAME "Variations",
// active, random mode, range 1 to 30000.
RecordPtr generateVariationsSettings();

// A new parameter record of the given kind with that kind's initial values.
// Integer sliders get MAXVALUE 1000; the caller overrides it from RangeMax.
RecordPtr makeParameterRecord(controlType kind, const QString& id);

// The CONTROL_NAME of each parameter of a filter's "Components", in order
// (an empty name for an empty entry).
QStringList parameterNames(const Record& filter);

// "PresetCount" of the record's "Presets", or 0.
qint64 presetCount(const Record& filter);

// Chain-file codes under "CONTROL_PROXY": Checkbox 0, IntSlider 1, Slider 2,
// Angle 3, Variations 4.
qint64 chainCodeFromControlType(controlType kind);
std::optional<controlType> controlTypeFromChainCode(qint64 code);

// The name-column tag of a kind, e.g. "[Slider] ".
QString controlTypeTag(controlType kind);

// True for the kinds whose values are reals (sliders and angles).
bool isRealKind(controlType kind);

} // namespace quillon

Q_DECLARE_METATYPE(quillon::controlType)
Q_DECLARE_METATYPE(quillon::RecordListPtr)
