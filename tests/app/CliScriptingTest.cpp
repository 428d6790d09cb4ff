// quillon-cli as scripts use it: flags that would be ignored are refused,
// "-" is standard input or output, the JSON it prints follows its schema, a
// terminal gets one progress line of its width, and --help and --version
// work without a display.

#include "support/CliFixture.h"

#include <QJsonArray>
#include <QRegularExpression>
#include <QStandardPaths>

namespace quillon {
namespace {

using namespace test;
using CliScripting = CliFixture;

TEST_F(CliScripting, FlagsThatWouldBeIgnoredAreRefused)
{
    const QString second = writeDefinition(QStringLiteral("second.ffxml"), QStringLiteral("Second"));
    const QString report = m_temp.path() + QStringLiteral("/report.json");
    const QString chain = m_temp.path() + QStringLiteral("/saved.qlch");
    const struct {
        QStringList flags;
        QStringList named; // the flags the message names
    } cases[] = {
        { { "--json" }, { "--json", "--dry-run" } },
        { { "--dry-run", "--report", report }, { "--report", "--dry-run" } },
        { { "--dry-run", "--save-chain", chain }, { "--save-chain", "--dry-run" } },
        { { "--slurm-option=--time=5" }, { "--slurm-option", "--slurm-bundle" } },
        { { "--slurm-bundle", m_temp.path() + "/bundle", "--report", "-" },
            { "--report", "--slurm-bundle" } },
        { { "--filter", second, "--maps", "base" }, { "--maps", "--filter" } },
        { { "--collect", m_temp.path() }, { "--filter", "--collect" } },
        { { "--maps", "" }, { "--maps" } },
        { { "--maps", "," }, { "--maps" } },
        { { "--slurm-bundle", m_temp.path() + "/bundle", "--dry-run" }, { "--slurm-bundle", "--dry-run" } },
    };
    for (const auto& c : cases) {
        const CliResult result = run(baseFlags() + c.flags);
        EXPECT_EQ(result.exitCode, 2) << c.flags.join(' ').toStdString();
        for (const QString& name : c.named)
            EXPECT_TRUE(result.err.contains(name)) << result.err.toStdString();
    }
    EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty());
    for (const QString& path : { report, chain, m_temp.path() + "/bundle" })
        EXPECT_FALSE(QFileInfo::exists(path)) << path.toStdString();
}

TEST_F(CliScripting, ADashReadsTheChainFromStandardInputAndWritesTheReportToStandardOutput)
{
    const QString second = writeDefinition(QStringLiteral("second.ffxml"), QStringLiteral("Second"));
    const QString chain = m_temp.path() + QStringLiteral("/two.qlch");
    const QString report = m_temp.path() + QStringLiteral("/report.json");
    const QStringList common { "--tool", kTool, "--output", m_out, "--format", "PNG", "--frames", "2",
        "--seed", "3" };
    expectExit(run(QStringList { "--filter", m_definition, second, "--save-chain", chain, "--report", report }
                   + common),
        0);
    QJsonObject fromFile = readJson(report);
    QStringList statuses;
    for (const QJsonValue& toolRun : fromFile.value("plan").toObject().value("toolRuns").toArray()) {
        for (const QJsonValue& task : toolRun.toObject().value("tasks").toArray())
            statuses.append(QString::number(toolRun.toObject().value("step").toInt()) + ' '
                + task.toObject().value("status").toString());
    }
    EXPECT_EQ(statuses, (QStringList { "0 interim", "0 interim", "1 written", "1 written" }));

    QProcess process;
    process.setWorkingDirectory(m_temp.path());
    process.setStandardInputFile(chain);
    start(process, QStringList { "--chain", "-", "--report", "-" } + common);
    const CliResult piped = finish(process);
    ASSERT_EQ(piped.exitCode, 0) << piped.err.toStdString();
    // Standard output holds the report alone; the run's lines moved to standard error.
    EXPECT_EQ(validateJson(piped.out.toUtf8()), QString());
    QJsonObject fromPipe = QJsonDocument::fromJson(piped.out.toUtf8()).object();
    EXPECT_TRUE(piped.err.contains("replaced 2 existing files"));
    for (QJsonObject* root : { &fromFile, &fromPipe })
        root->remove("elapsedMs");
    EXPECT_EQ(fromPipe, fromFile);
    EXPECT_FALSE(QFileInfo::exists(m_temp.path() + QStringLiteral("/-")));

    const CliResult plan = run(baseFlags() + QStringList { "--dry-run", "--json", "--maps", "base,normal" });
    ASSERT_EQ(plan.exitCode, 0) << plan.err.toStdString();
    EXPECT_EQ(validateJson(plan.out.toUtf8()), QString());
    EXPECT_EQ(QJsonDocument::fromJson(plan.out.toUtf8()).object().value("schema"), "quillon-plan/1");
    if (schemaValidatorMissing())
        GTEST_SKIP() << "python3-jsonschema is not installed: the schemas were not checked";
}

// Arguments quoted for sh.
QString shellWords(const QStringList& words)
{
    QStringList quoted;
    for (const QString& word : words)
        quoted.append(QLatin1Char('\'') + QString(word).replace("'", "'\\''") + QLatin1Char('\''));
    return quoted.join(' ');
}

TEST_F(CliScripting, OnATerminalTheProgressIsOneLineOfItsWidth)
{
    const QString script = QStandardPaths::findExecutable(QStringLiteral("script"));
    if (script.isEmpty())
        GTEST_SKIP() << "script (bsdutils) is not installed: no terminal to test on";
    const QString command = QStringLiteral("stty cols 60; exec ")
        + shellWords(QStringList { QStringLiteral(QUILLON_CLI_PATH) } + baseFlags()
            + QStringList { "--frames", "8", "--prefix", "a-prefix-long-enough-to-need-cutting-" });
    const Env terminals[]
        = { { { "TERM", "xterm" } }, { { "TERM", "dumb" } }, { { "TERM", "xterm" }, { "NO_COLOR", "1" } } };
    for (const Env& env : terminals) {
        QProcess process;
        start(process, { "-qec", command, "/dev/null" }, env, script);
        const CliResult result = finish(process);
        ASSERT_EQ(result.exitCode, 0) << result.out.toStdString();
        EXPECT_TRUE(result.out.contains("[8/8] 100%")) << result.out.toStdString();
        const bool plain = env.value("TERM") == "dumb" || env.contains("NO_COLOR");
        EXPECT_EQ(result.out.contains('\x1b'), !plain) << env.keys().join(' ').toStdString();
        // Every piece the progress drew between carriage returns fits in 59 columns.
        for (QString piece : result.out.split(QRegularExpression(QStringLiteral("[\r\n]")))) {
            piece.remove(QStringLiteral("\x1b[K"));
            if (piece.startsWith('[') || piece.trimmed().isEmpty()) {
                EXPECT_LE(piece.size(), 59) << piece.toStdString();
            }
        }
    }
}

TEST_F(CliScripting, HelpAndVersionNeedNoDisplay)
{
    const struct {
        const char* program;
        const char* name;
    } programs[] = { { QUILLON_WINDOW_PATH, "quillon" }, { QUILLON_CLI_PATH, "quillon-cli" } };
    for (const char* platform : { "", "xcb" }) {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char* name : { "DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM" })
            env.remove(QLatin1String(name));
        if (*platform)
            env.insert(QStringLiteral("QT_QPA_PLATFORM"), QLatin1String(platform));
        for (const auto& program : programs) {
            for (const char* flag : { "--help", "--version", "-v", "-V" }) {
                QProcess process;
                process.setProcessEnvironment(env);
                process.start(QLatin1String(program.program), { QLatin1String(flag) });
                const CliResult result = finish(process);
                const std::string what
                    = std::string(program.name) + ' ' + flag + " QT_QPA_PLATFORM=" + platform;
                EXPECT_EQ(std::tuple(result.status, result.exitCode), std::tuple(QProcess::NormalExit, 0))
                    << what << result.err.toStdString();
                const QString expected = QLatin1String(flag) == QLatin1String("--help")
                    ? QStringLiteral("--version")
                    : QLatin1String(program.name) + QStringLiteral(" " QUILLON_VERSION "\n");
                EXPECT_TRUE(result.out.contains(expected)) << what << result.out.toStdString();
            }
        }
    }
}

// The help and the scripts come from the option table; their text is in
// tests/app/data (QUILLON_WRITE_GOLDEN=1 rewrites it after a change of an option).
TEST_F(CliScripting, HelpAndCompletionScriptsMatchTheGoldenFiles)
{
    const char* const rows[][2] = { { "--help", "help.txt" }, { "bash", "completions.bash" },
        { "zsh", "completions.zsh" }, { "fish", "completions.fish" } };
    for (const auto& [what, golden] : rows) {
        const CliResult result = run(QLatin1String(what) == QLatin1String("--help")
                ? QStringList { what }
                : QStringList { "--completions", what });
        expectExit(result, 0);
        test::expectGoldenFile(QStringLiteral("app/data/") + QLatin1String(golden), result.out.toUtf8());
    }
}

TEST_F(CliScripting, BashCompletesOptionsAndTheirValues)
{
    const QString share
        = QFileInfo(QStringLiteral(QUILLON_CLI_PATH)).absolutePath() + QStringLiteral("/../share");
    const QString library = QStringLiteral("/usr/share/bash-completion/bash_completion");
    if (!QFileInfo::exists(library))
        GTEST_SKIP() << "bash-completion is not installed";
    // What bash-completion does on a Tab after the words.
    const QString script = QStringLiteral(R"(
        source %1; source %2/bash-completion/completions/quillon-cli
        complete_words() {
            COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); COMP_LINE="$*"; COMP_POINT=${#COMP_LINE}; COMPREPLY=()
            _quillon_cli quillon-cli "${COMP_WORDS[-1]}" "${COMP_WORDS[-2]}"
            echo "${COMPREPLY[*]}"
        }
        complete_words quillon-cli --fo
        complete_words quillon-cli --format ""
        complete_words quillon-cli --output /tmp --existing s)")
                               .arg(library, share);
    QProcess bash;
    start(bash, { "-c", script }, {}, QStringLiteral("bash"));
    const CliResult result = finish(bash);
    EXPECT_EQ(result.out, "--format\nJPEG PNG TIFF TGA BMP EXR PFM\nskip stop\n") << result.err.toStdString();
    EXPECT_EQ(result.err, QString());
}

} // namespace
} // namespace quillon
