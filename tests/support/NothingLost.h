#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

#include <sys/resource.h>

namespace quillon::test {

// What a run must leave alone, taken before it starts: the bytes of every
// user input and of every file already in the output directory. After the
// run, expectNothingLost() checks that
// - the inputs and the files that were there before are byte-identical,
// - the last step's outputs that the tool wrote are still there,
// - no temporary file is left in the output directory,
// - the deletion list names only paths inside the output directory that the
//   run itself generated (never an input or a file that was there before).
class NothingLost final {
public:
    NothingLost(QString outputDir, QStringList inputRoots);

    // `lastStepOutputs`: paths the tool wrote in the run's last step.
    // `deletionList`: the controller's interim files as they stood when the
    // deletion pass began.
    void expectNothingLost(const QStringList& lastStepOutputs, const QStringList& deletionList) const;

private:
    QMap<QString, QByteArray> inputsNow() const;

    QString m_outputDir;
    QStringList m_inputRoots;
    QMap<QString, QByteArray> m_inputs;
    QMap<QString, QByteArray> m_outputBefore;
    QString m_canonicalOutputDir; // with a trailing slash, taken before the run
};

// The values of the lines "<kind> <value>" in the stand-in tool's journal
// (QUILLON_STANDIN_JOURNAL), in order.
QStringList journalEntries(const QString& journalPath, const QString& kind);

// Limits the size of any file this process and its children write, the way
// a full disk does: a write past the limit fails (EFBIG) instead of raising
// SIGXFSZ, which is ignored while the guard lives (children inherit both).
class FileSizeLimit final {
public:
    explicit FileSizeLimit(rlim_t bytes);
    ~FileSizeLimit();
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    bool active() const { return m_active; }

private:
    rlimit m_old {};
    void (*m_oldHandler)(int) = nullptr;
    bool m_active = false;
};

// A mount set up for a test and taken down with the guard (lazily, so a
// file still open in it does not keep it). Only root with the right to mount
// gets one; active() tells, why() says what failed.
class TestMount final {
public:
    // A small tmpfs of `bytes` bytes at `directory`.
    static TestMount tmpfs(const QString& directory, qint64 bytes);
    // `directory` bound onto itself, read-only from then on.
    static TestMount readOnlyBind(const QString& directory);

    TestMount(TestMount&& other) noexcept;
    TestMount& operator=(TestMount&&) = delete;
    TestMount(const TestMount&) = delete;
    TestMount& operator=(const TestMount&) = delete;
    ~TestMount();

    bool active() const { return !m_target.isEmpty(); }
    const QString& why() const { return m_why; }

private:
    TestMount() = default;
    QString m_target;
    QString m_why;
};

// Fills the file system that holds `directory` with one file of the given
// name until a write fails; returns the file's path (empty when nothing
// could be written).
QString fillFileSystem(const QString& directory, const QString& name);

} // namespace quillon::test
