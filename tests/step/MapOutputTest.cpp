#include "StepFixtures.h"

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
        auto glow = parameter(*filter, QStringLiteral("glow_amount"));
        glow->setInteger(key::ACTIVE, 1);
        glow->setInteger(key::POPSTATE, 1);
        auto variations = parameter(*filter, kVariationsId);
        variations->setInteger(key::ACTIVE, 1);
        variations->setInteger(key::POPSTATE, 0);
    }

    QString run(int index, const char* query) const
    {
        return xpathValue(out(QStringLiteral("bth-run-%1.ffxml").arg(index)), query);
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
    for (int i = 0; i < 6; ++i) {
        const std::string q = "/Tasks/Task[" + std::to_string(i + 1) + "]/";
        EXPECT_EQ(xpathValue(control, (q + "Result/@path").c_str()), fullNames[i]);
        EXPECT_EQ(xpathValue(control, (q + "Filter/@value").c_str()), runFiles[i]);
    }

    const QStringList mapTypes { QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("4") };
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(run(i, "//DefaultPreset/Settings/@map_type"), mapTypes[i % 3]) << i;
        // Rewritten attributes go last: the first map rewrites map_type and
        // then the variation number, the copies rewrite only map_type.
        const QString variation = i < 3 ? QStringLiteral("1") : QStringLiteral("29970");
        const QString settingsLine = i % 3 == 0
            ? QStringLiteral("Settings seamless=\"false\" map_type=\"%1\" variation=\"%2\"\n")
                  .arg(mapTypes[i % 3], variation)
            : QStringLiteral("Settings seamless=\"false\" variation=\"%2\" map_type=\"%1\"\n")
                  .arg(mapTypes[i % 3], variation);
        EXPECT_TRUE(dumpFile(runFiles[i]).contains(settingsLine)) << i;
        // Every map of a frame carries the frame's values.
        EXPECT_EQ(run(i, "//SliderControl/Value/@value"),
            i < 3 ? QStringLiteral("0.500") : QStringLiteral("1.000"));
        EXPECT_EQ(run(i, "//DefaultPreset/Settings/@variation"),
            i < 3 ? QStringLiteral("1") : QStringLiteral("29970"));
    }
    EXPECT_EQ(step->lastRunURL, runFiles[3]);
}

TEST_F(MapOutput, MapNamesWithoutInputAndTheLetterScheme)
{
    host.settings.nameStyle = 2;
    host.settings.frameCountText = QStringLiteral("10");
    host.prefix = QStringLiteral("q");
    filter->set(key::Maps, QVariantList { 2, 3, 9 });
    auto step = makeStep(filter, true, true, 0);
    ASSERT_FALSE(step->createBatchFileNoFile().isEmpty());
    ASSERT_EQ(step->realFileNames.size(), 30);
    EXPECT_EQ(step->realFileNames[0], QStringLiteral("q-a_diffuse.png"));
    EXPECT_EQ(step->realFileNames[1], QStringLiteral("q-b_bump.png"));
    EXPECT_EQ(step->realFileNames[2], QStringLiteral("q-c_metallic.png"));
    // The counter runs on past "z" in character-code order.
    EXPECT_EQ(step->realFileNames[25], QStringLiteral("q-z_bump.png"));
    EXPECT_EQ(step->realFileNames[26], QStringLiteral("q-{_metallic.png"));
    EXPECT_EQ(step->outFiles[26], out(QStringLiteral("q-{_metallic.png")));
}

TEST_F(MapOutput, AMissingFirstMapRunFileFailsTheCopy)
{
    auto step = makeStep(filter, true, true, 0);
    step->lastRunURL = out(QStringLiteral("bth-run-7.ffxml"));
    pugi::xml_document doc;
    pugi::xml_node tasks = doc.append_child("Tasks");
    QString error;
    EXPECT_FALSE(
        step->createTaskSettingMapsWithIndex(8, QString(), QStringLiteral("x"), 4, false, &error, tasks));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_TRUE(tasks.first_child().empty());
    EXPECT_EQ(step->realFileNames, QStringList({ QStringLiteral("x-0009_normal.png") }));
    EXPECT_TRUE(step->filesToRemove.isEmpty());
}

TEST_F(MapOutput, AFailingFirstMapAbandonsTheControlFile)
{
    QFile::remove(definitionPath);
    auto step = makeStep(filter, true, true, 0);
    EXPECT_TRUE(step->createBatchFileNoFile().isEmpty());
    EXPECT_EQ(step->realFileNames, QStringList({ QStringLiteral("-0001_base.png") }));
    EXPECT_TRUE(step->filesToRemove.isEmpty());
    EXPECT_TRUE(step->lastRunURL.isEmpty());
}
