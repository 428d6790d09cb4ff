#include "chain/ChainFile.h"
#include "support/BatchFixtures.h"

#include <QPoint>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>

using namespace quillon;
using quillon::test::fileBytes;

namespace {

// A chain record as the detail reader builds it: a slider, a check box and
// the Variations row, plus the keys a run adds.
RecordPtr makeChainFilter(const QString& name)
{
    auto filter = Record::create();
    filter->setString(key::name, name);
    filter->setString(key::path, QStringLiteral("/filters/") + name + QStringLiteral(".ffxml"));
    filter->setString(key::filtertype, QStringLiteral("1"));
    filter->set(key::Presets, QVariantMap { { key::PresetCount, QVariant::fromValue<qint64>(3) } });
    filter->setInteger(key::ChoosenPreset, 2);

    auto params = std::make_shared<RecordList>();
    auto slider = makeParameterRecord(controlType::kTypeSlider, QStringLiteral("glow_amount"));
    slider->setString(key::CONTROL_NAME, QStringLiteral("Glow Amount"));
    slider->setReal(key::STARTVALUE, 0.25);
    slider->setInteger(key::ACTIVE, 1);
    params->push_back(slider);
    params->push_back(makeParameterRecord(controlType::kTypeCheckbox, QStringLiteral("invert")));
    params->push_back(generateVariationsSettings());
    filter->setList(key::Components, params);
    return filter;
}

class ChainFileTest : public ::testing::Test {
protected:
    QString path(const QString& name) const { return m_dir.filePath(name); }
    QTemporaryDir m_dir;
};

} // namespace

TEST_F(ChainFileTest, RoundTripKeepsEveryKeyAndKind)
{
    RecordPtr filter = makeChainFilter(QStringLiteral("Soft Glow"));
    filter->setBoolean(key::UseMaps, true);
    filter->set(key::Maps, QVariantList { QVariant::fromValue<qint64>(0), QVariant::fromValue<qint64>(4) });
    filter->set(QStringLiteral("ExtraNested"),
        QVariantMap { { QStringLiteral("list"), QVariantList { QStringLiteral("a"), 2.5, false } } });
    filter->list(key::Components)->front()->setInteger(QStringLiteral("PARAM_EXTRA"), -12);

    const QString file = path(QStringLiteral("glow.qlch"));
    QString error;
    ASSERT_TRUE(writeChainFile(file, { filter }, &error)) << error.toStdString();

    // The file holds codes instead of kinds (QUILLON_WRITE_GOLDEN=1 rewrites golden/written.qlch).
    test::expectGoldenFile(QStringLiteral("chain/golden/written.qlch"), fileBytes(file));
    // The chain in memory is untouched.
    EXPECT_FALSE(filter->list(key::Components)->front()->contains(key::CONTROL_PROXY));

    // Reading it back restores every key with its value and kind: written
    // again, it gives the same file.
    const ChainReadResult read = readChainFile(file);
    ASSERT_EQ(read.status, ChainReadResult::Ok) << read.error.toStdString();
    ASSERT_TRUE(writeChainFile(path(QStringLiteral("again.qlch")), read.chain, &error)) << error.toStdString();
    EXPECT_EQ(fileBytes(path(QStringLiteral("again.qlch"))), fileBytes(file));
}

// An empty chain is saved and opened in WindowDialogsTest.
TEST_F(ChainFileTest, AFilterWhoseDefinitionCouldNotBeReadIsStoredWithAnEmptyList)
{
    const QString file = path(QStringLiteral("bare.qlch"));
    auto bare = Record::create();
    bare->setString(key::name, QStringLiteral("Unreadable"));
    ASSERT_TRUE(writeChainFile(file, { bare }, nullptr));
    EXPECT_FALSE(bare->contains(key::Components));
    const ChainReadResult read = readChainFile(file);
    ASSERT_EQ(read.status, ChainReadResult::Ok);
    ASSERT_EQ(read.chain.size(), 1u);
    ASSERT_TRUE(read.chain.front()->list(key::Components));
    EXPECT_TRUE(read.chain.front()->list(key::Components)->empty());
}

TEST_F(ChainFileTest, OneFilterAddedTwiceOpensAsTwoIndependentRecords)
{
    const RecordPtr shared = makeChainFilter(QStringLiteral("Twice"));
    const QString file = path(QStringLiteral("twice.qlch"));
    ASSERT_TRUE(writeChainFile(file, { shared, shared }, nullptr));
    const ChainReadResult read = readChainFile(file);
    ASSERT_EQ(read.status, ChainReadResult::Ok);
    ASSERT_EQ(read.chain.size(), 2u);
    ASSERT_NE(read.chain[0]->list(key::Components), read.chain[1]->list(key::Components));

    read.chain[0]->list(key::Components)->front()->setReal(key::STARTVALUE, 0.75);
    read.chain[0]->setInteger(key::ChoosenPreset, 0);
    EXPECT_DOUBLE_EQ(read.chain[1]->list(key::Components)->front()->real(key::STARTVALUE), 0.25);
    EXPECT_EQ(read.chain[1]->integer(key::ChoosenPreset), 2);
}

TEST_F(ChainFileTest, FailedWriteKeepsThePreviousFile)
{
    const QString file = path(QStringLiteral("kept.qlch"));
    ASSERT_TRUE(writeChainFile(file, { makeChainFilter(QStringLiteral("Kept")) }, nullptr));
    const QByteArray previous = fileBytes(file);

    // Values a property list cannot hold, and a parameter without a kind.
    const std::vector<std::pair<const char*, std::function<void(Record&)>>> spoilers = {
        { "Where", [](Record& filter) { filter.set(QStringLiteral("Where"), QPoint(1, 2)); } },
        { "STARTVALUE",
            [](Record& filter) {
                filter.list(key::Components)->front()->setReal(key::STARTVALUE, std::nan(""));
            } },
        { "Parameter 1 of entry 1 has no kind.",
            [](Record& filter) { filter.list(key::Components)->front()->remove(key::CONTROL_TYPE); } },
        // Deeper than a chain file holds, in dictionaries and in lists.
        { "nested too deeply",
            [](Record& filter) {
                QVariant deep = 1;
                for (int level = 0; level < kMaxChainNesting; ++level)
                    deep = QVariantMap { { QStringLiteral("k"), deep } };
                filter.set(QStringLiteral("Deep"), deep);
            } },
        { "nested too deeply",
            [](Record& filter) {
                QVariant deep = 1;
                for (int level = 0; level < kMaxChainNesting; ++level)
                    deep = QVariantList { deep };
                filter.set(QStringLiteral("Deep"), deep);
            } },
    };
    for (const auto& [culprit, spoil] : spoilers) {
        SCOPED_TRACE(culprit);
        const RecordPtr odd = makeChainFilter(QStringLiteral("Odd"));
        spoil(*odd);
        QString error;
        EXPECT_FALSE(writeChainFile(file, { odd }, &error));
        EXPECT_TRUE(error.contains(QLatin1String(culprit))) << error.toStdString();
        EXPECT_EQ(fileBytes(file), previous);
    }
}
