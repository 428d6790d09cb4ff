// quillon-cli on a run's results: the chain that makes one output again,
// the contact sheet and the animation.

#include "chain/ChainFile.h"
#include "support/CliFixture.h"

#include <QImage>
#include <QJsonArray>
#include <QStandardPaths>

namespace quillon {
namespace {

using namespace test;
using ExploreCli = CliFixture;

// Every parameter of every filter varies at random, the check box too.
RecordList randomChain(const QStringList& definitions)
{
    RecordList chain;
    for (const QString& definition : definitions) {
        RecordPtr filter = batchChainRecord(definition);
        for (const RecordPtr& parameter : *filter->list(key::Components)) {
            parameter->setInteger(key::ACTIVE, 1);
            parameter->setInteger(key::POPSTATE, 0);
        }
        chain.push_back(filter);
    }
    return chain;
}

TEST_F(ExploreCli, FromReportMakesTheChosenOutputAgain)
{
    const QString second = writeDefinition(QStringLiteral("second.ffxml"), QStringLiteral("Second"));
    const QString chainPath = QDir(m_temp.path()).filePath(QStringLiteral("random.qlch"));
    ASSERT_TRUE(writeChainFile(chainPath, randomChain({ m_definition, second })));
    const QString report = QDir(m_temp.path()).filePath(QStringLiteral("report.json"));
    const QString keep = QDir(m_temp.path()).filePath(QStringLiteral("keep"));
    const QString keep2 = QDir(m_temp.path()).filePath(QStringLiteral("keep2"));
    const QString out2 = QDir(m_temp.path()).filePath(QStringLiteral("out2"));
    ASSERT_TRUE(QDir().mkpath(keep) && QDir().mkpath(keep2) && QDir().mkpath(out2));
    const CliResult sweep = run({ "--chain", chainPath, "--tool", kTool, "--output", m_out, "--format", "PNG",
                                    "--frames", "5", "--seed", "11", "--report", report },
        { { "QUILLON_STANDIN_KEEP", keep } });
    ASSERT_EQ(sweep.exitCode, 0) << sweep.err.toStdString();

    const QString fixed = QDir(m_temp.path()).filePath(QStringLiteral("fixed.qlch"));
    expectExit(run({ "--from-report", report, "--output-index", "9", "--save-chain", fixed }), 2,
        "the report has outputs 1 to 5");
    // Without --chain the definitions the report names are read.
    const CliResult kept = run({ "--from-report", report, "--output-index", "4", "--save-chain", fixed });
    ASSERT_EQ(kept.exitCode, 0) << kept.err.toStdString();

    const CliResult again = run({ "--chain", fixed, "--tool", kTool, "--output", out2, "--format", "PNG",
                                    "--frames", "1", "--seed", "99" },
        { { "QUILLON_STANDIN_KEEP", keep2 } });
    ASSERT_EQ(again.exitCode, 0) << again.err.toStdString();

    // Both steps' run files of output 4 (its interim image's and its own),
    // byte for byte, and so the image itself.
    const QJsonArray runs = readJson(report).value("plan").toObject().value("toolRuns").toArray();
    const QJsonObject last = runs.at(runs.size() - 5 + 3).toObject();
    const QString finalPath = last.value("tasks").toArray().at(0).toObject().value("result").toString();
    const QString interimPath = last.value("input").toString();
    const auto original = byName(keep);
    const auto repeated = byName(keep2);
    ASSERT_EQ(repeated.size(), 2);
    QList<QByteArray> expected { original.value(QFileInfo(interimPath).fileName() + ".ffxml"),
        original.value(QFileInfo(finalPath).fileName() + ".ffxml") };
    QList<QByteArray> actual = repeated.values();
    std::sort(expected.begin(), expected.end());
    std::sort(actual.begin(), actual.end());
    EXPECT_EQ(actual, expected);
    EXPECT_FALSE(expected.contains(QByteArray()));
    const auto images = byName(out2);
    ASSERT_EQ(images.size(), 1);
    EXPECT_EQ(images.first(), fileBytes(finalPath));
}

TEST_F(ExploreCli, AfterTheRunAContactSheetAndAnAnimationOfTheFrames)
{
    const QString sheet = QDir(m_temp.path()).filePath(QStringLiteral("sheet.png"));
    const CliResult result = run(baseFlags()
        + QStringList { "--frames", "3", "--width", "100", "--height", "50", "--contact-sheet", sheet });
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    const QImage image(sheet);
    // Three tiles in rows of two: 256-pixel cells with 12-pixel gaps.
    ASSERT_EQ(image.width(), 2 * (256 + 12) + 12);
    EXPECT_GT(image.height(), 2 * (256 + 12));
    EXPECT_NE(image.pixelColor(12 + 128, 12 + 128), QColor(225, 225, 225)) << "the first output is drawn";
    // A 100x50 output keeps its size in the middle of its cell.
    EXPECT_EQ(image.pixelColor(12 + 128, 12 + 90), QColor(225, 225, 225)) << "drawn at its own size";
    EXPECT_EQ(image.pixelColor(12 + 268 + 128, 12 + 268 + 128), QColor(250, 250, 250)) << "no fourth tile";

    // Without ffmpeg the run's outputs stay and the animation is refused with the reason.
    const CliResult without
        = run(baseFlags() + QStringList { "--animation", "a.gif" }, { { "PATH", "/nonexistent" } });
    expectExit(without, 2, "ffmpeg was not found on PATH");
    EXPECT_TRUE(without.err.contains(QStringLiteral("2 written, 0 missing"))) << without.err.toStdString();

    if (QStandardPaths::findExecutable(QStringLiteral("ffmpeg")).isEmpty()
        || QStandardPaths::findExecutable(QStringLiteral("ffprobe")).isEmpty())
        GTEST_SKIP() << "ffmpeg is not installed";
    for (const char* suffix : { "gif", "webm" }) {
        const QString animation = QDir(m_temp.path()).filePath(QStringLiteral("frames.") + suffix);
        const CliResult made = run(baseFlags() + QStringList { "--frames", "3", "--animation", animation });
        ASSERT_EQ(made.exitCode, 0) << made.err.toStdString();
        EXPECT_EQ(batchDirectoryNames(m_out),
            (QStringList { "NX_my-export-1.png", "NX_my-export-2.png", "NX_my-export-3.png" }));
        QProcess probe;
        probe.start(QStringLiteral("ffprobe"),
            { "-v", "error", "-count_frames", "-select_streams", "v:0", "-show_entries",
                "stream=nb_read_frames", "-of", "csv=p=0", animation });
        ASSERT_TRUE(probe.waitForFinished(60000));
        EXPECT_EQ(probe.readAllStandardOutput().trimmed(), QByteArray("3")) << suffix;
    }
}

} // namespace
} // namespace quillon
