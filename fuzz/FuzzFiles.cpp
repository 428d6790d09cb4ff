#include "FuzzFiles.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace quillon::fuzz {

namespace {

const QString kPrefix = QStringLiteral("quillon-fuzz-");

// libFuzzer ends the process without running destructors, so the scratch
// directory is named after the process and those of processes that are gone
// are removed by the next run.
void removeStaleDirectories(const QDir& base)
{
    const QStringList names
        = base.entryList({ kPrefix + QLatin1Char('*') }, QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& name : names) {
        bool isNumber = false;
        const qint64 pid = name.mid(kPrefix.size()).toLongLong(&isNumber);
        if (!isNumber || pid <= 0)
            continue;
        if (::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH)
            QDir(base.filePath(name)).removeRecursively();
    }
}

} // namespace

QString scratchDirectory()
{
    static const QString path = [] {
        const QByteArray tmpdir = qgetenv("TMPDIR");
        const QDir base(!tmpdir.isEmpty()                   ? QString::fromLocal8Bit(tmpdir)
                : QDir(QStringLiteral("/dev/shm")).exists() ? QStringLiteral("/dev/shm")
                                                            : QDir::tempPath());
        removeStaleDirectories(base);
        const QString own = base.filePath(kPrefix + QString::number(::getpid()));
        if (!QDir().mkpath(own)) {
            std::fprintf(stderr, "cannot create a scratch directory in %s\n", qPrintable(base.path()));
            std::abort();
        }
        return own;
    }();
    return path;
}

QString writeScratchFile(const QString& name, const uint8_t* data, size_t size)
{
    const QString path = scratchDirectory() + QLatin1Char('/') + name;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)
        || file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size))
            != static_cast<qint64>(size)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        std::abort();
    }
    return path;
}

} // namespace quillon::fuzz
