// The frame-count text as the run reads it: an integer for the control file,
// a real for the value rule, both the way a text field reads its number.

#include "app/RunSettings.h"
#include "variations/ValueRule.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace quillon;

namespace {

RunSettings withFrames(const QString& text)
{
    RunSettings settings;
    settings.frameCountText = text;
    return settings;
}

} // namespace

TEST(FrameCount, ALeadingNumberIsReadAndTheRestIgnored)
{
    EXPECT_EQ(withFrames(QStringLiteral("10")).frameCount(), 10);
    EXPECT_EQ(withFrames(QStringLiteral("  7")).frameCount(), 7);
    EXPECT_EQ(withFrames(QStringLiteral("\n+4")).frameCount(), 4);
    EXPECT_EQ(withFrames(QStringLiteral("12abc")).frameCount(), 12);
    EXPECT_EQ(withFrames(QStringLiteral("2.5")).frameCount(), 2);
    EXPECT_EQ(withFrames(QStringLiteral("1e3")).frameCount(), 1);
    EXPECT_EQ(withFrames(QStringLiteral("-3")).frameCount(), -3);
    EXPECT_EQ(withFrames(QStringLiteral("abc")).frameCount(), 0);
    EXPECT_EQ(withFrames(QString()).frameCount(), 0);

    EXPECT_EQ(withFrames(QStringLiteral("10")).frameCountReal(), 10.0);
    EXPECT_EQ(withFrames(QStringLiteral(" 12abc")).frameCountReal(), 12.0);
    EXPECT_EQ(withFrames(QStringLiteral("2.5")).frameCountReal(), 2.5);
    EXPECT_EQ(withFrames(QStringLiteral(".5")).frameCountReal(), 0.5);
    EXPECT_EQ(withFrames(QStringLiteral("5.")).frameCountReal(), 5.0);
    EXPECT_EQ(withFrames(QStringLiteral("+4")).frameCountReal(), 4.0);
    EXPECT_EQ(withFrames(QStringLiteral("-3")).frameCountReal(), -3.0);
    EXPECT_EQ(withFrames(QStringLiteral("1e3")).frameCountReal(), 1000.0);
    EXPECT_EQ(withFrames(QStringLiteral("2e")).frameCountReal(), 2.0);
    EXPECT_EQ(withFrames(QStringLiteral("2e+")).frameCountReal(), 2.0);
    EXPECT_EQ(withFrames(QStringLiteral("3,5")).frameCountReal(), 3.0);
    EXPECT_FALSE(withFrames(QStringLiteral("abc")).frameCountReal());
    EXPECT_FALSE(withFrames(QStringLiteral("-")).frameCountReal());
    EXPECT_FALSE(withFrames(QStringLiteral(".")).frameCountReal());
    EXPECT_FALSE(withFrames(QString()).frameCountReal());
}

TEST(FrameCount, OnlyDecimalNumbersCount)
{
    // strtod would read these as 16, infinity and not-a-number; as decimal
    // text "0x10" is 0 followed by letters, the others no number at all.
    EXPECT_EQ(withFrames(QStringLiteral("0x10")).frameCount(), 0);
    EXPECT_EQ(withFrames(QStringLiteral("0x10")).frameCountReal(), 0.0);
    EXPECT_FALSE(withFrames(QStringLiteral("inf")).frameCountReal());
    EXPECT_FALSE(withFrames(QStringLiteral("infinity")).frameCountReal());
    EXPECT_FALSE(withFrames(QStringLiteral("nan")).frameCountReal());
    EXPECT_EQ(withFrames(QStringLiteral("inf")).frameCount(), 0);
}

TEST(FrameCount, NumbersBeyondTheRangeSaturate)
{
    EXPECT_EQ(
        withFrames(QStringLiteral("99999999999999999999")).frameCount(), std::numeric_limits<qint64>::max());
    EXPECT_EQ(withFrames(QStringLiteral("1e400")).frameCountReal(), std::numeric_limits<double>::infinity());
    EXPECT_EQ(
        withFrames(QStringLiteral("-1e400")).frameCountReal(), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(withFrames(QStringLiteral("1e-400")).frameCountReal(), 0.0);
    EXPECT_EQ(withFrames(QStringLiteral("-0.0000001e-400")).frameCountReal(), 0.0);
    // Many digits before a negative exponent can still overflow.
    EXPECT_EQ(withFrames(QStringLiteral("1") + QString(400, QLatin1Char('0')) + QStringLiteral("e-5"))
                  .frameCountReal(),
        std::numeric_limits<double>::infinity());
    EXPECT_EQ(withFrames(QStringLiteral("0.") + QString(400, QLatin1Char('0')) + QStringLiteral("1e5"))
                  .frameCountReal(),
        0.0);
}

TEST(FrameCount, TheValueRuleSweepsOverTheRealCount)
{
    const auto sweep = [](const QString& frames) {
        auto row = makeParameterRecord(controlType::kTypeSlider, QStringLiteral("p"));
        row->setInteger(key::ACTIVE, 1);
        row->setInteger(key::POPSTATE, 1);
        return nextVariationValue(*row, withFrames(frames).frameCountReal(), [] { return 0; });
    };
    EXPECT_DOUBLE_EQ(sweep(QStringLiteral("4")).toDouble(), 0.25);
    EXPECT_DOUBLE_EQ(sweep(QStringLiteral("2.5")).toDouble(), 0.4);
    EXPECT_DOUBLE_EQ(sweep(QStringLiteral("8 frames")).toDouble(), 0.125);
    // No positive number of frames: no value.
    EXPECT_FALSE(sweep(QStringLiteral("0x10")).isValid());
    EXPECT_FALSE(sweep(QStringLiteral("inf")).isValid());
    EXPECT_FALSE(sweep(QStringLiteral("none")).isValid());
    EXPECT_FALSE(sweep(QStringLiteral("-2")).isValid());
}
