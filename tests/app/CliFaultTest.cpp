// Faults a user or the system puts in a run's way, tried through quillon-cli
// with the stand-in tool: entries at the names the run plans to use, a lock
// damaged by a power loss, an abort in the middle of a step, standard output
// that takes nothing, report names that cannot take a report.

#include "support/CliFixture.h"
#include "support/NothingLost.h"

#include <QTest>

#include <csignal>

#include <sys/stat.h>
#include <unistd.h>

namespace quillon {
namespace {

using namespace test;
using CliFault = CliFixture;

enum class Entry { File, Fifo, Folder, Link };

bool makeEntry(const QString& path, Entry kind, const QString& linkTarget)
{
    switch (kind) {
    case Entry::File: {
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write("the user's\n") == 11;
    }
    case Entry::Fifo:
        return ::mkfifo(QFile::encodeName(path).constData(), 0600) == 0;
    case Entry::Folder:
        return QDir().mkdir(path);
    case Entry::Link:
        return QFile::link(linkTarget, path);
    }
    return false;
}

TEST_F(CliFault, EntriesAtPlannedNamesAreRefusedBeforeAnythingIsWritten)
{
    const QString photo = m_in + QStringLiteral("/photo.png");
    ASSERT_TRUE(writeBatchInputImage(photo));
    const QString victim = writeFile(QStringLiteral("victim.png"), "outside\n");
    struct Case {
        const char* name;
        Entry kind;
        const char* refusal;
    };
    const char* const taskFiles = "The output directory holds files this run would overwrite and delete: ";
    const char* const finals = "are not files at output names: ";
    const Case cases[] = {
        { "controlfile.xml", Entry::File, taskFiles },
        { "controlfile.xml", Entry::Link, taskFiles },
        { "bth-run-1.ffxml", Entry::Fifo, taskFiles },
        { "bth-run-0.ffxml", Entry::Folder, taskFiles },
        { "my-exportphoto-1.png", Entry::Link, finals },
        { "my-exportphoto-2.png", Entry::Fifo, finals },
        { "my-exportphoto-1.png", Entry::Folder, finals },
    };
    const QStringList flags
        = baseFlags() + QStringList { "--input", photo, "--frames", "2", "--existing", "overwrite" };
    for (const Case& c : cases) {
        const QString name = QString::fromLatin1(c.name);
        SCOPED_TRACE(name.toStdString() + " " + std::to_string(static_cast<int>(c.kind)));
        const QString path = m_out + QLatin1Char('/') + name;
        ASSERT_TRUE(makeEntry(path, c.kind, victim));
        const auto before = batchSnapshot(m_temp.path());
        for (const QStringList& mode : { QStringList { "--dry-run" }, QStringList() })
            expectExit(run(flags + mode), 2, QString::fromLatin1(c.refusal) + name);
        EXPECT_EQ(batchSnapshot(m_temp.path()), before);
        EXPECT_EQ(
            QDir(m_out).entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot),
            QStringList { name });
        if (c.kind == Entry::Folder)
            QDir(path).removeRecursively();
        else
            QFile::remove(path);
    }
    // The folder that would hold its own task files is the run's: the run goes on.
    EXPECT_EQ(run(flags).exitCode, 0);
}

// An abort while the first of two steps is writing leaves none of its
// images, and the same settings run again at once.
TEST_F(CliFault, AnAbortedStepLeavesNothingThatBlocksTheNextStart)
{
    const QString photo = m_in + QStringLiteral("/photo.png");
    ASSERT_TRUE(writeBatchInputImage(photo));
    const QString second = writeDefinition(QStringLiteral("second.ffxml"), QStringLiteral("Second"));
    const QString journal = m_temp.path() + QStringLiteral("/journal");
    const QStringList flags { "--filter", m_definition, second, "--tool", kTool, "--output", m_out, "--input",
        photo, "--frames", "2", "--format", "PNG", "--seed", "3" };

    QProcess process;
    start(process, flags, { { "QUILLON_STANDIN_DELAY_MS", "1000" }, { "QUILLON_STANDIN_JOURNAL", journal } });
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            QFile file(journal);
            return file.open(QIODevice::ReadOnly) && file.readAll().contains("wrote ");
        },
        120000));
    ASSERT_GT(process.processId(), 0);
    ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
    EXPECT_EQ(finish(process).exitCode, 130);
    EXPECT_EQ(batchDirectoryNames(m_out), QStringList());

    expectExit(run(flags), 0, "2 written");
    EXPECT_EQ(batchDirectoryNames(m_out),
        (QStringList { "my-exportmy-exportphoto-1.png", "my-exportmy-exportphoto-2.png" }));
}

TEST_F(CliFault, AJobFolderSwappedForALinkMidRunSendsNothingOutside)
{
    for (const char* name : { "a.png", "b.png", "c.png", "d.png" })
        ASSERT_TRUE(writeBatchInputImage(m_in + QLatin1Char('/') + QLatin1String(name)));
    // The output directory as given, and given through a link.
    const QString real = m_temp.path() + QStringLiteral("/real");
    const QString viaLink = m_temp.path() + QStringLiteral("/via-link");
    ASSERT_TRUE(QDir().mkdir(real) && QFile::link(real, viaLink));
    for (const auto& [output, folder] : { std::pair { m_out, m_out }, std::pair { viaLink, real } }) {
        SCOPED_TRACE(output.toStdString());
        const QString outside = output + QStringLiteral("-outside");
        ASSERT_TRUE(QDir().mkdir(outside));
        const QString gate = output + QStringLiteral("-gate");
        const QString journal = output + QStringLiteral("-journal");
        QProcess process;
        start(process,
            baseFlags() + QStringList { "--input-dir", m_in, "--frames", "1", "--jobs", "2", "--output", output },
            { { "QUILLON_STANDIN_GATE", gate }, { "QUILLON_STANDIN_JOURNAL", journal } });
        // Both slots' tools wait at the gate.
        ASSERT_TRUE(
            QTest::qWaitFor([&] { return journalEntries(journal, QStringLiteral("pid")).size() == 2; }, 120000));
        const QString job = folder + QStringLiteral("/.quillon/job-0");
        ASSERT_TRUE(QDir().rename(job, output + QStringLiteral("-moved")));
        ASSERT_TRUE(QFile::link(outside, job));
        QFile open(gate);
        ASSERT_TRUE(open.open(QIODevice::WriteOnly) && open.write("open") == 4);
        open.close();
        EXPECT_EQ(finish(process).exitCode, 3);
        EXPECT_EQ(QDir(outside).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList());
    }
}

TEST_F(CliFault, ALockDamagedByAPowerLossIsTakenOver)
{
    const QString lock = m_out + QStringLiteral("/.quillon/lock");
    for (const QByteArray& bytes :
        { QByteArray(), QByteArray("\n\n"), QByteArray("\xff\xfe garbage\n\n\n") }) {
        SCOPED_TRACE(bytes.toStdString());
        ASSERT_TRUE(QDir(m_out).mkpath(QStringLiteral(".quillon")));
        writeFile(QStringLiteral("out/.quillon/lock"), bytes);
        expectExit(run(baseFlags()), 0, QStringLiteral("note: The lock %1 was empty or damaged").arg(lock));
        EXPECT_FALSE(QFileInfo::exists(lock));
    }
}

TEST_F(CliFault, StandardOutputThatTakesNothingEndsTheProgramWithAnError)
{
    // A reader that went away: the run ends as if Ctrl-C had been pressed.
    int fds[2];
    ASSERT_EQ(::pipe(fds), 0);
    ::close(fds[0]);
    QProcess closed;
    const int writeEnd = fds[1];
    closed.setChildProcessModifier([writeEnd] { ::dup2(writeEnd, STDOUT_FILENO); });
    start(closed, baseFlags() + QStringList { "--frames", "3" });
    const CliResult ended = finish(closed);
    // A dry run's listing (more than stdio's buffer) stops at the next piece.
    QProcess listing;
    listing.setChildProcessModifier([writeEnd] { ::dup2(writeEnd, STDOUT_FILENO); });
    start(listing, baseFlags() + QStringList { "--frames", "300", "--dry-run" });
    const CliResult listed = finish(listing);
    ::close(fds[1]);
    EXPECT_EQ(ended.exitCode, 130) << ended.err.toStdString();
    EXPECT_EQ(listed.exitCode, 130) << listed.err.toStdString();
    for (const QString& name : batchDirectoryNames(m_out))
        EXPECT_TRUE(name.startsWith(QLatin1String("NX_my-export-"))) << name.toStdString();

    QProcess full;
    full.setStandardOutputFile(QStringLiteral("/dev/full"));
    start(full, baseFlags() + QStringList { "--dry-run", "--json" });
    expectExit(finish(full), 2, "cannot write to standard output");
}

TEST_F(CliFault, AReportNameThatCannotTakeTheReportIsRefusedBeforeTheRun)
{
    const QByteArray victimBytes = "the user's\n";
    const QString victim = writeFile(QStringLiteral("victim.json"), victimBytes);
    const QString link = m_temp.path() + QStringLiteral("/link.json");
    ASSERT_TRUE(QFile::link(victim, link));
    for (const QString& report : { link, m_in, m_temp.path() + QStringLiteral("/missing/report.json") }) {
        SCOPED_TRACE(report.toStdString());
        expectExit(run(baseFlags() + QStringList { "--report", report }), 2, "Cannot write the report");
        EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty());
    }
    QFile kept(victim);
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), victimBytes);
}

} // namespace
} // namespace quillon
