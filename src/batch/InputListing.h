#pragma once

#include <QString>
#include <QStringList>

namespace quillon {

// The entries of an input directory, deep: files and subdirectories alike,
// links listed but not followed, entries whose path relative to the
// directory begins with "." skipped; sorted by path. Pipes, sockets and
// devices (and links to them) are left out: reading one would block the
// render tool or take data meant for another reader.
struct InputListing {
    QStringList paths; // absolute
    // Entries whose names are not valid UTF-8 (relative paths, the invalid
    // bytes written as \xNN): they cannot be named in the tool's task files.
    QStringList undecodable;
    // Pipes, sockets and devices left out, as relative paths.
    QStringList leftOut;
    bool listed = false; // false when the directory could not be read
};

// `excluded`, when given, is a folder under `directory` left out with all
// it holds (the run's output directory).
InputListing listInputDirectory(const QString& directory, const QString& excluded = QString());

// Whether `directory` holds any entry at all (one level, hidden ones
// counted, names that are not valid UTF-8 too).
bool hasAnyEntry(const QString& directory);

// `bytes` for a message: printable ASCII as it is, every other byte \xNN.
QString escapedName(const QByteArray& bytes);

} // namespace quillon
