#include "support/StepFixture.h"

#include <QFileInfo>

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

    // Every map of a frame carries the frame's values. Rewritten attributes go
    // last: the first map rewrites map_type and then the variation number, the
    // copies rewrite only map_type.
    QString listing = QStringLiteral("names: %1\noutputs: %2\nlast run file: %3\n")
                          .arg(step->realFileNames.join(QLatin1Char(' ')), step->outFiles.join(QLatin1Char(' ')),
                              step->lastRunURL);
    for (const QString& file : step->filesToRemove)
        listing += QStringLiteral("== ") + QFileInfo(file).fileName() + QLatin1Char('\n') + dumpFile(file);
    listing.replace(outDir, QStringLiteral("@OUT@")).replace(inDir, QStringLiteral("@IN@"));
    expectGolden("maps-zero-one-four.txt", listing);
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
