#pragma once

#include <QHash>
#include <QMutex>
#include <QSet>
#include <QString>
#include <QStringList>

namespace quillon {

class RunJournal;

// The files a run hands over for deletion (task files, the interim images
// of inner steps) and the deletion pass at its end. Only paths inside the
// output directory are taken, never the run's own inputs, each once, in the
// order handed over; the pass removes only what the journal says the run
// created and still finds unchanged. collect() is thread-safe.
class RunCleanup final {
public:
    // A new run into `outputDir` whose user inputs are `inputs`.
    void begin(const QString& outputDir, const QStringList& inputs);
    void collect(const QStringList& paths);
    // The paths handed over so far, in order (kept until the next begin).
    QStringList files() const;
    // Removes the collected files the journal knows as created: one
    // "deleted PATH" line per file removed, one "kept PATH: ..." line per
    // such file changed since (it is the user's now).
    QStringList deleteCollected(RunJournal& journal);

private:
    // Canonical parent directories already resolved, by the parent as given.
    using ParentCache = QHash<QString, QString>;
    bool isDeletable(const QString& path, ParentCache& parents) const;

    mutable QMutex m_mutex;
    QString m_canonicalOutputDir;
    QSet<QString> m_originalInputs; // canonical and absolute forms
    QStringList m_files;
    QSet<QString> m_known;
};

} // namespace quillon
