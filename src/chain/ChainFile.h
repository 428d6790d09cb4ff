#pragma once

#include "library/Record.h"

#include <QByteArray>
#include <QString>
#include <QVariantList>

#include <optional>

namespace quillon {

// A chain file is an XML property list: an array with one dictionary per
// chain position. In the file a parameter's kind is the integer code under
// "CONTROL_PROXY" (Checkbox 0, IntSlider 1, Slider 2, Angle 3, Variations 4);
// in memory it is the controlType under "CONTROL_TYPE".

// Files larger than this are refused before they are read.
inline constexpr qint64 kMaxChainFileBytes = qint64(64) * 1024 * 1024;
// Containers nested deeper than this are refused (reading and writing).
inline constexpr int kMaxChainNesting = 64;
// Property lists with more values than this are refused before parsing.
inline constexpr qint64 kMaxChainValues = 2'000'000;

// The storable copy of the chain: one QVariantMap per chain position with the
// record's keys and values; its "Components" is a QVariantList of parameter
// maps without "CONTROL_TYPE" and with "CONTROL_PROXY". Values other than
// "Components" are the records' own. A record without a "Components" list is
// stored with an empty one, a parameter without a kind without
// "CONTROL_PROXY" (writeChainFile then refuses it); null entries are skipped.
// The chain is not changed.
QVariantList cleanFilterArray(const RecordList& chain);

// The storable copy of the chain as the bytes of an XML property list; none
// (with a message) when a value cannot be held by a property list.
std::optional<QByteArray> chainFileBytes(const RecordList& chain, QString* error = nullptr);
// Writes the bytes of a chain file atomically (QSaveFile).
bool writeChainBytes(const QString& path, const QByteArray& bytes, QString* error = nullptr);

// Writes the storable copy of the chain as an XML property list, atomically.
// Fails (false, with a message) when the file cannot be written or a value
// cannot be held by a property list.
bool writeChainFile(const QString& path, const RecordList& chain, QString* error = nullptr);

// writeChainFile, then prints "Saveres=true" or "Saveres=false" on standard output.
bool saveChainAndReport(const QString& path, const RecordList& chain, QString* error = nullptr);

struct ChainReadResult {
    enum Status {
        Ok, // chain holds the whole file
        UnknownCode, // a parameter code is not 0 to 4: chain holds the filters before it
        Refused, // the file is not a chain file: chain is empty, error says why
    };
    Status status = Refused;
    RecordList chain;
    QString error;
};

// Reads a chain file (XML or binary property list) into fresh, independent
// records. Every container is checked before anything is converted, so a
// damaged file is refused as a whole; only an unknown parameter code stops
// the conversion part-way (UnknownCode). Dates come back as QDateTime (UTC),
// data as QByteArray; UID values are refused.
ChainReadResult readChainFile(const QString& path);

// Prints "Fuckdata in save" on standard output (the caller also beeps).
void reportUnknownChainCode();

} // namespace quillon
