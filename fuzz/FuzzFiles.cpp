#include "FuzzFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

namespace quillon::fuzz {

QString scratchDirectory()
{
    static QTemporaryDir directory = [] {
        const QString base = QDir(QStringLiteral("/dev/shm")).exists() ? QStringLiteral("/dev/shm")
                                                                      : QDir::tempPath();
        return QTemporaryDir(base + QStringLiteral("/quillon-fuzz-XXXXXX"));
    }();
    if (!directory.isValid()) {
        std::fprintf(stderr, "cannot create a scratch directory\n");
        std::abort();
    }
    return directory.path();
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
