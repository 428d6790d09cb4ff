#pragma once

#include "run/SafeFile.h"

#include <QHash>
#include <QMutex>
#include <QMutexLocker>
#include <QString>
#include <QStringList>

#include <memory>

class QLockFile;

namespace quillon {

// A run's own corner of its output directory, the hidden folder ".quillon":
// - a lock, so only one run at a time uses the directory (a lock left by a
//   process that died is taken over);
// - the journal: the interim files the run is about to write, and each one
//   it did write with its identity, so a later run can remove what a killed
//   run left (only those files, only while unchanged);
// - in memory, the files the run created: the deletion pass removes only
//   those, and only while they are still the files the run saw.
//
// Thread-safe: the worker records, the controller begins, ends and deletes.
class RunJournal final {
public:
    static const QString kFolderName; // ".quillon"

    enum class Begin { Ok, Busy, NotAFolder };

    RunJournal();
    ~RunJournal();
    RunJournal(const RunJournal&) = delete;
    RunJournal& operator=(const RunJournal&) = delete;

    // Takes the directory for a run: creates the folder, takes the lock,
    // removes the leftovers of a killed run (their paths are appended to
    // `removed`) and starts a new journal. A folder or lock that cannot be
    // created on a read-only or full disk is not an error: the run then has
    // no lock and no journal on disk, but still knows what it created.
    Begin begin(const QString& outputDir, QStringList* removed = nullptr);
    // Takes the directory for one part of a run whose parts work in it at
    // once (a cluster job array): the folder is shared, the lock
    // ("part-K.lock") and journal ("part-K.journal") are the part's own, and
    // only that part's leftovers and folder "job-K" are cleaned up. end()
    // removes the folder only when no other part is left in it.
    Begin beginPart(const QString& outputDir, int part, QStringList* removed = nullptr);

    // The leftovers of a killed run that begin() found changed since that
    // run wrote them, and kept.
    QStringList keptLeftovers() const { return locked(m_keptLeftovers); }
    // What begin() has to say besides: a damaged lock taken over.
    QStringList notices() const { return locked(m_notices); }
    // After Busy: the lock's path and the process holding it.
    QString lockHolder() const { return locked(m_lockHolder); }

    // The run is about to write these files.
    void intend(const QStringList& paths);
    // The run wrote `path`, or found it created by the tool: it may delete
    // it at the end while it stays `identity`.
    void recordCreated(const QString& path, const FileIdentity& identity);
    bool isCreated(const QString& path) const;
    // Deletes `path` if the run created it and it is unchanged.
    bool removeIfCreated(const QString& path);

    // The folder ".quillon/job-K" for the task files of tool-run slot K,
    // created on first use; empty when it cannot be made (a link or a file
    // has its name, a read-only disk).
    QString jobFolder(int slot);

    // The run is over: the journal goes, the lock is released and the
    // folder removed when nothing else is in it. Safe to call twice.
    void end();

private:
    template <typename T> T locked(const T& value) const
    {
        QMutexLocker locker(&m_mutex);
        return value;
    }
    Begin beginWith(const QString& outputDir, const QString& lockName, const QString& journalName,
        const QString& leftoverFolders, QStringList* removed);
    void appendLine(const QByteArray& line);
    // Tries `lock`; a lock file that names no process (empty or damaged by
    // a power loss) and that no process holds is removed and tried again.
    bool tryLock(QLockFile& lock, const QString& path);
    // Removes what the journal at `journalPath` recorded, then the empty
    // folders named by the pattern `folders`.
    void removeLeftovers(const QString& journalPath, const QString& folders, QStringList* removed);

    mutable QMutex m_mutex;
    QString m_outputDir; // canonical
    QString m_folder;
    QString m_journalName;
    std::unique_ptr<QLockFile> m_lock;
    std::unique_ptr<DirectoryAnchor> m_anchor;
    int m_folderFd = -1; // ".quillon", opened without following a link
    int m_journalFd = -1;
    QHash<QString, FileIdentity> m_created;
    QStringList m_keptLeftovers;
    QStringList m_notices;
    QString m_lockHolder;
    QHash<int, QString> m_jobFolders;
};

} // namespace quillon
