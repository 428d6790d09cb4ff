#pragma once

#include "library/Record.h"

#include <QString>
#include <QThreadPool>

namespace quillon {

// Keeps the current chain in a chain file next to the preferences, so the
// next start shows it again. Each change is turned into the file's bytes on
// the calling thread and written in the background, one write after another.
class ChainKeeper final {
public:
    ChainKeeper();
    // Waits for the writes still pending.
    ~ChainKeeper();
    ChainKeeper(const ChainKeeper&) = delete;
    ChainKeeper& operator=(const ChainKeeper&) = delete;

    // Where the chain is kept; nothing is kept while it is empty.
    void setPath(const QString& path) { m_path = path; }
    const QString& path() const { return m_path; }

    // Saves the chain in the background. A chain that cannot be stored, or
    // a symbolic link at the path, leaves the file as it was.
    void keep(const RecordList& chain);
    // The kept chain; empty when there is none or it cannot be read.
    RecordList restore() const;
    void waitForWrites();

private:
    QString m_path;
    QThreadPool m_writer;
};

} // namespace quillon
