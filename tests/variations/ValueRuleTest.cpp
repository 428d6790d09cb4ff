#include "variations/ValueRule.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

using namespace quillon;

namespace {

RecordPtr makeRow(controlType kind, qint64 mode, QVariant from, QVariant to, QVariant start)
{
    auto row = makeParameterRecord(kind, QStringLiteral("p"));
    row->setInteger(key::ACTIVE, 1);
    row->setInteger(key::POPSTATE, mode);
    row->set(key::MINVALUE, from);
    row->set(key::MAXVALUE, to);
    row->set(key::STARTVALUE, start);
    return row;
}

QVariant qi(qint64 v)
{
    return QVariant::fromValue<qint64>(v);
}

RandomDraw fixed(int u)
{
    return [u] { return u; };
}

RandomDraw forbidden()
{
    return [] {
        ADD_FAILURE() << "a sweep must not draw";
        return 0;
    };
}

std::vector<qint64> integerSequence(Record& row, double frames, int count)
{
    std::vector<qint64> values;
    for (int i = 0; i < count; ++i) {
        const QVariant v = nextVariationValue(row, frames, forbidden());
        EXPECT_EQ(v.typeId(), QMetaType::LongLong);
        EXPECT_TRUE(row.holdsInteger(key::STARTVALUE));
        EXPECT_EQ(row.integer(key::STARTVALUE), v.toLongLong());
        values.push_back(v.toLongLong());
    }
    return values;
}

std::vector<double> realSequence(Record& row, double frames, int count)
{
    std::vector<double> values;
    for (int i = 0; i < count; ++i) {
        const QVariant v = nextVariationValue(row, frames, forbidden());
        EXPECT_EQ(v.typeId(), QMetaType::Double);
        EXPECT_TRUE(row.holdsReal(key::STARTVALUE));
        EXPECT_EQ(row.real(key::STARTVALUE), v.toDouble());
        values.push_back(v.toDouble());
    }
    return values;
}

} // namespace

TEST(ValueRuleNoValue, InactiveUnknownModeAndBadFrameCountsLeaveTheRecordAlone)
{
    for (qint64 mode : { 0, 1 }) {
        auto row = makeRow(controlType::kTypeIntSlider, mode, qi(1), qi(10), qi(4));
        row->setInteger(key::ACTIVE, 0);
        EXPECT_FALSE(nextVariationValue(*row, 10.0, fixed(500)).isValid());
        row->setInteger(key::ACTIVE, 2);
        EXPECT_FALSE(nextVariationValue(*row, 10.0, fixed(500)).isValid());
        row->remove(key::ACTIVE);
        EXPECT_FALSE(nextVariationValue(*row, 10.0, fixed(500)).isValid());
        EXPECT_EQ(row->integer(key::STARTVALUE), 4);
    }
    auto row = makeRow(controlType::kTypeSlider, 2, 0.0, 1.0, 0.3);
    EXPECT_FALSE(nextVariationValue(*row, 10.0, fixed(500)).isValid());
    row->setInteger(key::POPSTATE, 1);
    EXPECT_FALSE(nextVariationValue(*row, 0.0, fixed(500)).isValid());
    EXPECT_FALSE(nextVariationValue(*row, -3.0, fixed(500)).isValid());
    EXPECT_FALSE(nextVariationValue(*row, std::nullopt, fixed(500)).isValid());
    row->remove(key::CONTROL_TYPE);
    EXPECT_FALSE(nextVariationValue(*row, 10.0, fixed(500)).isValid());
    EXPECT_EQ(row->real(key::STARTVALUE), 0.3);
}

TEST(ValueRuleSweep, IntegerSweepKeepsTheTopAndThenWraps)
{
    auto row = makeRow(controlType::kTypeIntSlider, 1, qi(1), qi(10), qi(1));
    EXPECT_EQ(integerSequence(*row, 3.0, 5), (std::vector<qint64> { 4, 7, 10, 1, 4 }));
}

TEST(ValueRuleSweep, IntegerStepIsRoundedHalfAwayFromZero)
{
    auto up = makeRow(controlType::kTypeIntSlider, 1, qi(0), qi(5), qi(0));
    EXPECT_EQ(integerSequence(*up, 2.0, 3), (std::vector<qint64> { 3, 0, 3 })); // d = 2.5
    // d = -2.5 rounds to -3; values below the top are kept.
    auto down = makeRow(controlType::kTypeIntSlider, 1, qi(0), qi(-5), qi(-10));
    EXPECT_EQ(integerSequence(*down, 2.0, 2), (std::vector<qint64> { -13, -16 }));
}

TEST(ValueRuleSweep, VariationNumberOverTenFrames)
{
    auto row = generateVariationsSettings();
    row->setInteger(key::POPSTATE, 1);
    // d = 29999 / 10 = 2999.9, rounded 3000; 30001 passes 30000 and wraps.
    EXPECT_EQ(integerSequence(*row, 10.0, 11),
        (std::vector<qint64> { 3001, 6001, 9001, 12001, 15001, 18001, 21001, 24001, 27001, 1, 3001 }));
}

TEST(ValueRuleSweep, SliderSweepAccumulatesRealsExactly)
{
    auto row = makeRow(controlType::kTypeSlider, 1, 0.0, 1.0, 0.0);
    std::vector<double> expected;
    double v = 0.0;
    for (int i = 0; i < 12; ++i) {
        v += 0.1;
        if (v > 1.0)
            v = 0.0;
        expected.push_back(v);
    }
    EXPECT_EQ(realSequence(*row, 10.0, 12), expected);
}

TEST(ValueRuleSweep, SliderAndAngleKeepAnExactTopThenWrap)
{
    auto slider = makeRow(controlType::kTypeSlider, 1, 0.0, 1.0, 0.0);
    EXPECT_EQ(realSequence(*slider, 4.0, 5), (std::vector<double> { 0.25, 0.5, 0.75, 1.0, 0.0 }));
    auto angle = makeRow(controlType::kTypeAngle, 1, 0.0, 360.0, 0.0);
    EXPECT_EQ(
        realSequence(*angle, 8.0, 9), (std::vector<double> { 45, 90, 135, 180, 225, 270, 315, 360, 0 }));
    auto offset = makeRow(controlType::kTypeSlider, 1, 2.0, 3.0, 2.0);
    EXPECT_EQ(realSequence(*offset, 2.0, 3), (std::vector<double> { 2.5, 3.0, 2.0 }));
}

TEST(ValueRuleSweep, CheckboxToggles)
{
    auto fromOff = makeRow(controlType::kTypeCheckbox, 1, qi(0), qi(1), qi(0));
    EXPECT_EQ(integerSequence(*fromOff, 10.0, 3), (std::vector<qint64> { 1, 0, 1 }));
    auto fromOn = makeRow(controlType::kTypeCheckbox, 1, qi(0), qi(1), qi(1));
    EXPECT_EQ(integerSequence(*fromOn, 10.0, 2), (std::vector<qint64> { 0, 1 }));
}

TEST(ValueRuleRandom, EachKindMapsTheDrawItsOwnWay)
{
    auto variations = generateVariationsSettings();
    EXPECT_EQ(nextVariationValue(*variations, 10.0, fixed(0)), qi(1));
    EXPECT_EQ(nextVariationValue(*variations, 10.0, fixed(999)), qi(29970)); // 29970.001 truncated

    auto intSlider = makeRow(controlType::kTypeIntSlider, 0, qi(1), qi(1000), qi(1));
    EXPECT_EQ(nextVariationValue(*intSlider, 10.0, fixed(999)), qi(999)); // lround(999.001)
    auto halves = makeRow(controlType::kTypeIntSlider, 0, qi(0), qi(3), qi(0));
    EXPECT_EQ(nextVariationValue(*halves, 10.0, fixed(500)), qi(2)); // lround(1.5)
    auto truncating = makeRow(controlType::kTypeVariations, 0, qi(0), qi(3), qi(0));
    EXPECT_EQ(nextVariationValue(*truncating, 10.0, fixed(500)), qi(1)); // 1.5 truncated

    auto slider = makeRow(controlType::kTypeSlider, 0, 0.0, 2.0, 0.0);
    EXPECT_EQ(nextVariationValue(*slider, 10.0, fixed(250)).toDouble(), 0.5);
    EXPECT_TRUE(slider->holdsReal(key::STARTVALUE));
    auto angle = makeRow(controlType::kTypeAngle, 0, 10.0, 370.0, 0.0);
    EXPECT_EQ(nextVariationValue(*angle, 10.0, fixed(999)).toDouble(), 10.0 + 360.0 * 0.999);

    auto box = makeRow(controlType::kTypeCheckbox, 0, qi(0), qi(1), qi(1));
    EXPECT_EQ(nextVariationValue(*box, 10.0, fixed(500)), qi(0));
    EXPECT_EQ(box->integer(key::STARTVALUE), 0);
    EXPECT_EQ(nextVariationValue(*box, 10.0, fixed(501)), qi(1));
    EXPECT_EQ(box->integer(key::STARTVALUE), 1);
}

TEST(ValueRuleRandom, WithoutAnInjectedDrawValuesStayInRange)
{
    auto slider = makeRow(controlType::kTypeIntSlider, 0, qi(1), qi(1000), qi(1));
    for (int i = 0; i < 300; ++i) {
        const qint64 v = nextVariationValue(*slider, 10.0, RandomDraw()).toLongLong();
        ASSERT_GE(v, 1);
        ASSERT_LE(v, 999);
    }
}

TEST(ValueRuleRandom, SeededRunRandomRepeats)
{
    RunRandom a(42);
    RunRandom b(42);
    RandomDraw draw = a.drawFunction();
    for (int i = 0; i < 100; ++i) {
        const int u = draw();
        ASSERT_EQ(u, b.draw());
        ASSERT_GE(u, 0);
        ASSERT_LE(u, 999);
    }
}

TEST(ValueRuleLimits, ValuesBeyondTheIntegerRangeClamp)
{
    constexpr qint64 top = std::numeric_limits<qint64>::max();
    constexpr qint64 bottom = std::numeric_limits<qint64>::min();
    auto huge = makeRow(controlType::kTypeIntSlider, 0, -1e30, 1e30, qi(0));
    EXPECT_EQ(nextVariationValue(*huge, 10.0, fixed(999)), qi(top));
    EXPECT_EQ(nextVariationValue(*huge, 10.0, fixed(0)), qi(bottom));
    auto variations = makeRow(controlType::kTypeVariations, 0, -1e30, 1e30, qi(0));
    EXPECT_EQ(nextVariationValue(*variations, 10.0, fixed(999)), qi(top));

    // A step that would overflow saturates, passes the top and wraps.
    auto sweep = makeRow(controlType::kTypeIntSlider, 1, qi(0), qi(top - 1), qi(top - 2));
    EXPECT_EQ(nextVariationValue(*sweep, 0.5, fixed(0)), qi(0));
    auto steep = makeRow(controlType::kTypeIntSlider, 1, qi(0), qi(top), qi(5));
    EXPECT_EQ(nextVariationValue(*steep, 1e-300, fixed(0)), qi(top));
}
