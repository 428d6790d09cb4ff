#include "StepFixtures.h"

using namespace quillon;
using namespace quillon::steptest;

namespace {

class OutputNaming : public StepTest {
protected:
    // The output names (file names only) of a step's first control file.
    QStringList namesOf(filterProcessObject& step, const QString& outfile)
    {
        step.createBatchFileWithFilepath(
            outfile.isEmpty() ? QString() : inDir + QLatin1Char('/') + outfile, outfile);
        QStringList names;
        for (const QString& path : step.outFiles)
            names.append(path.mid(outDir.size() + 1));
        return names;
    }
};

} // namespace

TEST_F(OutputNaming, PrefixBaseChainPositionAndFrame)
{
    host.prefix = QStringLiteral("p_");
    host.settings.frameCountText = QStringLiteral("3");

    auto single = makeStep(filter, true, true, 0);
    EXPECT_EQ(namesOf(*single, QStringLiteral("stone")).last(), QStringLiteral("p_stone-0003.png"));

    auto first = makeStep(filter, true, false, 0);
    EXPECT_EQ(namesOf(*first, QStringLiteral("stone")).last(), QStringLiteral("p_stone_0-0003.png"));
    EXPECT_EQ(first->realFileNames.last(), QStringLiteral("p_stone-0003.png"));

    auto second = makeStep(filter, false, true, 1);
    EXPECT_EQ(namesOf(*second, QStringLiteral("p_stone-0003.png")),
        QStringList({ QStringLiteral("p_p_stone-0003.png") }));
    EXPECT_TRUE(second->realFileNames.isEmpty());

    auto empty = makeStep(filter, true, true, 0);
    EXPECT_EQ(namesOf(*empty, QString()).last(), QStringLiteral("NX_p_-0003.png"));
    EXPECT_EQ(empty->realFileNames.last(), QStringLiteral("p_-0003.png"));
}

TEST_F(OutputNaming, ADottedBaseNameIsKeptWhole)
{
    host.settings.frameCountText = QStringLiteral("1");
    auto last = makeStep(filter, false, true, 1);
    EXPECT_EQ(namesOf(*last, QStringLiteral("a.b.png")), QStringList({ QStringLiteral("a.b.png.png") }));

    EXPECT_EQ(filterProcessObject::makeBaseNameFromPathWithPath(QStringLiteral("a.b.png")),
        QStringLiteral("a.b.png"));
    EXPECT_EQ(filterProcessObject::makeBaseNameFromPathWithPath(QStringLiteral("/in/photo.png")),
        QStringLiteral("photo"));
    EXPECT_EQ(filterProcessObject::makeBaseNameFromPathWithPath(QStringLiteral("dir.x/stone")),
        QStringLiteral("stone"));
    EXPECT_EQ(filterProcessObject::makeBaseNameFromPathWithPath(QStringLiteral("/in/photo.png/")),
        QStringLiteral("photo"));
    EXPECT_EQ(filterProcessObject::makeBaseNameFromPathWithPath(QString()), QString());
}

TEST_F(OutputNaming, FrameSuffixSchemes)
{
    auto step = makeStep(filter, true, true, 0);
    host.settings.nameStyle = 0;
    EXPECT_EQ(step->getFileSuffixFor(0), QStringLiteral("-1"));
    EXPECT_EQ(step->getFileSuffixFor(9), QStringLiteral("-10"));
    EXPECT_EQ(step->getFileSuffixFor(11), QStringLiteral("-12"));
    host.settings.nameStyle = 1;
    EXPECT_EQ(step->getFileSuffixFor(0), QStringLiteral("-0001"));
    EXPECT_EQ(step->getFileSuffixFor(11), QStringLiteral("-0012"));
    EXPECT_EQ(step->getFileSuffixFor(12344), QStringLiteral("-12345"));
    host.settings.nameStyle = 2;
    EXPECT_EQ(step->getFileSuffixFor(0), QStringLiteral("-a"));
    EXPECT_EQ(step->getFileSuffixFor(11), QStringLiteral("-l"));
    EXPECT_EQ(step->getFileSuffixFor(0xD800 - 97), QStringLiteral("-%1").arg(0xD800 - 97 + 1));
    EXPECT_EQ(step->getFileSuffixFor(0x10000 - 97), QString::fromUcs4(U"-\U00010000"));
    host.settings.nameStyle = 3;
    EXPECT_EQ(step->getFileSuffixFor(4), QString());
    host.settings.frameCountText = QStringLiteral("1");
    EXPECT_EQ(namesOf(*step, QStringLiteral("stone")), QStringList({ QStringLiteral("stone.png") }));
}

TEST(MapNames, EveryIndexAndTheFallback)
{
    const QStringList expected { QStringLiteral("_base"), QStringLiteral("_alpha"),
        QStringLiteral("_diffuse"), QStringLiteral("_bump"), QStringLiteral("_normal"),
        QStringLiteral("_specstr"), QStringLiteral("_specexp"), QStringLiteral("_ao"), QStringLiteral("_ro"),
        QStringLiteral("_metallic") };
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(filterProcessObject::getMapNameWithMapindex(i), expected[i]);
    EXPECT_EQ(filterProcessObject::getMapNameWithMapindex(10), QStringLiteral("_base"));
    EXPECT_EQ(filterProcessObject::getMapNameWithMapindex(-1), QStringLiteral("_base"));
}
