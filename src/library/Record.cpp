#include "library/Record.h"

#include <cmath>
#include <limits>

namespace quillon {

namespace {

bool isIntegerType(int typeId)
{
    switch (typeId) {
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Bool:
        return true;
    default:
        return false;
    }
}

bool isRealType(int typeId)
{
    return typeId == QMetaType::Double || typeId == QMetaType::Float;
}

qint64 clampToInteger(double value, qint64 fallback)
{
    if (std::isnan(value))
        return fallback;
    constexpr double lo = static_cast<double>(std::numeric_limits<qint64>::min());
    constexpr double hi = static_cast<double>(std::numeric_limits<qint64>::max());
    if (value <= lo)
        return std::numeric_limits<qint64>::min();
    if (value >= hi)
        return std::numeric_limits<qint64>::max();
    return static_cast<qint64>(value);
}

} // namespace

QString Record::string(const QString& key, const QString& fallback) const
{
    const auto it = m_values.constFind(key);
    if (it == m_values.cend() || it->typeId() != QMetaType::QString)
        return fallback;
    return it->toString();
}

qint64 Record::integer(const QString& key, qint64 fallback) const
{
    const auto it = m_values.constFind(key);
    if (it == m_values.cend())
        return fallback;
    const int typeId = it->typeId();
    if (typeId == QMetaType::ULongLong) {
        const qulonglong v = it->toULongLong();
        return v > static_cast<qulonglong>(std::numeric_limits<qint64>::max())
            ? std::numeric_limits<qint64>::max()
            : static_cast<qint64>(v);
    }
    if (isIntegerType(typeId))
        return it->toLongLong();
    if (isRealType(typeId))
        return clampToInteger(it->toDouble(), fallback);
    return fallback;
}

double Record::real(const QString& key, double fallback) const
{
    const auto it = m_values.constFind(key);
    if (it == m_values.cend())
        return fallback;
    const int typeId = it->typeId();
    if (isIntegerType(typeId) || isRealType(typeId))
        return it->toDouble();
    return fallback;
}

bool Record::boolean(const QString& key, bool fallback) const
{
    const auto it = m_values.constFind(key);
    if (it == m_values.cend())
        return fallback;
    const int typeId = it->typeId();
    if (isIntegerType(typeId))
        return it->toLongLong() != 0;
    if (isRealType(typeId))
        return it->toDouble() != 0.0;
    return fallback;
}

bool Record::holdsReal(const QString& key) const
{
    const auto it = m_values.constFind(key);
    return it != m_values.cend() && isRealType(it->typeId());
}

std::optional<controlType> Record::type(const QString& key) const
{
    const auto it = m_values.constFind(key);
    if (it == m_values.cend() || it->typeId() != qMetaTypeId<controlType>())
        return std::nullopt;
    return it->value<controlType>();
}

RecordListPtr Record::list(const QString& key) const
{
    const auto it = m_values.constFind(key);
    if (it == m_values.cend() || it->typeId() != qMetaTypeId<RecordListPtr>())
        return nullptr;
    return it->value<RecordListPtr>();
}

QVariantMap Record::dict(const QString& key) const
{
    const auto it = m_values.constFind(key);
    if (it == m_values.cend() || it->typeId() != QMetaType::QVariantMap)
        return {};
    return it->toMap();
}

QList<qint64> Record::integers(const QString& key) const
{
    QList<qint64> result;
    const auto it = m_values.constFind(key);
    if (it == m_values.cend() || it->typeId() != QMetaType::QVariantList)
        return result;
    for (const QVariant& entry : it->toList()) {
        if (isIntegerType(entry.typeId()))
            result.append(entry.toLongLong());
        else if (isRealType(entry.typeId()))
            result.append(clampToInteger(entry.toDouble(), 0));
    }
    return result;
}

RecordPtr generateVariationsSettings()
{
    auto row = Record::create();
    row->setString(key::CONTROL_ID, kVariationsId);
    row->setString(key::CONTROL_NAME, QStringLiteral("Variations"));
    row->setType(key::CONTROL_TYPE, controlType::kTypeVariations);
    row->setInteger(key::ACTIVE, 1);
    row->setInteger(key::POPSTATE, 0);
    row->setInteger(key::STARTVALUE, 1);
    row->setInteger(key::MINVALUE, 1);
    row->setInteger(key::MAXVALUE, 30000);
    return row;
}

RecordPtr makeParameterRecord(controlType kind, const QString& id)
{
    if (kind == controlType::kTypeVariations)
        return generateVariationsSettings();
    auto row = Record::create();
    row->setString(key::CONTROL_ID, id);
    row->setType(key::CONTROL_TYPE, kind);
    row->setInteger(key::ACTIVE, 0);
    row->setInteger(key::POPSTATE, 0);
    switch (kind) {
    case controlType::kTypeIntSlider:
        row->setInteger(key::STARTVALUE, 1);
        row->setInteger(key::MINVALUE, 1);
        row->setInteger(key::MAXVALUE, 1000);
        break;
    case controlType::kTypeSlider:
        row->setReal(key::STARTVALUE, 0.0);
        row->setReal(key::MINVALUE, 0.0);
        row->setReal(key::MAXVALUE, 1.0);
        break;
    case controlType::kTypeAngle:
        row->setReal(key::STARTVALUE, 0.0);
        row->setReal(key::MINVALUE, 0.0);
        row->setReal(key::MAXVALUE, 360.0);
        break;
    case controlType::kTypeCheckbox:
        row->setInteger(key::STARTVALUE, 0);
        row->setInteger(key::MINVALUE, 0);
        row->setInteger(key::MAXVALUE, 1);
        break;
    case controlType::kTypeVariations:
        break;
    }
    return row;
}

QStringList parameterNames(const Record& filter)
{
    QStringList names;
    if (const RecordListPtr components = filter.list(key::Components)) {
        for (const RecordPtr& parameter : *components)
            names.append(parameter ? parameter->string(key::CONTROL_NAME) : QString());
    }
    return names;
}

qint64 presetCount(const Record& filter)
{
    const QVariantMap presets = filter.dict(key::Presets);
    const QVariant count = presets.value(key::PresetCount);
    const int typeId = count.typeId();
    if (isIntegerType(typeId))
        return count.toLongLong();
    if (isRealType(typeId))
        return clampToInteger(count.toDouble(), 0);
    return 0;
}

qint64 chainCodeFromControlType(controlType kind)
{
    switch (kind) {
    case controlType::kTypeCheckbox:
        return 0;
    case controlType::kTypeIntSlider:
        return 1;
    case controlType::kTypeSlider:
        return 2;
    case controlType::kTypeAngle:
        return 3;
    case controlType::kTypeVariations:
        return 4;
    }
    return 4;
}

std::optional<controlType> controlTypeFromChainCode(qint64 code)
{
    switch (code) {
    case 0:
        return controlType::kTypeCheckbox;
    case 1:
        return controlType::kTypeIntSlider;
    case 2:
        return controlType::kTypeSlider;
    case 3:
        return controlType::kTypeAngle;
    case 4:
        return controlType::kTypeVariations;
    default:
        return std::nullopt;
    }
}

QString controlTypeTag(controlType kind)
{
    switch (kind) {
    case controlType::kTypeVariations:
        return QStringLiteral("[Variation] ");
    case controlType::kTypeSlider:
        return QStringLiteral("[Slider] ");
    case controlType::kTypeIntSlider:
        return QStringLiteral("[IntSlider] ");
    case controlType::kTypeAngle:
        return QStringLiteral("[Angle] ");
    case controlType::kTypeCheckbox:
        return QStringLiteral("[Checkbox] ");
    }
    return {};
}

bool isRealKind(controlType kind)
{
    return kind == controlType::kTypeSlider || kind == controlType::kTypeAngle;
}

} // namespace quillon
