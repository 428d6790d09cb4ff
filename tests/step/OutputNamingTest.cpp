#include "support/StepFixture.h"

using namespace quillon;
using namespace quillon::steptest;

using OutputNaming = StepTest;

// The names of a first and inner step of a longer chain show in the batch
// run tests (BatchRun.ThreeStepChainKeepsOnlyTheLastStepsOutputs).
TEST_F(OutputNaming, PrefixBaseChainPositionAndFrame)
{
    host.prefix = QStringLiteral("p_");
    host.settings.frameCountText = QStringLiteral("3");
    const struct {
        bool isFirst;
        qint64 chainid;
        const char* input; // file name in in/; empty: no input
        const char* lastOut;
        const char* lastReal; // empty: none recorded
    } rows[] = {
        { true, 0, "stone", "p_stone-0003.png", "p_stone-0003.png" },
        { false, 1, "p_stone-0003.png", "p_p_stone-0003.png", "" },
        { true, 0, "", "NX_p_-0003.png", "p_-0003.png" },
        { false, 1, "a.b.png", "p_a.b.png.png", "" }, // a dotted base name is kept whole
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.input);
        auto step = makeStep(filter, row.isFirst, true, row.chainid);
        const QString input = QString::fromUtf8(row.input);
        step->createBatchFileWithFilepath(
            input.isEmpty() ? QString() : inDir + QLatin1Char('/') + input, input);
        EXPECT_EQ(step->outFiles.size(), row.isFirst ? 3 : 1);
        EXPECT_EQ(step->outFiles.last(), out(QString::fromUtf8(row.lastOut)));
        EXPECT_EQ(step->realFileNames.isEmpty() ? QString() : step->realFileNames.last(),
            QString::fromUtf8(row.lastReal));
    }
}

TEST_F(OutputNaming, BaseNameOfAPath)
{
    const char* const rows[][2] = { { "a.b.png", "a.b.png" }, { "/in/photo.png", "photo" },
        { "dir.x/stone", "stone" }, { "/in/photo.png/", "photo" }, { "", "" }, { "/in/.png", "" } };
    for (const auto& row : rows)
        EXPECT_EQ(filterProcessObject::makeBaseNameFromPathWithPath(QString::fromUtf8(row[0])),
            QString::fromUtf8(row[1]));
}

TEST_F(OutputNaming, FrameSuffixSchemes)
{
    auto step = makeStep(filter, true, true, 0);
    const struct {
        int style;
        int index;
        QString suffix;
    } rows[] = {
        { 0, 0, QStringLiteral("-1") },
        { 0, 11, QStringLiteral("-12") },
        { 1, 0, QStringLiteral("-0001") },
        { 1, 11, QStringLiteral("-0012") },
        { 1, 12344, QStringLiteral("-12345") },
        { 2, 0, QStringLiteral("-a") },
        { 2, 11, QStringLiteral("-l") },
        { 2, 0xD800 - 97, QStringLiteral("-%1").arg(0xD800 - 97 + 1) }, // no lone surrogates
        { 2, 0x10000 - 97, QString::fromUcs4(U"-\U00010000") },
        { 3, 4, QString() },
    };
    for (const auto& row : rows) {
        host.settings.nameStyle = static_cast<FrameStyle>(row.style);
        EXPECT_EQ(step->getFileSuffixFor(row.index), row.suffix) << row.style << " " << row.index;
    }
    host.settings.frameCountText = QStringLiteral("1");
    step->createBatchFileWithFilepath(inDir + QStringLiteral("/stone"), QStringLiteral("stone"));
    EXPECT_EQ(step->outFiles, QStringList({ out(QStringLiteral("stone.png")) }));
}

TEST(MapNames, EveryIndexAndTheFallback)
{
    const QStringList expected
        = QStringLiteral("_base _alpha _diffuse _bump _normal _specstr _specexp _ao _ro "
                         "_metallic _base _base")
              .split(QLatin1Char(' '));
    for (int i = -1; i < 11; ++i)
        EXPECT_EQ(filterProcessObject::getMapNameWithMapindex(i), expected[(i + 12) % 12]) << i;
}
