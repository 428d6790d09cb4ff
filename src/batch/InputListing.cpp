#include "batch/InputListing.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <memory>

#include <dirent.h>
#include <fts.h>
#include <sys/stat.h>

namespace quillon {

namespace {

bool decodesExactly(const QByteArray& name)
{
    return QFile::encodeName(QFile::decodeName(name)) == name;
}

// A pipe, socket or device, or a link to one: never an image.
bool isSpecialFile(const char* path)
{
    struct stat info {};
    if (::lstat(path, &info) != 0)
        return false;
    if (S_ISLNK(info.st_mode) && ::stat(path, &info) != 0)
        return false; // a dangling link is listed as it is
    return !S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode);
}

} // namespace

QString escapedName(const QByteArray& bytes)
{
    QString text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7F && byte != '\\')
            text.append(QLatin1Char(c));
        else
            text.append(QStringLiteral("\\x%1").arg(byte, 2, 16, QLatin1Char('0')));
    }
    return text;
}

InputListing listInputDirectory(const QString& directory, const QString& excluded)
{
    InputListing listing;
    const QString root = QDir::cleanPath(QFileInfo(directory).absoluteFilePath());
    QByteArray rootBytes = QFile::encodeName(root);
    char* roots[] = { rootBytes.data(), nullptr };
    // Physical walk: a link is an entry, never a way into another tree.
    const std::unique_ptr<FTS, int (*)(FTS*)> walk(
        ::fts_open(roots, FTS_PHYSICAL | FTS_NOCHDIR | FTS_NOSTAT, nullptr), ::fts_close);
    if (!walk)
        return listing;
    const qsizetype prefix = rootBytes.endsWith('/') ? rootBytes.size() : rootBytes.size() + 1;
    const QByteArray excludedBytes
        = excluded.isEmpty() ? QByteArray() : QFile::encodeName(QDir::cleanPath(excluded));
    while (FTSENT* entry = ::fts_read(walk.get())) {
        if (entry->fts_level == 0) {
            if (entry->fts_info == FTS_DNR || entry->fts_info == FTS_ERR || entry->fts_info == FTS_NS)
                return listing;
            continue;
        }
        if (entry->fts_info == FTS_DP)
            continue; // a directory seen again on the way out
        const QByteArray path(entry->fts_path, static_cast<qsizetype>(entry->fts_pathlen));
        const QByteArray relative = path.mid(prefix);
        if (relative.startsWith('.')) {
            if (entry->fts_info == FTS_D)
                ::fts_set(walk.get(), entry, FTS_SKIP);
            continue;
        }
        if (path == excludedBytes) {
            ::fts_set(walk.get(), entry, FTS_SKIP);
            continue;
        }
        if (entry->fts_info != FTS_D && isSpecialFile(entry->fts_path)) {
            listing.leftOut.append(escapedName(relative));
            continue;
        }
        if (decodesExactly(path))
            listing.paths.append(QFile::decodeName(path));
        else
            listing.undecodable.append(escapedName(relative));
    }
    listing.listed = true;
    std::sort(listing.paths.begin(), listing.paths.end());
    std::sort(listing.undecodable.begin(), listing.undecodable.end());
    return listing;
}

bool hasAnyEntry(const QString& directory)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> dir(
        ::opendir(QFile::encodeName(directory).constData()), ::closedir);
    if (!dir)
        return false;
    while (const dirent* entry = ::readdir(dir.get())) {
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..")
            return true;
    }
    return false;
}

} // namespace quillon
