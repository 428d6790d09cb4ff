#include "batch/RunJournal.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QUrl>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillon {

const QString RunJournal::kFolderName = QStringLiteral(".quillon");

namespace {

const QString kJournalName = QStringLiteral("journal");
const QString kLockName = QStringLiteral("lock");

QByteArray encodePath(const QString& path)
{
    return QUrl::toPercentEncoding(path, "/");
}

// Whether `path` names an entry directly in `directory` or in a folder below
// its ".quillon" (canonical parents compared; the name itself may be a link).
bool isInsideOutput(const QString& path, const QString& directory)
{
    const QFileInfo info(path);
    const QString parent = QFileInfo(info.absolutePath()).canonicalFilePath();
    if (parent.isEmpty() || info.fileName().isEmpty())
        return false;
    return parent == directory || parent.startsWith(directory + QLatin1Char('/') + RunJournal::kFolderName);
}

} // namespace

RunJournal::RunJournal() = default;

RunJournal::~RunJournal()
{
    end();
}

RunJournal::Begin RunJournal::begin(const QString& outputDir, QStringList* removed)
{
    return beginWith(outputDir, kLockName, kJournalName, QStringLiteral("job-*"), removed);
}

RunJournal::Begin RunJournal::beginPart(const QString& outputDir, int part, QStringList* removed)
{
    const QString name = QStringLiteral("part-%1").arg(part);
    return beginWith(outputDir, name + QStringLiteral(".lock"), name + QStringLiteral(".journal"),
        QStringLiteral("job-%1").arg(part), removed);
}

RunJournal::Begin RunJournal::beginWith(const QString& outputDir, const QString& lockName,
    const QString& journalName, const QString& leftoverFolders, QStringList* removed)
{
    end();
    QMutexLocker locker(&m_mutex);
    m_created.clear();
    m_keptLeftovers.clear();
    m_notices.clear();
    m_lockHolder.clear();
    m_outputDir = QFileInfo(outputDir).canonicalFilePath();
    if (m_outputDir.isEmpty())
        return Begin::Ok;
    m_folder = QDir(m_outputDir).filePath(kFolderName);
    const QByteArray folder = QFile::encodeName(m_folder);
    // The parts of a run make and remove the shared folder at once: one
    // that went between its making and the lock is made again.
    std::unique_ptr<QLockFile> lock;
    for (int attempt = 0; attempt < 3 && !lock; ++attempt) {
        struct stat info { };
        if (::lstat(folder.constData(), &info) == 0) {
            if (!S_ISDIR(info.st_mode))
                return Begin::NotAFolder;
        } else if (::mkdir(folder.constData(), 0777) != 0 && errno != EEXIST) {
            return Begin::Ok; // nothing can be written here; the run will say so
        }
        const QString lockPath = QDir(m_folder).filePath(lockName);
        lock = std::make_unique<QLockFile>(lockPath);
        // Only a lock whose process is gone counts as stale, however old.
        lock->setStaleLockTime(0);
        if (!tryLock(*lock, lockPath)) {
            if (lock->error() == QLockFile::LockFailedError) {
                qint64 pid = 0;
                QString host;
                QString application;
                lock->getLockInfo(&pid, &host, &application);
                m_lockHolder = QStringLiteral("%1, held by process %2").arg(lockPath).arg(pid);
                return Begin::Busy;
            }
            lock.reset();
        }
    }
    if (!lock)
        return Begin::Ok;
    m_lock = std::move(lock);
    m_anchor = std::make_unique<DirectoryAnchor>(outputDir);
    m_folderFd = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);

    m_journalName = journalName;
    const QString journal = QDir(m_folder).filePath(journalName);
    removeLeftovers(journal, leftoverFolders, removed);
    m_journalFd = createFileAtomically(journal, QByteArray());
    return Begin::Ok;
}

bool RunJournal::tryLock(QLockFile& lock, const QString& path)
{
    if (lock.tryLock(0) || lock.error() != QLockFile::LockFailedError)
        return lock.isLocked();
    qint64 pid = 0;
    QString host;
    QString application;
    if (lock.getLockInfo(&pid, &host, &application) && pid > 0)
        return false;
    // Readable again, so that the removal can take the file's own lock
    // first: a run that holds it keeps it.
    ::chmod(QFile::encodeName(path).constData(), 0644);
    if (!lock.removeStaleLockFile() || !lock.tryLock(0))
        return false;
    m_notices.append(QStringLiteral("The lock %1 was empty or damaged (a power loss while it was written?) "
                                    "and no process held it: it was taken over")
                         .arg(path));
    return true;
}

void RunJournal::removeLeftovers(const QString& journalPath, const QString& folders, QStringList* removed)
{
    if (!regularFileIdentity(journalPath).isValid())
        return;
    QFile journal(journalPath);
    if (!journal.open(QIODevice::ReadOnly))
        return;
    QStringList order;
    QHash<QString, FileIdentity> latest;
    while (!journal.atEnd()) {
        const QList<QByteArray> fields = journal.readLine().trimmed().split(' ');
        // A line without the modification time cannot tell an edited file
        // from the one written: such files stay.
        if (fields.size() != 6 || fields.at(0) != "created")
            continue;
        FileIdentity identity;
        bool valid = true;
        bool ok = false;
        identity.device = static_cast<dev_t>(fields.at(1).toULongLong(&ok));
        valid = valid && ok;
        identity.inode = static_cast<ino_t>(fields.at(2).toULongLong(&ok));
        valid = valid && ok;
        identity.size = fields.at(3).toLongLong(&ok);
        valid = valid && ok;
        identity.modifiedNs = fields.at(4).toLongLong(&ok);
        if (!valid || !ok)
            continue;
        const QString path = QUrl::fromPercentEncoding(fields.at(5));
        // A file written again (the control file of every tool run) is
        // judged by what the run wrote last.
        if (!latest.contains(path))
            order.append(path);
        latest.insert(path, identity);
    }
    for (const QString& path : std::as_const(order)) {
        if (!isInsideOutput(path, m_outputDir))
            continue;
        if (removeIfUnchanged(path, latest.value(path))) {
            if (removed)
                removed->append(path);
        } else if (QFileInfo(path).exists() || QFileInfo(path).isSymLink()) {
            m_keptLeftovers.append(path);
        }
    }
    journal.close();
    QFile::remove(journalPath);
    // The slot folders of that run, once their files are gone.
    const QDir folder(m_folder);
    for (const QString& name : folder.entryList({ folders }, QDir::Dirs | QDir::NoSymLinks))
        ::rmdir(QFile::encodeName(folder.filePath(name)).constData());
}

void RunJournal::appendLine(const QByteArray& line)
{
    if (m_journalFd < 0)
        return;
    const char* data = line.constData();
    qsizetype left = line.size();
    while (left > 0) {
        const ssize_t done = ::write(m_journalFd, data, static_cast<size_t>(left));
        if (done < 0 && errno == EINTR)
            continue;
        if (done <= 0)
            return; // a full disk: the journal only helps a later clean-up
        data += done;
        left -= done;
    }
}

void RunJournal::intend(const QStringList& paths)
{
    QByteArray lines;
    for (const QString& path : paths)
        lines += "intend " + encodePath(path) + '\n';
    QMutexLocker locker(&m_mutex);
    appendLine(lines);
}

void RunJournal::recordCreated(const QString& path, const FileIdentity& identity)
{
    if (!identity.isValid())
        return;
    const QByteArray line = "created " + QByteArray::number(static_cast<quint64>(identity.device)) + ' '
        + QByteArray::number(static_cast<quint64>(identity.inode)) + ' ' + QByteArray::number(identity.size)
        + ' ' + QByteArray::number(identity.modifiedNs) + ' ' + encodePath(path) + '\n';
    QMutexLocker locker(&m_mutex);
    m_created.insert(path, identity);
    appendLine(line);
}

bool RunJournal::isCreated(const QString& path) const
{
    QMutexLocker locker(&m_mutex);
    return m_created.contains(path);
}

bool RunJournal::removeIfCreated(const QString& path)
{
    FileIdentity identity;
    {
        QMutexLocker locker(&m_mutex);
        const auto found = m_created.constFind(path);
        if (found == m_created.cend())
            return false;
        identity = found.value();
    }
    return removeIfUnchanged(path, identity);
}

QString RunJournal::jobFolder(int slot)
{
    QMutexLocker locker(&m_mutex);
    if (const auto known = m_jobFolders.constFind(slot); known != m_jobFolders.cend())
        return known.value();
    if (!m_lock)
        return {};
    const QString name = QStringLiteral("job-%1").arg(slot);
    const QString folder = QDir(m_folder).filePath(name);
    const QByteArray bytes = QFile::encodeName(name);
    // Made in the folder this run holds, wherever its path leads now.
    struct stat info { };
    if (m_folderFd < 0
        || (::mkdirat(m_folderFd, bytes.constData(), 0777) != 0
            && (::fstatat(m_folderFd, bytes.constData(), &info, AT_SYMLINK_NOFOLLOW) != 0
                || !S_ISDIR(info.st_mode))))
        return {};
    m_jobFolders.insert(slot, folder);
    return folder;
}

void RunJournal::end()
{
    QMutexLocker locker(&m_mutex);
    for (const QString& folder : std::as_const(m_jobFolders))
        ::rmdir(QFile::encodeName(folder).constData()); // only when empty
    m_jobFolders.clear();
    if (m_journalFd >= 0) {
        ::close(m_journalFd);
        m_journalFd = -1;
        QFile::remove(QDir(m_folder).filePath(m_journalName));
    }
    if (m_folderFd >= 0) {
        ::close(m_folderFd);
        m_folderFd = -1;
    }
    m_anchor.reset();
    if (m_lock) {
        m_lock->unlock();
        m_lock.reset();
    }
    if (!m_folder.isEmpty()) {
        ::rmdir(QFile::encodeName(m_folder).constData()); // only when empty
        m_folder.clear();
    }
}

} // namespace quillon
