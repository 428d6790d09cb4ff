#include "batch/RunCleanup.h"

#include "batch/RunJournal.h"

#include <QDir>
#include <QFileInfo>
#include <QMutexLocker>

namespace quillon {

namespace {

QString absolutePath(const QString& path)
{
    return path.isEmpty() ? path : QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

// The canonical form of a path whose last component may not exist (or may
// be a link that must not be followed): the parent resolved, the name kept.
// A run hands over thousands of files of one directory, so each parent is
// resolved once per cache.
QString canonicalParentJoined(const QString& path, QHash<QString, QString>& parents)
{
    const QFileInfo info(absolutePath(path));
    const QString parentPath = info.absolutePath();
    auto known = parents.constFind(parentPath);
    if (known == parents.cend())
        known = parents.insert(parentPath, QFileInfo(parentPath).canonicalFilePath());
    const QString& parent = known.value();
    if (parent.isEmpty())
        return {};
    return parent.endsWith(QLatin1Char('/')) ? parent + info.fileName()
                                             : parent + QLatin1Char('/') + info.fileName();
}

} // namespace

void RunCleanup::begin(const QString& outputDir, const QStringList& inputs)
{
    const QMutexLocker lock(&m_mutex);
    m_canonicalOutputDir = QFileInfo(outputDir).canonicalFilePath();
    m_originalInputs.clear();
    for (const QString& path : inputs) {
        if (path.isEmpty())
            continue;
        m_originalInputs.insert(absolutePath(path));
        const QString resolved = QFileInfo(path).canonicalFilePath();
        if (!resolved.isEmpty())
            m_originalInputs.insert(resolved);
    }
    m_files.clear();
    m_known.clear();
}

bool RunCleanup::isDeletable(const QString& path, ParentCache& parents) const
{
    if (path.isEmpty() || m_canonicalOutputDir.isEmpty())
        return false;
    const QString candidate = canonicalParentJoined(path, parents);
    if (candidate.isEmpty())
        return false;
    const QString inside = m_canonicalOutputDir.endsWith(QLatin1Char('/'))
        ? m_canonicalOutputDir
        : m_canonicalOutputDir + QLatin1Char('/');
    if (!candidate.startsWith(inside) || candidate.size() == inside.size())
        return false;
    if (m_originalInputs.contains(candidate) || m_originalInputs.contains(absolutePath(path)))
        return false;
    // Anything but a link resolves to the candidate itself, checked above.
    const QFileInfo info(path);
    if (!info.isSymLink())
        return true;
    const QString resolved = info.canonicalFilePath();
    return resolved.isEmpty() || !m_originalInputs.contains(resolved);
}

void RunCleanup::collect(const QStringList& paths)
{
    const QMutexLocker lock(&m_mutex);
    ParentCache parents;
    for (const QString& path : paths) {
        // A path handed over again (every tool run of a step rewrites the
        // same control file) is deleted once all the same.
        if (m_known.contains(path) || !isDeletable(path, parents))
            continue;
        m_known.insert(path);
        m_files.append(path);
    }
}

QStringList RunCleanup::files() const
{
    const QMutexLocker lock(&m_mutex);
    return m_files;
}

QStringList RunCleanup::deleteCollected(RunJournal& journal)
{
    const QMutexLocker lock(&m_mutex);
    const QStringList paths = m_files;
    ParentCache parents;
    QStringList deleted;
    for (const QString& path : paths) {
        // Only files this run created and still finds as it left them.
        if (!isDeletable(path, parents) || !journal.isCreated(path))
            continue;
        if (journal.removeIfCreated(path))
            deleted.append(QStringLiteral("deleted ") + path);
        else if (QFileInfo(path).exists() || QFileInfo(path).isSymLink())
            deleted.append(QStringLiteral("kept %1: changed since the run wrote it").arg(path));
    }
    return deleted;
}

} // namespace quillon
