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

// ---- Reading: cheap checks before libplist sees the bytes ----

// libplist parses recursively and expands shared binary objects, so depth and
// size are checked here first.

QString checkXmlShape(const QByteArray& data)
{
    const char* p = data.constData();
    const qsizetype n = data.size();
    qint64 depth = 0;
    qint64 elements = 0;
    auto startsWith = [&](qsizetype at, const char* word, qsizetype length) {
        if (at + length > n || std::memcmp(p + at, word, static_cast<std::size_t>(length)) != 0)
            return false;
        const qsizetype after = at + length;
        return after >= n || p[after] == '>' || p[after] == '/' || p[after] == ' ' || p[after] == '\t'
            || p[after] == '\n' || p[after] == '\r';
    };
    for (qsizetype i = 0; i < n; ++i) {
        if (p[i] != '<')
            continue;
        const bool closing = i + 1 < n && p[i + 1] == '/';
        const qsizetype nameAt = closing ? i + 2 : i + 1;
        const bool container = startsWith(nameAt, "array", 5) || startsWith(nameAt, "dict", 4);
        if (!closing)
            ++elements;
        if (!container)
            continue;
        if (closing) {
            --depth;
            continue;
        }
        const char* close
            = static_cast<const char*>(std::memchr(p + nameAt, '>', static_cast<std::size_t>(n - nameAt)));
        const bool selfClosing = close && close > p + nameAt && close[-1] == '/';
        if (!selfClosing && ++depth > kMaxChainNesting)
            return QStringLiteral("Its values are nested too deeply.");
    }
    if (elements > kMaxChainValues)
        return QStringLiteral("It holds too many values.");
    return {};
}

quint64 readBigEndian(const unsigned char* at, int size)
{
    quint64 value = 0;
    for (int i = 0; i < size; ++i)
        value = (value << 8) | at[i];
    return value;
}

// Walks the object graph of a binary property list without recursion and
// refuses cycles, deep nesting and graphs whose expansion would be too large.
QString checkBinaryShape(const QByteArray& data)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(data.constData());
    const quint64 size = static_cast<quint64>(data.size());
    const QString damaged = QStringLiteral("It is not a readable property list.");
    if (size < 8 + 32 || std::memcmp(bytes, "bplist00", 8) != 0)
        return damaged;
    const unsigned char* trailer = bytes + size - 32;
    const int offsetSize = trailer[6];
    const int refSize = trailer[7];
    const quint64 objectCount = readBigEndian(trailer + 8, 8);
    const quint64 root = readBigEndian(trailer + 16, 8);
    const quint64 tableAt = readBigEndian(trailer + 24, 8);
    if (offsetSize < 1 || offsetSize > 8 || refSize < 1 || refSize > 8 || objectCount == 0
        || root >= objectCount)
        return damaged;
    if (objectCount > static_cast<quint64>(kMaxChainValues))
        return QStringLiteral("It holds too many values.");
    const quint64 dataEnd = size - 32;
    if (tableAt < 8 || tableAt > dataEnd
        || objectCount * static_cast<quint64>(offsetSize) > dataEnd - tableAt)
        return damaged;

    // The references of the container at object index, or nullopt for a scalar.
    struct Refs {
        quint64 at = 0;
        quint64 count = 0;
    };
    auto containerRefs = [&](quint64 index) -> std::optional<std::optional<Refs>> {
        const quint64 offset
            = readBigEndian(bytes + tableAt + index * static_cast<quint64>(offsetSize), offsetSize);
        if (offset < 8 || offset >= tableAt)
            return std::nullopt;
        const unsigned char marker = bytes[offset];
        const int kind = marker >> 4;
        if (kind != 0xA && kind != 0xB && kind != 0xC && kind != 0xD)
            return std::optional<Refs>();
        quint64 count = marker & 0x0F;
        quint64 at = offset + 1;
        if (count == 0x0F) {
            if (at >= tableAt || (bytes[at] >> 4) != 0x1)
                return std::nullopt;
            const int intSize = 1 << (bytes[at] & 0x0F);
            if (intSize > 8 || at + 1 + static_cast<quint64>(intSize) > tableAt)
                return std::nullopt;
            count = readBigEndian(bytes + at + 1, intSize);
            at += 1 + static_cast<quint64>(intSize);
        }
        if (kind == 0xD) {
            if (count > objectCount)
                return std::nullopt;
            count *= 2;
        }
        if (count > objectCount * 2 || count * static_cast<quint64>(refSize) > tableAt - at)
            return std::nullopt;
        return std::optional<Refs>(Refs { at, count });
    };

    // libplist asserts that a dictionary key holds no NUL character, so such a
    // key must not get that far. Keys are ASCII (0x5) or UTF-16 (0x6) strings.
    auto keyHasNul = [&](quint64 index) -> bool {
        const quint64 offset
            = readBigEndian(bytes + tableAt + index * static_cast<quint64>(offsetSize), offsetSize);
        if (offset < 8 || offset >= tableAt)
            return false; // refused as damaged elsewhere
        const unsigned char marker = bytes[offset];
        const int kind = marker >> 4;
        if (kind != 0x5 && kind != 0x6)
            return false;
        quint64 count = marker & 0x0F;
        quint64 at = offset + 1;
        if (count == 0x0F) {
            if (at >= tableAt || (bytes[at] >> 4) != 0x1)
                return false;
            const int intSize = 1 << (bytes[at] & 0x0F);
            if (intSize > 8 || at + 1 + static_cast<quint64>(intSize) > tableAt)
                return false;
            count = readBigEndian(bytes + at + 1, intSize);
            at += 1 + static_cast<quint64>(intSize);
        }
        const quint64 unit = kind == 0x6 ? 2 : 1;
        if (count > (tableAt - at) / unit)
            return false;
        for (quint64 i = 0; i < count; ++i) {
            if (readBigEndian(bytes + at + i * unit, static_cast<int>(unit)) == 0)
                return true;
        }
        return false;
    };

    enum : unsigned char { Unseen, Open, Done };
    std::vector<unsigned char> state(objectCount, Unseen);
    std::vector<quint32> depthOf(objectCount, 0);
    std::vector<quint64> expanded(objectCount, 0);
    struct Frame {
        quint64 index;
        Refs refs;
        quint64 next;
        bool dict;
    };
    std::vector<Frame> stack;
    auto push = [&](quint64 index) -> bool {
        const auto refs = containerRefs(index);
        if (!refs)
            return false;
        state[index] = Open;
        if (!*refs) {
            state[index] = Done;
            depthOf[index] = 0;
            expanded[index] = 1;
            return true;
        }
        const quint64 offset
            = readBigEndian(bytes + tableAt + index * static_cast<quint64>(offsetSize), offsetSize);
        stack.push_back(Frame { index, **refs, 0, (bytes[offset] >> 4) == 0xD });
        return true;
    };
    if (!push(root))
        return damaged;
    while (!stack.empty()) {
        Frame& frame = stack.back();
        if (frame.next == frame.refs.count) {
            quint32 deepest = 0;
            quint64 total = 1;
            for (quint64 i = 0; i < frame.refs.count; ++i) {
                const quint64 child
                    = readBigEndian(bytes + frame.refs.at + i * static_cast<quint64>(refSize), refSize);
                deepest = std::max(deepest, depthOf[child]);
                total = std::min<quint64>(total + expanded[child], static_cast<quint64>(kMaxChainValues) + 1);
            }
            depthOf[frame.index] = deepest + 1;
            expanded[frame.index] = total;
            state[frame.index] = Done;
            if (depthOf[frame.index] > static_cast<quint32>(kMaxChainNesting))
                return QStringLiteral("Its values are nested too deeply.");
            if (total > static_cast<quint64>(kMaxChainValues))
                return QStringLiteral("It holds too many values.");
            stack.pop_back();
            continue;
        }
        const quint64 child
            = readBigEndian(bytes + frame.refs.at + frame.next * static_cast<quint64>(refSize), refSize);
        ++frame.next;
        if (child >= objectCount)
            return damaged;
        if (frame.dict && frame.next <= frame.refs.count / 2 && keyHasNul(child))
            return QStringLiteral("A key holds a NUL character.");
        if (state[child] == Open)
            return damaged;
        if (state[child] == Unseen) {
            if (stack.size() > static_cast<std::size_t>(kMaxChainNesting))
                return QStringLiteral("Its values are nested too deeply.");
            if (!push(child)) // may reallocate: frame is not used after this
                return damaged;
        }
    }
    return {};
}

// ---- Reading: conversion of the parsed tree ----

struct Refusal {
    QString message;
};

std::optional<QVariant> fromPlist(plist_t node, int depth, const QString& where, Refusal* refusal)
{
    if (depth > kMaxChainNesting) {
        refusal->message = QStringLiteral("Its values are nested too deeply.");
        return std::nullopt;
    }
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return QVariant::fromValue<bool>(value != 0);
    }
    case PLIST_UINT: {
        uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return QVariant::fromValue<qint64>(static_cast<qint64>(value));
    }
    case PLIST_REAL: {
        double value = 0.0;
        plist_get_real_val(node, &value);
        return QVariant::fromValue<double>(value);
    }
    case PLIST_STRING: {
        uint64_t length = 0;
        const char* text = plist_get_string_ptr(node, &length);
        return QVariant(QString::fromUtf8(text ? text : "", static_cast<qsizetype>(text ? length : 0)));
    }
    case PLIST_DATA: {
        uint64_t length = 0;
        const char* bytes = plist_get_data_ptr(node, &length);
        return QVariant(QByteArray(bytes ? bytes : "", static_cast<qsizetype>(bytes ? length : 0)));
    }
    case PLIST_DATE: {
        int32_t secs = 0;
        int32_t usecs = 0;
        plist_get_date_val(node, &secs, &usecs);
        const qint64 msecs = (static_cast<qint64>(secs) + kPlistEpochOffset) * 1000 + usecs / 1000;
        return QVariant(QDateTime::fromMSecsSinceEpoch(msecs, QTimeZone::utc()));
    }
    case PLIST_ARRAY: {
        QVariantList items;
        const uint32_t count = plist_array_get_size(node);
        items.reserve(count);
        for (uint32_t i = 0; i < count; ++i) {
            auto item = fromPlist(
                plist_array_get_item(node, i), depth + 1, where + QStringLiteral("[%1]").arg(i), refusal);
            if (!item)
                return std::nullopt;
            items.append(*item);
        }
        return QVariant(items);
    }
    case PLIST_DICT: {
        QVariantMap items;
        plist_dict_iter iter = nullptr;
        plist_dict_new_iter(node, &iter);
        std::unique_ptr<void, void (*)(void*)> iterGuard(iter, std::free);
        for (;;) {
            char* rawKey = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(node, iter, &rawKey, &value);
            if (!value) {
                std::free(rawKey);
                break;
            }
            const QString key = QString::fromUtf8(rawKey ? rawKey : "");
            std::free(rawKey);
            auto item = fromPlist(value, depth + 1, where + QLatin1Char('/') + key, refusal);
            if (!item)
                return std::nullopt;
            items.insert(key, *item);
        }
        return QVariant(items);
    }
    default:
        refusal->message
            = QStringLiteral("The value at %1 is of a kind a chain file does not hold.").arg(where);
        return std::nullopt;
    }
}

// Fills a record from a dictionary node.
bool fillRecord(Record& record, plist_t dict, const QString& where, Refusal* refusal)
{
    auto converted = fromPlist(dict, 1, where, refusal);
    if (!converted)
        return false;
    const QVariantMap values = converted->toMap();
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        record.set(it.key(), it.value());
    return true;
}

enum class FilterOutcome { Converted, UnknownCode, Refused };

// Converts one filter dictionary. An unknown code is remembered but the rest
// of the filter is still checked, so that a damaged file is refused as a whole.
FilterOutcome convertFilter(plist_t entry, uint32_t position, RecordPtr* out, Refusal* refusal)
{
    const QString where = QStringLiteral("entry %1").arg(position + 1);
    if (plist_get_node_type(entry) != PLIST_DICT) {
        refusal->message = QStringLiteral("Entry %1 is not a dictionary.").arg(position + 1);
        return FilterOutcome::Refused;
    }
    plist_t components = plist_dict_get_item(entry, "Components");
    if (!components || plist_get_node_type(components) != PLIST_ARRAY) {
        refusal->message = QStringLiteral("Entry %1 has no \"Components\" list.").arg(position + 1);
        return FilterOutcome::Refused;
    }
    auto filter = Record::create();
    if (!fillRecord(*filter, entry, where, refusal))
        return FilterOutcome::Refused;

    auto params = std::make_shared<RecordList>();
    bool unknownCode = false;
    const uint32_t count = plist_array_get_size(components);
    params->reserve(count);
    for (uint32_t i = 0; i < count; ++i) {
        plist_t param = plist_array_get_item(components, i);
        const QString paramWhere = QStringLiteral("parameter %1 of entry %2").arg(i + 1).arg(position + 1);
        if (plist_get_node_type(param) != PLIST_DICT) {
            refusal->message = QStringLiteral("The %1 is not a dictionary.").arg(paramWhere);
            return FilterOutcome::Refused;
        }
        plist_t proxy = plist_dict_get_item(param, "CONTROL_PROXY");
        if (!proxy || plist_get_node_type(proxy) != PLIST_UINT) {
            refusal->message = QStringLiteral("The %1 has no integer \"CONTROL_PROXY\".").arg(paramWhere);
            return FilterOutcome::Refused;
        }
        auto record = Record::create();
        if (!fillRecord(*record, param, paramWhere, refusal))
            return FilterOutcome::Refused;
        uint64_t code = 0;
        plist_get_uint_val(proxy, &code);
        const std::optional<controlType> kind = controlTypeFromChainCode(static_cast<qint64>(code));
        if (!kind) {
            unknownCode = true;
            continue;
        }
        record->remove(key::CONTROL_PROXY);
        record->setType(key::CONTROL_TYPE, *kind);
        params->push_back(std::move(record));
    }
    if (unknownCode)
        return FilterOutcome::UnknownCode;
    filter->setList(key::Components, params);
    *out = std::move(filter);
    return FilterOutcome::Converted;
}

ChainReadResult refused(const QString& path, const QString& why)
{
    ChainReadResult result;
    result.status = ChainReadResult::Refused;
    result.error = QStringLiteral("\"%1\" is not a filter chain file. %2").arg(path, why);
    return result;
}

} // namespace

ChainReadResult readChainFile(const QString& path)
{
    if (path.isEmpty())
        return refused(path, QStringLiteral("No file was given."));
    const QFileInfo info(path);
    if (!info.exists())
        return refused(path, QStringLiteral("The file does not exist."));
    if (info.isDir())
        return refused(path, QStringLiteral("It is a directory."));
    // A pipe or a device would block the read or never end.
    if (!info.isFile())
        return refused(path, QStringLiteral("It is not a regular file."));
    if (info.size() > kMaxChainFileBytes)
        return refused(
            path, QStringLiteral("It is larger than %1 MB.").arg(kMaxChainFileBytes / (1024 * 1024)));

    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return refused(path, QStringLiteral("It cannot be read: %1").arg(file.errorString()));
    // Read in pieces rather than with one buffer of the largest size: the file
    // may have grown since it was measured, and most chain files are small.
    QByteArray data;
    data.reserve(static_cast<qsizetype>(info.size()) + 1);
    while (data.size() <= kMaxChainFileBytes) {
        char piece[64 * 1024];
        const qint64 got = file.read(piece, sizeof piece);
        if (got <= 0)
            break;
        data.append(piece, static_cast<qsizetype>(got));
    }
    if (file.error() != QFileDevice::NoError)
        return refused(path, QStringLiteral("It cannot be read: %1").arg(file.errorString()));
    if (data.size() > kMaxChainFileBytes)
        return refused(
            path, QStringLiteral("It is larger than %1 MB.").arg(kMaxChainFileBytes / (1024 * 1024)));
    if (data.isEmpty())
        return refused(path, QStringLiteral("It is empty."));

    const auto length = static_cast<uint32_t>(data.size());
    const bool binary = plist_is_binary(data.constData(), length) != 0;
    const QString shape = binary ? checkBinaryShape(data) : checkXmlShape(data);
    if (!shape.isEmpty())
        return refused(path, shape);

    plist_t rawRoot = nullptr;
    plist_from_memory(data.constData(), length, &rawRoot);
    const PlistPtr root(rawRoot);
    if (!root)
        return refused(path, QStringLiteral("It is not a readable property list."));
    if (plist_get_node_type(root.get()) != PLIST_ARRAY)
        return refused(path, QStringLiteral("Its root is not an array."));

    ChainReadResult result;
    result.status = ChainReadResult::Ok;
    bool stopped = false;
    const uint32_t count = plist_array_get_size(root.get());
    for (uint32_t i = 0; i < count; ++i) {
        RecordPtr filter;
        Refusal refusal;
        switch (convertFilter(plist_array_get_item(root.get(), i), i, &filter, &refusal)) {
        case FilterOutcome::Refused:
            return refused(path, refusal.message);
        case FilterOutcome::UnknownCode:
            if (!stopped)
                result.error = QStringLiteral("Entry %1 of \"%2\" holds an unknown parameter kind.")
                                   .arg(i + 1)
                                   .arg(path);
            stopped = true;
            break;
        case FilterOutcome::Converted:
            if (!stopped)
                result.chain.push_back(std::move(filter));
            break;
        }
    }
    if (stopped)
        result.status = ChainReadResult::UnknownCode;
    return result;
}

void reportUnknownChainCode()
{
    printLine("Fuckdata in save");
}

} // namespace quillon
