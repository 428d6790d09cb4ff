#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <sys/types.h>

namespace quillon {

// What tells one file from another that later takes its name: the device and
// inode of the file itself (a link is not followed), its size and its
// modification time. Two reads of an unchanged file give equal identities.
struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    qint64 size = -1;
    qint64 modifiedNs = 0; // modification time in nanoseconds

    bool isValid() const { return size >= 0; }
    // Same file, same size, not written since: the test before a file is
    // deleted (a file edited in place keeps its inode, often its size).
    bool sameFileAs(const FileIdentity& other) const
    {
        return isValid() && other.isValid() && device == other.device && inode == other.inode
            && size == other.size && modifiedNs == other.modifiedNs;
    }
    // A different file, or the same one written since.
    bool changedSince(const FileIdentity& before) const { return !sameFileAs(before); }
};

// The identity of the regular file at `path`; invalid when there is none
// (nothing there, a link, a directory, a pipe ...).
FileIdentity regularFileIdentity(const QString& path);

// While it lives, the atomic writes below `directory` are made relative to
// the directory as it was when the anchor was made, and every folder below
// it is entered without following a link: a folder swapped for a link, or
// the directory moved, sends nothing outside. A run anchors its output
// directory.
class DirectoryAnchor final {
public:
    explicit DirectoryAnchor(const QString& directory);
    ~DirectoryAnchor();
    DirectoryAnchor(const DirectoryAnchor&) = delete;
    DirectoryAnchor& operator=(const DirectoryAnchor&) = delete;

private:
    int m_fd = -1;
    QStringList m_paths;
};

// Writes `bytes` to `path` atomically: a new file in the same directory,
// created without following links and never over an existing entry, then
// renamed over the name. A link at `path` is replaced, its target never
// touched; a reader sees the old file or the new one, never half of one.
// Nothing is flushed to the disk: meant for files read once and deleted at
// the end of the run. `written`, when given, receives the new file's
// identity.
bool writeFileAtomically(
    const QString& path, const QByteArray& bytes, QString* error = nullptr, FileIdentity* written = nullptr);

// Like writeFileAtomically, but the new file stays open: the returned
// descriptor (close-on-exec, write-only, positioned after `bytes`) refers to
// the file now at `path`, so later appends cannot be redirected by a link
// put there afterwards. -1 on failure.
int createFileAtomically(const QString& path, const QByteArray& bytes, QString* error = nullptr);

// Saves a file the user keeps (a report, a bundle's file): like
// writeFileAtomically, but flushed to the disk before the rename, and a link
// at `path` is refused, not replaced (the user may have meant its target).
// `mode` is the new file's permission bits before the umask.
bool saveUserFile(const QString& path, const QByteArray& bytes, QString* error = nullptr, int mode = 0666);

// Why `path` cannot take a saved file ("it is a link ...", "its folder does
// not exist"): anything but a regular file at its name, or a folder that is
// missing or read-only. Empty when it can.
QString saveTargetProblem(const QString& path);

// Removes the regular file at `path` when it is still the file `expected`
// describes; never a directory, never a link's target.
bool removeIfUnchanged(const QString& path, const FileIdentity& expected);

} // namespace quillon
