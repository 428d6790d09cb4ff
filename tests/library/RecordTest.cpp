// A record's typed reads: what each kind of stored value reads as.

#include "library/Record.h"

#include <gtest/gtest.h>

namespace quillon {
namespace {

TEST(Record, NumbersReadAsFlagsByComparisonWithZero)
{
    const struct {
        QVariant stored;
        bool expected;
    } cases[] = { { QVariant::fromValue<bool>(true), true }, { QVariant::fromValue<qint64>(2), true },
        { QVariant::fromValue<qint64>(0), false }, { QVariant::fromValue<double>(0.5), true },
        { QVariant::fromValue<double>(0.0), false }, { QStringLiteral("1"), false } };
    for (const auto& [stored, expected] : cases) {
        Record record;
        record.set(key::UseMaps, stored);
        EXPECT_EQ(record.boolean(key::UseMaps), expected) << stored.toString().toStdString();
    }
    EXPECT_TRUE(Record().boolean(key::UseMaps, true));
}

} // namespace
} // namespace quillon
