#include "variations/ValueRule.h"

#include <cmath>
#include <limits>

namespace quillon {

namespace {

constexpr qint64 kMin = std::numeric_limits<qint64>::min();
constexpr qint64 kMax = std::numeric_limits<qint64>::max();

// double -> qint64 with truncation toward zero; out-of-range values clamp
// and NaN gives 0, so no conversion is ever undefined.
qint64 truncateClamped(double value)
{
    if (std::isnan(value))
        return 0;
    // 2^63 is exactly representable; anything at or beyond it does not fit.
    constexpr double limit = 9223372036854775808.0;
    if (value >= limit)
        return kMax;
    if (value < -limit)
        return kMin;
    return static_cast<qint64>(value);
}

// lround semantics (halves away from zero) without lround's unspecified
// result outside the range of long.
qint64 roundClamped(double value)
{
    if (std::isnan(value))
        return 0;
    return truncateClamped(std::round(value));
}

qint64 addSaturated(qint64 a, qint64 b)
{
    qint64 sum = 0;
    if (__builtin_add_overflow(a, b, &sum))
        return b > 0 ? kMax : kMin;
    return sum;
}

int drawThousandth(const RandomDraw& draw)
{
    int u = 0;
    if (draw) {
        u = draw();
    } else {
        // One generator per thread: the worker of a run keeps drawing from it.
        thread_local RunRandom fallback;
        u = fallback.draw();
    }
    return u < 0 ? 0 : (u > 999 ? 999 : u);
}

} // namespace

RunRandom::RunRandom(std::optional<quint64> seed)
{
    if (seed) {
        m_engine.seed(*seed);
    } else {
        std::random_device device;
        std::seed_seq sequence { device(), device(), device(), device() };
        m_engine.seed(sequence);
    }
}

int RunRandom::draw()
{
    return m_thousand(m_engine);
}

RandomDraw RunRandom::drawFunction()
{
    return [this] { return draw(); };
}

QVariant nextVariationValue(Record& parameter, std::optional<double> frames, const RandomDraw& draw)
{
    if (!parameter.contains(key::ACTIVE) || parameter.integer(key::ACTIVE, 0) != 1)
        return {};
    const std::optional<controlType> kind = parameter.type();
    if (!kind)
        return {};
    if (!frames || !(*frames > 0.0))
        return {};
    const qint64 mode = parameter.integer(key::POPSTATE, -1);
    if (mode != 0 && mode != 1)
        return {};

    const double fromReal = parameter.real(key::MINVALUE);
    const double toReal = parameter.real(key::MAXVALUE);
    const double d = (toReal - fromReal) / *frames;

    switch (*kind) {
    case controlType::kTypeVariations:
    case controlType::kTypeIntSlider: {
        const qint64 from = parameter.integer(key::MINVALUE);
        const qint64 to = parameter.integer(key::MAXVALUE);
        qint64 v = 0;
        if (mode == 1) {
            v = addSaturated(parameter.integer(key::STARTVALUE), roundClamped(d));
            if (v > to)
                v = from;
        } else {
            const double r = drawThousandth(draw) / 1000.0;
            const double raw = fromReal + (toReal - fromReal) * r;
            v = *kind == controlType::kTypeVariations ? truncateClamped(raw) : roundClamped(raw);
        }
        parameter.setInteger(key::STARTVALUE, v);
        return QVariant::fromValue<qint64>(v);
    }
    case controlType::kTypeSlider:
    case controlType::kTypeAngle: {
        double v = 0.0;
        if (mode == 1) {
            v = parameter.real(key::STARTVALUE) + d;
            if (v > toReal)
                v = fromReal;
        } else {
            const double r = drawThousandth(draw) / 1000.0;
            v = fromReal + (toReal - fromReal) * r;
        }
        parameter.setReal(key::STARTVALUE, v);
        return QVariant::fromValue<double>(v);
    }
    case controlType::kTypeCheckbox: {
        qint64 v = 0;
        // A toggle over a range of one state holds that state, as a sweep
        // over one value does: how a chain keeps the look of one output.
        if (mode == 1 && parameter.integer(key::MINVALUE) == parameter.integer(key::MAXVALUE))
            v = parameter.integer(key::MINVALUE) > 0 ? 1 : 0;
        else if (mode == 1)
            v = parameter.integer(key::STARTVALUE) < 1 ? 1 : 0;
        else
            v = drawThousandth(draw) / 1000.0 > 0.5 ? 1 : 0;
        parameter.setInteger(key::STARTVALUE, v);
        return QVariant::fromValue<qint64>(v);
    }
    }
    return {};
}

} // namespace quillon
