// quillon-cli as a child process: exit codes, outputs, clean-up, signals.

#include "chain/ChainFile.h"
#include "support/BatchFixtures.h"
#include "support/CliFixture.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace quillon {
namespace {

using test::batchDirectoryNames;
using test::batchSnapshot;
using test::writeBatchInputImage;

using test::CliResult;
using test::kTool;
using CliRun = test::CliFixture;

TEST_F(CliRun, ACompletedRunLeavesOnlyTheOutputsAndSavesAChainThatRunsAgain)
{
    ASSERT_TRUE(writeBatchInputImage(QDir(m_in).filePath(QStringLiteral("a.png"))));
    const auto before = batchSnapshot(m_in);
    const QString chainPath = QDir(m_temp.path()).filePath(QStringLiteral("saved.qlch"));
    const CliResult result = run(baseFlags()
        + QStringList { "--input-dir", m_in, "--prefix", "p_", "--log", "--save-chain", chainPath });
    EXPECT_EQ(result.status, QProcess::NormalExit);
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(batchDirectoryNames(m_out), (QStringList { "p_a-1.png", "p_a-2.png", "qlrn_logfile.txt" }));
    EXPECT_TRUE(result.out.contains(QStringLiteral("Filter: Glow (Quillon Tests)")));
    EXPECT_TRUE(result.out.contains(QStringLiteral("Source: a.png")));
    EXPECT_TRUE(result.out.contains(
        QStringLiteral("deleted ") + QDir(m_out).filePath(QStringLiteral("controlfile.xml"))));
    // The chain is saved after the run.
    EXPECT_TRUE(
        result.out.section(QStringLiteral("Source: a.png"), 1).contains(QStringLiteral("Saveres=true")));
    EXPECT_EQ(batchSnapshot(m_in), before);

    const ChainReadResult read = readChainFile(chainPath);
    ASSERT_EQ(read.status, ChainReadResult::Ok) << read.error.toStdString();
    ASSERT_EQ(read.chain.size(), 1u);
    EXPECT_EQ(read.chain.front()->string(key::name), QStringLiteral("Glow"));
    EXPECT_FALSE(read.chain.front()->boolean(key::UseMaps, true));

    QDir(m_out).removeRecursively();
    QDir().mkpath(m_out);
    const CliResult again = run({ "--chain", chainPath, "--tool", kTool, "--output", m_out, "--format", "PNG",
        "--frames", "1", "--prefix", "c_" });
    EXPECT_EQ(again.exitCode, 0) << again.err.toStdString();
    EXPECT_EQ(batchDirectoryNames(m_out), QStringList { "NX_c_-1.png" });
}

TEST_F(CliRun, TwoDefinitionsWithoutInputChainTheirOutputs)
{
    const QString second = test::writeBatchDefinition(
        m_temp.path(), QStringLiteral("edge.ffxml"), QStringLiteral("Edge"), QStringLiteral("Quillon Tests"));
    const CliResult result = run({ "--filter", m_definition, second, "--tool", kTool, "--output", m_out,
        "--format", "PNG", "--frames", "2", "--prefix", "demo" });
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(batchDirectoryNames(m_out), (QStringList { "demo-1.png", "demo-2.png" }));
    EXPECT_TRUE(result.out.contains(QStringLiteral("Source: <no source>")));
}

TEST_F(CliRun, FollowsTheCommandLineConventions)
{
    // The stand-in tool on PATH under a bare name of its own.
    const QString bin = QDir(m_temp.path()).filePath(QStringLiteral("bin"));
    ASSERT_TRUE(QDir().mkpath(bin) && QFile::link(kTool, bin + QStringLiteral("/standin-render")));
    const QString fresh = QDir(m_temp.path()).filePath(QStringLiteral("new/deep"));
    const auto oneFrame = [this](const QStringList& more) {
        return QStringList { "--filter", m_definition, "--format", "PNG", "--frames", "1" } + more;
    };
    const struct {
        QStringList flags;
        int exitCode;
        QString out; // held by standard output
        QString err; // held by standard error
    } cases[] = {
        { {}, 2, "", "quillon-cli: usage: quillon-cli (--chain FILE" },
        { { "--bogus" }, 2, "", "quillon-cli: usage: quillon-cli" },
        { { "-h" }, 0, "130  aborted", "" },
        { { "--help" }, 0, "--mkdir", "" },
        { { "-V" }, 0, "quillon-cli " QUILLON_VERSION, "" },
        { { "--filter", m_temp.path() + "/missing.ffxml" }, 2, "",
            "quillon-cli: Not a usable filter definition" },
        { oneFrame({ "--tool", kTool, "--output", fresh }), 2, "", "quillon-cli: No output path selected" },
        { oneFrame({ "--tool", "no-such-tool", "--output", m_out }), 2, "",
            "quillon-cli: no-such-tool: render tool not found on PATH" },
        { oneFrame({ "--tool", "standin-render", "--output", fresh, "--mkdir" }), 0, "Source: <no source>",
            "" },
    };
    for (const auto& c : cases) {
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("PATH"), bin + QLatin1Char(':') + env.value(QStringLiteral("PATH")));
        process.setProcessEnvironment(env);
        process.start(QStringLiteral(QUILLON_CLI_PATH), c.flags);
        const CliResult result = finish(process);
        const std::string what = c.flags.join(' ').toStdString() + "\n" + result.err.toStdString();
        EXPECT_EQ(result.exitCode, c.exitCode) << what;
        EXPECT_TRUE(result.out.contains(c.out)) << what;
        EXPECT_TRUE(result.err.contains(c.err)) << what;
        for (const QString& line : result.err.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
            EXPECT_TRUE(line.startsWith(QStringLiteral("quillon-cli: "))) << what;
    }
    EXPECT_EQ(batchDirectoryNames(fresh), QStringList { "NX_my-export-1.png" });
    EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty());
}

TEST_F(CliRun, AnUnknownParameterKindInTheChainFileIsReportedAndNothingRuns)
{
    const auto filter = [this](const char* code) {
        return "<dict><key>name</key><string>Glow</string><key>path</key><string>" + m_definition.toUtf8()
            + "</string><key>Components</key><array><dict><key>CONTROL_ID</key><string>##@@##</string>"
            + "<key>CONTROL_PROXY</key><integer>" + code + "</integer><key>ACTIVE</key><integer>0</integer>"
            + "</dict></array></dict>";
    };
    const QByteArray head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n";
    const QStringList runFlags { "--tool", kTool, "--output", m_out, "--prefix", "c_" };

    const QString unknownChain = writeFile(
        QStringLiteral("unknown.qlch"), head + "<array>" + filter("4") + filter("7") + "</array></plist>\n");
    const CliResult stopped = run(QStringList { "--chain", unknownChain } + runFlags);
    EXPECT_EQ(stopped.exitCode, 2);
    EXPECT_TRUE(stopped.out.contains(QStringLiteral("Fuckdata in save\n"))) << stopped.out.toStdString();
    EXPECT_TRUE(stopped.err.contains(QStringLiteral("unknown parameter kind"))) << stopped.err.toStdString();
    EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty());

    // A file that is no chain at all is refused with its reason, without the unknown-kind line.
    const QString notAChain = writeFile(QStringLiteral("dict.qlch"), head + filter("4") + "</plist>\n");
    const CliResult refused = run(QStringList { "--chain", notAChain } + runFlags);
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_FALSE(refused.out.contains(QStringLiteral("Fuckdata in save")));
    EXPECT_TRUE(refused.err.contains(QStringLiteral("is not a filter chain file")))
        << refused.err.toStdString();
    EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty());
}

} // namespace
} // namespace quillon
