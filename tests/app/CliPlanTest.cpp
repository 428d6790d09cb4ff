// The run plan through quillon-cli: a dry run names exactly what a run then
// writes; the plan's checks refuse or ask before anything is written; the
// exit code and the last line tell what became of the outputs.

#include "support/CliFixture.h"
#include "support/NothingLost.h"

#include <QDir>
#include <QFileInfo>

#include <sys/stat.h>

namespace quillon {
namespace {

using namespace test;
using CliPlan = CliFixture;

TEST_F(CliPlan, ADryRunListsExactlyTheFilesTheRunWrites)
{
    for (const char* name : { "a.png", "b.png" })
        ASSERT_TRUE(writeBatchInputImage(m_in + QLatin1Char('/') + QLatin1String(name)));
    const QString second = writeDefinition(QStringLiteral("second.ffxml"), QStringLiteral("Second"));
    const QStringList flags { "--filter", m_definition, second, "--tool", kTool, "--output", m_out,
        "--input-dir", m_in, "--frames", "2", "--seed", "9", "--format", "PNG" };

    const CliResult dry = run(flags + QStringList { "--dry-run" });
    ASSERT_EQ(dry.exitCode, 0) << dry.err.toStdString();
    QStringList lines = dry.out.trimmed().split(QLatin1Char('\n'));
    EXPECT_EQ(lines.takeLast(), QStringLiteral("6 tool runs, 8 outputs"));
    QStringList planned;
    for (const QString& line : lines)
        planned.append(line.section(QStringLiteral("  "), 0, 0));
    EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty());

    const QString journal = m_temp.path() + QStringLiteral("/journal");
    expectExit(run(flags, { { "QUILLON_STANDIN_JOURNAL", journal } }), 0, "4 written, 0 missing, 0 not run");
    EXPECT_EQ(journalEntries(journal, QStringLiteral("wrote")), planned);
    QStringList kept;
    for (const QString& path : planned.mid(4))
        kept.append(QFileInfo(path).fileName());
    EXPECT_EQ(batchDirectoryNames(m_out), kept);
}

TEST_F(CliPlan, ThePlanIsCheckedBeforeAnythingIsWritten)
{
    const QString photo = m_in + QStringLiteral("/photo.png");
    ASSERT_TRUE(writeBatchInputImage(photo));
    const QStringList one = baseFlags() + QStringList { "--input", photo, "--frames", "1" };
    const QString second = writeDefinition(QStringLiteral("second.ffxml"), QStringLiteral("Second"));

    // Two inputs that give one name.
    QFile::copy(photo, m_in + QStringLiteral("/photo.jpg"));
    expectExit(run(baseFlags() + QStringList { "--input-dir", m_in, "--frames", "1" }), 2,
        "Outputs would overwrite each other: my-exportphoto-1.png");
    QFile::remove(m_in + QStringLiteral("/photo.jpg"));
    EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty());

    // A user's file where an interim output would go, and one where a final one would.
    writeFile(QStringLiteral("out/my-exportphoto_0-1.png"), "mine");
    expectExit(run({ "--filter", m_definition, second, "--tool", kTool, "--output", m_out, "--input", photo,
                   "--frames", "1", "--format", "PNG" }),
        2, "holds files this run would overwrite and delete: my-exportphoto_0-1.png");
    QFile::remove(m_out + QStringLiteral("/my-exportphoto_0-1.png"));

    writeFile(QStringLiteral("out/my-exportphoto-1.png"), "mine");
    const auto before = batchSnapshot(m_out);
    EXPECT_EQ(run(one + QStringList { "--existing", "stop" }).exitCode, 2);
    expectExit(run(one + QStringList { "--existing", "skip" }), 0, "0 written, 0 missing, 1 not run");
    EXPECT_EQ(batchSnapshot(m_out), before);
    const CliResult replaced = run(one);
    EXPECT_EQ(replaced.exitCode, 0);
    EXPECT_TRUE(replaced.out.contains(QStringLiteral("replaced 1 existing files")));
    EXPECT_NE(batchSnapshot(m_out), before);

    // The input directory as the output directory: said, and the run goes on.
    expectExit(
        run(baseFlags() + QStringList { "--input-dir", m_in, "--output", m_in + "/", "--frames", "1" }), 0,
        "The output directory is the input directory");
}

TEST_F(CliPlan, ADryRunAndTheRunAgreeOnEveryCheck)
{
    const QString photo = m_in + QStringLiteral("/photo.png");
    ASSERT_TRUE(writeBatchInputImage(photo));
    const QString fifo = m_in + QStringLiteral("/pipe");
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    const QString existing = m_out + QStringLiteral("/my-exportphoto-1.png");
    const QString made = m_out + QStringLiteral("/made/deeper");
    struct Case {
        QStringList flags;
        int exitCode;
        const char* dryShows; // in the dry run's standard output (the plan) or error
        const char* runShows; // in the run's standard error
        bool existingOutput = false;
        bool json = false; // the dry run prints JSON
    };
    const QStringList one { "--input", photo, "--frames", "1" };
    const QStringList all { "--input-dir", m_in, "--frames", "1" };
    // clang-format off: a row per check
    const Case cases[] = {
        { one + QStringList { "--preset", "99" }, 2, "Glow (step 1) has no preset at index 99: it has 2 presets",
          "has no preset at index 99" },
        { QStringList { "--input", photo, "--frames", "31", "--frame-style", "letter" }, 2,
          "must not be more than 25 with letter frame names", "must not be more than 25" },
        { one + QStringList { "--existing", "stop" }, 2, "1 of the planned outputs exist already",
          "1 of the planned outputs exist already", true },
        { one + QStringList { "--existing", "skip" }, 0, "\"skipped\": true", "0 written, 0 missing, 1 not run",
          true, true },
        { QStringList { "--input", photo, "--frames", "1", "--output", made, "--mkdir" }, 0,
          "my-exportphoto-1.png", "1 written" },
        { all, 0, "1 entries of the input directory are not images and were left out: pipe", "1 written" },
        { QStringList { "--input-dir", m_in, "--frames", "1", "--output", m_in + "/sub" , "--mkdir" }, 0,
          "\n1 tool runs, 1 outputs", "1 written" },
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.flags.join(QLatin1Char(' ')).toStdString());
        if (c.existingOutput)
            writeFile(QStringLiteral("out/my-exportphoto-1.png"), "mine");
        const auto before = batchSnapshot(m_temp.path());
        const CliResult dry
            = run(baseFlags() + c.flags + QStringList { "--dry-run" } + (c.json ? QStringList { "--json" } : QStringList()));
        expectExit(dry, c.exitCode);
        EXPECT_TRUE((dry.out + dry.err).contains(QString::fromUtf8(c.dryShows))) << dry.out.toStdString();
        // Nothing created, written or changed.
        EXPECT_EQ(batchSnapshot(m_temp.path()), before);
        EXPECT_FALSE(QFileInfo::exists(made) || QFileInfo::exists(m_in + QStringLiteral("/sub")));
        const CliResult real = run(baseFlags() + c.flags);
        expectExit(real, c.exitCode, QString::fromUtf8(c.runShows));
        QFile::remove(existing);
        QDir(m_out + QStringLiteral("/made")).removeRecursively();
    }
}

// A tool run with no task still starts the tool (its control file holds
// only the global settings); a later step whose step before wrote nothing
// runs once without input.
TEST_F(CliPlan, ToolRunsWithoutATaskStillRun)
{
    const QString photo = m_in + QStringLiteral("/photo.png");
    ASSERT_TRUE(writeBatchInputImage(photo));
    const QString record = m_temp.path() + QStringLiteral("/record");
    const QStringList none { "--tool", kTool, "--output", m_out, "--format", "PNG", "--frames", "0", "--prefix", "p" };
    const QStringList cases[] = {
        QStringList { "--filter", m_definition } + none,
        QStringList { "--filter", m_definition, m_definition } + none,
        QStringList { "--filter", m_definition, m_definition, "--input", photo } + none,
    };
    QString listing;
    for (const QStringList& flags : cases) {
        QFile::remove(record);
        expectExit(run(flags, { { "QUILLON_STANDIN_RECORD", record } }), 0);
        listing += QStringLiteral("# --frames 0%1%2\n")
                       .arg(flags.count(m_definition) > 1 ? QStringLiteral(", two filters") : QString(),
                           flags.contains("--input") ? QStringLiteral(", an input") : QString());
        listing += QString::fromUtf8(fileBytes(record)).replace(m_out + QLatin1Char('/'), QString());
    }
    EXPECT_EQ(listing, QString::fromUtf8(fileBytes(QStringLiteral(QUILLON_SOURCE_DIR "/tests/app/data/empty-task-runs.txt"))));
}

TEST_F(CliPlan, UnderWineThePlanShowsWindowsPathsAndRefusesUnreachableOnes)
{
    // A Wine prefix whose one drive, D:, is the output directory.
    const QString prefix = m_temp.path() + QStringLiteral("/prefix");
    ASSERT_TRUE(QDir().mkpath(prefix + QStringLiteral("/dosdevices")));
    ASSERT_TRUE(QFile::link(m_out, prefix + QStringLiteral("/dosdevices/d:")));
    const QStringList wine = baseFlags()
        + QStringList { "--wine=" + prefix, "--wine-binary", "/bin/true", "--dry-run", "--json" };
    const CliResult plan = run(wine);
    ASSERT_EQ(plan.exitCode, 0) << plan.err.toStdString();
    const QJsonObject root = QJsonDocument::fromJson(plan.out.toUtf8()).object();
    EXPECT_EQ(root["toolRuns"][0]["tasks"][1]["windowsResult"].toString(),
        QStringLiteral("D:\\NX_my-export-2.png"));
    EXPECT_EQ(root["wine"]["drives"]["D:"].toString(), m_out);
    // Written a tool run at a time, it is the text of the whole document.
    EXPECT_EQ(plan.out.toUtf8(), QJsonDocument(root).toJson());

    const QString photo = m_in + QStringLiteral("/photo.png");
    ASSERT_TRUE(writeBatchInputImage(photo));
    expectExit(run(wine + QStringList { "--input", photo }), 2, "Wine cannot reach " + photo);
    EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty());
}

TEST_F(CliPlan, ProgressReportAndQuietOutput)
{
    const QString report = m_temp.path() + QStringLiteral("/report.json");
    const QStringList flags = baseFlags() + QStringList { "--frames", "4", "--report", report };
    const Env slow { { "QUILLON_STANDIN_DELAY_MS", "100" } };

    // Into a pipe: plain lines; on a terminal (a pseudo-terminal from
    // script(1)): one line rewritten in place.
    const CliResult plain = run(flags, slow);
    EXPECT_EQ(plain.exitCode, 0);
    EXPECT_TRUE(plain.out.contains(QStringLiteral("[4/4] 100% "))) << plain.err.toStdString();
    EXPECT_FALSE(plain.out.contains(QLatin1Char('\r')));
    const QJsonObject root = readJson(report);
    EXPECT_EQ(root.value(QStringLiteral("written")).toInt(), 4);
    EXPECT_EQ(root.value(QStringLiteral("plan")).toObject().value(QStringLiteral("seed")).toString(), "3");

    QStringList command { QStringLiteral(QUILLON_CLI_PATH) };
    for (const QString& flag : flags + QStringList { "--prefix", "t" })
        command.append(QLatin1Char('\'') + flag + QLatin1Char('\''));
    QProcess tty;
    start(tty, { "-qec", command.join(QLatin1Char(' ')), "/dev/null" }, slow, QStringLiteral("script"));
    const CliResult shown = finish(tty);
    EXPECT_EQ(shown.exitCode, 0);
    const QString third
        = shown.out.section(QStringLiteral("\r\033[K[3/4] 75% "), 1).section(QLatin1Char('\r'), 0, 0);
    EXPECT_TRUE(third.contains(QStringLiteral(" elapsed, about "))) << shown.out.toStdString();

    // --verbose lists the plan before the run.
    EXPECT_TRUE(run(baseFlags() + QStringList { "--verbose", "--prefix", "v" })
                    .out.contains(QStringLiteral("plan: 1 tool runs, 2 outputs\n")));
    const CliResult quiet = run(baseFlags() + QStringList { "--quiet", "--prefix", "q" });
    EXPECT_EQ(quiet.exitCode, 0);
    EXPECT_TRUE(quiet.out.isEmpty()) << quiet.out.toStdString();
    EXPECT_TRUE(quiet.err.startsWith(QStringLiteral("quillon-cli: 2 written, 0 missing, 0 not run")))
        << quiet.err.toStdString();
}

} // namespace
} // namespace quillon
