#include "library/FilterScan.h"

#include "library/DefinitionReader.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentMap>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>
#include <utility>

namespace quillon {

namespace {

// The text a name is sorted by: canonically equivalent names compare equal.
QString filterSortKey(const QString& name)
{
    return name.normalized(QString::NormalizationForm_C);
}

// The library record of one file, or null when it is not a usable definition.
RecordPtr readLibraryEntry(const QString& path)
{
    RecordPtr filterInfo = getFilterInfoWithPath(path);
    if (!filterInfo->contains(key::name))
        return nullptr;
    filterInfo->setString(key::path, path);
    return filterInfo;
}

// Scans wait on the global pool while it parses their files, so they run on
// a pool of their own: were they on the global pool, two scans at once could
// hold every global thread and wait forever for parses that never start.
// One scan at a time, in launch order: the libraries are handed over in the
// order the scans were asked for, so the last Filters directory chosen is the
// library that stays (each scan still parses on every core). The application
// waits for running scans as it shuts down, before the global pool they parse
// on goes away.
QThreadPool& scanPool()
{
    static QThreadPool* pool = [] {
        auto* created = new QThreadPool;
        created->setMaxThreadCount(1);
        qAddPostRoutine([] { FilterFetcher::waitForScans(); });
        return created;
    }();
    return *pool;
}

} // namespace

QStringList loadFilterNamesAndArrayWithPath(const QString& path)
{
    QStringList paths;
    if (path.isEmpty())
        return paths;
    const QString root = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    QDirIterator entries(root, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
        QDirIterator::Subdirectories | QDirIterator::FollowSymlinks);
    const QString extension = QStringLiteral(".ffxml");
    while (entries.hasNext()) {
        const QString entry = entries.next();
        if (entry.endsWith(extension, Qt::CaseSensitive))
            paths.append(entry);
    }
    return paths;
}

bool codePointLessThan(const QString& left, const QString& right)
{
    const qsizetype common = std::min(left.size(), right.size());
    for (qsizetype i = 0; i < common; ++i) {
        char16_t a = left.at(i).unicode();
        char16_t b = right.at(i).unicode();
        if (a == b)
            continue;
        // UTF-16 order puts surrogates (code points above U+FFFF) before
        // U+E000..U+FFFF; shift both ranges so the units compare in
        // code-point order.
        if (a >= 0xD800 && b >= 0xD800) {
            a = static_cast<char16_t>(a >= 0xE000 ? a - 0x800 : a + 0x2000);
            b = static_cast<char16_t>(b >= 0xE000 ? b - 0x800 : b + 0x2000);
        }
        return a < b;
    }
    return left.size() < right.size();
}

bool filterNameLessThan(const Record& left, const Record& right)
{
    return codePointLessThan(filterSortKey(left.string(key::name)), filterSortKey(right.string(key::name)));
}

RecordList scanFilterDirectory(const QString& path)
{
    const QStringList paths = loadFilterNamesAndArrayWithPath(path);
    const RecordList read = QtConcurrent::blockingMapped<RecordList>(paths, readLibraryEntry);

    // Sort on the names taken out once rather than looking them up per comparison.
    std::vector<std::pair<QString, RecordPtr>> named;
    named.reserve(read.size());
    for (const RecordPtr& filterInfo : read) {
        if (filterInfo)
            named.emplace_back(filterSortKey(filterInfo->string(key::name)), filterInfo);
    }
    std::sort(named.begin(), named.end(),
        [](const auto& left, const auto& right) { return codePointLessThan(left.first, right.first); });

    RecordList library;
    library.reserve(named.size());
    for (auto& entry : named)
        library.push_back(std::move(entry.second));
    return library;
}

FilterFetcher::FilterFetcher(QObject* parent)
    : QObject(parent)
{
}

FilterFetcher::~FilterFetcher() = default;

void FilterFetcher::waitForScans()
{
    scanPool().waitForDone();
}

void FilterFetcher::launch(const QString& filterPath)
{
    // The watcher is a child: destroying the fetcher drops the pending
    // hand-over, while the scan itself shares nothing with this object.
    auto* watcher = new QFutureWatcher<RecordList>(this);
    connect(watcher, &QFutureWatcher<RecordList>::finished, this, [this, watcher] {
        const RecordList filters = watcher->result();
        watcher->deleteLater();
        Q_EMIT fetched(filters);
    });
    watcher->setFuture(QtConcurrent::run(&scanPool(), scanFilterDirectory, filterPath));
}

} // namespace quillon
