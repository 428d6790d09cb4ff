#include "support/StepFixture.h"

using namespace quillon;
using namespace quillon::steptest;

namespace {

class MapOutput : public StepTest {
protected:
    void SetUp() override
    {
        StepTest::SetUp();
        filter->setBoolean(key::UseMaps, true);
        filter->set(key::Maps, QVariantList { 0, 1, 4 });
        activate(*filter, QStringLiteral("glow_amount"), 1);
        activate(*filter, kVariationsId, 0);
    }
};

} // namespace

TEST_F(MapOutput, MapsZeroOneFourOverTwoFrames)
{
    QList<int> draws { 0, 999 };
    auto step = makeStep(filter, true, true, 0);
    step->randomDraw = [&draws] { return draws.takeFirst(); };
    host.prefix = QStringLiteral("p_");

    const QString control
        = step->createBatchFileWithFilepath(inDir + QStringLiteral("/stone.png"), QStringLiteral("stone"));
    ASSERT_FALSE(control.isEmpty());
    EXPECT_TRUE(draws.isEmpty()); // one draw per frame, not per map

    const QStringList names { QStringLiteral("p_stone-0001_base.png"),
        QStringLiteral("p_stone-0002_alpha.png"), QStringLiteral("p_stone-0003_normal.png"),
        QStringLiteral("p_stone-0004_base.png"), QStringLiteral("p_stone-0005_alpha.png"),
        QStringLiteral("p_stone-0006_normal.png") };
    EXPECT_EQ(step->realFileNames, names);
    QStringList fullNames;
    QStringList runFiles;
    for (int i = 0; i < names.size(); ++i) {
        fullNames.append(out(names[i]));
        runFiles.append(out(QStringLiteral("bth-run-%1.ffxml").arg(i)));
    }
    EXPECT_EQ(step->outFiles, fullNames);
    EXPECT_EQ(step->filesToRemove, runFiles + QStringList { control });
    EXPECT_EQ(countNodes(control, "/Tasks/Task"), 6);
    const QStringList mapTypes { QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("4") };
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(i);
        const std::string task = "/Tasks/Task[" + std::to_string(i + 1) + "]/";
        EXPECT_EQ(xpathValue(control, (task + "Result/@path").c_str()), fullNames[i]);
        EXPECT_EQ(xpathValue(control, (task + "Filter/@value").c_str()), runFiles[i]);
        // Every map of a frame carries the frame's values. Rewritten
        // attributes go last: the first map rewrites map_type and then the
        // variation number, the copies rewrite only map_type.
        const QString variation = i < 3 ? QStringLiteral("1") : QStringLiteral("29970");
        const QString settings = i % 3 == 0
            ? QStringLiteral("Settings seamless=\"false\" map_type=\"%1\" variation=\"%2\"\n")
            : QStringLiteral("Settings seamless=\"false\" variation=\"%2\" map_type=\"%1\"\n");
        EXPECT_TRUE(dumpFile(runFiles[i]).contains(settings.arg(mapTypes[i % 3], variation)));
        EXPECT_EQ(xpathValue(runFiles[i], "//SliderControl/Value/@value"),
            i < 3 ? QStringLiteral("0.500") : QStringLiteral("1.000"));
    }
    EXPECT_EQ(step->lastRunURL, runFiles[3]);
}

TEST_F(MapOutput, MapNamesWithoutInputAndTheLetterScheme)
{
    host.settings.nameStyle = FrameStyle::Letter;
    host.settings.frameCountText = QStringLiteral("10");
    host.prefix = QStringLiteral("q");
    filter->set(key::Maps, QVariantList { 2, 3, 9 });
    auto step = makeStep(filter, true, true, 0);
    ASSERT_FALSE(step->createBatchFileNoFile().isEmpty());
    ASSERT_EQ(step->realFileNames.size(), 30);
    EXPECT_EQ(step->realFileNames.mid(0, 3),
        QStringList({ QStringLiteral("q-a_diffuse.png"), QStringLiteral("q-b_bump.png"),
            QStringLiteral("q-c_metallic.png") }));
    // The counter runs on past "z" in character-code order.
    EXPECT_EQ(step->realFileNames[25], QStringLiteral("q-z_bump.png"));
    EXPECT_EQ(step->outFiles[26], out(QStringLiteral("q-{_metallic.png")));
}

TEST_F(MapOutput, AFailingFirstMapAbandonsTheControlFileAndTheCopies)
{
    auto step = makeStep(filter, true, true, 0);
    step->lastRunURL = out(QStringLiteral("bth-run-7.ffxml")); // never written
    pugi::xml_document doc;
    pugi::xml_node tasks = doc.append_child("Tasks");
    QString error;
    EXPECT_FALSE(
        step->createTaskSettingMapsWithIndex(8, QString(), QStringLiteral("x"), 4, false, &error, tasks));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_TRUE(tasks.first_child().empty());
    EXPECT_EQ(step->realFileNames, QStringList({ QStringLiteral("x-0009_normal.png") }));
    EXPECT_TRUE(step->filesToRemove.isEmpty());

    QFile::remove(definitionPath);
    auto broken = makeStep(filter, true, true, 0);
    EXPECT_TRUE(broken->createBatchFileNoFile().isEmpty());
    EXPECT_EQ(broken->realFileNames, QStringList({ QStringLiteral("-0001_base.png") }));
    EXPECT_TRUE(broken->filesToRemove.isEmpty());
    EXPECT_TRUE(broken->lastRunURL.isEmpty());
}
