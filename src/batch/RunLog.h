#pragma once

#include <QMutex>
#include <QString>

#include <memory>

class QFile;

namespace quillon {

// The run log "qlrn_logfile.txt" in the output directory: its title, then
// every non-empty chunk of the render tool's output, as it comes, with
// nothing added. Written from the tool runs' threads, closed by the run's
// end; thread-safe.
class RunLog final {
public:
    static const QString kFileName; // "qlrn_logfile.txt"
    static const QString kTitle; // "Quillon log"

    RunLog();
    ~RunLog();
    RunLog(const RunLog&) = delete;
    RunLog& operator=(const RunLog&) = delete;

    // Writes a new log (title only) into `outputDir` and keeps it open for
    // appending. A link at the name is replaced, never followed. False with
    // the reason when it cannot be made; the run then has no log.
    bool open(const QString& outputDir, QString* why);
    // Appends the text's UTF-8 bytes when a log is open and the text is not
    // empty.
    void write(const QString& text);
    // Flushes and closes the log; safe to call twice.
    void close();
    bool isOpen() const;

private:
    mutable QMutex m_mutex;
    std::unique_ptr<QFile> m_file;
};

} // namespace quillon
