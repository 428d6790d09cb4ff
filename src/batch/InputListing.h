#pragma once

#include <QString>
#include <QStringList>

namespace quillon {

// The entries of an input directory, deep: files and subdirectories alike,
// links listed but not followed, entries whose path relative to the
// directory begins with "." skipped; sorted by path.
struct InputListing {
    QStringList paths; // absolute
    // Entries whose names are not valid UTF-8 (relative paths, the invalid
    // bytes written as \xNN): they cannot be named in the tool's task files.
    QStringList undecodable;
    bool listed = false; // false when the directory could not be read
};

InputListing listInputDirectory(const QString& directory);

// Whether `directory` holds any entry at all (one level, hidden ones
// counted, names that are not valid UTF-8 too).
bool hasAnyEntry(const QString& directory);

// `bytes` for a message: printable ASCII as it is, every other byte \xNN.
QString escapedName(const QByteArray& bytes);

} // namespace quillon
