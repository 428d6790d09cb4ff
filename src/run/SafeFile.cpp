#include "run/SafeFile.h"

#include <QFile>
#include <QFileInfo>

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

// The body of both atomic writes: a new temporary file beside `path`, the
// bytes, the rename. Returns the open descriptor, or -1 with errno set.
int writeAndRename(const QString& path, const QByteArray& bytes, bool durable = false, int mode = 0666)
{
    const QByteArray target = QFile::encodeName(path);
    const QByteArray temporary = target
        + QStringLiteral(".quillon-%1-%2").arg(::getpid()).arg(g_temporaryCounter.fetch_add(1)).toLatin1();
    // O_EXCL with O_CREAT never opens an existing entry, a link included.
    const int fd = ::open(temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
        static_cast<mode_t>(mode));
    if (fd < 0)
        return -1;
    if (!writeAll(fd, bytes) || (durable && ::fsync(fd) != 0)
        || ::rename(temporary.constData(), target.constData()) != 0) {
        const int saved = errno;
        ::close(fd);
        ::unlink(temporary.constData());
        errno = saved;
        return -1;
    }
    return fd;
}

} // namespace

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
