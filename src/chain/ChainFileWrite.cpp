#include "chain/ChainFile.h"
#include "chain/PlistSupport.h"

#include <QByteArray>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringList>
#include <QTimeZone>

#include <plist/plist.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace quillon {
namespace {

using namespace plistsupport;

PlistPtr toPlist(const QVariant& value, int depth, const QString& where, QString* error);

PlistPtr recordToPlist(const Record& record, int depth, const QString& where, QString* error)
{
    PlistPtr dict(plist_new_dict());
    const auto& values = record.values();
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        PlistPtr item = toPlist(it.value(), depth + 1, where + QLatin1Char('/') + it.key(), error);
        if (!item)
            return {};
        plist_dict_set_item(dict.get(), it.key().toUtf8().constData(), item.release());
    }
    return dict;
}

PlistPtr toPlist(const QVariant& value, int depth, const QString& where, QString* error)
{
    if (depth > kMaxChainNesting) {
        setError(error, QStringLiteral("The value at %1 is nested too deeply.").arg(where));
        return {};
    }
    const int typeId = value.typeId();
    switch (typeId) {
    case QMetaType::QString:
        return PlistPtr(plist_new_string(value.toString().toUtf8().constData()));
    case QMetaType::Bool:
        return PlistPtr(plist_new_bool(value.toBool() ? 1 : 0));
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::UInt:
    case QMetaType::UShort:
        // libplist keeps signed values in the unsigned node and writes them signed.
        return PlistPtr(plist_new_uint(static_cast<uint64_t>(value.toLongLong())));
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        if (value.toULongLong() > static_cast<qulonglong>(std::numeric_limits<qint64>::max())) {
            setError(error, QStringLiteral("The integer at %1 is too large.").arg(where));
            return {};
        }
        return PlistPtr(plist_new_uint(static_cast<uint64_t>(value.toULongLong())));
    case QMetaType::Double:
    case QMetaType::Float: {
        const double real = value.toDouble();
        if (!std::isfinite(real)) {
            setError(error, QStringLiteral("The number at %1 is not finite.").arg(where));
            return {};
        }
        return PlistPtr(plist_new_real(real));
    }
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        return PlistPtr(plist_new_data(bytes.constData(), static_cast<uint64_t>(bytes.size())));
    }
    case QMetaType::QDateTime: {
        const QDateTime when = value.toDateTime();
        if (!when.isValid()) {
            setError(error, QStringLiteral("The date at %1 is not valid.").arg(where));
            return {};
        }
        const qint64 msecs = when.toMSecsSinceEpoch() - kPlistEpochOffset * 1000;
        const qint64 secs = msecs >= 0 ? msecs / 1000 : -((-msecs + 999) / 1000);
        if (secs < std::numeric_limits<int32_t>::min() || secs > std::numeric_limits<int32_t>::max()) {
            setError(error, QStringLiteral("The date at %1 is out of range.").arg(where));
            return {};
        }
        return PlistPtr(
            plist_new_date(static_cast<int32_t>(secs), static_cast<int32_t>((msecs - secs * 1000) * 1000)));
    }
    case QMetaType::QStringList:
    case QMetaType::QVariantList: {
        PlistPtr array(plist_new_array());
        const QVariantList items = value.toList();
        for (qsizetype i = 0; i < items.size(); ++i) {
            PlistPtr item = toPlist(items.at(i), depth + 1, where + QStringLiteral("[%1]").arg(i), error);
            if (!item)
                return {};
            plist_array_append_item(array.get(), item.release());
        }
        return array;
    }
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash: {
        PlistPtr dict(plist_new_dict());
        const QVariantMap items = value.toMap();
        for (auto it = items.cbegin(); it != items.cend(); ++it) {
            PlistPtr item = toPlist(it.value(), depth + 1, where + QLatin1Char('/') + it.key(), error);
            if (!item)
                return {};
            plist_dict_set_item(dict.get(), it.key().toUtf8().constData(), item.release());
        }
        return dict;
    }
    default:
        break;
    }
    if (typeId == QMetaType::fromType<RecordListPtr>().id()) {
        PlistPtr array(plist_new_array());
        const RecordListPtr list = value.value<RecordListPtr>();
        if (list) {
            for (std::size_t i = 0; i < list->size(); ++i) {
                const RecordPtr& record = (*list)[i];
                if (!record)
                    continue;
                PlistPtr item
                    = recordToPlist(*record, depth + 1, where + QStringLiteral("[%1]").arg(i), error);
                if (!item)
                    return {};
                plist_array_append_item(array.get(), item.release());
            }
        }
        return array;
    }
    setError(error,
        QStringLiteral("The value at %1 (%2) cannot be stored in a chain file.")
            .arg(where, QString::fromLatin1(value.typeName() ? value.typeName() : "none")));
    return {};
}

} // namespace

QVariantList cleanFilterArray(const RecordList& chain)
{
    QVariantList storable;
    storable.reserve(static_cast<qsizetype>(chain.size()));
    for (const RecordPtr& filter : chain) {
        if (!filter)
            continue;
        QVariantMap entry = filter->values();
        QVariantList params;
        if (const RecordListPtr components = filter->list(key::Components)) {
            for (const RecordPtr& param : *components) {
                if (!param)
                    continue;
                QVariantMap copy = param->values();
                const std::optional<controlType> kind = param->type(key::CONTROL_TYPE);
                copy.remove(key::CONTROL_TYPE);
                copy.remove(key::CONTROL_PROXY);
                if (kind)
                    copy.insert(
                        key::CONTROL_PROXY, QVariant::fromValue<qint64>(chainCodeFromControlType(*kind)));
                params.append(copy);
            }
        }
        entry.insert(key::Components, params);
        storable.append(entry);
    }
    return storable;
}

std::optional<QByteArray> chainFileBytes(const RecordList& chain, QString* error)
{
    const QVariantList storable = cleanFilterArray(chain);
    PlistPtr root(plist_new_array());
    for (qsizetype i = 0; i < storable.size(); ++i) {
        const QString where = QStringLiteral("entry %1").arg(i + 1);
        const QVariantList params = storable.at(i).toMap().value(key::Components).toList();
        for (qsizetype p = 0; p < params.size(); ++p) {
            if (!params.at(p).toMap().contains(key::CONTROL_PROXY)) {
                setError(error, QStringLiteral("Parameter %1 of %2 has no kind.").arg(p + 1).arg(where));
                return std::nullopt;
            }
        }
        PlistPtr item = toPlist(storable.at(i), 1, where, error);
        if (!item)
            return std::nullopt;
        plist_array_append_item(root.get(), item.release());
    }

    char* rawXml = nullptr;
    uint32_t length = 0;
    plist_to_xml(root.get(), &rawXml, &length);
    const std::unique_ptr<char, XmlBufferDeleter> xml(rawXml);
    if (!xml) {
        setError(error, QStringLiteral("The chain could not be turned into a property list."));
        return std::nullopt;
    }
    return QByteArray(xml.get(), static_cast<qsizetype>(length));
}

bool writeChainBytes(const QString& path, const QByteArray& bytes, QString* error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return setError(error, QStringLiteral("Cannot write \"%1\": %2").arg(path, file.errorString()));
    // commit() ignores a failure to write the last buffered bytes (disk
    // full), so they are flushed and checked here first.
    if (file.write(bytes) != bytes.size() || !file.flush()) {
        const QString why = file.errorString();
        file.cancelWriting();
        return setError(error, QStringLiteral("Cannot write \"%1\": %2").arg(path, why));
    }
    if (!file.commit())
        return setError(error, QStringLiteral("Cannot write \"%1\": %2").arg(path, file.errorString()));
    return true;
}

bool writeChainFile(const QString& path, const RecordList& chain, QString* error)
{
    const std::optional<QByteArray> bytes = chainFileBytes(chain, error);
    return bytes && writeChainBytes(path, *bytes, error);
}

bool saveChainAndReport(const QString& path, const RecordList& chain, QString* error)
{
    const bool saved = writeChainFile(path, chain, error);
    printLine(saved ? "Saveres=true" : "Saveres=false");
    return saved;
}

} // namespace quillon
