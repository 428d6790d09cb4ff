#include "run/SafeFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMultiHash>
#include <QMutex>
#include <QStringList>

#include <atomic>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillon {

namespace {

std::atomic<quint64> g_temporaryCounter { 0 };

FileIdentity identityFromStat(const struct stat& info)
{
    FileIdentity identity;
    identity.device = info.st_dev;
    identity.inode = info.st_ino;
    identity.size = static_cast<qint64>(info.st_size);
    identity.modifiedNs = static_cast<qint64>(info.st_mtim.tv_sec) * 1000000000LL + info.st_mtim.tv_nsec;
    return identity;
}

bool fail(QString* error, const QString& path, int code)
{
    if (error)
        *error = QStringLiteral("cannot write %1: %2").arg(path, QString::fromLocal8Bit(std::strerror(code)));
    return false;
}

bool writeAll(int fd, const QByteArray& bytes)
{
    const char* data = bytes.constData();
    qsizetype left = bytes.size();
    while (left > 0) {
        const ssize_t done = ::write(fd, data, static_cast<size_t>(left));
        if (done < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        data += done;
        left -= done;
    }
    return true;
}

// Directories that writes below are anchored to (a run's output
// directory), by their absolute and canonical paths: descriptors opened when
// the run took the directory.
QMutex g_anchorMutex;
QMultiHash<QString, int> g_anchors;

// The directory that will hold `path`, opened, with the entry's own name in
// `name`. Below an anchored directory every folder is opened from the
// anchor's descriptor without following a link, so a folder swapped for a
// link (or the directory itself moved) sends nothing elsewhere.
int openParent(const QString& path, QByteArray* name)
{
    const QString absolute = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    const qsizetype slash = absolute.lastIndexOf(QLatin1Char('/'));
    *name = QFile::encodeName(absolute.mid(slash + 1));
    int anchor = -1;
    qsizetype anchorLength = -1;
    QString below;
    {
        const QMutexLocker locker(&g_anchorMutex);
        for (auto it = g_anchors.cbegin(); it != g_anchors.cend(); ++it) {
            if (absolute.startsWith(it.key() + QLatin1Char('/')) && it.key().size() > anchorLength) {
                anchor = it.value();
                anchorLength = it.key().size();
                below = absolute.mid(it.key().size() + 1);
            }
        }
        if (anchor >= 0)
            anchor = ::fcntl(anchor, F_DUPFD_CLOEXEC, 0);
    }
    if (anchor < 0) {
        const QByteArray parent = QFile::encodeName(slash <= 0 ? QStringLiteral("/") : absolute.left(slash));
        return ::open(parent.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    }
    QStringList folders = below.split(QLatin1Char('/'));
    folders.removeLast();
    int fd = anchor;
    for (const QString& folder : std::as_const(folders)) {
        const int next = ::openat(
            fd, QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        const int saved = errno;
        ::close(fd);
        if (next < 0) {
            errno = saved;
            return -1;
        }
        fd = next;
    }
    return fd;
}

// The body of both atomic writes: a new temporary file beside `path`, the
// bytes, the rename, all relative to the opened parent. Returns the open
// descriptor, or -1 with errno set.
int writeAndRename(const QString& path, const QByteArray& bytes, bool durable = false, int mode = 0666)
{
    QByteArray target;
    const int directory = openParent(path, &target);
    if (directory < 0)
        return -1;
    const QByteArray temporary = target
        + QStringLiteral(".quillon-%1-%2").arg(::getpid()).arg(g_temporaryCounter.fetch_add(1)).toLatin1();
    // O_EXCL with O_CREAT never opens an existing entry, a link included.
    const int fd = ::openat(directory, temporary.constData(),
        O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, static_cast<mode_t>(mode));
    if (fd < 0) {
        const int saved = errno;
        ::close(directory);
        errno = saved;
        return -1;
    }
    if (!writeAll(fd, bytes) || (durable && ::fsync(fd) != 0)
        || ::renameat(directory, temporary.constData(), directory, target.constData()) != 0) {
        const int saved = errno;
        ::close(fd);
        ::unlinkat(directory, temporary.constData(), 0);
        ::close(directory);
        errno = saved;
        return -1;
    }
    ::close(directory);
    return fd;
}

} // namespace

DirectoryAnchor::DirectoryAnchor(const QString& directory)
{
    m_fd = ::open(QFile::encodeName(directory).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (m_fd < 0)
        return;
    const QFileInfo info(directory);
    m_paths = QStringList { QDir::cleanPath(info.absoluteFilePath()) };
    if (const QString canonical = info.canonicalFilePath();
        !canonical.isEmpty() && canonical != m_paths.first())
        m_paths.append(canonical);
    const QMutexLocker locker(&g_anchorMutex);
    for (const QString& path : std::as_const(m_paths))
        g_anchors.insert(path, m_fd);
}

DirectoryAnchor::~DirectoryAnchor()
{
    if (m_fd < 0)
        return;
    {
        const QMutexLocker locker(&g_anchorMutex);
        for (const QString& path : std::as_const(m_paths))
            g_anchors.remove(path, m_fd);
    }
    ::close(m_fd);
}

FileIdentity regularFileIdentity(const QString& path)
{
    struct stat info { };
    if (path.isEmpty() || ::lstat(QFile::encodeName(path).constData(), &info) != 0 || !S_ISREG(info.st_mode))
        return {};
    return identityFromStat(info);
}

bool writeFileAtomically(const QString& path, const QByteArray& bytes, QString* error, FileIdentity* written)
{
    const int fd = writeAndRename(path, bytes);
    if (fd < 0)
        return fail(error, path, errno);
    if (written) {
        struct stat info { };
        *written = ::fstat(fd, &info) == 0 ? identityFromStat(info) : FileIdentity();
    }
    ::close(fd);
    return true;
}

int createFileAtomically(const QString& path, const QByteArray& bytes, QString* error)
{
    const int fd = writeAndRename(path, bytes);
    if (fd < 0)
        fail(error, path, errno);
    return fd;
}

QString saveTargetProblem(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat info { };
    if (::lstat(name.constData(), &info) == 0) {
        if (S_ISLNK(info.st_mode))
            return QStringLiteral("it is a link (Quillon does not write through links)");
        if (!S_ISREG(info.st_mode))
            return QStringLiteral("it is not a regular file");
        return {};
    }
    const QFileInfo folder(QFileInfo(path).absolutePath());
    if (!folder.isDir())
        return QStringLiteral("its folder does not exist");
    if (!folder.isWritable())
        return QStringLiteral("its folder cannot be written");
    return {};
}

bool saveUserFile(const QString& path, const QByteArray& bytes, QString* error, int mode)
{
    if (const QString problem = saveTargetProblem(path); !problem.isEmpty()) {
        if (error)
            *error = QStringLiteral("cannot write %1: %2").arg(path, problem);
        return false;
    }
    const int fd = writeAndRename(path, bytes, true, mode);
    if (fd < 0)
        return fail(error, path, errno);
    ::close(fd);
    return true;
}

bool removeIfUnchanged(const QString& path, const FileIdentity& expected)
{
    if (!regularFileIdentity(path).sameFileAs(expected))
        return false;
    return ::unlink(QFile::encodeName(path).constData()) == 0;
}

} // namespace quillon
