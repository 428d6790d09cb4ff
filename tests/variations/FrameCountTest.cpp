// The frame-count text as the run reads it: an integer for the control file,
// a real for the value rule, both the way a text field reads its number.

#include "run/RunSettings.h"
#include "variations/ValueRule.h"

#include <gtest/gtest.h>

#include <limits>

using namespace quillon;

namespace {

RunSettings withFrames(const QString& text)
{
    RunSettings settings;
    settings.frameCountText = text;
    return settings;
}

constexpr double kInf = std::numeric_limits<double>::infinity();

} // namespace

TEST(FrameCount, ALeadingDecimalNumberIsReadAndTheRestIgnored)
{
    const struct {
        QString text;
        qint64 integer;
        std::optional<double> real;
    } rows[] = {
        { QStringLiteral("10"), 10, 10.0 },
        { QStringLiteral("  7"), 7, 7.0 },
        { QStringLiteral("\n+4"), 4, 4.0 },
        { QStringLiteral(" 12abc"), 12, 12.0 },
        { QStringLiteral("2.5"), 2, 2.5 },
        { QStringLiteral(".5"), 0, 0.5 },
        { QStringLiteral("5."), 5, 5.0 },
        { QStringLiteral("-3"), -3, -3.0 },
        { QStringLiteral("1e3"), 1, 1000.0 },
        { QStringLiteral("2e"), 2, 2.0 },
        { QStringLiteral("2e+"), 2, 2.0 },
        { QStringLiteral("3,5"), 3, 3.0 },
        { QStringLiteral("abc"), 0, std::nullopt },
        { QStringLiteral("-"), 0, std::nullopt },
        { QStringLiteral("."), 0, std::nullopt },
        { QString(), 0, std::nullopt },
        // strtod would read these as 16, infinity and not-a-number.
        { QStringLiteral("0x10"), 0, 0.0 },
        { QStringLiteral("inf"), 0, std::nullopt },
        { QStringLiteral("infinity"), 0, std::nullopt },
        { QStringLiteral("nan"), 0, std::nullopt },
        // Beyond the range: saturated.
        { QStringLiteral("99999999999999999999"), std::numeric_limits<qint64>::max(), 1e20 },
        { QStringLiteral("1e400"), 1, kInf },
        { QStringLiteral("-1e400"), -1, -kInf },
        { QStringLiteral("1e-400"), 1, 0.0 },
        { QStringLiteral("-0.0000001e-400"), 0, 0.0 },
        // Many digits before a negative exponent can still overflow.
        { QStringLiteral("1") + QString(400, QLatin1Char('0')) + QStringLiteral("e-5"),
            std::numeric_limits<qint64>::max(), kInf },
        { QStringLiteral("0.") + QString(400, QLatin1Char('0')) + QStringLiteral("1e5"), 0, 0.0 },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text.left(30).toStdString());
        EXPECT_EQ(withFrames(row.text).frameCount(), row.integer);
        EXPECT_EQ(withFrames(row.text).frameCountReal(), row.real);
    }
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
    EXPECT_FALSE(sweep(QStringLiteral("none")).isValid());
}
