#include "support/BatchFixtures.h"
#include "variations/ValueRule.h"

#include <gtest/gtest.h>

#include <limits>

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

// The values the rule gives `count` times over, each with its type; each
// must be stored back as the start value. Without a draw it must not draw.
QString values(const RecordPtr& row, double frames, int count, int draw)
{
    QString out;
    for (int i = 0; i < count; ++i) {
        const QVariant v = nextVariationValue(*row, frames, draw >= 0 ? fixed(draw) : RandomDraw([] {
            ADD_FAILURE() << "a sweep must not draw";
            return 0;
        }));
        EXPECT_EQ(row->value(key::STARTVALUE).typeId(), v.typeId());
        EXPECT_EQ(row->value(key::STARTVALUE), v);
        out += QStringLiteral(" %1 %2").arg(QString::fromLatin1(v.typeName()), QString::number(v.toDouble(), 'g', 17));
    }
    return out;
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

// Sweeps (no draw) keep the top then wrap, accumulating exactly; random
// values (a fixed draw) map the draw each kind its own way. The values are
// in golden/value-rules.txt (QUILLON_WRITE_GOLDEN=1 rewrites it).
TEST(ValueRule, SweepsAndDrawsGiveTheGoldenValues)
{
    using enum controlType;
    auto sweptVariations = generateVariationsSettings();
    sweptVariations->setInteger(key::POPSTATE, 1);
    const struct {
        const char* what;
        RecordPtr row;
        double frames;
        int count;
        int draw = -1;
    } rows[] = {
        { "int sweep 1..10 from 1 over 3", makeRow(kTypeIntSlider, 1, qi(1), qi(10), qi(1)), 3.0, 5 },
        { "int sweep 0..5 over 2, steps round half away from 0", makeRow(kTypeIntSlider, 1, qi(0), qi(5), qi(0)), 2.0, 3 },
        { "int sweep 0..-5 from -10 over 2", makeRow(kTypeIntSlider, 1, qi(0), qi(-5), qi(-10)), 2.0, 2 },
        { "variations sweep over 10 (step 2999.9 rounds to 3000)", sweptVariations, 10.0, 11 },
        { "real sweep 0..1 over 10", makeRow(kTypeSlider, 1, 0.0, 1.0, 0.0), 10.0, 12 },
        { "real sweep 0..1 over 4", makeRow(kTypeSlider, 1, 0.0, 1.0, 0.0), 4.0, 5 },
        { "angle sweep 0..360 over 8", makeRow(kTypeAngle, 1, 0.0, 360.0, 0.0), 8.0, 9 },
        { "real sweep 2..3 over 2", makeRow(kTypeSlider, 1, 2.0, 3.0, 2.0), 2.0, 3 },
        { "checkbox sweep from 0", makeRow(kTypeCheckbox, 1, qi(0), qi(1), qi(0)), 10.0, 3 },
        { "checkbox sweep from 1", makeRow(kTypeCheckbox, 1, qi(0), qi(1), qi(1)), 10.0, 2 },
        { "held: checkbox toggle over 1..1", makeRow(kTypeCheckbox, 1, qi(1), qi(1), qi(1)), 10.0, 3 },
        { "held: real sweep over 0.35..0.35", makeRow(kTypeSlider, 1, 0.35, 0.35, 0.35), 10.0, 3 },
        { "variations draw 0", generateVariationsSettings(), 10.0, 1, 0 },
        { "variations draw 999 (29970.001 truncated)", generateVariationsSettings(), 10.0, 1, 999 },
        { "int draw 999 in 1..1000 (999.001 rounded)", makeRow(kTypeIntSlider, 0, qi(1), qi(1000), qi(1)), 10.0, 1, 999 },
        { "int draw 500 in 0..3 (1.5 rounded)", makeRow(kTypeIntSlider, 0, qi(0), qi(3), qi(0)), 10.0, 1, 500 },
        { "variations draw 500 in 0..3 (1.5 truncated)", makeRow(kTypeVariations, 0, qi(0), qi(3), qi(0)), 10.0, 1, 500 },
        { "real draw 250 in 0..2", makeRow(kTypeSlider, 0, 0.0, 2.0, 0.0), 10.0, 1, 250 },
        { "angle draw 999 in 10..370", makeRow(kTypeAngle, 0, 10.0, 370.0, 0.0), 10.0, 1, 999 },
        { "checkbox draw 500 from 1", makeRow(kTypeCheckbox, 0, qi(0), qi(1), qi(1)), 10.0, 1, 500 },
        { "checkbox draw 501 from 0", makeRow(kTypeCheckbox, 0, qi(0), qi(1), qi(0)), 10.0, 1, 501 },
    };
    QString listing;
    for (const auto& row : rows)
        listing += QLatin1String(row.what) + QLatin1Char(':') + values(row.row, row.frames, row.count, row.draw) + QLatin1Char('\n');
    test::expectGoldenFile(QStringLiteral("variations/golden/value-rules.txt"), listing.toUtf8());
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
    // 2^63, one past the top, is the first double that clamps.
    Record past;
    past.setReal(key::MAXVALUE, 9223372036854775808.0);
    EXPECT_EQ(past.integer(key::MAXVALUE), top);
}
