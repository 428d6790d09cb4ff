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

// Runs a sweep; every value must come with the row's type and be stored back
// as the start value.
template <typename T> void expectSweep(const RecordPtr& row, double frames, const std::vector<T>& expected)
{
    for (size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(i);
        const QVariant v = nextVariationValue(*row, frames, [] {
            ADD_FAILURE() << "a sweep must not draw";
            return 0;
        });
        EXPECT_EQ(v.typeId(), QMetaType::fromType<T>().id());
        EXPECT_EQ(v.value<T>(), expected[i]);
        EXPECT_EQ(row->value(key::STARTVALUE).typeId(), v.typeId());
        EXPECT_EQ(row->value(key::STARTVALUE), v);
    }
}

} // namespace

TEST(ValueRuleNoValue, InactiveUnknownModeAndBadFrameCountsLeaveTheRecordAlone)
{
    for (qint64 mode : { 0, 1 }) {
        auto row = makeRow(controlType::kTypeIntSlider, mode, qi(1), qi(10), qi(4));
        for (qint64 active : { 0, 2, -1 }) {
            if (active < 0)
                row->remove(key::ACTIVE);
            else
                row->setInteger(key::ACTIVE, active);
            EXPECT_FALSE(nextVariationValue(*row, 10.0, fixed(500)).isValid()) << mode << " " << active;
        }
        EXPECT_EQ(row->integer(key::STARTVALUE), 4);
    }
    auto row = makeRow(controlType::kTypeSlider, 2, 0.0, 1.0, 0.3);
    EXPECT_FALSE(nextVariationValue(*row, 10.0, fixed(500)).isValid());
    row->setInteger(key::POPSTATE, 1);
    for (const std::optional<double> frames :
        { std::optional<double>(0.0), std::optional<double>(-3.0), std::optional<double>() })
        EXPECT_FALSE(nextVariationValue(*row, frames, fixed(500)).isValid());
    row->remove(key::CONTROL_TYPE);
    EXPECT_FALSE(nextVariationValue(*row, 10.0, fixed(500)).isValid());
    EXPECT_EQ(row->real(key::STARTVALUE), 0.3);
}

TEST(ValueRuleSweep, IntegerSweepsKeepTheTopThenWrap)
{
    expectSweep<qint64>(
        makeRow(controlType::kTypeIntSlider, 1, qi(1), qi(10), qi(1)), 3.0, { 4, 7, 10, 1, 4 });
    // Steps round half away from zero: d = 2.5 gives 3, d = -2.5 gives -3.
    expectSweep<qint64>(makeRow(controlType::kTypeIntSlider, 1, qi(0), qi(5), qi(0)), 2.0, { 3, 0, 3 });
    expectSweep<qint64>(makeRow(controlType::kTypeIntSlider, 1, qi(0), qi(-5), qi(-10)), 2.0, { -13, -16 });
    // Variation number: d = 29999 / 10 = 2999.9, rounded 3000; 30001 passes 30000 and wraps.
    auto variations = generateVariationsSettings();
    variations->setInteger(key::POPSTATE, 1);
    expectSweep<qint64>(
        variations, 10.0, { 3001, 6001, 9001, 12001, 15001, 18001, 21001, 24001, 27001, 1, 3001 });
}

TEST(ValueRuleSweep, RealSweepsAccumulateExactlyKeepAnExactTopThenWrap)
{
    std::vector<double> tenths;
    for (double v = 0.0; tenths.size() < 12;) {
        v += 0.1;
        if (v > 1.0)
            v = 0.0;
        tenths.push_back(v);
    }
    expectSweep(makeRow(controlType::kTypeSlider, 1, 0.0, 1.0, 0.0), 10.0, tenths);
    expectSweep<double>(
        makeRow(controlType::kTypeSlider, 1, 0.0, 1.0, 0.0), 4.0, { 0.25, 0.5, 0.75, 1.0, 0.0 });
    expectSweep<double>(makeRow(controlType::kTypeAngle, 1, 0.0, 360.0, 0.0), 8.0,
        { 45, 90, 135, 180, 225, 270, 315, 360, 0 });
    expectSweep<double>(makeRow(controlType::kTypeSlider, 1, 2.0, 3.0, 2.0), 2.0, { 2.5, 3.0, 2.0 });
}

TEST(ValueRuleSweep, CheckboxToggles)
{
    expectSweep<qint64>(makeRow(controlType::kTypeCheckbox, 1, qi(0), qi(1), qi(0)), 10.0, { 1, 0, 1 });
    expectSweep<qint64>(makeRow(controlType::kTypeCheckbox, 1, qi(0), qi(1), qi(1)), 10.0, { 0, 1 });
}

TEST(ValueRuleRandom, EachKindMapsTheDrawItsOwnWay)
{
    const struct {
        RecordPtr row;
        int draw;
        QVariant expected;
    } rows[] = {
        { generateVariationsSettings(), 0, qi(1) },
        { generateVariationsSettings(), 999, qi(29970) }, // 29970.001 truncated
        { makeRow(controlType::kTypeIntSlider, 0, qi(1), qi(1000), qi(1)), 999, qi(999) }, // lround(999.001)
        { makeRow(controlType::kTypeIntSlider, 0, qi(0), qi(3), qi(0)), 500, qi(2) }, // lround(1.5)
        { makeRow(controlType::kTypeVariations, 0, qi(0), qi(3), qi(0)), 500, qi(1) }, // 1.5 truncated
        { makeRow(controlType::kTypeSlider, 0, 0.0, 2.0, 0.0), 250, 0.5 },
        { makeRow(controlType::kTypeAngle, 0, 10.0, 370.0, 0.0), 999, 10.0 + 360.0 * 0.999 },
        { makeRow(controlType::kTypeCheckbox, 0, qi(0), qi(1), qi(1)), 500, qi(0) },
        { makeRow(controlType::kTypeCheckbox, 0, qi(0), qi(1), qi(0)), 501, qi(1) },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.expected.toString().toStdString());
        const QVariant v = nextVariationValue(*row.row, 10.0, fixed(row.draw));
        EXPECT_EQ(v.typeId(), row.expected.typeId());
        EXPECT_EQ(v, row.expected);
        EXPECT_EQ(row.row->value(key::STARTVALUE).typeId(), v.typeId());
        EXPECT_EQ(row.row->value(key::STARTVALUE), v);
    }
}

TEST(ValueRuleRandom, WithoutAnInjectedDrawValuesStayInRangeAndASeedRepeats)
{
    auto slider = makeRow(controlType::kTypeIntSlider, 0, qi(1), qi(1000), qi(1));
    RunRandom a(42);
    RunRandom b(42);
    const RandomDraw draw = a.drawFunction();
    for (int i = 0; i < 300; ++i) {
        const qint64 v = nextVariationValue(*slider, 10.0, RandomDraw()).toLongLong();
        ASSERT_TRUE(v >= 1 && v <= 999) << v;
        const int u = draw();
        ASSERT_EQ(u, b.draw());
        ASSERT_TRUE(u >= 0 && u <= 999) << u;
    }
}

TEST(ValueRuleLimits, ValuesBeyondTheIntegerRangeClamp)
{
    constexpr qint64 top = std::numeric_limits<qint64>::max();
    auto huge = makeRow(controlType::kTypeIntSlider, 0, -1e30, 1e30, qi(0));
    EXPECT_EQ(nextVariationValue(*huge, 10.0, fixed(999)), qi(top));
    EXPECT_EQ(nextVariationValue(*huge, 10.0, fixed(0)), qi(std::numeric_limits<qint64>::min()));
    auto variations = makeRow(controlType::kTypeVariations, 0, -1e30, 1e30, qi(0));
    EXPECT_EQ(nextVariationValue(*variations, 10.0, fixed(999)), qi(top));

    // A step that would overflow saturates, passes the top and wraps.
    auto sweep = makeRow(controlType::kTypeIntSlider, 1, qi(0), qi(top - 1), qi(top - 2));
    EXPECT_EQ(nextVariationValue(*sweep, 0.5, fixed(0)), qi(0));
    auto steep = makeRow(controlType::kTypeIntSlider, 1, qi(0), qi(top), qi(5));
    EXPECT_EQ(nextVariationValue(*steep, 1e-300, fixed(0)), qi(top));
}
