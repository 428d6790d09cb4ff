#include "BenchSupport.h"

#include <QDir>
#include <QFile>

#include <time.h>

namespace quillon::bench {

namespace {

qint64 statusField(const char* field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> lines = status.readAll().split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith(field)) {
            const QByteArray number = line.mid(qsizetype(qstrlen(field))).trimmed().split(' ').value(0);
            return number.toLongLong() * 1024;
        }
    }
    return 0;
}

} // namespace

qint64 currentRss()
{
    return statusField("VmRSS:");
}

qint64 peakRss()
{
    return statusField("VmHWM:");
}

void resetPeakRss()
{
    QFile refs(QStringLiteral("/proc/self/clear_refs"));
    if (refs.open(QIODevice::WriteOnly))
        refs.write("5");
}

double threadCpuSeconds()
{
    timespec now {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
}

QString benchDataDir(const QString& what)
{
    const QString dir = QDir::tempPath() + QStringLiteral("/quillon-bench/") + what;
    QDir().mkpath(dir);
    return dir;
}

} // namespace quillon::bench
