// The run plan through quillon-cli: a dry run names exactly what a run then
// writes; the plan's checks refuse or ask before anything is written; the
// exit code and the last line tell what became of the outputs.

#include "support/BatchFixtures.h"
#include "support/CliFixture.h"
#include "support/NothingLost.h"

#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace quillon {
namespace {

using test::batchDirectoryNames;
using test::batchSnapshot;
using test::CliResult;
using test::journalEntries;
using test::kTool;
using test::writeBatchInputImage;
using CliPlan = test::CliFixture;

TEST_F(CliPlan, ADryRunListsExactlyTheFilesTheRunWrites)
{
    for (const char* name : { "a.png", "b.png" })
        ASSERT_TRUE(writeBatchInputImage(m_in + QLatin1Char('/') + QLatin1String(name)));
    const QString second = test::writeBatchDefinition(
        m_temp.path(), QStringLiteral("second.ffxml"), QStringLiteral("Second"), {});
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
    QProcess process;
    start(process, flags, { { "QUILLON_STANDIN_JOURNAL", journal } });
    const CliResult real = finish(process);
    EXPECT_EQ(real.exitCode, 0) << real.err.toStdString();
    EXPECT_TRUE(real.err.contains(QStringLiteral("4 written, 0 missing, 0 not run")))
        << real.err.toStdString();
    EXPECT_EQ(journalEntries(journal, QStringLiteral("wrote")), planned);
    QStringList kept;
    for (const QString& path : planned.mid(4))
        kept.append(QFileInfo(path).fileName());
    EXPECT_EQ(batchDirectoryNames(m_out), kept);
}

TEST_F(CliPlan, ThePlanIsCheckedBeforeAnythingIsWritten)
{
    ASSERT_TRUE(writeBatchInputImage(m_in + QStringLiteral("/photo.png")));
    const QStringList one = baseFlags() + QStringList { "--input", m_in + "/photo.png", "--frames", "1" };
    const QString second = test::writeBatchDefinition(
        m_temp.path(), QStringLiteral("second.ffxml"), QStringLiteral("Second"), {});
    const QStringList chained { "--filter", m_definition, second, "--tool", kTool, "--output", m_out,
        "--input", m_in + "/photo.png", "--frames", "1", "--format", "PNG" };

    // Two inputs that give one name.
    QFile::copy(m_in + QStringLiteral("/photo.png"), m_in + QStringLiteral("/photo.jpg"));
    const CliResult collide = run(baseFlags() + QStringList { "--input-dir", m_in, "--frames", "1" });
    EXPECT_EQ(collide.exitCode, 2);
    EXPECT_TRUE(
        collide.err.contains(QStringLiteral("Outputs would overwrite each other: my-exportphoto-1.png")))
        << collide.err.toStdString();
    QFile::remove(m_in + QStringLiteral("/photo.jpg"));
    EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty());

    // A user's file where an interim output would go, and one where a final one would.
    writeFile(QStringLiteral("out/my-exportphoto_0-1.png"), "mine");
    const CliResult interim = run(chained);
    EXPECT_EQ(interim.exitCode, 2);
    EXPECT_TRUE(interim.err.contains(
        QStringLiteral("holds files this run would overwrite and delete: my-exportphoto_0-1.png")))
        << interim.err.toStdString();
    QFile::remove(m_out + QStringLiteral("/my-exportphoto_0-1.png"));

    writeFile(QStringLiteral("out/my-exportphoto-1.png"), "mine");
    const auto before = batchSnapshot(m_out);
    EXPECT_EQ(run(one + QStringList { "--existing", "stop" }).exitCode, 2);
    const CliResult skipped = run(one + QStringList { "--existing", "skip" });
    EXPECT_EQ(skipped.exitCode, 0);
    EXPECT_TRUE(skipped.err.contains(QStringLiteral("0 written, 0 missing, 1 not run")))
        << skipped.err.toStdString();
    EXPECT_EQ(batchSnapshot(m_out), before);
    const CliResult replaced = run(one);
    EXPECT_EQ(replaced.exitCode, 0);
    EXPECT_TRUE(replaced.out.contains(QStringLiteral("replaced 1 existing files")));
    EXPECT_NE(batchSnapshot(m_out), before);

    // Outputs inside the input directory: said, and the run goes on.
    const CliResult inside
        = run(baseFlags() + QStringList { "--input-dir", m_in, "--output", m_in + "/", "--frames", "1" });
    EXPECT_EQ(inside.exitCode, 0) << inside.err.toStdString();
    EXPECT_TRUE(inside.err.contains(QStringLiteral("inside the input directory")))
        << inside.err.toStdString();
}

TEST_F(CliPlan, AToolThatWritesNothingEndsTheRunWithExitThree)
{
    QProcess process;
    start(process, baseFlags(), { { "QUILLON_STANDIN_CRASH", "1" } });
    const CliResult result = finish(process);
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_TRUE(result.err.contains(QStringLiteral("0 written, 2 missing, 0 not run")))
        << result.err.toStdString();
}

TEST_F(CliPlan, ProgressReportAndQuietOutput)
{
    const QString report = m_temp.path() + QStringLiteral("/report.json");
    const QStringList flags = baseFlags() + QStringList { "--frames", "4", "--report", report };
    const QMap<QString, QString> slow { { "QUILLON_STANDIN_DELAY_MS", "100" } };

    // Into a pipe: plain lines; on a terminal (a pseudo-terminal from
    // script(1)): one line rewritten in place.
    QProcess piped;
    start(piped, flags, slow);
    const CliResult plain = finish(piped);
    EXPECT_EQ(plain.exitCode, 0);
    EXPECT_TRUE(plain.out.contains(QStringLiteral("[4/4] 100% "))) << plain.err.toStdString();
    EXPECT_FALSE(plain.out.contains(QLatin1Char('\r')));
    QFile json(report);
    ASSERT_TRUE(json.open(QIODevice::ReadOnly));
    const QJsonObject root = QJsonDocument::fromJson(json.readAll()).object();
    EXPECT_EQ(root.value(QStringLiteral("written")).toInt(), 4);
    EXPECT_EQ(root.value(QStringLiteral("plan")).toObject().value(QStringLiteral("seed")).toString(), "3");

    QStringList command { QStringLiteral(QUILLON_CLI_PATH) };
    for (const QString& flag : flags + QStringList { "--prefix", "t" })
        command.append(QLatin1Char('\'') + flag + QLatin1Char('\''));
    QProcess tty;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QUILLON_STANDIN_DELAY_MS"), QStringLiteral("100"));
    tty.setProcessEnvironment(env);
    tty.start(QStringLiteral("script"), { "-qec", command.join(QLatin1Char(' ')), "/dev/null" });
    const CliResult shown = finish(tty);
    EXPECT_EQ(shown.exitCode, 0);
    const QString third
        = shown.out.section(QStringLiteral("\r\033[K[3/4] 75% "), 1).section(QLatin1Char('\r'), 0, 0);
    EXPECT_TRUE(third.contains(QStringLiteral(" elapsed, about "))) << shown.out.toStdString();

    const CliResult quiet = run(baseFlags() + QStringList { "--quiet", "--prefix", "q" });
    EXPECT_EQ(quiet.exitCode, 0);
    EXPECT_TRUE(quiet.out.isEmpty()) << quiet.out.toStdString();
    EXPECT_TRUE(quiet.err.startsWith(QStringLiteral("quillon-cli: 2 written, 0 missing, 0 not run")))
        << quiet.err.toStdString();
}

} // namespace
} // namespace quillon
