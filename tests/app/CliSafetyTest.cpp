// What a run must never do, tried through quillon-cli as a user or an
// attacker would: write outside its output directory, write through a link,
// delete a file it did not create, share its task files with another run,
// or leave its tool and task files behind when it is killed.

#include "support/CliFixture.h"
#include "support/NothingLost.h"

#include <QDateTime>
#include <QFileInfo>
#include <QTest>

#include <cerrno>
#include <csignal>

#include <unistd.h>

namespace quillon {
namespace {

using namespace test;
using CliSafety = CliFixture;

const QByteArray kToolStarted = "Quillon stand-in render tool";

// Gone, or dead and waiting to be reaped (an orphan's new parent may be
// slow to reap it, or never do so in a container).
bool processGone(qint64 pid)
{
    if (pid <= 0)
        return false;
    if (::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH)
        return true;
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return true;
    const QByteArray line = stat.readAll();
    const qsizetype close = line.lastIndexOf(')');
    return close > 0 && line.mid(close + 2, 1) == "Z";
}

// The log is replaced by every logged run; entries at the task files' names
// are refused (CliFaultTest).
TEST_F(CliSafety, ALinkAtTheLogsNameIsReplacedAndItsTargetKept)
{
    const QByteArray victimBytes = "the user's file outside the output directory\n";
    const QString victim = writeFile(QStringLiteral("victim.txt"), victimBytes);
    ASSERT_TRUE(QFile::link(victim, m_out + QStringLiteral("/qlrn_logfile.txt")));

    const CliResult result = run(baseFlags() + QStringList { "--log" });
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();

    QFile kept(victim);
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), victimBytes);
    const QFileInfo log(m_out + QStringLiteral("/qlrn_logfile.txt"));
    EXPECT_FALSE(log.isSymLink());
    EXPECT_EQ(batchDirectoryNames(m_out),
        (QStringList { "NX_my-export-1.png", "NX_my-export-2.png", "qlrn_logfile.txt" }));
}

TEST_F(CliSafety, OneRunAtATimePerOutputDirectory)
{
    const QString gate = m_temp.path() + QStringLiteral("/gate");
    QProcess first;
    start(first, baseFlags(), { { "QUILLON_STANDIN_GATE", gate } });
    readUntil(first, kToolStarted);

    expectExit(run(baseFlags() + QStringList { "--prefix", "other" }), 2,
        QStringLiteral(
            "Another run is using this output directory\nquillon-cli: %1/.quillon/lock, held by process %2")
            .arg(m_out)
            .arg(first.processId()));

    writeFile(QStringLiteral("gate"), "open");
    EXPECT_EQ(finish(first).exitCode, 0);
    EXPECT_EQ(run(baseFlags() + QStringList { "--prefix", "other" }).exitCode, 0);
    EXPECT_EQ(batchDirectoryNames(m_out),
        (QStringList { "NX_my-export-1.png", "NX_my-export-2.png", "NX_other-1.png", "NX_other-2.png" }));
}

TEST_F(CliSafety, HangupAbortsAndAKilledRunIsCleanedUpByTheNext)
{
    const QString gate = m_temp.path() + QStringLiteral("/gate");
    const QString journal = m_temp.path() + QStringLiteral("/journal");
    const Env env { { "QUILLON_STANDIN_GATE", gate }, { "QUILLON_STANDIN_JOURNAL", journal } };
    const QString report = m_temp.path() + QStringLiteral("/report.json");
    const QStringList flags = baseFlags() + QStringList { "--frames", "3", "--report", report };

    for (const int signal : { SIGHUP, SIGTERM, SIGQUIT, SIGKILL }) {
        QFile::remove(journal);
        QProcess process;
        start(process, flags, env);
        readUntil(process, kToolStarted);
        // A process that has already ended has id 0, and kill(0) would
        // signal this test's whole process group.
        const auto pid = static_cast<pid_t>(process.processId());
        ASSERT_GT(pid, 0) << signal;
        ::kill(pid, signal);
        const CliResult result = finish(process);
        const qint64 tool = journalEntries(journal, QStringLiteral("pid")).value(0).toLongLong();
        // The tool never outlives the command line, however it ends.
        EXPECT_TRUE(QTest::qWaitFor([tool] { return processGone(tool); }, 60000)) << signal;
        if (signal != SIGKILL) {
            EXPECT_EQ(result.exitCode, 130) << signal;
            EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty()) << signal;
            // An abort is not a failed tool run.
            const QJsonObject root = readJson(report);
            EXPECT_EQ(root["failedToolRuns"].toInt(), 0) << signal;
            EXPECT_EQ(root["plan"]["toolRuns"][0]["end"].toString(), QStringLiteral("aborted")) << signal;
        }
    }
    // Only a killed run leaves its task files, and the next run removes them.
    EXPECT_EQ(batchDirectoryNames(m_out),
        (QStringList {
            ".quillon", "bth-run-0.ffxml", "bth-run-1.ffxml", "bth-run-2.ffxml", "controlfile.xml" }));
    writeFile(QStringLiteral("gate"), "open");
    // A leftover the user edited in place (same size, same inode) is theirs now.
    const QString edited = m_out + QStringLiteral("/bth-run-2.ffxml");
    QFile file(edited);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    const QByteArray bytes = file.readAll();
    ASSERT_TRUE(file.seek(0) && file.write(QByteArray(bytes.size(), 'x')) == bytes.size());
    ASSERT_TRUE(file.setFileTime(QDateTime::fromSecsSinceEpoch(1), QFileDevice::FileModificationTime));
    file.close();
    const CliResult next = run(baseFlags() + QStringList { "--prefix", "next" });
    EXPECT_EQ(next.exitCode, 0);
    EXPECT_TRUE(next.out.contains(QStringLiteral("deleted ") + m_out + QStringLiteral("/bth-run-1.ffxml")));
    EXPECT_TRUE(next.out.contains(QStringLiteral("kept %1: changed since the run wrote it").arg(edited)));
    EXPECT_EQ(
        batchDirectoryNames(m_out), (QStringList { "NX_next-1.png", "NX_next-2.png", "bth-run-2.ffxml" }));
}

} // namespace
} // namespace quillon
