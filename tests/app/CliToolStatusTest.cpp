// How each tool run ended: the exit code, the run report and the closing lines.

#include "support/CliFixture.h"

#include <QJsonArray>

#include <csignal>

namespace quillon {
namespace {

using CliToolStatus = test::CliFixture;

TEST_F(CliToolStatus, EveryToolRunEndIsInTheExitCodeTheReportAndTheClosingLines)
{
    const QString notExecutable = writeFile(QStringLiteral("not-executable"), "#!/bin/sh\n");
    // A directory where slot 0's control file goes: its tool gets no task list.
    const QString blocked = m_out + QStringLiteral("/.quillon/job-0");
    for (const char* name : { "a.png", "b.png" })
        ASSERT_TRUE(test::writeBatchInputImage(m_in + QLatin1Char('/') + QLatin1String(name)));
    struct Case {
        const char* what;
        QMap<QString, QString> env;
        QStringList flags;
        int exitCode;
        QJsonObject toolRun; // fields the report's tool run must have
        QString closing; // a closing line on standard error
    };
    const QList<Case> cases {
        { "clean", {}, {}, 0, { { "end", "exited" }, { "exitCode", 0 }, { "failed", false } }, {} },
        { "outputs written, non-zero exit", { { "QUILLON_STANDIN_EXIT_CODE", "5" } }, {}, 3,
            { { "end", "exited" }, { "exitCode", 5 }, { "failed", true } },
            "tool run of step 1 on no input: the render tool exited with code 5" },
        // Twenty missing outputs are named, the rest counted.
        { "crash", { { "QUILLON_STANDIN_CRASH", "1" } }, { "--frames", "22" }, 3,
            { { "end", "signal" }, { "signal", SIGABRT }, { "failed", true } },
            QStringLiteral("NX_my-export-20.png: the render tool was ended by signal %1\n"
                           "quillon-cli: and 2 more missing")
                .arg(SIGABRT) },
        { "not executable", {}, { "--tool", notExecutable }, 3,
            { { "end", "start failed" }, { "failed", true } }, ": the render tool could not be started (" },
        { "task files not written", {}, { "--input-dir", m_in, "--frames", "1", "--jobs", "2" }, 3,
            { { "end", "exited" }, { "exitCode", 1 },
                { "unwrittenTaskFiles", QJsonArray { blocked + "/controlfile.xml" } } },
            "the render tool exited with code 1; task files not written: " + blocked + "/controlfile.xml" },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        if (c.flags.contains(QStringLiteral("--jobs"))) {
            ASSERT_TRUE(QDir().mkpath(blocked + QStringLiteral("/controlfile.xml")));
        }
        const QString report = QDir(m_temp.path()).filePath(QStringLiteral("report.json"));
        QProcess process;
        start(process, baseFlags() + QStringList { "--report", report } + c.flags, c.env);
        const test::CliResult result = finish(process);
        EXPECT_EQ(result.exitCode, c.exitCode) << result.err.toStdString();
        EXPECT_TRUE(result.err.contains(c.closing)) << result.err.toStdString();

        const QJsonObject root = readJson(report);
        const QJsonObject run = root["plan"]["toolRuns"][0].toObject();
        for (auto it = c.toolRun.begin(); it != c.toolRun.end(); ++it)
            EXPECT_EQ(run[it.key()], it.value()) << it.key().toStdString();
        EXPECT_EQ(root["failedToolRuns"].toInt(), c.exitCode == 0 ? 0 : 1);
        EXPECT_EQ(run["startError"].toString().isEmpty(), c.toolRun["end"] != "start failed");
        QDir(m_out).removeRecursively();
        QDir().mkpath(m_out);
    }
}

} // namespace
} // namespace quillon
