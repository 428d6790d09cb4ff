#include "run/WineTool.h"

#include "run/Console.h"
#include "run/RunPlan.h"
#include "run/RunSettings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMutexLocker>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStandardPaths>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillon {

namespace {

// The program named by a setting: a path as it is, a bare name looked up on
// PATH.
QString findProgram(const QString& setting, const QString& fallbackName)
{
    const QString name = setting.isEmpty() ? fallbackName : setting;
    if (name.contains(QLatin1Char('/')))
        return QFileInfo(name).isExecutable() && !QFileInfo(name).isDir() ? QFileInfo(name).absoluteFilePath()
                                                                          : QString();
    return QStandardPaths::findExecutable(name);
}

// The lock a running wineserver holds for the prefix with that device and
// inode: in the folder Debian's Wine names in PREFIX/wineserver (under the
// temporary directory), or in Wine's own /tmp/.wine-UID.
QStringList serverLockCandidates(const QString& prefix, dev_t device, ino_t inode)
{
    const QString server = QStringLiteral("/server-%1-%2/lock")
                               .arg(static_cast<qulonglong>(device), 0, 16)
                               .arg(static_cast<qulonglong>(inode), 0, 16);
    QStringList candidates;
    QFile named(prefix + QStringLiteral("/wineserver"));
    if (named.open(QIODevice::ReadOnly)) {
        const QString folder = QString::fromLocal8Bit(named.read(4096)).trimmed();
        if (!folder.isEmpty() && !folder.contains(QLatin1Char('/'))) {
            const QString temporary = qEnvironmentVariable("TMPDIR");
            if (!temporary.isEmpty())
                candidates.append(temporary + QLatin1Char('/') + folder + server);
            candidates.append(QStringLiteral("/tmp/") + folder + server);
        }
    }
    candidates.append(QStringLiteral("/tmp/.wine-%1").arg(::getuid()) + server);
    return candidates;
}

} // namespace

QString WineTool::attachTo(RunPlan& plan, const RunSettings& settings)
{
    plan.wine.reset();
    if (settings.toolWine != 1)
        return {};
    const QString binary = findProgram(settings.wineBinary, QStringLiteral("wine"));
    if (binary.isEmpty()) {
        return settings.wineBinary.isEmpty()
            ? QStringLiteral("Wine is not installed: no wine on PATH (Debian packages wine and wine64)")
            : QStringLiteral("The Wine launcher %1 is not an executable file").arg(settings.wineBinary);
    }
    auto wine = std::make_shared<WineTool>(
        binary, settings.winePrefix, WinePaths::read(WinePaths::effectivePrefix(settings.winePrefix)));
    // Every path the tool is given: the task files beside the control file,
    // the inputs and the outputs.
    QString error;
    const auto reachable = [&wine, &error](const QString& path) {
        return path.isEmpty() || !wine->paths().windowsPath(path, &error).isEmpty();
    };
    if (!reachable(QDir(settings.outputPath).filePath(QStringLiteral("controlfile.xml"))))
        return error;
    for (const PlannedToolRun& run : std::as_const(plan.toolRuns)) {
        if (!reachable(run.input))
            return error;
        for (qsizetype t = 0; t < run.tasks.size(); ++t) {
            if (!reachable(run.resultPath(t)))
                return error;
        }
    }
    plan.wine = std::move(wine);
    return {};
}

WineTool::WineTool(QString binary, QString givenPrefix, WinePaths paths)
    : m_binary(std::move(binary))
    , m_givenPrefix(std::move(givenPrefix))
    , m_paths(std::move(paths))
{
}

QString WineTool::windowsPath(const QString& path) const
{
    const QString windows = m_paths.windowsPath(path);
    return windows.isEmpty() ? path : windows;
}

ToolLaunch WineTool::launch(const QString& tool, const QString& controlFile)
{
    {
        QMutexLocker lock(&m_mutex);
        if (!m_launched) {
            m_launched = true;
            m_serverBefore = serverRunning(m_paths.prefix());
        }
    }
    ToolLaunch launch { m_binary, { tool, windowsPath(controlFile) }, {} };
    // Wine's own diagnostics would mix with the tool's output.
    launch.environment.append({ QStringLiteral("WINEDEBUG"), QStringLiteral("-all") });
    if (!m_givenPrefix.isEmpty())
        launch.environment.append({ QStringLiteral("WINEPREFIX"), m_paths.prefix() });
    return launch;
}

void WineTool::finishRun(int limitMs)
{
    {
        QMutexLocker lock(&m_mutex);
        if (!m_launched || m_serverBefore)
            return;
    }
    // The wineserver that Wine's own launcher runs: beside it, else on PATH.
    QString server = QFileInfo(m_binary).absolutePath() + QStringLiteral("/wineserver");
    if (!QFileInfo(server).isExecutable())
        server = QStandardPaths::findExecutable(QStringLiteral("wineserver"));
    if (server.isEmpty() || !serverRunning(m_paths.prefix()))
        return;
    QProcess wait;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("WINEPREFIX"), m_paths.prefix());
    wait.setProcessEnvironment(environment);
    wait.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    wait.start(server, { QStringLiteral("-w") });
    if (!wait.waitForFinished(limitMs)) {
        // Only the waiting client is stopped; the server is left alone.
        wait.kill();
        wait.waitForFinished(-1);
        consoleLine(lcProblems(),
            QStringLiteral("The wineserver of %1 was still running %2 s after the run")
                .arg(m_paths.prefix())
                .arg(limitMs / 1000));
    }
}

bool WineTool::serverRunning(const QString& prefix)
{
    struct stat info { };
    if (::stat(QFile::encodeName(prefix).constData(), &info) != 0)
        return false;
    for (const QString& candidate : serverLockCandidates(prefix, info.st_dev, info.st_ino)) {
        const int fd = ::open(QFile::encodeName(candidate).constData(), O_RDONLY | O_CLOEXEC);
        if (fd < 0)
            continue;
        struct flock query { };
        query.l_type = F_WRLCK;
        query.l_whence = SEEK_SET;
        const bool held = ::fcntl(fd, F_GETLK, &query) == 0 && query.l_type != F_UNLCK;
        ::close(fd);
        if (held)
            return true;
    }
    return false;
}

} // namespace quillon
