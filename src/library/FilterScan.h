#pragma once

#include "library/Record.h"

#include <QObject>
#include <QString>
#include <QStringList>

namespace quillon {

// Full paths of everything below `path`, at any depth, whose path ends in
// ".ffxml" (case-sensitive; directories included), in enumeration order.
// Hidden entries are listed and symbolic links followed. A directory that
// cannot be listed gives an empty list.
QStringList loadFilterNamesAndArrayWithPath(const QString& path);

// Library order: "name" compared by Unicode code points, case-sensitive and
// not localised, so "Zebra" comes before "apple" and the empty name first.
// Canonically equivalent names (composed or decomposed accents) compare
// equal: both are compared in normalisation form C.
bool filterNameLessThan(const Record& left, const Record& right);

// Code-point order of two texts (not UTF-16 code-unit order: a character
// above U+FFFF sorts after U+FFFD).
bool codePointLessThan(const QString& left, const QString& right);

// The filter library of a directory: every definition below it read with the
// library reader in parallel on the global thread pool, "path" set, records
// without "name" dropped, sorted by name. Blocks the calling thread.
RecordList scanFilterDirectory(const QString& path);

// Runs scanFilterDirectory in the background and hands the finished library
// over in one `fetched` emission on the thread this object lives in. Scans
// started while another runs all finish; each emits its own result. A scan
// still running when the fetcher is destroyed finishes without emitting.
class FilterFetcher final : public QObject {
    Q_OBJECT
public:
    explicit FilterFetcher(QObject* parent = nullptr);
    ~FilterFetcher() override;

    void launch(const QString& filterPath);

    // Blocks until every scan started by any fetcher has finished.
    static void waitForScans();

Q_SIGNALS:
    void fetched(quillon::RecordList filters);
};

} // namespace quillon
