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

VariationCursor::VariationCursor(const Record& parameter, std::optional<double> frames)
{
    if (!parameter.contains(key::ACTIVE) || parameter.integer(key::ACTIVE, 0) != 1)
        return;
    const std::optional<controlType> kind = parameter.type();
    if (!kind)
        return;
    if (!frames || !(*frames > 0.0))
        return;
    const qint64 mode = parameter.integer(key::POPSTATE, -1);
    if (mode != 0 && mode != 1)
        return;
    m_varies = true;
    m_sweep = mode == 1;
    m_kind = *kind;
    m_fromReal = parameter.real(key::MINVALUE);
    m_toReal = parameter.real(key::MAXVALUE);
    m_step = (m_toReal - m_fromReal) / *frames;
    m_from = parameter.integer(key::MINVALUE);
    m_to = parameter.integer(key::MAXVALUE);
    if (isRealKind(m_kind))
        m_real = parameter.real(key::STARTVALUE);
    else
        m_integer = parameter.integer(key::STARTVALUE);
}

QVariant VariationCursor::next(const RandomDraw& draw)
{
    if (!m_varies)
        return {};
    m_advanced = true;
    switch (m_kind) {
    case controlType::kTypeVariations:
    case controlType::kTypeIntSlider:
        if (m_sweep) {
            m_integer = addSaturated(m_integer, roundClamped(m_step));
            if (m_integer > m_to)
                m_integer = m_from;
        } else {
            const double r = drawThousandth(draw) / 1000.0;
            const double raw = m_fromReal + (m_toReal - m_fromReal) * r;
            m_integer = m_kind == controlType::kTypeVariations ? truncateClamped(raw) : roundClamped(raw);
        }
        return QVariant::fromValue<qint64>(m_integer);
    case controlType::kTypeSlider:
    case controlType::kTypeAngle:
        if (m_sweep) {
            m_real += m_step;
            if (m_real > m_toReal)
                m_real = m_fromReal;
        } else {
            const double r = drawThousandth(draw) / 1000.0;
            m_real = m_fromReal + (m_toReal - m_fromReal) * r;
        }
        return QVariant::fromValue<double>(m_real);
    case controlType::kTypeCheckbox:
        // A toggle over a range of one state holds that state, as a sweep
        // over one value does: how a chain keeps the look of one output.
        if (m_sweep && m_from == m_to)
            m_integer = m_from > 0 ? 1 : 0;
        else if (m_sweep)
            m_integer = m_integer < 1 ? 1 : 0;
        else
            m_integer = drawThousandth(draw) / 1000.0 > 0.5 ? 1 : 0;
        return QVariant::fromValue<qint64>(m_integer);
    }
    return {};
}

void VariationCursor::storeInto(Record& parameter) const
{
    if (!m_advanced)
        return;
    if (isRealKind(m_kind))
        parameter.setReal(key::STARTVALUE, m_real);
    else
        parameter.setInteger(key::STARTVALUE, m_integer);
}

QVariant nextVariationValue(Record& parameter, std::optional<double> frames, const RandomDraw& draw)
{
    VariationCursor cursor(parameter, frames);
    QVariant value = cursor.next(draw);
    cursor.storeInto(parameter);
    return value;
}

} // namespace quillon
