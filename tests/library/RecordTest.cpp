#include "library/Record.h"

#include <gtest/gtest.h>

using namespace quillon;

TEST(RecordAccessors, MissingOrMistypedKeysGiveTheFallback)
{
    Record record;
    record.setString(key::name, QStringLiteral("Blur"));
    record.setReal(key::STARTVALUE, 2.75);
    record.set(key::Presets, QStringLiteral("not a dictionary"));

    EXPECT_EQ(record.string(key::name), QStringLiteral("Blur"));
    EXPECT_EQ(record.string(key::author, QStringLiteral("none")), QStringLiteral("none"));
    EXPECT_EQ(record.integer(key::name, -1), -1);
    EXPECT_EQ(record.integer(key::STARTVALUE), 2);
    EXPECT_DOUBLE_EQ(record.real(key::STARTVALUE), 2.75);
    EXPECT_FALSE(record.type().has_value());
    EXPECT_EQ(record.list(key::Components), nullptr);
    EXPECT_EQ(presetCount(record), 0);

    record.setReal(key::MAXVALUE, 1e300);
    EXPECT_EQ(record.integer(key::MAXVALUE), std::numeric_limits<qint64>::max());
}

TEST(ParameterRecords, VariationsRowAsTheChainFileNamesIt)
{
    const RecordPtr variations = generateVariationsSettings();
    EXPECT_EQ(variations->string(key::CONTROL_ID), QStringLiteral("##@@##"));
    EXPECT_EQ(variations->string(key::CONTROL_NAME), QStringLiteral("Variations"));
    EXPECT_EQ(variations->integer(key::ACTIVE), 1);
    EXPECT_EQ(variations->integer(key::MINVALUE), 1);
}

TEST(ChainCodes, ConvertBothWaysAndRejectUnknownCodes)
{
    const controlType kinds[] = { controlType::kTypeCheckbox, controlType::kTypeIntSlider,
        controlType::kTypeSlider, controlType::kTypeAngle, controlType::kTypeVariations };
    for (qint64 code = 0; code < 5; ++code) {
        EXPECT_EQ(chainCodeFromControlType(kinds[code]), code);
        EXPECT_EQ(controlTypeFromChainCode(code), kinds[code]);
    }
    EXPECT_FALSE(controlTypeFromChainCode(7).has_value());
    EXPECT_FALSE(controlTypeFromChainCode(-1).has_value());
}
