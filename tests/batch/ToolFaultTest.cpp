// Batch runs against a render tool that misbehaves: it crashes, fails,
// floods its output, prints invalid UTF-8, hangs, ignores SIGTERM, or the
// output directory goes away, turns read-only or fills up while it runs.
// Every run ends with the same check that nothing of the user's was lost.

#include "batch/BatchController.h"
#include "support/BatchFixtures.h"
#include "support/BatchRunFixture.h"
#include "support/NothingLost.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <functional>
#include <memory>
#include <optional>
#include <unistd.h>

namespace quillon {
namespace {

using test::batchDirectoryNames;
using test::BatchEnvGuard;
using test::fileBytes;
using test::journalEntries;

const QString kKilledMessage = QStringLiteral("The render tool did not stop; it was killed.");
QByteArray logTitle()
{
    return BatchController::kLogTitle.toUtf8();
}

QByteArray withoutWhiteSpace(QByteArray bytes)
{
    bytes.removeIf([](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); });
    return bytes;
}

// What happens to the output directory once the tool has printed its first
// line; the tool then waits at a gate until the change is done.
enum class Change { None, Abort, Remove, MakeReadOnly, FillDisk };

class ToolFault;

struct Fault {
    const char* name = "";
    int inputs = 0; // 0: no source, 1: a.png, 2: a.png and b.png in a directory
    int frames = 2;
    bool log = false;
    bool userFile = false; // the user's notes.txt lies in the output directory
    std::vector<std::pair<const char*, QByteArray>> env = {}; // for the stand-in tool
    int steps = 1;
    Change atFirstLine = Change::None;
    rlim_t fileSizeLimit = 0; // 0: none
    qint64 tmpfsBytes = 0; // 0: no mount; otherwise a tmpfs of that size
    bool aborted = false;
    int toolRuns = -1; // tools the journal saw starting; -1: not checked
    int written = 0; // results the tool wrote over all steps
    int lastWritten = 0; // of those, the last step's
    QStringList left = {}; // the output directory afterwards
    std::function<void(const ToolFault&)> check = {}; // anything else
};

void PrintTo(const Fault& fault, std::ostream* os)
{
    *os << fault.name;
}

class ToolFault : public test::BatchRunFixture, public ::testing::WithParamInterface<Fault> {
public: // the table's checks read the run's traces
    void SetUp() override
    {
        BatchRunFixture::SetUp();
        m_journal = QDir(m_temp.path()).filePath(QStringLiteral("journal.txt"));
        m_gate = QDir(m_temp.path()).filePath(QStringLiteral("gate"));
        m_controller.setStandardOutput([this](const QString& line) {
            // The tool's output is echoed here too; keep only the run's own lines.
            if (line.startsWith(QLatin1String("deleted ")))
                m_stdout.append(line);
        });
        m_settings.seed = 11;
    }

    // Every result the tool wrote whose name starts with `prefix`.
    QStringList writtenOutputs(const QString& prefix = QString()) const
    {
        QStringList written;
        for (const QString& path : journalEntries(m_journal, QStringLiteral("wrote"))) {
            if (QFileInfo(path).fileName().startsWith(prefix))
                written.append(path);
        }
        return written;
    }

    QString logPath() const { return QDir(m_out).filePath(BatchController::kLogFileName); }

    // The one tool run the journal saw has exited.
    void expectTheToolGone() const
    {
        const QStringList pids = journalEntries(m_journal, QStringLiteral("pid"));
        ASSERT_EQ(pids.size(), 1);
        EXPECT_TRUE(::kill(static_cast<pid_t>(pids.first().toLongLong()), 0) != 0 && errno == ESRCH);
    }

    void changeOutputDirectory(Change change);
    void run(const Fault& fault);

    QString m_journal;
    QString m_gate;
    std::optional<test::TestMount> m_mount;
};

void ToolFault::changeOutputDirectory(Change change)
{
    switch (change) {
    case Change::None:
        return;
    case Change::Abort:
        m_controller.abortProcessWithSender();
        return;
    case Change::Remove:
        ASSERT_TRUE(QDir(m_out).removeRecursively());
        break;
    case Change::MakeReadOnly:
        // Root is not stopped by permissions; a read-only bind mount stops it.
        if (::geteuid() == 0) {
            m_mount.emplace(test::TestMount::readOnlyBind(m_out));
            ASSERT_TRUE(m_mount->active()) << m_mount->why().toStdString();
        } else {
            ASSERT_TRUE(QFile::setPermissions(m_out, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
        }
        break;
    case Change::FillDisk:
        ASSERT_FALSE(test::fillFileSystem(m_out, QStringLiteral("filler.bin")).isEmpty());
        break;
    }
    QFile gate(m_gate);
    ASSERT_TRUE(gate.open(QIODevice::WriteOnly));
}

void ToolFault::run(const Fault& fault)
{
    std::optional<test::TestMount> tmpfs;
    if (fault.tmpfsBytes > 0) {
        tmpfs.emplace(test::TestMount::tmpfs(m_out, fault.tmpfsBytes));
        if (!tmpfs->active())
            GTEST_SKIP() << "a small tmpfs cannot be mounted here: " << tmpfs->why().toStdString();
    }
    if (fault.atFirstLine == Change::MakeReadOnly && ::geteuid() == 0) {
        if (!test::TestMount::readOnlyBind(m_out).active())
            GTEST_SKIP() << "running as root without the right to mount";
    }
    if (fault.inputs > 0)
        useInputs(fault.inputs);
    else
        m_settings.inputMode = InputMode::None;
    m_settings.frameCountText = QString::number(fault.frames);
    m_settings.widthText = QStringLiteral("16");
    m_settings.heightText = QStringLiteral("12");
    m_settings.toolLog = fault.log ? 1 : 0;
    if (fault.userFile) {
        const QString notes = QDir(m_out).filePath(QStringLiteral("notes.txt"));
        ASSERT_TRUE(test::writeFileBytes(notes, "the user's own notes\n"));
    }
    const RecordList chain = this->chain(QStringList { "One", "Two" }.mid(0, fault.steps));
    const test::NothingLost guard(m_out, fault.inputs > 0 ? QStringList { m_in } : QStringList());

    std::vector<std::unique_ptr<BatchEnvGuard>> env;
    env.push_back(std::make_unique<BatchEnvGuard>("QUILLON_STANDIN_JOURNAL", m_journal.toLocal8Bit()));
    const bool gated = fault.atFirstLine != Change::None && fault.atFirstLine != Change::Abort;
    if (gated)
        env.push_back(std::make_unique<BatchEnvGuard>("QUILLON_STANDIN_GATE", m_gate.toLocal8Bit()));
    for (const auto& [name, value] : fault.env)
        env.push_back(std::make_unique<BatchEnvGuard>(name, value));
    bool changed = false;
    m_display.onRender = [&](const QString&) {
        if (!std::exchange(changed, true))
            changeOutputDirectory(fault.atFirstLine);
    };
    {
        std::optional<test::FileSizeLimit> limit;
        if (fault.fileSizeLimit > 0) {
            limit.emplace(fault.fileSizeLimit);
            ASSERT_TRUE(limit->active());
        }
        start(chain);
        ASSERT_TRUE(waitForIdle());
    }
    m_mount.reset();

    EXPECT_EQ(m_display.events.last(), fault.aborted ? "finished:aborted" : "finished");
    EXPECT_TRUE(changed || fault.atFirstLine == Change::None);
    const bool ignoresTerm = std::any_of(
        fault.env.begin(), fault.env.end(), [](const auto& e) { return e.second == "ignore-term"; });
    EXPECT_EQ(m_display.renderLines.contains(kKilledMessage), ignoresTerm);
    if (gated) {
        EXPECT_EQ(m_display.sources, (QStringList { "a.png", "b.png" }));
    }
    if (fault.toolRuns >= 0) {
        EXPECT_EQ(journalEntries(m_journal, QStringLiteral("pid")).size(), fault.toolRuns);
    }
    const QStringList last = writtenOutputs(fault.steps > 1 ? QStringLiteral("p_p_") : QString());
    EXPECT_EQ(writtenOutputs().size(), fault.written);
    EXPECT_EQ(last.size(), fault.lastWritten);
    // What earlier steps wrote went to the deletion list.
    for (const QString& path : writtenOutputs()) {
        if (!last.contains(path)) {
            EXPECT_TRUE(m_display.deletionList.contains(path)) << path.toStdString();
        }
    }
    if (fault.atFirstLine != Change::Remove) {
        EXPECT_EQ(batchDirectoryNames(m_out), fault.left);
    }
    if (fault.check)
        fault.check(*this);
    guard.expectNothingLost(last, m_display.deletionList);
    if (fault.atFirstLine == Change::MakeReadOnly)
        QFile::setPermissions(
            m_out, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

TEST_P(ToolFault, LosesNothingOfTheUsers)
{
    run(GetParam());
}

// clang-format off: a row per fault, its fields packed
const Fault kFaults[] = {
    // The first step's run has two tasks and dies after the first; each run
    // of the second step has one task and completes it.
    { .name = "ACrashInTheSecondStepKeepsItsOutputsAndDeletesOnlyInterimFiles", .inputs = 1, .userFile = true,
        .env = { { "QUILLON_STANDIN_CRASH_AFTER", "1" } }, .steps = 2, .toolRuns = 3, .written = 3,
        .lastWritten = 2, .left = { "notes.txt", "p_p_a-1.png", "p_p_a-2.png" } },
    { .name = "AToolThatExitsWithAnErrorDoesNotStopTheChain", .inputs = 1,
        .env = { { "QUILLON_STANDIN_EXIT_CODE", "3" } }, .steps = 2, .toolRuns = 3, .written = 4,
        .lastWritten = 2, .left = { "p_p_a-1.png", "p_p_a-2.png" },
        .check = [](const ToolFault& t) { EXPECT_EQ(t.m_display.sources.size(), 3); } },
    { .name = "InvalidUtf8IsDroppedAndTheRunCompletes", .inputs = 1, .log = true,
        .env = { { "QUILLON_STANDIN_BAD_UTF8", "1" } }, .toolRuns = 1, .written = 2, .lastWritten = 2,
        .left = { "p_a-1.png", "p_a-2.png", "qlrn_logfile.txt" },
        .check = [](const ToolFault& t) {
            for (const QString& line : t.m_display.renderLines) {
                EXPECT_FALSE(line.trimmed().isEmpty());
                EXPECT_FALSE(line.contains(QChar::ReplacementCharacter) || line.contains(QLatin1String("Bad bytes")));
            }
            const QByteArray log = fileBytes(t.logPath());
            EXPECT_TRUE(log == logTitle() + t.m_display.shown); // so valid UTF-8 too
        } },
    // Abort in a flood of output stops the tool at once with SIGTERM (no
    // kill, no message about one); the rest of its gigabyte is never read.
    { .name = "AbortStopsAToolThatIsFloodingItsOutput", .log = true, .userFile = true,
        .env = { { "QUILLON_STANDIN_FLOOD_BYTES", QByteArray::number(qint64(1) << 30) } },
        .atFirstLine = Change::Abort, .aborted = true, .toolRuns = 1,
        .left = { "notes.txt", "qlrn_logfile.txt" },
        .check = [](const ToolFault& t) {
            EXPECT_LT(t.m_display.shown.size(), qint64(1) << 29);
            EXPECT_TRUE(fileBytes(t.logPath()) == logTitle() + t.m_display.shown);
            t.expectTheToolGone();
        } },
    // Takes the grace period (3 s): the tool ignores SIGTERM, so Abort kills
    // it and says so on the progress display.
    { .name = "AToolThatIgnoresSigtermIsKilledAndTheDisplaySaysSo", .inputs = 2, .log = true,
        .env = { { "QUILLON_STANDIN_HANG", "ignore-term" } }, .atFirstLine = Change::Abort, .aborted = true,
        .toolRuns = 1, .left = { "qlrn_logfile.txt" },
        .check = [](const ToolFault& t) {
            EXPECT_EQ(t.m_display.renderLines.last(), kKilledMessage);
            // The sheet was ended by Abort before the kill was reported, and
            // again by the completion after it.
            EXPECT_EQ(t.m_display.events.filter(QStringLiteral("end")).size(), 2);
            EXPECT_EQ(t.m_display.sources, QStringList { "a.png" });
            EXPECT_FALSE(t.m_controller.isLogOpen());
            t.expectTheToolGone();
        } },
    // The first tool run cannot write its result; the second run's task
    // files cannot be written at all, so its tool never starts. Nothing
    // recreates the directory.
    { .name = "TheOutputDirectoryDisappears", .inputs = 2, .frames = 1, .atFirstLine = Change::Remove, .toolRuns = 1,
        .check = [](const ToolFault& t) {
            EXPECT_TRUE(t.m_stdout.filter(QStringLiteral("deleted ")).isEmpty());
            // "out" is not among them.
            EXPECT_EQ(batchDirectoryNames(QFileInfo(t.m_out).absolutePath()),
                (QStringList { "filters", "gate", "in", "journal.txt" }));
        } },
    // Nothing more can be written there, and nothing removed: the first run's
    // task files stay with the journal that names them for the next run.
    { .name = "TheOutputDirectoryBecomesReadOnly", .inputs = 2, .frames = 1, .userFile = true,
        .atFirstLine = Change::MakeReadOnly,
        .left = { ".quillon", "bth-run-0.ffxml", "controlfile.xml", "notes.txt" } },
    // A file size limit makes every write past it fail, as a full disk does,
    // for the controller and the tool alike: no task file can be written
    // whole (a truncated control file would have been read), none is left.
    { .name = "WhenNoTaskFileFitsNothingIsLeftHalfWritten", .inputs = 1, .log = true, .userFile = true, .steps = 2,
        .fileSizeLimit = 200, .toolRuns = 0, .left = { "notes.txt", "qlrn_logfile.txt" },
        .check = [](const ToolFault& t) { EXPECT_EQ(fileBytes(t.logPath()), logTitle()); } },
    // A real full file system: a small tmpfs filled while the first tool run
    // waits, so its result, the second run's task files and the log's further
    // chunks all meet ENOSPC; the first run's task files are still removed.
    { .name = "TheDiskFillsMidRun", .inputs = 2, .frames = 1, .log = true, .userFile = true,
        .atFirstLine = Change::FillDisk, .tmpfsBytes = 256 * 1024, .toolRuns = 1,
        .left = { "filler.bin", "notes.txt", "qlrn_logfile.txt" },
        .check = [](const ToolFault& t) {
            EXPECT_EQ(t.m_display.renderLines.filter(QStringLiteral("Error: cannot write")).size(), 1);
            const QByteArray log = fileBytes(t.logPath());
            EXPECT_TRUE(log.startsWith(logTitle()));
            EXPECT_TRUE(t.m_display.shown.startsWith(log.mid(logTitle().size())));
        } },
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Faults, ToolFault, ::testing::ValuesIn(kFaults),
    [](const auto& info) { return std::string(info.param.name); });

// ---- A flood of output ----------------------------------------------------

using ToolFlood = test::BatchRunFixture;

// 100 MB of numbered lines of multi-byte characters stream through the
// display and the log in many chunks while the controller's event loop keeps
// serving other events; characters cut apart by the pipe reach the log whole.
TEST_F(ToolFlood, AHundredMegabytesOfOutputReachTheLogWholeWhileTheLoopStaysResponsive)
{
    constexpr qint64 kFlood = qint64(100) * 1024 * 1024;
    const QByteArray fill = QStringLiteral("Grüße € \U0001D11E ").toUtf8();
    m_settings.inputMode = InputMode::None;
    m_settings.frameCountText = QStringLiteral("1");
    m_settings.toolLog = 1;
    m_controller.setStandardOutput([](const QString&) {});
    BatchEnvGuard flood("QUILLON_STANDIN_FLOOD_BYTES", QByteArray::number(kFlood));
    BatchEnvGuard filler("QUILLON_STANDIN_FLOOD_FILL", fill);
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
    const test::NothingLost guard(m_out, {});
    start({ filter(QStringLiteral("Flood")) });
    ASSERT_TRUE(waitForIdle());
    EXPECT_EQ(m_display.events.last(), QStringLiteral("finished"));
    EXPECT_EQ(batchDirectoryNames(m_out), (QStringList { "NX_p_-1.png", "qlrn_logfile.txt" }));
    guard.expectNothingLost({ QDir(m_out).filePath(QStringLiteral("NX_p_-1.png")) }, m_display.deletionList);
    EXPECT_GT(m_display.renderCount, 100);
    EXPECT_GT(ticksAtLastReport - ticksAtFirstReport, 10);

    // The log: the title, then every shown chunk's bytes, nothing else.
    const QByteArray log = fileBytes(QDir(m_out).filePath(BatchController::kLogFileName));
    ASSERT_TRUE(log.startsWith(logTitle()));
    const QByteArray body = log.mid(logTitle().size());
    EXPECT_TRUE(body == m_display.shown);
    EXPECT_TRUE(body.endsWith("Done"));
    // What the stand-in printed, compared without the white space that only
    // chunk edges may have lost.
    QByteArray filler99;
    while (filler99.size() < 99)
        filler99 += fill;
    QByteArray printed;
    for (qint64 n = 0; printed.size() < kFlood; ++n) {
        const QByteArray line = QByteArray::number(n).rightJustified(8, '0') + ' ' + filler99 + '\n';
        printed += line.size() > kFlood - printed.size() ? QByteArray(kFlood - printed.size(), '.') : line;
    }
    const QByteArray kept = withoutWhiteSpace(body);
    const QByteArray expected = withoutWhiteSpace(printed);
    EXPECT_TRUE(kept.contains(expected)) << "lost " << (expected.size() - kept.size()) << " bytes";
}

} // namespace
} // namespace quillon
