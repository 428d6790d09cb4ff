// Batch runs against a render tool that misbehaves: it crashes, fails,
// floods its output, prints invalid UTF-8, hangs, ignores SIGTERM, or the
// output directory goes away, turns read-only or fills up while it runs.
// Every test ends with the same check that nothing of the user's was lost.

#include "batch/BatchController.h"
#include "support/BatchFixtures.h"
#include "support/BatchRunFixture.h"
#include "support/NothingLost.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <functional>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace quillon {
namespace {

using test::batchDirectoryNames;
using test::BatchEnvGuard;
using test::FileSizeLimit;
using test::fillFileSystem;
using test::journalEntries;
using test::NothingLost;
using test::TestMount;

const QString kKilledMessage = QStringLiteral("The render tool did not stop; it was killed.");

QByteArray withoutWhiteSpace(const QByteArray& bytes)
{
    QByteArray out;
    out.reserve(bytes.size());
    for (const char c : bytes) {
        if (c != ' ' && c != '\n' && c != '\r' && c != '\t' && c != '\v' && c != '\f')
            out.append(c);
    }
    return out;
}

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool processGone(qint64 pid)
{
    return pid > 0 && ::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH;
}

class ToolFault : public test::BatchRunFixture {
protected:
    void SetUp() override
    {
        BatchRunFixture::SetUp();
        const QDir root(m_temp.path());
        m_journal = root.filePath(QStringLiteral("journal.txt"));
        m_gate = root.filePath(QStringLiteral("gate"));
        m_controller.setStandardOutput([this](const QString& line) {
            // The tool's output is echoed here too; keep only the run's own lines.
            if (line.startsWith(QLatin1String("deleted "))
                || line.startsWith(QLatin1String("Error creating logfile ")))
                m_stdout.append(line);
            m_stdoutBytes += line.size() + 1;
        });
        m_settings.widthText = QStringLiteral("16");
        m_settings.heightText = QStringLiteral("12");
        m_settings.seed = 11;
    }

    // Two images in the input directory, which is the run's source.
    void useTwoInputs()
    {
        input(QStringLiteral("a.png"));
        input(QStringLiteral("b.png"));
        m_settings.inputMode = InputMode::Directory;
        m_settings.sourcePath = m_in;
    }

    // A file of the user's that already lies in the output directory.
    void userFileInOutput()
    {
        QFile file(QDir(m_out).filePath(QStringLiteral("notes.txt")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("the user's own notes\n");
    }

    void start(const RecordList& chain)
    {
        QString error;
        ASSERT_TRUE(m_controller.startBatchWithSender(chain, m_settings, &error)) << error.toStdString();
    }

    // Runs a real event loop until the run has completed: reports are
    // served as soon as they arrive (QTest::qWaitFor would sleep between
    // its rounds, and every report of a long output would wait for that).
    bool waitForIdle(int timeoutMs = 60000)
    {
        if (!m_controller.isRunning())
            return true;
        QEventLoop loop;
        QObject::connect(&m_controller, &BatchController::runFinished, &loop, &QEventLoop::quit);
        QTimer::singleShot(timeoutMs, &loop, &QEventLoop::quit);
        if (m_controller.isRunning())
            loop.exec();
        return !m_controller.isRunning();
    }

    // Runs a one-step chain with the filter `filterName` whose tool hangs
    // (QUILLON_STANDIN_HANG=`hang`) with its journal on, asks for Abort at
    // the first render line and waits until the run has completed.
    void abortHangingRunAtFirstLine(const QString& filterName, const QByteArray& hang)
    {
        BatchEnvGuard journal("QUILLON_STANDIN_JOURNAL", m_journal.toLocal8Bit());
        BatchEnvGuard hangGuard("QUILLON_STANDIN_HANG", hang);
        m_display.onRender = [this, asked = false](const QString&) mutable {
            if (!std::exchange(asked, true))
                m_controller.abortProcessWithSender();
        };

        ASSERT_NO_FATAL_FAILURE(start({ filter(filterName) }));
        ASSERT_TRUE(waitForIdle());
    }

    // Every result the tool wrote whose name marks it as an output of the
    // chain position `lastPrefix` stands for (outputs of the last step).
    QStringList writtenOutputs(const QString& prefix = QString()) const
    {
        QStringList written;
        for (const QString& path : journalEntries(m_journal, QStringLiteral("wrote"))) {
            if (prefix.isEmpty() || QFileInfo(path).fileName().startsWith(prefix))
                written.append(path);
        }
        return written;
    }

    QString logPath() const { return QDir(m_out).filePath(BatchController::kLogFileName); }

    QString m_journal;
    QString m_gate;
    qint64 m_stdoutBytes = 0;
};

// ---- The tool fails --------------------------------------------------------

TEST_F(ToolFault, ACrashingToolEndsItsRunAndTheBatchGoesOn)
{
    useTwoInputs();
    userFileInOutput();
    const NothingLost guard(m_out, { m_in });
    BatchEnvGuard journal("QUILLON_STANDIN_JOURNAL", m_journal.toLocal8Bit());
    BatchEnvGuard crash("QUILLON_STANDIN_CRASH", "1");

    start({ filter(QStringLiteral("Crash")) });
    ASSERT_TRUE(waitForIdle());

    EXPECT_EQ(m_display.sources, (QStringList { "a.png", "b.png" }));
    EXPECT_EQ(m_display.events.last(), QStringLiteral("finished"));
    EXPECT_EQ(journalEntries(m_journal, QStringLiteral("pid")).size(), 2);
    EXPECT_TRUE(writtenOutputs().isEmpty());
    EXPECT_EQ(batchDirectoryNames(m_out), QStringList { "notes.txt" });
    guard.expectNothingLost({}, m_display.deletionList);
}

TEST_F(ToolFault, WhatACrashingToolWroteInTheLastStepIsKept)
{
    input(QStringLiteral("a.png"));
    m_settings.inputMode = InputMode::File;
    m_settings.sourcePath = QDir(m_in).filePath(QStringLiteral("a.png"));
    m_settings.frameCountText = QStringLiteral("3");
    const NothingLost guard(m_out, { m_in });
    BatchEnvGuard journal("QUILLON_STANDIN_JOURNAL", m_journal.toLocal8Bit());
    BatchEnvGuard crash("QUILLON_STANDIN_CRASH_AFTER", "2");

    start({ filter(QStringLiteral("Partial")) });
    ASSERT_TRUE(waitForIdle());

    const QStringList written = writtenOutputs();
    ASSERT_EQ(written.size(), 2);
    EXPECT_EQ(batchDirectoryNames(m_out), (QStringList { "p_a-1.png", "p_a-2.png" }));
    EXPECT_TRUE(taskFilesLeft().isEmpty());
    guard.expectNothingLost(written, m_display.deletionList);
}

TEST_F(ToolFault, ACrashInTheSecondStepKeepsItsOutputsAndDeletesOnlyInterimFiles)
{
    input(QStringLiteral("a.png"));
    userFileInOutput();
    m_settings.inputMode = InputMode::File;
    m_settings.sourcePath = QDir(m_in).filePath(QStringLiteral("a.png"));
    m_settings.frameCountText = QStringLiteral("2");
    const NothingLost guard(m_out, { m_in });
    BatchEnvGuard journal("QUILLON_STANDIN_JOURNAL", m_journal.toLocal8Bit());
    // The first step's run has two tasks and dies after the first; each run
    // of the second step has one task and completes it.
    BatchEnvGuard crash("QUILLON_STANDIN_CRASH_AFTER", "1");

    start({ filter(QStringLiteral("First")), filter(QStringLiteral("Second")) });
    ASSERT_TRUE(waitForIdle());

    const QStringList last = writtenOutputs(QStringLiteral("p_p_"));
    EXPECT_EQ(last.size(), 2);
    // The first step's one written output went to the deletion list.
    const QStringList all = writtenOutputs();
    EXPECT_EQ(all.size(), 3);
    for (const QString& path : all) {
        if (!last.contains(path)) {
            EXPECT_TRUE(m_display.deletionList.contains(path)) << path.toStdString();
        }
    }
    QStringList expected { "notes.txt" };
    for (const QString& path : last)
        expected.append(QFileInfo(path).fileName());
    expected.sort();
    EXPECT_EQ(batchDirectoryNames(m_out), expected);
    guard.expectNothingLost(last, m_display.deletionList);
}

TEST_F(ToolFault, AToolThatExitsWithAnErrorDoesNotStopTheChain)
{
    input(QStringLiteral("a.png"));
    m_settings.inputMode = InputMode::File;
    m_settings.sourcePath = QDir(m_in).filePath(QStringLiteral("a.png"));
    const NothingLost guard(m_out, { m_in });
    BatchEnvGuard journal("QUILLON_STANDIN_JOURNAL", m_journal.toLocal8Bit());
    BatchEnvGuard exitCode("QUILLON_STANDIN_EXIT_CODE", "3");

    start({ filter(QStringLiteral("One")), filter(QStringLiteral("Two")) });
    ASSERT_TRUE(waitForIdle());

    EXPECT_EQ(m_display.events.last(), QStringLiteral("finished"));
    EXPECT_EQ(m_display.sources.size(), 3);
    const QStringList last = writtenOutputs(QStringLiteral("p_p_"));
    EXPECT_EQ(last.size(), 2);
    EXPECT_EQ(writtenOutputs().size(), 4);
    QStringList names;
    for (const QString& path : last)
        names.append(QFileInfo(path).fileName());
    names.sort();
    EXPECT_EQ(batchDirectoryNames(m_out), names);
    guard.expectNothingLost(last, m_display.deletionList);
}

// ---- The tool's output -----------------------------------------------------

// 100 MB of output: it streams through the display and the log in many
// chunks while the controller's event loop keeps serving other events, and
// the log holds every chunk as shown.
TEST_F(ToolFault, AHundredMegabytesOfOutputReachTheLogWhileTheLoopStaysResponsive)
{
    constexpr qint64 kFlood = qint64(100) * 1024 * 1024;
    m_settings.inputMode = InputMode::None;
    m_settings.frameCountText = QStringLiteral("1");
    m_settings.toolLog = 1;
    const NothingLost guard(m_out, {});
    BatchEnvGuard journal("QUILLON_STANDIN_JOURNAL", m_journal.toLocal8Bit());
    BatchEnvGuard flood("QUILLON_STANDIN_FLOOD_BYTES", QByteArray::number(kFlood));

    // A zero-interval timer on the controller's thread: it only fires when
    // the loop gets to its own events between the run's reports.
    qint64 ticks = 0;
    qint64 ticksAtFirstReport = -1;
    qint64 ticksAtLastReport = -1;
    QTimer ping;
    ping.setInterval(0);
    QObject::connect(&ping, &QTimer::timeout, [&ticks] { ++ticks; });
    m_display.onRender = [&](const QString&) {
        if (ticksAtFirstReport < 0)
            ticksAtFirstReport = ticks;
        ticksAtLastReport = ticks;
    };
    ping.start();
    start({ filter(QStringLiteral("Flood")) });
    ASSERT_TRUE(waitForIdle(120000));
    ping.stop();

    EXPECT_EQ(m_display.events.last(), QStringLiteral("finished"));
    // Streamed, not read in one piece at the end.
    EXPECT_GT(m_display.renderCount, 100);
    EXPECT_GT(ticksAtLastReport - ticksAtFirstReport, 10);

    // The log: the title, then every shown chunk's bytes, nothing else.
    const QByteArray log = readAll(logPath());
    ASSERT_TRUE(log.startsWith(BatchController::kLogTitle.toUtf8()));
    const QByteArray body = log.mid(BatchController::kLogTitle.toUtf8().size());
    EXPECT_EQ(body.size(), m_display.shown.size());
    EXPECT_TRUE(body == m_display.shown);
    // Only white space at the chunk edges was trimmed: every other byte the
    // tool printed is there (100 MB of 109-byte lines).
    EXPECT_GE(body.size(), kFlood - kFlood / 100);
    EXPECT_TRUE(body.endsWith("Done"));
    EXPECT_TRUE(withoutWhiteSpace(body).contains(withoutWhiteSpace("00000000 " + QByteArray(99, 'x'))));

    const QStringList written = writtenOutputs();
    EXPECT_EQ(written.size(), 1);
    EXPECT_EQ(batchDirectoryNames(m_out), (QStringList { "NX_p_-1.png", "qlrn_logfile.txt" }));
    guard.expectNothingLost(written, m_display.deletionList);
}

// Multi-byte characters cut apart by the pipe still reach the log whole.
TEST_F(ToolFault, MultiByteOutputCutByThePipeIsLoggedWhole)
{
    constexpr qint64 kFlood = qint64(8) * 1024 * 1024;
    const QByteArray fill = QStringLiteral("Grüße € \U0001D11E ").toUtf8();
    m_settings.inputMode = InputMode::None;
    m_settings.frameCountText = QStringLiteral("1");
    m_settings.toolLog = 1;
    const NothingLost guard(m_out, {});
    BatchEnvGuard journal("QUILLON_STANDIN_JOURNAL", m_journal.toLocal8Bit());
    BatchEnvGuard flood("QUILLON_STANDIN_FLOOD_BYTES", QByteArray::number(kFlood));
    BatchEnvGuard filler("QUILLON_STANDIN_FLOOD_FILL", fill);

    start({ filter(QStringLiteral("Wide")) });
    ASSERT_TRUE(waitForIdle());

    const QByteArray log = readAll(logPath());
    const QByteArray body = log.mid(BatchController::kLogTitle.toUtf8().size());
    EXPECT_TRUE(body == m_display.shown);
    // Rebuild what the tool printed (see the stand-in's flood) and compare
    // without white space, which only chunk edges may have lost.
    QByteArray filler99;
    while (filler99.size() < 99)
        filler99 += fill;
    QByteArray printed;
    for (qint64 n = 0; printed.size() < kFlood; ++n) {
        QByteArray line = QByteArray::number(n).rightJustified(8, '0') + ' ' + filler99 + '\n';
        if (line.size() > kFlood - printed.size())
            line = QByteArray(kFlood - printed.size(), '.');
        printed += line;
    }
    const QByteArray kept = withoutWhiteSpace(body);
    const QByteArray expected = withoutWhiteSpace(printed);
    ASSERT_GT(kept.size(), expected.size());
    EXPECT_TRUE(kept.contains(expected)) << "lost " << (expected.size() - kept.size()) << " bytes";
    guard.expectNothingLost(writtenOutputs(), m_display.deletionList);
}

TEST_F(ToolFault, InvalidUtf8IsDroppedAndTheRunCompletes)
{
    input(QStringLiteral("a.png"));
    m_settings.inputMode = InputMode::File;
    m_settings.sourcePath = QDir(m_in).filePath(QStringLiteral("a.png"));
    m_settings.toolLog = 1;
    const NothingLost guard(m_out, { m_in });
    BatchEnvGuard journal("QUILLON_STANDIN_JOURNAL", m_journal.toLocal8Bit());
    BatchEnvGuard bad("QUILLON_STANDIN_BAD_UTF8", "1");

    start({ filter(QStringLiteral("Garbled")) });
    ASSERT_TRUE(waitForIdle());

    for (const QString& line : m_display.renderLines) {
        EXPECT_FALSE(line.trimmed().isEmpty());
        EXPECT_FALSE(line.contains(QChar::ReplacementCharacter));
        EXPECT_FALSE(line.contains(QStringLiteral("Bad bytes")));
    }
    const QByteArray log = readAll(logPath());
    EXPECT_TRUE(log == BatchController::kLogTitle.toUtf8() + m_display.shown);
    EXPECT_TRUE(QString::fromUtf8(log).toUtf8() == log);
    const QStringList written = writtenOutputs();
    EXPECT_EQ(written.size(), 2);
    guard.expectNothingLost(written, m_display.deletionList);
}

// ---- The tool does not stop ------------------------------------------------

// Abort in the middle of a flood of output stops the tool at once; the
// rest of its gigabyte is never read.
TEST_F(ToolFault, AbortStopsAToolThatIsFloodingItsOutput)
{
    m_settings.inputMode = InputMode::None;
    m_settings.toolLog = 1;
    const NothingLost guard(m_out, {});
    BatchEnvGuard journal("QUILLON_STANDIN_JOURNAL", m_journal.toLocal8Bit());
    BatchEnvGuard flood("QUILLON_STANDIN_FLOOD_BYTES", QByteArray::number(qint64(1) << 30));
    m_display.onRender = [this](const QString&) {
        if (m_display.renderCount == 20)
            m_controller.abortProcessWithSender();
    };

    start({ filter(QStringLiteral("Torrent")) });
    ASSERT_TRUE(waitForIdle());

    EXPECT_EQ(m_display.events.last(), QStringLiteral("finished:aborted"));
    EXPECT_LT(m_display.shown.size(), qint64(1) << 29);
    EXPECT_FALSE(m_display.renderLines.contains(kKilledMessage));
    const QStringList pids = journalEntries(m_journal, QStringLiteral("pid"));
    ASSERT_EQ(pids.size(), 1);
    EXPECT_TRUE(processGone(pids.first().toLongLong()));
    EXPECT_TRUE(readAll(logPath()) == BatchController::kLogTitle.toUtf8() + m_display.shown);
    EXPECT_EQ(batchDirectoryNames(m_out), QStringList { "qlrn_logfile.txt" });
    guard.expectNothingLost({}, m_display.deletionList);
}

TEST_F(ToolFault, AHangingToolIsStoppedByAbort)
{
    useTwoInputs();
    userFileInOutput();
    const NothingLost guard(m_out, { m_in });
    ASSERT_NO_FATAL_FAILURE(abortHangingRunAtFirstLine(QStringLiteral("Hang"), "1"));

    EXPECT_EQ(m_display.events.last(), QStringLiteral("finished:aborted"));
    EXPECT_EQ(m_display.sources, QStringList { "a.png" });
    // SIGTERM was enough: no kill, no message about one.
    EXPECT_FALSE(m_display.renderLines.contains(kKilledMessage));
    const QStringList pids = journalEntries(m_journal, QStringLiteral("pid"));
    ASSERT_EQ(pids.size(), 1);
    EXPECT_TRUE(processGone(pids.first().toLongLong()));
    EXPECT_TRUE(taskFilesLeft().isEmpty());
    EXPECT_EQ(batchDirectoryNames(m_out), QStringList { "notes.txt" });
    guard.expectNothingLost({}, m_display.deletionList);
}

// Takes the grace period (3 s): the tool ignores SIGTERM, so Abort kills it
// and says so on the progress display.
TEST_F(ToolFault, AToolThatIgnoresSigtermIsKilledAndTheDisplaySaysSo)
{
    useTwoInputs();
    m_settings.toolLog = 1;
    const NothingLost guard(m_out, { m_in });
    ASSERT_NO_FATAL_FAILURE(abortHangingRunAtFirstLine(QStringLiteral("Stubborn"), "ignore-term"));

    EXPECT_EQ(m_display.events.last(), QStringLiteral("finished:aborted"));
    ASSERT_FALSE(m_display.renderLines.isEmpty());
    EXPECT_EQ(m_display.renderLines.last(), kKilledMessage);
    // The sheet was ended by Abort before the kill was reported, and again
    // by the completion after it.
    EXPECT_EQ(m_display.events.filter(QStringLiteral("end")).size(), 2);
    EXPECT_EQ(m_display.sources, QStringList { "a.png" });
    const QStringList pids = journalEntries(m_journal, QStringLiteral("pid"));
    ASSERT_EQ(pids.size(), 1);
    EXPECT_TRUE(processGone(pids.first().toLongLong()));
    EXPECT_TRUE(taskFilesLeft().isEmpty());
    EXPECT_FALSE(m_controller.isLogOpen());
    EXPECT_EQ(batchDirectoryNames(m_out), QStringList { "qlrn_logfile.txt" });
    guard.expectNothingLost({}, m_display.deletionList);
}

// ---- The output directory changes under the run --------------------------

class OutputDirFault : public ToolFault {
protected:
    void SetUp() override
    {
        ToolFault::SetUp();
        useTwoInputs();
        m_settings.frameCountText = QStringLiteral("1");
    }

    // Two inputs; the tool of the first waits at the gate after its first
    // line while `change` runs, then the gate opens.
    void runWithChange(const std::function<void()>& change)
    {
        m_chain = { filter(QStringLiteral("Moving")) };
        bool changed = false;
        m_display.onRender = [&](const QString&) {
            if (std::exchange(changed, true))
                return;
            change();
            QFile gate(m_gate);
            ASSERT_TRUE(gate.open(QIODevice::WriteOnly));
        };
        start(m_chain);
        ASSERT_TRUE(waitForIdle());
        EXPECT_TRUE(changed);
        EXPECT_EQ(m_display.events.last(), QStringLiteral("finished"));
        EXPECT_EQ(m_display.sources, (QStringList { "a.png", "b.png" }));
    }

    // Nothing appeared next to the output directory.
    void expectNothingElsewhere() const
    {
        QStringList expected { "filters", "gate", "in", "journal.txt", "out" };
        EXPECT_EQ(batchDirectoryNames(m_temp.path()), expected);
    }

    RecordList m_chain;
};

TEST_F(OutputDirFault, TheOutputDirectoryDisappears)
{
    BatchEnvGuard gate("QUILLON_STANDIN_GATE", m_gate.toLocal8Bit());
    BatchEnvGuard journal("QUILLON_STANDIN_JOURNAL", m_journal.toLocal8Bit());
    const NothingLost guard(m_out, { m_in });
    runWithChange([this] { ASSERT_TRUE(QDir(m_out).removeRecursively()); });

    // The first tool run could not write its result; the second run's task
    // files could not be written at all. Nothing recreated the directory.
    EXPECT_TRUE(writtenOutputs().isEmpty());
    EXPECT_FALSE(QFileInfo::exists(m_out));
    // The second run's tool got no control file and did not get as far.
    EXPECT_EQ(journalEntries(m_journal, QStringLiteral("pid")).size(), 1);
    EXPECT_TRUE(m_stdout.filter(QStringLiteral("deleted ")).isEmpty());
    EXPECT_EQ(batchDirectoryNames(m_temp.path()), (QStringList { "filters", "gate", "in", "journal.txt" }));
    guard.expectNothingLost({}, m_display.deletionList);
}

TEST_F(OutputDirFault, TheOutputDirectoryIsReplacedByAFile)
{
    BatchEnvGuard gate("QUILLON_STANDIN_GATE", m_gate.toLocal8Bit());
    BatchEnvGuard journal("QUILLON_STANDIN_JOURNAL", m_journal.toLocal8Bit());
    const NothingLost guard(m_out, { m_in });
    const QByteArray userBytes = "a file of the user's that now has the output directory's name\n";
    runWithChange([&] {
        ASSERT_TRUE(QDir(m_out).removeRecursively());
        QFile file(m_out);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(userBytes);
    });

    EXPECT_TRUE(writtenOutputs().isEmpty());
    EXPECT_TRUE(readAll(m_out) == userBytes);
    EXPECT_TRUE(QFileInfo(m_out).isFile());
    expectNothingElsewhere();
    guard.expectNothingLost({}, m_display.deletionList);
}

TEST_F(OutputDirFault, TheOutputDirectoryBecomesReadOnly)
{
    BatchEnvGuard gate("QUILLON_STANDIN_GATE", m_gate.toLocal8Bit());
    BatchEnvGuard journal("QUILLON_STANDIN_JOURNAL", m_journal.toLocal8Bit());
    // Root is not stopped by permissions; a read-only bind mount stops it.
    const bool root = ::geteuid() == 0;
    std::optional<TestMount> mount;
    if (root) {
        mount.emplace(TestMount::readOnlyBind(m_out));
        if (!mount->active())
            GTEST_SKIP() << "running as root without the right to mount: " << mount->why().toStdString();
        mount.reset();
    }
    userFileInOutput();
    const NothingLost guard(m_out, { m_in });
    runWithChange([&] {
        if (root) {
            mount.emplace(TestMount::readOnlyBind(m_out));
            ASSERT_TRUE(mount->active()) << mount->why().toStdString();
        } else {
            ASSERT_TRUE(QFile::setPermissions(m_out, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
        }
    });

    // Nothing more could be written there, and nothing removed: the task
    // files of the first run stay with the journal that names them for the
    // next run, and no temporary file joined them.
    EXPECT_TRUE(writtenOutputs().isEmpty());
    EXPECT_EQ(batchDirectoryNames(m_out),
        (QStringList { ".quillon", "bth-run-0.ffxml", "controlfile.xml", "notes.txt" }));
    guard.expectNothingLost({}, m_display.deletionList);
    if (!root)
        QFile::setPermissions(
            m_out, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

// ---- The disk fills ------------------------------------------------------

// A file size limit makes every write past it fail, as a full disk does, for
// the controller and the tool alike: no task file can be written whole, and
// none is left half-written.
TEST_F(ToolFault, WhenNoTaskFileFitsNothingIsLeftHalfWritten)
{
    input(QStringLiteral("a.png"));
    userFileInOutput();
    m_settings.inputMode = InputMode::File;
    m_settings.sourcePath = QDir(m_in).filePath(QStringLiteral("a.png"));
    m_settings.toolLog = 1;
    const NothingLost guard(m_out, { m_in });
    BatchEnvGuard journal("QUILLON_STANDIN_JOURNAL", m_journal.toLocal8Bit());
    const RecordList chain { filter(QStringLiteral("Full")), filter(QStringLiteral("Fuller")) };
    {
        const FileSizeLimit limit(200);
        ASSERT_TRUE(limit.active());
        start(chain);
        ASSERT_TRUE(waitForIdle());
    }

    EXPECT_EQ(m_display.events.last(), QStringLiteral("finished"));
    // No tool run got a control file (a truncated one would have been read).
    EXPECT_TRUE(journalEntries(m_journal, QStringLiteral("pid")).isEmpty());
    EXPECT_TRUE(writtenOutputs().isEmpty());
    // The log's title fitted; the tool never got a control file to read.
    EXPECT_EQ(readAll(logPath()), BatchController::kLogTitle.toUtf8());
    EXPECT_EQ(batchDirectoryNames(m_out), (QStringList { "notes.txt", "qlrn_logfile.txt" }));
    guard.expectNothingLost({}, m_display.deletionList);
}

// The task files fit, the tool's large result does not.
TEST_F(ToolFault, WhenTheResultDoesNotFitTheTaskFilesAreStillCleanedUp)
{
    m_settings.inputMode = InputMode::None;
    m_settings.frameCountText = QStringLiteral("1");
    m_settings.widthText = QStringLiteral("1024");
    m_settings.heightText = QStringLiteral("1024");
    const NothingLost guard(m_out, {});
    BatchEnvGuard journal("QUILLON_STANDIN_JOURNAL", m_journal.toLocal8Bit());
    const RecordList chain { filter(QStringLiteral("Large")) };
    {
        const FileSizeLimit limit(32 * 1024);
        ASSERT_TRUE(limit.active());
        start(chain);
        ASSERT_TRUE(waitForIdle());
    }

    EXPECT_EQ(journalEntries(m_journal, QStringLiteral("pid")).size(), 1);
    EXPECT_TRUE(writtenOutputs().isEmpty());
    EXPECT_TRUE(m_display.renderLines.filter(QStringLiteral("Error: cannot write")).size() == 1)
        << m_display.renderLines.join(QLatin1Char('|')).toStdString();
    EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty());
    EXPECT_EQ(m_stdout.filter(QStringLiteral("deleted ")).size(), 2);
    guard.expectNothingLost({}, m_display.deletionList);
}

// A real full file system: a small tmpfs, filled up while the first tool
// run waits, so its result, the second run's task files and the log's
// further chunks all meet ENOSPC.
TEST_F(OutputDirFault, TheDiskFillsMidRun)
{
    TestMount mount = TestMount::tmpfs(m_out, 256 * 1024);
    if (!mount.active())
        GTEST_SKIP() << "a small tmpfs cannot be mounted here: " << mount.why().toStdString();
    BatchEnvGuard gate("QUILLON_STANDIN_GATE", m_gate.toLocal8Bit());
    BatchEnvGuard journal("QUILLON_STANDIN_JOURNAL", m_journal.toLocal8Bit());
    userFileInOutput();
    m_settings.toolLog = 1;
    const NothingLost guard(m_out, { m_in });
    QString filler;
    runWithChange([&] {
        filler = fillFileSystem(m_out, QStringLiteral("filler.bin"));
        ASSERT_FALSE(filler.isEmpty());
    });

    EXPECT_TRUE(writtenOutputs().isEmpty());
    EXPECT_TRUE(m_display.renderLines.filter(QStringLiteral("Error: cannot write")).size() == 1);
    EXPECT_EQ(journalEntries(m_journal, QStringLiteral("pid")).size(), 1);
    // The task files of the first run were removed; the second run had none.
    EXPECT_EQ(batchDirectoryNames(m_out), (QStringList { "filler.bin", "notes.txt", "qlrn_logfile.txt" }));
    const QByteArray log = readAll(logPath());
    EXPECT_TRUE(log.startsWith(BatchController::kLogTitle.toUtf8()));
    EXPECT_TRUE(m_display.shown.startsWith(log.mid(BatchController::kLogTitle.size())));
    guard.expectNothingLost({}, m_display.deletionList);
}

TEST_F(ToolFault, AFullDiskAtStartLeavesNoLogAndNoTaskFiles)
{
    TestMount mount = TestMount::tmpfs(m_out, 128 * 1024);
    if (!mount.active())
        GTEST_SKIP() << "a small tmpfs cannot be mounted here: " << mount.why().toStdString();
    ASSERT_FALSE(fillFileSystem(m_out, QStringLiteral("filler.bin")).isEmpty());
    m_settings.inputMode = InputMode::None;
    m_settings.toolLog = 1;
    const NothingLost guard(m_out, {});
    BatchEnvGuard journal("QUILLON_STANDIN_JOURNAL", m_journal.toLocal8Bit());

    start({ filter(QStringLiteral("NoRoom")) });
    ASSERT_TRUE(waitForIdle());

    EXPECT_EQ(m_stdout.filter(QStringLiteral("Error creating logfile ")).size(), 1);
    EXPECT_TRUE(journalEntries(m_journal, QStringLiteral("pid")).isEmpty());
    EXPECT_EQ(batchDirectoryNames(m_out), QStringList { "filler.bin" });
    guard.expectNothingLost({}, m_display.deletionList);
}

} // namespace
} // namespace quillon
