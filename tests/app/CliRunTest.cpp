// quillon-cli as a child process: exit codes, outputs, clean-up, signals.

#include "chain/ChainFile.h"
#include "support/BatchFixtures.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

namespace quillon {
namespace {

using test::batchDirectoryNames;
using test::batchSnapshot;
using test::writeBatchDefinition;
using test::writeBatchInputImage;

struct CliResult {
    int exitCode = -1;
    QProcess::ExitStatus status = QProcess::CrashExit;
    QString out;
    QString err;
};

class CliRun : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_temp.isValid());
        const QDir root(m_temp.path());
        ASSERT_TRUE(root.mkpath(QStringLiteral("out")));
        ASSERT_TRUE(root.mkpath(QStringLiteral("in")));
        m_out = root.filePath(QStringLiteral("out"));
        m_in = root.filePath(QStringLiteral("in"));
        m_definition = writeBatchDefinition(m_temp.path(), QStringLiteral("glow.ffxml"),
            QStringLiteral("Glow"), QStringLiteral("Quillon Tests"));
        m_second = writeBatchDefinition(m_temp.path(), QStringLiteral("edge.ffxml"), QStringLiteral("Edge"),
            QStringLiteral("Quillon Tests"));
        ASSERT_FALSE(m_definition.isEmpty());
    }

    QStringList baseFlags() const
    {
        return { "--filter", m_definition, "--tool", QStringLiteral(QUILLON_STANDIN_PATH), "--output", m_out,
            "--format", "PNG", "--frames", "2", "--seed", "3" };
    }

    void start(QProcess& process, const QStringList& flags, const QProcessEnvironment& env = {})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const QString& key : env.keys())
            environment.insert(key, env.value(key));
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(QUILLON_CLI_PATH), flags);
        ASSERT_TRUE(process.waitForStarted());
    }

    CliResult finish(QProcess& process)
    {
        EXPECT_TRUE(process.waitForFinished(90000));
        return { process.exitCode(), process.exitStatus(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError()) };
    }

    CliResult run(const QStringList& flags)
    {
        QProcess process;
        start(process, flags);
        return finish(process);
    }

    QTemporaryDir m_temp;
    QString m_out;
    QString m_in;
    QString m_definition;
    QString m_second;
};

TEST_F(CliRun, ACompletedRunExitsZeroAndLeavesOnlyTheOutputs)
{
    ASSERT_TRUE(writeBatchInputImage(QDir(m_in).filePath(QStringLiteral("a.png"))));
    const auto before = batchSnapshot(m_in);
    const CliResult result
        = run(baseFlags() + QStringList { "--input-dir", m_in, "--prefix", "p_", "--log" });
    EXPECT_EQ(result.status, QProcess::NormalExit);
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(batchDirectoryNames(m_out), (QStringList { "p_a-1.png", "p_a-2.png", "qlrn_logfile.txt" }));
    EXPECT_TRUE(result.out.contains(QStringLiteral("Filter: Glow (Quillon Tests)")));
    EXPECT_TRUE(result.out.contains(QStringLiteral("Source: a.png")));
    EXPECT_TRUE(result.out.contains(
        QStringLiteral("deleted ") + QDir(m_out).filePath(QStringLiteral("controlfile.xml"))));
    EXPECT_EQ(batchSnapshot(m_in), before);
}

TEST_F(CliRun, TwoDefinitionsWithoutInputChainTheirOutputs)
{
    const CliResult result
        = run({ "--filter", m_definition, m_second, "--tool", QStringLiteral(QUILLON_STANDIN_PATH),
            "--output", m_out, "--format", "PNG", "--frames", "2", "--prefix", "demo" });
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(batchDirectoryNames(m_out), (QStringList { "demo-1.png", "demo-2.png" }));
    EXPECT_TRUE(result.out.contains(QStringLiteral("Source: <no source>")));
}

TEST_F(CliRun, AFailedCheckPrintsItsMessageAndExitsTwo)
{
    const struct {
        QStringList flags;
        QString message;
    } cases[] = {
        { { "--tool", QStringLiteral(QUILLON_STANDIN_PATH), "--output", m_out }, "No filters in the queue" },
        { { "--filter", m_definition, "--output", m_out }, "No Batchrender tool selected" },
        { { "--filter", m_definition, "--tool", QStringLiteral(QUILLON_STANDIN_PATH) },
            "No output path selected" },
        { baseFlags() + QStringList { "--input", m_in + "/none.png" }, "Input file does not exist" },
        { baseFlags() + QStringList { "--input-dir", m_in }, "Input directory empty" },
        { baseFlags() + QStringList { "--prefix", "" },
            "No filename gives (file prefix when running without input)" },
        { baseFlags() + QStringList { "--frames", "-1" }, "Number of frames must not be negative" },
    };
    for (const auto& c : cases) {
        const CliResult result = run(c.flags);
        EXPECT_EQ(result.exitCode, 2) << c.message.toStdString();
        EXPECT_TRUE(result.err.contains(c.message)) << result.err.toStdString();
    }
    EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty());
}

TEST_F(CliRun, AnUnusableFlagPrintsTheUsageAndExitsTwo)
{
    for (const QStringList& flags : { QStringList { "--format", "GIF" }, QStringList { "--bogus" } }) {
        const CliResult result = run(baseFlags() + flags);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_TRUE(result.err.contains(QStringLiteral("Usage: quillon-cli"))) << result.err.toStdString();
    }
    const CliResult missing = run({ "--filter", m_temp.path() + "/missing.ffxml" });
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_FALSE(missing.err.isEmpty());
}

TEST_F(CliRun, HelpAndVersionExitZero)
{
    const CliResult help = run({ "--help" });
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.contains(QStringLiteral("--input-dir")));
    const CliResult version = run({ "--version" });
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_TRUE(version.out.startsWith(QStringLiteral("quillon-cli ")));
}

TEST_F(CliRun, SigtermAbortsTheRunCleansUpAndExits130)
{
    for (const char* name : { "a.png", "b.png", "c.png" })
        ASSERT_TRUE(writeBatchInputImage(QDir(m_in).filePath(QString::fromLatin1(name))));
    const auto before = batchSnapshot(m_in);
    QProcessEnvironment env;
    env.insert(QStringLiteral("QUILLON_STANDIN_DELAY_MS"), QStringLiteral("3000"));
    QProcess process;
    start(process, baseFlags() + QStringList { "--input-dir", m_in }, env);

    QByteArray seen;
    while (!seen.contains("Source: a.png") && process.waitForReadyRead(30000))
        seen += process.readAllStandardOutput();
    ASSERT_TRUE(seen.contains("Source: a.png")) << seen.toStdString();
    ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
    CliResult result = finish(process);
    result.out.prepend(QString::fromUtf8(seen));

    EXPECT_EQ(result.status, QProcess::NormalExit);
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_FALSE(result.out.contains(QStringLiteral("Source: b.png")));
    for (const QString& name : batchDirectoryNames(m_out))
        EXPECT_FALSE(name == QLatin1String("controlfile.xml") || name.endsWith(QLatin1String(".ffxml")))
            << name.toStdString();
    EXPECT_EQ(batchSnapshot(m_in), before);
}

TEST_F(CliRun, SaveChainWritesTheChainAfterTheRun)
{
    const QString chainPath = QDir(m_temp.path()).filePath(QStringLiteral("saved.qlch"));
    const CliResult saved = run(baseFlags() + QStringList { "--save-chain", chainPath });
    ASSERT_EQ(saved.exitCode, 0) << saved.err.toStdString();
    EXPECT_TRUE(saved.out.contains(QStringLiteral("Saveres=true")));
    const ChainReadResult read = readChainFile(chainPath);
    ASSERT_EQ(read.status, ChainReadResult::Ok) << read.error.toStdString();
    const RecordList& chain = read.chain;
    ASSERT_EQ(chain.size(), 1u);
    EXPECT_EQ(chain.front()->string(key::name), QStringLiteral("Glow"));
    EXPECT_FALSE(chain.front()->boolean(key::UseMaps, true));

    // The saved chain runs again.
    QDir(m_out).removeRecursively();
    QDir().mkpath(m_out);
    const CliResult again = run({ "--chain", chainPath, "--tool", QStringLiteral(QUILLON_STANDIN_PATH),
        "--output", m_out, "--format", "PNG", "--frames", "1", "--prefix", "c_" });
    EXPECT_EQ(again.exitCode, 0) << again.err.toStdString();
    EXPECT_EQ(batchDirectoryNames(m_out), QStringList { "NX_c_-1.png" });
}

TEST_F(CliRun, AnUnknownParameterKindInTheChainFileIsReportedAndNothingRuns)
{
    const auto writeChain = [this](const QString& name, const QByteArray& body) {
        const QString path = QDir(m_temp.path()).filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n" + body + "</plist>\n");
        return path;
    };
    const QByteArray filter = "<dict><key>name</key><string>Glow</string><key>path</key><string>"
        + m_definition.toUtf8() + "</string><key>Components</key><array><dict><key>CONTROL_ID</key>"
        + "<string>##@@##</string><key>CONTROL_PROXY</key><integer>CODE</integer><key>ACTIVE</key>"
        + "<integer>0</integer></dict></array></dict>";
    QByteArray unknown = filter;
    unknown.replace("CODE", "7");
    QByteArray known = filter;
    known.replace("CODE", "4");
    const QString unknownChain
        = writeChain(QStringLiteral("unknown.qlch"), "<array>" + known + unknown + "</array>");
    const QStringList runFlags { "--tool", QStringLiteral(QUILLON_STANDIN_PATH), "--output", m_out,
        "--prefix", "c_" };

    const CliResult stopped = run(QStringList { "--chain", unknownChain } + runFlags);
    EXPECT_EQ(stopped.exitCode, 2);
    EXPECT_TRUE(stopped.out.contains(QStringLiteral("Fuckdata in save\n"))) << stopped.out.toStdString();
    EXPECT_TRUE(stopped.err.contains(QStringLiteral("unknown parameter kind"))) << stopped.err.toStdString();
    EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty());

    // A file that is no chain at all is refused with its reason, without
    // the unknown-kind line.
    const QString notAChain = writeChain(QStringLiteral("dict.qlch"), known);
    const CliResult refused = run(QStringList { "--chain", notAChain } + runFlags);
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_FALSE(refused.out.contains(QStringLiteral("Fuckdata in save")));
    EXPECT_TRUE(refused.err.contains(QStringLiteral("is not a filter chain file")))
        << refused.err.toStdString();
    EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty());
}

} // namespace
} // namespace quillon
