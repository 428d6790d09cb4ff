#include "run/WinePaths.h"

#include <QDir>
#include <QFileInfo>
#include <QProcessEnvironment>

#include <algorithm>

namespace quillon {

namespace {

// Characters a Windows file name cannot hold; Wine would show such a name
// under a mangled short name instead.
bool isWindowsNameCharacter(QChar c)
{
    return c.unicode() >= 0x20 && !QStringLiteral("\\:*?\"<>|").contains(c);
}

bool covers(const QString& root, const QString& path)
{
    if (root == QLatin1String("/"))
        return true;
    return path == root || (path.startsWith(root) && path.at(root.size()) == QLatin1Char('/'));
}

} // namespace

QString WinePaths::effectivePrefix(const QString& given)
{
    if (!given.isEmpty())
        return QDir::cleanPath(QFileInfo(given).absoluteFilePath());
    const QString fromEnvironment
        = QProcessEnvironment::systemEnvironment().value(QStringLiteral("WINEPREFIX"));
    if (!fromEnvironment.isEmpty())
        return QDir::cleanPath(QFileInfo(fromEnvironment).absoluteFilePath());
    return QDir::homePath() + QStringLiteral("/.wine");
}

WinePaths WinePaths::read(const QString& prefix)
{
    WinePaths paths;
    paths.m_prefix = prefix;
    const QDir devices(prefix + QStringLiteral("/dosdevices"));
    if (!devices.exists()) {
        paths.m_drives.append({ QLatin1Char('Z'), QStringLiteral("/") });
        return paths;
    }
    const QStringList names
        = devices.entryList(QDir::System | QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString& name : names) {
        if (name.size() != 2 || name.at(1) != QLatin1Char(':') || !name.at(0).isLetter()
            || name.at(0).unicode() > 0x7f)
            continue;
        const QFileInfo link(devices.filePath(name));
        if (!link.isSymLink() || !link.isDir())
            continue;
        const QChar letter = name.at(0).toUpper();
        // The target as written (relative to dosdevices) and as resolved: a
        // path given through a linked folder still finds its drive.
        const QString written = QDir::cleanPath(devices.absoluteFilePath(link.symLinkTarget()));
        const QString resolved = link.canonicalFilePath();
        paths.m_drives.append({ letter, written });
        if (!resolved.isEmpty() && resolved != written)
            paths.m_drives.append({ letter, resolved });
    }
    std::stable_sort(paths.m_drives.begin(), paths.m_drives.end(),
        [](const Drive& a, const Drive& b) { return a.letter < b.letter; });
    return paths;
}

QString WinePaths::windowsPath(const QString& path, QString* error) const
{
    if (path.isEmpty())
        return {};
    const auto refuse = [error](const QString& why) {
        if (error)
            *error = why;
        return QString();
    };
    if (!QDir::isAbsolutePath(path))
        return refuse(QStringLiteral("%1 is not an absolute path").arg(path));
    const QString clean = QDir::cleanPath(path);
    const Drive* best = nullptr;
    for (const Drive& drive : m_drives) {
        if (covers(drive.root, clean) && (!best || drive.root.size() > best->root.size()))
            best = &drive;
    }
    if (!best)
        return refuse(
            QStringLiteral("Wine cannot reach %1: no drive in %2/dosdevices leads to a folder that holds it")
                .arg(path, m_prefix));
    const QString rest = best->root == QLatin1String("/") ? clean.mid(1) : clean.mid(best->root.size() + 1);
    if (!std::all_of(rest.cbegin(), rest.cend(),
            [](QChar c) { return c == QLatin1Char('/') || isWindowsNameCharacter(c); }))
        return refuse(QStringLiteral(
            "%1 cannot be given to a Windows program: a name in it holds one of \\ : * ? \" < > |")
                          .arg(path));
    QString windows = QString(best->letter) + QStringLiteral(":\\") + rest;
    windows.replace(QLatin1Char('/'), QLatin1Char('\\'));
    return windows;
}

} // namespace quillon
