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

// The cases that change what the tool reads, each listed with the files of
// its tool runs in golden/edge-cases.txt (QUILLON_WRITE_GOLDEN=1 rewrites it):
// every control file without its global settings, each run file's preset, the outputs and the
// files handed over for deletion.
TEST_F(ControlFile, EdgeCasesWriteTheGoldenTaskFiles)
{
    const auto none = QStringList { QString() };
    const struct {
        const char* name;
        const char* frames;
        bool isFirst;
        QVariantList maps; // empty: maps off
        QStringList inputs; // file names in in/; an empty name: no input
        const char* width;
        const char* height;
    } rows[] = {
        { "a frame count of 0 writes only the global settings", "0", true, {}, none, "600", "600" },
        { "a later step writes one task whatever the frame count", "3", false, {}, { "x.png" }, "600", "600" },
        { "maps on a later step are ignored", "2", false, { 0, 4 }, { "x.png" }, "600", "600" },
        { "maps on with none chosen write no task", "2", true, { QVariant() }, none, "600", "600" },
        { "no input: an empty image and the size texts as they are", "1", true, {}, none, "", "7x" },
        { "two inputs leave one control file, the second's", "2", true, {}, { "a.png", "b.png" }, "600", "600" },
    };
    QString listing;
    for (const auto& row : rows) {
        QDir(outDir).removeRecursively();
        QDir().mkpath(outDir);
        host.settings.frameCountText = QString::fromUtf8(row.frames);
        host.settings.widthText = QString::fromUtf8(row.width);
        host.settings.heightText = QString::fromUtf8(row.height);
        filter->setBoolean(key::UseMaps, !row.maps.isEmpty());
        QVariantList maps = row.maps;
        maps.removeAll(QVariant());
        filter->set(key::Maps, maps);
        auto step = makeStep(filter, row.isFirst, true, row.isFirst ? 0 : 1);
        listing += QStringLiteral("# %1\n").arg(QString::fromUtf8(row.name));
        for (const QString& input : row.inputs) {
            const QString control = input.isEmpty()
                ? step->createBatchFileNoFile()
                : step->createBatchFileWithFilepath(inDir + QLatin1Char('/') + input, input);
            listing += QStringLiteral("control %1\n").arg(control);
        }
        for (const QString& name : QDir(outDir).entryList(QDir::Files)) {
            QString tree = dumpFile(out(name));
            if (name.startsWith(QStringLiteral("bth-run-")))
                tree = tree.mid(tree.indexOf(QStringLiteral("    DefaultPreset\n")));
            else // the global settings have listings of their own
                tree.truncate(tree.indexOf(QStringLiteral("    RenderingOptions\n")));
            listing += QStringLiteral("== ") + name + QLatin1Char('\n') + tree;
        }
        listing += QStringLiteral("outputs: %1\ndeleted: %2\n")
                       .arg(step->outFiles.join(QLatin1Char(' ')), step->filesToRemove.join(QLatin1Char(' ')));
    }
    expectGolden("edge-cases.txt", listing.replace(outDir, QStringLiteral("@OUT@")).replace(inDir, QStringLiteral("@IN@")));
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
