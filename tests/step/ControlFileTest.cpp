#include "support/StepFixture.h"

#include "run/RunSettings.h"

using namespace quillon;
using namespace quillon::steptest;

using ControlFile = StepTest;

TEST_F(ControlFile, OneFilterTwoFramesMatchesTheGoldenFiles)
{
    for (const QString& id : { kVariationsId, QStringLiteral("glow_amount"), QStringLiteral("invert") })
        activate(*filter, id, 1);
    const QString input = inDir + QStringLiteral("/stone.png");
    auto step = makeStep(filter, true, true, 0, { input }, { QStringLiteral("stone") });

    const QString control = step->createBatchFileWithFilepath(input, QStringLiteral("stone"));

    EXPECT_EQ(control, out(QStringLiteral("controlfile.xml")));
    EXPECT_EQ(fileBytes(control), goldenRun("one-filter-controlfile.xml"));
    EXPECT_EQ(fileBytes(out(QStringLiteral("bth-run-0.ffxml"))), goldenRun("one-filter-bth-run-0.ffxml"));
    EXPECT_EQ(fileBytes(out(QStringLiteral("bth-run-1.ffxml"))), goldenRun("one-filter-bth-run-1.ffxml"));
    EXPECT_EQ(step->outFiles,
        QStringList({ out(QStringLiteral("stone-0001.png")), out(QStringLiteral("stone-0002.png")) }));
    EXPECT_EQ(step->realFileNames,
        QStringList({ QStringLiteral("stone-0001.png"), QStringLiteral("stone-0002.png") }));
    EXPECT_EQ(step->filesToRemove,
        QStringList(
            { out(QStringLiteral("bth-run-0.ffxml")), out(QStringLiteral("bth-run-1.ffxml")), control }));
}

// The element order of a task is in the golden file; the size texts go in as they are.
TEST_F(ControlFile, TasksCarryTheImageSizeTexts)
{
    host.settings.widthText = QString();
    host.settings.heightText = QStringLiteral("7x");
    const QString control = makeStep(filter, true, true, 0)->createBatchFileNoFile();
    EXPECT_EQ(dumpFile(control).section(QLatin1Char('\n'), 2, 2),
        QStringLiteral("    Image value=\"\" width=\"\" height=\"7x\""));
}

// A later step writes one task whatever the frame count (OutputNaming.PrefixBaseChainPositionAndFrame).
TEST_F(ControlFile, AFrameCountOfZeroWritesNoTask)
{
    host.settings.frameCountText = QStringLiteral("0");
    auto first = makeStep(filter, true, true, 0);
    const QString empty = first->createBatchFileNoFile();
    EXPECT_EQ(dumpFile(empty).section(QLatin1Char('\n'), 0, 1), QStringLiteral("Tasks\n  GlobalSettings"));
    EXPECT_EQ(first->filesToRemove, QStringList({ empty }));
}

TEST_F(ControlFile, TwoInputsLeaveOneControlFileOfTheSecond)
{
    auto step = makeStep(filter, true, true, 0);
    const QString a
        = step->createBatchFileWithFilepath(inDir + QStringLiteral("/a.png"), QStringLiteral("a"));
    const QString b
        = step->createBatchFileWithFilepath(inDir + QStringLiteral("/b.png"), QStringLiteral("b"));
    EXPECT_EQ(a, b);
    EXPECT_EQ(xpathValue(b, "/Tasks/Task[1]/Image/@value"), inDir + QStringLiteral("/b.png"));
    EXPECT_EQ(QDir(outDir).entryList(QDir::Files),
        QStringList({ QStringLiteral("bth-run-0.ffxml"), QStringLiteral("bth-run-1.ffxml"),
            QStringLiteral("controlfile.xml") }));
    EXPECT_EQ(step->filesToRemove.size(), 3); // rebuilt for every tool run
    EXPECT_EQ(step->outFiles.size(), 4);
}

TEST_F(ControlFile, MapsOnALaterStepAreIgnoredAndNoMapChosenWritesNoTask)
{
    filter->setBoolean(key::UseMaps, true);
    filter->set(key::Maps, QVariantList { 0, 4 });
    auto later = makeStep(filter, false, true, 1);
    EXPECT_FALSE(
        later->createBatchFileWithFilepath(out(QStringLiteral("x.png")), QStringLiteral("x.png")).isEmpty());
    EXPECT_EQ(later->outFiles, QStringList({ out(QStringLiteral("x.png")) }));
    EXPECT_EQ(xpathValue(out(QStringLiteral("bth-run-0.ffxml")), "//DefaultPreset/Settings/@map_type"), "0");

    filter->set(key::Maps, QVariantList {});
    auto first = makeStep(filter, true, true, 0);
    const QString control = first->createBatchFileNoFile();
    const QString tree = dumpFile(control);
    EXPECT_TRUE(tree.startsWith(QStringLiteral("Tasks\n  GlobalSettings"))) << tree.toStdString();
    EXPECT_FALSE(tree.contains(QStringLiteral("\n  Task"))) << tree.toStdString();
    EXPECT_TRUE(first->outFiles.isEmpty());
    EXPECT_EQ(first->filesToRemove, QStringList({ control }));
}

TEST_F(ControlFile, AnUnwritableControlFileIsReportedAndGivesNoPath)
{
    ASSERT_TRUE(QDir(outDir).mkdir(QStringLiteral("controlfile.xml")));
    auto step = makeStep(filter, true, true, 0);
    testing::internal::CaptureStdout();
    EXPECT_TRUE(step->createBatchFileNoFile().isEmpty());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "HILFE!! - Could not create controlfile\n");
    EXPECT_EQ(step->filesToRemove,
        QStringList({ out(QStringLiteral("bth-run-0.ffxml")), out(QStringLiteral("bth-run-1.ffxml")),
            out(QStringLiteral("controlfile.xml")) }));
}

// The defaults are in the golden control file; these are the other choices,
// all switched on or all off (QUILLON_WRITE_GOLDEN=1 rewrites the listings).
TEST_F(ControlFile, GlobalSettingsFollowTheSwitchesAndChoices)
{
    for (const bool allOn : { true, false }) {
        RunSettings& s = host.settings;
        s.multithread = s.dither = s.progressive = s.antiAlias = allOn ? 1 : 0;
        s.normalmapFlip = allOn ? 1 : 5;
        s.format = allOn ? QStringLiteral("TIFF") : QStringLiteral("PNG");
        s.jpegQualityText = allOn ? QStringLiteral(" 93 ") : QStringLiteral("80");
        s.jpegFullPrecision = allOn ? 0 : 1;
        s.pngIncludeTrans = allOn ? 2 : 0; // 2: mixed
        s.pngBitDepth = s.tgaBitDepth = allOn ? 1 : 0;
        s.pngCompression = s.tiffCompression = s.tiffBitDepth = allOn ? 2 : 1;
        s.tiffIncludeTrans = allOn ? 0 : 1;
        s.tiffFloatFormat = s.tgaFlipOrder = allOn ? 1 : 0;
        s.tgaIncludeTrans = allOn ? -1 : 1;
        pugi::xml_document doc;
        const pugi::xml_node global = makeStep(filter, true, true, 0)->createGlobalSettings(doc);
        expectGolden(allOn ? "global-settings-all-on.txt" : "global-settings-all-off.txt", dumpTree(global));
    }
}

// A chosen format gives its own name in lower case (".png" in every output name).
TEST_F(ControlFile, NoFormatChosenMeansJpeg)
{
    host.settings.format.clear();
    EXPECT_EQ(makeStep(filter, true, true, 0)->getSelectedFileExtension(), QStringLiteral(".jpeg"));
}
