#include "StepFixtures.h"

#include "app/RunSettings.h"

#include <QDir>

using namespace quillon;
using namespace quillon::steptest;

namespace {

QByteArray golden(const QString& name, const QString& inDir, const QString& outDir)
{
    QByteArray text = readText(QStringLiteral(QUILLON_SOURCE_DIR "/tests/step/golden/") + name);
    text.replace("@IN@", inDir.toUtf8());
    text.replace("@OUT@", outDir.toUtf8());
    return text;
}

class ControlFile : public StepTest {
protected:
    // The worked example's varying parameters: the variation number and the
    // glow sweep, the check box toggling.
    void activateExampleParameters()
    {
        auto variations = parameter(*filter, kVariationsId);
        variations->setInteger(key::ACTIVE, 1);
        variations->setInteger(key::POPSTATE, 1);
        auto glow = parameter(*filter, QStringLiteral("glow_amount"));
        glow->setInteger(key::ACTIVE, 1);
        glow->setInteger(key::POPSTATE, 1);
        auto invert = parameter(*filter, QStringLiteral("invert"));
        invert->setInteger(key::ACTIVE, 1);
        invert->setInteger(key::POPSTATE, 1);
    }
};

} // namespace

TEST_F(ControlFile, OneFilterTwoFramesMatchesTheGoldenFiles)
{
    activateExampleParameters();
    auto step = makeStep(
        filter, true, true, 0, { inDir + QStringLiteral("/stone.png") }, { QStringLiteral("stone") });

    const QString control
        = step->createBatchFileWithFilepath(inDir + QStringLiteral("/stone.png"), QStringLiteral("stone"));

    EXPECT_EQ(control, out(QStringLiteral("controlfile.xml")));
    EXPECT_EQ(readText(control), golden(QStringLiteral("one-filter-controlfile.xml"), inDir, outDir));
    EXPECT_EQ(readText(out(QStringLiteral("bth-run-0.ffxml"))),
        golden(QStringLiteral("one-filter-bth-run-0.ffxml"), inDir, outDir));
    EXPECT_EQ(readText(out(QStringLiteral("bth-run-1.ffxml"))),
        golden(QStringLiteral("one-filter-bth-run-1.ffxml"), inDir, outDir));

    EXPECT_EQ(step->outFiles,
        QStringList({ out(QStringLiteral("stone-0001.png")), out(QStringLiteral("stone-0002.png")) }));
    EXPECT_EQ(step->realFileNames,
        QStringList({ QStringLiteral("stone-0001.png"), QStringLiteral("stone-0002.png") }));
    EXPECT_EQ(step->filesToRemove,
        QStringList(
            { out(QStringLiteral("bth-run-0.ffxml")), out(QStringLiteral("bth-run-1.ffxml")), control }));
}

TEST_F(ControlFile, TasksCarryImageSizeAndRunFilesInOrder)
{
    host.settings.widthText = QString();
    host.settings.heightText = QStringLiteral("7x");
    auto step = makeStep(filter, true, true, 0);

    const QString control = step->createBatchFileNoFile();

    ASSERT_FALSE(control.isEmpty());
    EXPECT_EQ(dumpFile(control).section(QLatin1Char('\n'), 0, 6),
        QStringLiteral("Tasks\n"
                       "  Task\n"
                       "    Image value=\"\" width=\"\" height=\"7x\"\n"
                       "    Selection value=\"\"\n"
                       "    Result path=\"%1\"\n"
                       "    Preset value=\"0\"\n"
                       "    Filter value=\"%2\"")
            .arg(out(QStringLiteral("NX_-0001.png")), out(QStringLiteral("bth-run-0.ffxml"))));
}

TEST_F(ControlFile, FrameCountDecidesTheTaskCountOfTheFirstStepOnly)
{
    host.settings.frameCountText = QStringLiteral("0");
    auto first = makeStep(filter, true, true, 0);
    const QString empty = first->createBatchFileNoFile();
    EXPECT_EQ(countNodes(empty, "/Tasks/Task"), 0);
    EXPECT_EQ(dumpFile(empty).section(QLatin1Char('\n'), 0, 1), QStringLiteral("Tasks\n  GlobalSettings"));
    EXPECT_EQ(first->filesToRemove, QStringList({ empty }));

    host.settings.frameCountText = QStringLiteral("5");
    auto later = makeStep(filter, false, true, 1);
    const QString one = later->createBatchFileWithFilepath(
        out(QStringLiteral("stone_0-0003.png")), QStringLiteral("stone-0003.png"));
    EXPECT_EQ(countNodes(one, "/Tasks/Task"), 1);
    EXPECT_EQ(later->outFiles, QStringList({ out(QStringLiteral("stone-0003.png")) }));
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
    // The list is rebuilt for every tool run.
    EXPECT_EQ(step->filesToRemove.size(), 3);
    EXPECT_EQ(step->outFiles.size(), 4);
}

TEST_F(ControlFile, ChainsOfTwoAndThreeFiltersNameTheirOutputsByPosition)
{
    host.prefix = QStringLiteral("p_");
    host.settings.frameCountText = QStringLiteral("3");
    const QString input = inDir + QStringLiteral("/stone.png");

    // Three filters: 0 and 1 are inner steps, 2 the last.
    auto first = makeStep(filter, true, false, 0, { input }, { QStringLiteral("stone") });
    ASSERT_FALSE(first->createBatchFileWithFilepath(input, QStringLiteral("stone")).isEmpty());
    EXPECT_EQ(first->outFiles,
        QStringList({ out(QStringLiteral("p_stone_0-0001.png")), out(QStringLiteral("p_stone_0-0002.png")),
            out(QStringLiteral("p_stone_0-0003.png")) }));
    EXPECT_EQ(first->realFileNames,
        QStringList({ QStringLiteral("p_stone-0001.png"), QStringLiteral("p_stone-0002.png"),
            QStringLiteral("p_stone-0003.png") }));

    auto second = makeStep(filter, false, false, 1, first->outFiles, first->realFileNames);
    auto third = makeStep(filter, false, true, 2, {}, first->realFileNames);
    for (qsizetype i = 0; i < first->outFiles.size(); ++i) {
        const QString control
            = second->createBatchFileWithFilepath(first->outFiles[i], first->realFileNames[i]);
        EXPECT_EQ(xpathValue(control, "/Tasks/Task/Image/@value"), first->outFiles[i]);
        third->inFiles.append(second->outFiles.last());
    }
    EXPECT_EQ(second->outFiles,
        QStringList({ out(QStringLiteral("p_p_stone-0001_1-0001.png")),
            out(QStringLiteral("p_p_stone-0002_1-0001.png")),
            out(QStringLiteral("p_p_stone-0003_1-0001.png")) }));
    EXPECT_TRUE(second->realFileNames.isEmpty());

    for (qsizetype i = 0; i < third->inFiles.size(); ++i)
        third->createBatchFileWithFilepath(third->inFiles[i], first->realFileNames[i]);
    EXPECT_EQ(third->outFiles,
        QStringList({ out(QStringLiteral("p_p_stone-0001.png")), out(QStringLiteral("p_p_stone-0002.png")),
            out(QStringLiteral("p_p_stone-0003.png")) }));
    EXPECT_TRUE(third->realFileNames.isEmpty());
}

TEST_F(ControlFile, MapsOnALaterStepAreIgnored)
{
    filter->setBoolean(key::UseMaps, true);
    filter->set(key::Maps, QVariantList { 0, 4 });
    auto later = makeStep(filter, false, true, 1);
    const QString control
        = later->createBatchFileWithFilepath(out(QStringLiteral("x.png")), QStringLiteral("x.png"));
    EXPECT_EQ(later->outFiles, QStringList({ out(QStringLiteral("x.png")) }));
    EXPECT_EQ(xpathValue(out(QStringLiteral("bth-run-0.ffxml")), "//DefaultPreset/Settings/@map_type"),
        QStringLiteral("0"));
    EXPECT_FALSE(control.isEmpty());
}

TEST_F(ControlFile, MapsOnWithNoMapChosenWritesNoTask)
{
    host.settings.frameCountText = QStringLiteral("4");
    filter->setBoolean(key::UseMaps, true);
    filter->set(key::Maps, QVariantList {});
    auto step = makeStep(filter, true, true, 0);
    const QString control = step->createBatchFileNoFile();
    EXPECT_EQ(countNodes(control, "/Tasks/Task"), 0);
    EXPECT_TRUE(step->outFiles.isEmpty());
    EXPECT_EQ(step->filesToRemove, QStringList({ control }));
}

TEST_F(ControlFile, AnUnwritableControlFileIsReportedAndGivesNoPath)
{
    ASSERT_TRUE(QDir(outDir).mkdir(QStringLiteral("controlfile.xml")));
    auto step = makeStep(filter, true, true, 0);
    testing::internal::CaptureStdout();
    const QString control = step->createBatchFileNoFile();
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(control.isEmpty());
    EXPECT_EQ(printed, "HILFE!! - Could not create controlfile\n");
    EXPECT_EQ(step->filesToRemove,
        QStringList({ out(QStringLiteral("bth-run-0.ffxml")), out(QStringLiteral("bth-run-1.ffxml")),
            out(QStringLiteral("controlfile.xml")) }));
}

// ---- GlobalSettings -----------------------------------------------------------

TEST_F(ControlFile, GlobalSettingsFollowTheSwitchesAndChoices)
{
    RunSettings& s = host.settings;
    s.multithread = s.dither = s.progressive = s.antiAlias = s.normalmapFlip = 1;
    s.format = QStringLiteral("TIFF");
    s.jpegQualityText = QStringLiteral(" 93 ");
    s.jpegFullPrecision = 0;
    s.pngIncludeTrans = 2; // mixed
    s.pngBitDepth = 1;
    s.pngCompression = 2;
    s.tiffBitDepth = 2;
    s.tiffCompression = 2;
    s.tiffIncludeTrans = 0;
    s.tiffFloatFormat = 1;
    s.tgaBitDepth = 1;
    s.tgaIncludeTrans = -1;
    s.tgaFlipOrder = 1;
    auto step = makeStep(filter, true, true, 0);

    pugi::xml_document doc;
    step->createGlobalSettings(doc);
    EXPECT_EQ(dumpTree(doc),
        QStringLiteral("GlobalSettings\n"
                       "  RenderingOptions\n"
                       "    UseMultithreading value=\"true\"\n"
                       "    Dither value=\"true\"\n"
                       "    Progressive value=\"true\"\n"
                       "    OptimizeBlurs value=\"true\"\n"
                       "    AntiAliasBitmapComponentSources value=\"true\"\n"
                       "    Jitter value=\"0\"\n"
                       "    TemporaryFilesLocation value=\"\"\n"
                       "    RAMUsageLimit value=\"60\"\n"
                       "    NormalMapFlipY value=\"true\"\n"
                       "  BitmapFormatOptions\n"
                       "    DefaultFormat value=\"TIFF\"\n"
                       "    JPG\n"
                       "      Quality value=\" 93 \"\n"
                       "      FullPrecision value=\"false\"\n"
                       "    PNG\n"
                       "      BitDepth value=\"16\"\n"
                       "      IncludeTransparency value=\"unknown\"\n"
                       "      ImageCompression value=\"BEST\"\n"
                       "    TIF\n"
                       "      BitDepth value=\"24\"\n"
                       "      IncludeTransparency value=\"false\"\n"
                       "      FloatFormat value=\"true\"\n"
                       "      ImageCompression value=\"DEFLATE\"\n"
                       "    TGA\n"
                       "      BitDepth value=\"32\"\n"
                       "      IncludeTransparency value=\"unknown\"\n"
                       "      FlipRowOrder value=\"true\"\n"
                       "    BMP\n"
                       "      BitDepth value=\"32\"\n"
                       "      FlipRowOrder value=\"false\"\n"
                       "    EXR\n"
                       "      BitDepth value=\"32\"\n"
                       "      FlipRowOrder value=\"false\"\n"
                       "      IncludeTransparency value=\"true\"\n"
                       "      ImageCompression value=\"PIZ\"\n"
                       "    PFM\n"));
}

TEST_F(ControlFile, RenderSwitchesOffAndEachFormatFollowsOnlyItsOwnChoice)
{
    RunSettings& s = host.settings;
    s.multithread = s.dither = s.progressive = s.antiAlias = 0;
    s.normalmapFlip = 5;
    s.pngBitDepth = 0;
    s.pngCompression = 1;
    s.tiffBitDepth = 1;
    s.tiffCompression = 1;
    s.tgaBitDepth = 0;
    auto step = makeStep(filter, true, true, 0);
    pugi::xml_document doc;
    pugi::xml_node global = step->createGlobalSettings(doc);
    auto value
        = [&](const char* query) { return QString::fromUtf8(global.select_node(query).attribute().value()); };
    EXPECT_EQ(value("RenderingOptions/UseMultithreading/@value"), QStringLiteral("false"));
    EXPECT_EQ(value("RenderingOptions/AntiAliasBitmapComponentSources/@value"), QStringLiteral("false"));
    EXPECT_EQ(value("RenderingOptions/NormalMapFlipY/@value"), QStringLiteral("unknown"));
    EXPECT_EQ(value("BitmapFormatOptions/PNG/BitDepth/@value"), QStringLiteral("8"));
    EXPECT_EQ(value("BitmapFormatOptions/PNG/ImageCompression/@value"), QStringLiteral("FAST"));
    EXPECT_EQ(value("BitmapFormatOptions/TIF/BitDepth/@value"), QStringLiteral("16"));
    EXPECT_EQ(value("BitmapFormatOptions/TIF/ImageCompression/@value"), QStringLiteral("LZW"));
    EXPECT_EQ(value("BitmapFormatOptions/TGA/BitDepth/@value"), QStringLiteral("24"));
}

TEST_F(ControlFile, FormatIdentifierGivesTheExtension)
{
    auto step = makeStep(filter, true, true, 0);
    const QStringList formats { QStringLiteral("JPEG"), QStringLiteral("PNG"), QStringLiteral("TIFF"),
        QStringLiteral("TGA"), QStringLiteral("BMP"), QStringLiteral("EXR"), QStringLiteral("PFM") };
    for (const QString& format : formats) {
        host.settings.format = format;
        EXPECT_EQ(step->getSelectedFormatText(), format);
        EXPECT_EQ(step->getSelectedFileExtension(), QLatin1Char('.') + format.toLower());
    }
    EXPECT_EQ(filterProcessObject::stringFromCheckbox(1), QStringLiteral("true"));
    EXPECT_EQ(filterProcessObject::stringFromCheckbox(0), QStringLiteral("false"));
    EXPECT_EQ(filterProcessObject::stringFromCheckbox(-1), QStringLiteral("unknown"));
}
