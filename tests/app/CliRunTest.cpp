// quillon-cli as a child process: exit codes, messages, outputs, chain
// files, several tool processes at once.

#include "support/CliFixture.h"

#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

namespace quillon {
namespace {

using namespace test;
using CliRun = CliFixture;

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
    for (const QString& line :
        { QStringLiteral("Filter: Glow (Quillon Tests)"), QStringLiteral("Source: a.png"),
            "deleted " + QDir(m_out).filePath(QStringLiteral("controlfile.xml")) })
        EXPECT_TRUE(result.out.contains(line)) << line.toStdString();
    EXPECT_FALSE((result.out + result.err).contains(QStringLiteral("Error creating logfile")));
    // The chain is saved after the run.
    EXPECT_TRUE(
        result.out.section(QStringLiteral("Source: a.png"), 1).contains(QStringLiteral("Saveres=true")));
    EXPECT_EQ(batchSnapshot(m_in), before);

    QDir(m_out).removeRecursively();
    QDir().mkpath(m_out);
    const CliResult again = run({ "--chain", chainPath, "--tool", kTool, "--output", m_out, "--format", "PNG",
        "--frames", "1", "--prefix", "c_" });
    EXPECT_EQ(again.exitCode, 0) << again.err.toStdString();
    EXPECT_EQ(batchDirectoryNames(m_out), QStringList { "NX_c_-1.png" });
    EXPECT_TRUE(again.out.contains(QStringLiteral("[1/1] 100% "))) << again.out.toStdString();
}

TEST_F(CliRun, RefusalsSayWhyWriteNothingAndFollowTheCommandLineConventions)
{
    // The stand-in tool on PATH under a bare name of its own.
    const QString bin = QDir(m_temp.path()).filePath(QStringLiteral("bin"));
    ASSERT_TRUE(QDir().mkpath(bin) && QFile::link(kTool, bin + QStringLiteral("/standin-render")));
    const Env path { { "PATH", bin + QLatin1Char(':') + qEnvironmentVariable("PATH") } };
    const QString fresh = QDir(m_temp.path()).filePath(QStringLiteral("new/deep"));
    const QString missing = m_temp.path() + QStringLiteral("/missing.ffxml");
    const QString notXml = writeFile(QStringLiteral("broken.ffxml"), "<Filter>\n<Presets>\n</Filter>\n");
    const QString notFilter = writeFile(QStringLiteral("other.ffxml"), "<Other/>\n");
    const QByteArray oddName = QFile::encodeName(m_in) + "/caf\xe9.png"; // Latin-1, not UTF-8
    const int fd = ::open(oddName.constData(), O_WRONLY | O_CREAT | O_EXCL, 0644);
    ASSERT_GE(fd, 0);
    ::close(fd);
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
        { { "--filter", missing }, 2, "",
            "quillon-cli: Not a usable filter definition: " + missing + " (it does not exist)" },
        { { "--filter", notXml }, 2, "", "(it is not XML: Start-end tags mismatch at line 3)" },
        { { "--filter", notFilter }, 2, "", "(its root element is Other, not Filter)" },
        { baseFlags() + QStringList { "--prefix", "/../../x" }, 2, "",
            "The file name prefix cannot contain a slash" },
        { baseFlags() + QStringList { "--input-dir", m_in }, 2, "", "render tool: caf\\xe9.png" },
        { oneFrame({ "--tool", kTool, "--output", fresh }), 2, "", "quillon-cli: No output path selected" },
        { oneFrame({ "--tool", "no-such-tool", "--output", m_out }), 2, "",
            "quillon-cli: no-such-tool: render tool not found on PATH" },
        { oneFrame({ "--tool", "standin-render", "--output", fresh, "--mkdir" }), 0, "Source: <no source>",
            "" },
    };
    for (const auto& c : cases) {
        const auto before = batchSnapshot(m_temp.path());
        QProcess process;
        start(process, c.flags, path);
        const CliResult result = finish(process);
        const std::string what = c.flags.join(' ').toStdString() + "\n" + result.err.toStdString();
        EXPECT_EQ(result.exitCode, c.exitCode) << what;
        EXPECT_TRUE(result.out.contains(c.out)) << what;
        EXPECT_TRUE(result.err.contains(c.err)) << what;
        for (const QString& line : result.err.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
            EXPECT_TRUE(line.startsWith(QStringLiteral("quillon-cli: "))) << what;
        if (c.exitCode == 2) { // refused: nothing written
            EXPECT_EQ(batchSnapshot(m_temp.path()), before) << what;
        }
    }
    EXPECT_EQ(batchDirectoryNames(fresh), QStringList { "NX_my-export-1.png" });
    EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty());

    // Such a name given on the command line is refused as well (a shell
    // passes the bytes as they are).
    QProcess shell;
    start(shell,
        { "-c",
            "exec \"$0\" --filter \"$1\" --tool \"$2\" --output \"$3\" --input \"$4/$(printf "
            "'caf\\351.png')\"",
            QStringLiteral(QUILLON_CLI_PATH), m_definition, kTool, m_out, m_in },
        {}, QStringLiteral("/bin/sh"));
    expectExit(finish(shell), 2, "caf\\xe9.png is not valid UTF-8");
    EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty());
    ::unlink(oddName.constData()); // QTemporaryDir cannot see it
}

TEST_F(CliRun, AnUnknownParameterKindInTheChainFileIsReportedAndNothingRuns)
{
    const QStringList runFlags { "--tool", kTool, "--output", m_out, "--prefix", "c_" };
    const CliResult stopped = run(QStringList { "--chain", writeDataFile("unknown-kind.qlch") } + runFlags);
    expectExit(stopped, 2, "unknown parameter kind");
    EXPECT_TRUE(stopped.out.contains(QStringLiteral("Fuckdata in save\n"))) << stopped.out.toStdString();

    // A file that is no chain at all is refused with its reason, without the unknown-kind line.
    const CliResult refused = run(QStringList { "--chain", writeDataFile("not-a-chain.qlch") } + runFlags);
    expectExit(refused, 2, "is not a filter chain file");
    EXPECT_FALSE(refused.out.contains(QStringLiteral("Fuckdata in save")));
    EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty());
}

TEST_F(CliRun, ThreeToolSlotsWriteWhatOneWrites)
{
    for (const char* name : { "a.png", "b.png", "c.png" })
        ASSERT_TRUE(writeBatchInputImage(m_in + QLatin1Char('/') + QLatin1String(name)));
    const QString second = writeDefinition(QStringLiteral("second.ffxml"), QStringLiteral("Second"));
    int dirs = 0;
    for (const QStringList& chain : { QStringList { "--filter", m_definition, second },
             QStringList { "--filter", m_definition, "--maps", "base,alpha,normal" } }) {
        QMap<QString, QByteArray> outputs[2], runFiles[2]; // one slot, three
        for (const int slot : { 0, 1 }) {
            const QString out = m_temp.path() + QStringLiteral("/out%1").arg(++dirs);
            const QString keep = m_temp.path() + QStringLiteral("/keep%1").arg(dirs);
            ASSERT_TRUE(QDir().mkpath(out) && QDir().mkpath(keep));
            const CliResult result = run(chain
                    + QStringList { "--tool", kTool, "--output", out, "--input-dir", m_in, "--frames", "2",
                        "--seed", "7", "--format", "PNG", "--jobs", slot ? "3" : "1" },
                { { "QUILLON_STANDIN_KEEP", keep } });
            ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
            outputs[slot] = byName(out);
            runFiles[slot] = byName(keep);
            // Nothing of the slots stays: no task file, no folder.
            for (const QString& name : batchDirectoryNames(out))
                EXPECT_TRUE(name.endsWith(QLatin1String(".png"))) << name.toStdString();
        }
        EXPECT_EQ(outputs[0].keys(), outputs[1].keys());
        EXPECT_TRUE(outputs[0] == outputs[1]);
        // One run file per task, interim outputs' tasks included.
        EXPECT_GE(runFiles[0].size(), outputs[0].size());
        EXPECT_TRUE(runFiles[0] == runFiles[1]);
    }
}

} // namespace
} // namespace quillon
