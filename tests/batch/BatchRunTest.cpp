// End-to-end batch runs through the real stand-in render tool, driven from
// the test's thread so every report takes the real queued path.

#include "batch/BatchController.h"
#include "batch/RunCleanup.h"
#include "support/BatchFixtures.h"
#include "support/BatchRunFixture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <optional>
#include <unistd.h>

namespace quillon {
namespace {

using test::batchDirectoryNames;
using test::BatchEnvGuard;
using test::writeBatchInputImage;

class BatchRun : public test::BatchRunFixture {
protected:
    void SetUp() override
    {
        BatchRunFixture::SetUp();
        m_settings.seed = 7;
    }

    // Runs the chain of the given names to its end.
    void runChain(const QStringList& names)
    {
        ASSERT_NO_FATAL_FAILURE(start(chain(names)));
        ASSERT_TRUE(waitForIdle());
    }

    QByteArray log() const { return test::fileBytes(QDir(m_out).filePath(BatchController::kLogFileName)); }

    QStringList deletedLines() const { return m_stdout.filter(QStringLiteral("deleted ")); }
};

// One input through quillon-cli is in CliRun.ACompletedRunLeavesOnlyTheOutputsAndSavesAChainThatRunsAgain.
TEST_F(BatchRun, OneStepOverTwoInputsDeletesTaskFilesAndKeepsOutputs)
{
    useInputs(2);
    const RecordList glow = chain({ "Glow" });
    const RecordPtr amount = glow.front()->list(key::Components)->front();
    amount->setInteger(key::ACTIVE, 1);
    amount->setInteger(key::POPSTATE, 1); // a sweep
    ASSERT_EQ(amount->real(key::STARTVALUE), 0.0);
    ASSERT_NO_FATAL_FAILURE(start(glow));
    ASSERT_TRUE(waitForIdle());

    EXPECT_EQ(
        batchDirectoryNames(m_out), (QStringList { "p_a-1.png", "p_a-2.png", "p_b-1.png", "p_b-2.png" }));
    // The record goes on from the value of the run's last task.
    const PlannedToolRun& last = m_controller.plan()->toolRuns.last();
    const ParameterValues values = last.values(last.tasks.size() - 1);
    ASSERT_EQ(values.front().index, 0);
    EXPECT_EQ(values.front().value, QVariant(0.5));
    EXPECT_EQ(amount->real(key::STARTVALUE), 0.5);
    EXPECT_EQ(m_display.sources, (QStringList { "a.png", "b.png" }));
    // Both tool runs used the same control file path; it is removed once.
    const QString control = QDir(m_out).filePath(QStringLiteral("controlfile.xml"));
    EXPECT_EQ(deletedLines().count(QStringLiteral("deleted ") + control), 1);
    EXPECT_TRUE(m_stdout.contains(m_display.renderLines.value(0)));
}

TEST_F(BatchRun, ThreeStepChainKeepsOnlyTheLastStepsOutputs)
{
    useInputs(1);
    runChain({ "One", "Two", "Three" });

    EXPECT_EQ(batchDirectoryNames(m_out), (QStringList { "p_p_a-1.png", "p_p_a-2.png" }));
    EXPECT_EQ(m_display.events.filter(QStringLiteral("filter:")),
        (QStringList {
            "filter:One|Quillon Tests", "filter:Two|Quillon Tests", "filter:Three|Quillon Tests" }));
    // Step two and three each ran once per output of the step before.
    EXPECT_EQ(m_display.sources,
        (QStringList { "a.png", "p_a_0-1.png", "p_a_0-2.png", "p_p_a-1_1-1.png", "p_p_a-2_1-1.png" }));
}

TEST_F(BatchRun, MergedReportsKeepTheirCountAndOrder)
{
    m_display.mergeMs = 600'000; // longer than the run: every burst is merged
    m_controller.setDisplay(&m_display);
    useInputs(1);
    runChain({ "One", "Two", "Three" });

    // Each step's sources arrive merged after its filter: the latest, as
    // often as tool runs started.
    const QString two = QStringLiteral("p_a_0-2.png");
    const QString three = QStringLiteral("p_p_a-2_1-1.png");
    EXPECT_EQ(m_display.events.filter(QRegularExpression(QStringLiteral("^(filter|source):"))),
        (QStringList { "filter:One|Quillon Tests", "source:a.png", "filter:Two|Quillon Tests", "source:" + two,
            "source:" + two, "filter:Three|Quillon Tests", "source:" + three, "source:" + three }));
}

TEST_F(BatchRun, StartIsRefusedWhileARunOrItsWindDownIsGoing)
{
    m_settings.inputMode = InputMode::None;
    BatchEnvGuard delay("QUILLON_STANDIN_DELAY_MS", "1500");
    ASSERT_TRUE(m_controller.startBatchWithSender({ filter(QStringLiteral("Busy")) }, m_settings));
    QString error;
    EXPECT_FALSE(m_controller.startBatchWithSender({ filter(QStringLiteral("Busy")) }, m_settings, &error));
    EXPECT_EQ(m_display.beeps, 1);
    m_controller.abortProcessWithSender();
    EXPECT_FALSE(m_controller.startBatchWithSender({ filter(QStringLiteral("Busy")) }, m_settings));
    EXPECT_EQ(m_display.beeps, 2);
    EXPECT_TRUE(m_display.events.filter(QStringLiteral("alert:")).isEmpty());
    ASSERT_TRUE(waitForIdle());
    EXPECT_TRUE(m_controller.startBatchWithSender({ filter(QStringLiteral("Busy")) }, m_settings));
    ASSERT_TRUE(waitForIdle());
    EXPECT_FALSE(m_controller.isAborted());
}

TEST_F(BatchRun, LogHoldsTheTitleFollowedByTheTrimmedChunks)
{
    m_settings.inputMode = InputMode::None;
    m_settings.toolLog = 1;
    runChain({ "Logged" });
    EXPECT_FALSE(m_controller.isLogOpen());
    const QByteArray content = log();
    ASSERT_FALSE(m_display.renderLines.isEmpty());
    EXPECT_EQ(content, (QStringLiteral("Quillon log") + m_display.renderLines.join(QString())).toUtf8());
    for (const QString& line : m_display.renderLines)
        EXPECT_EQ(line, line.trimmed());

    // A run without logging leaves the old log alone.
    m_settings.toolLog = 0;
    runChain({ "Quiet" });
    EXPECT_EQ(log(), content);
}

TEST_F(BatchRun, ALogThatCannotBeCreatedIsReportedAndTheRunGoesOn)
{
    m_settings.inputMode = InputMode::None;
    m_settings.toolLog = 1;
    // A directory where the log file should be makes its creation fail.
    ASSERT_TRUE(QDir(m_out).mkdir(QStringLiteral("qlrn_logfile.txt")));
    runChain({ "NoLog" });
    EXPECT_EQ(m_stdout.filter(QStringLiteral("Error creating logfile ")).size(), 1);
    EXPECT_TRUE(batchDirectoryNames(m_out).contains(QStringLiteral("NX_p_-1.png")));
}

TEST_F(BatchRun, AToolThatCannotStartIsReportedAndTheRunGoesOn)
{
    m_settings.inputMode = InputMode::None;
    m_settings.toolLog = 1;
    m_settings.toolPath = m_in; // exists, so it passes the check, but is no program
    runChain({ "A", "B" });
    // One run of the first step, then one per (planned) output of it.
    const QStringList failures
        = m_display.renderLines.filter(QStringLiteral("Could not start the render tool: "));
    EXPECT_EQ(failures.size(), 3);
    EXPECT_TRUE(log().startsWith("Quillon logCould not start the render tool: "));
    EXPECT_EQ(m_display.events.last(), QStringLiteral("finished"));
}

TEST_F(BatchRun, UserFilesAreNeverDeleted)
{
    // An input that lives in the output directory, and a file elsewhere.
    const QString inside = QDir(m_out).filePath(QStringLiteral("mine.png"));
    ASSERT_TRUE(writeBatchInputImage(inside));
    const QString outside = input(QStringLiteral("elsewhere.png"));
    m_settings.inputMode = InputMode::File;
    m_settings.sourcePath = inside;
    BatchEnvGuard delay("QUILLON_STANDIN_DELAY_MS", "300");

    RunCleanup cleanup;
    cleanup.begin(m_out, { inside });
    cleanup.collect({ inside, outside, m_out, QDir(m_out).filePath(QStringLiteral("../in/elsewhere.png")) });
    EXPECT_TRUE(cleanup.files().isEmpty());
    start(chain({ "Keep", "Keep2" }));
    ASSERT_TRUE(waitForIdle());

    EXPECT_TRUE(QFileInfo::exists(inside));
    EXPECT_TRUE(QFileInfo::exists(outside));
    EXPECT_EQ(batchDirectoryNames(m_out), (QStringList { "mine.png", "p_p_mine-1.png", "p_p_mine-2.png" }));
}

TEST_F(BatchRun, MapsAreWrittenIntoTheRecordOfAOneFilterChainOnly)
{
    m_settings.inputMode = InputMode::None;
    m_settings.frameCountText = QStringLiteral("1");
    m_settings.activateMaps = 1;
    m_settings.mapBoxes = { 1, 0, 0, 0, 1, 0, 0, 0, 0, 0 };
    RecordPtr single = filter(QStringLiteral("Mapped"));
    start({ single });
    ASSERT_TRUE(waitForIdle());
    EXPECT_TRUE(single->boolean(key::UseMaps));
    EXPECT_EQ(single->integers(key::Maps), (QList<qint64> { 0, 4 }));

    RecordPtr first = filter(QStringLiteral("M1"));
    RecordPtr second = filter(QStringLiteral("M2"));
    start({ first, second });
    ASSERT_TRUE(waitForIdle());
    EXPECT_FALSE(first->boolean(key::UseMaps, true));
    EXPECT_FALSE(second->boolean(key::UseMaps, true));
    EXPECT_FALSE(first->contains(key::Maps));
}

// ---- Checks before the run ------------------------------------------------

TEST_F(BatchRun, EveryFailedCheckShowsItsMessageAndStartsNothing)
{
    const QString file = input(QStringLiteral("x.png"));
    const QString empty = QDir(m_temp.path()).filePath(QStringLiteral("empty"));
    ASSERT_TRUE(QDir().mkpath(empty));
    const RecordList chain { filter(QStringLiteral("Check")) };

    struct Case {
        const char* message;
        bool emptyChain = false;
        std::optional<QString> tool = {}, output = {};
        std::optional<InputMode> mode = {};
        std::optional<QString> source = {}, prefix = {}, frames = {};
        std::optional<FrameStyle> style = {};
        std::optional<int> preset = {};
    };
    using enum InputMode;
    // clang-format off: a row per failed check
    const Case cases[] = {
        { .message = "No filters in the queue", .emptyChain = true },
        { .message = "No Batchrender tool selected", .tool = "/nonexistent/tool" },
        { .message = "No Batchrender tool selected", .tool = "" },
        { .message = "No output path selected", .output = "" },
        { .message = "No output path selected", .output = file },
        { .message = "No output path selected", .output = m_out + "/missing" },
        { .message = "Input file does not exist", .mode = File },
        { .message = "Input file does not exist", .mode = File, .source = m_in + "/missing.png" },
        { .message = "Input directory does not exist", .mode = Directory },
        { .message = "Input directory does not exist", .mode = Directory, .source = file },
        { .message = "Input directory empty", .mode = Directory, .source = empty },
        { .message = "No filename gives (file prefix when running without input)", .mode = None, .prefix = "" },
        { .message = "Number of frames must not be negative", .mode = None, .frames = "-3" },
        { .message = "Number of frames must not be more than 25 with letter frame names", .mode = None,
          .frames = "26", .style = FrameStyle::Letter },
        { .message = "Number of frames must not be more than 999 with plain frame names", .mode = None,
          .frames = "1000" },
        { .message = "The filter Check (step 1) has no preset at index 3: it has 2 presets", .mode = None,
          .preset = 3 },
    };
    // clang-format on
    for (const Case& c : cases) {
        RunSettings s = m_settings;
        s.toolPath = c.tool.value_or(s.toolPath);
        s.outputPath = c.output.value_or(s.outputPath);
        s.inputMode = c.mode.value_or(s.inputMode);
        s.sourcePath = c.source.value_or(s.sourcePath);
        s.outputPrefix = c.prefix.value_or(s.outputPrefix);
        s.frameCountText = c.frames.value_or(s.frameCountText);
        s.nameStyle = c.style.value_or(s.nameStyle);
        s.presetIndex = c.preset.value_or(s.presetIndex);
        m_display.events.clear();
        // The described message first; a path, where there is one, follows
        // on a line of its own.
        const QString error = refusalOf(c.emptyChain ? RecordList() : chain, s);
        EXPECT_EQ(error.section(QLatin1Char('\n'), 0, 0), QString::fromLatin1(c.message));
        // The alert, and no tool run.
        EXPECT_EQ(m_display.events.filter(QStringLiteral("alert:")).join(QString()),
            QStringLiteral("alert:") + error);
        EXPECT_TRUE(m_display.events.filter(QStringLiteral("filter:")).isEmpty());
        EXPECT_FALSE(m_controller.isRunning());
    }
    EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty());
}

TEST_F(BatchRun, AnUnreadableInputDirectoryCannotBeScanned)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "permissions are not enforced for root";
    input(QStringLiteral("x.png"));
    ASSERT_TRUE(QFile::setPermissions(m_in, QFileDevice::WriteOwner));
    m_settings.inputMode = InputMode::Directory;
    m_settings.sourcePath = m_in;
    const QString error = refusalOf({ filter(QStringLiteral("Scan")) }, m_settings);
    QFile::setPermissions(m_in, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    EXPECT_EQ(error, QStringLiteral("Error scanning input directory"));
}

// ---- Inputs ---------------------------------------------------------------

TEST(BatchInputs, DirectoryListingIsDeepSortedAndSkipsHiddenRelativePaths)
{
    QTemporaryDir temp;
    const QDir root(temp.path());
    for (const char* name :
        { "b.png", "a.png", ".dot.png", "sub/c.png", "sub/.inner.png", "sub/deeper/d.png", ".hidden/e.png" })
        ASSERT_TRUE(test::writeFileBytes(root.filePath(QString::fromLatin1(name)), {}));
    const QStringList listed = BatchController::loadImagesFromSourceFolder(temp.path());
    QStringList relative;
    for (const QString& path : listed)
        relative.append(root.relativeFilePath(path));
    EXPECT_EQ(relative,
        (QStringList {
            "a.png", "b.png", "sub", "sub/.inner.png", "sub/c.png", "sub/deeper", "sub/deeper/d.png" }));
    EXPECT_TRUE(QFileInfo(listed.first()).isAbsolute());
    EXPECT_TRUE(BatchController::loadImagesFromSourceFolder(root.filePath(QStringLiteral("none"))).isEmpty());
}

TEST(BatchInputs, BaseNamesSplitTheLastComponentAtDots)
{
    EXPECT_EQ(BatchController::inputBaseName(QStringLiteral("/x/photo.png")), QStringLiteral("photo"));
    EXPECT_EQ(
        BatchController::inputBaseName(QStringLiteral("/x/my.photo.png")), QStringLiteral("my.photo.png"));
    EXPECT_EQ(BatchController::inputBaseName(QStringLiteral("/x.y/photo")), QStringLiteral("photo"));
}

TEST_F(BatchRun, ADirectoryOfOnlyHiddenFilesRunsOnceWithoutInput)
{
    const QString hidden = QDir(m_in).filePath(QStringLiteral(".keep"));
    ASSERT_TRUE(test::writeFileBytes(hidden, {}));
    m_settings.inputMode = InputMode::Directory;
    m_settings.sourcePath = m_in;
    m_settings.frameCountText = QStringLiteral("1");
    runChain({ "Hidden" });
    EXPECT_EQ(m_display.sources, QStringList { "<no source>" });
    EXPECT_TRUE(QFileInfo::exists(hidden));
}

} // namespace
} // namespace quillon
