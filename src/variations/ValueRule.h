#pragma once

#include "library/Record.h"

#include <QVariant>

#include <functional>
#include <optional>
#include <random>

namespace quillon {

// A uniform draw of an integer from 0 to 999 inclusive.
using RandomDraw = std::function<int()>;

// The random source of one run: seeded for reproducible runs, otherwise
// from the system's entropy.
class RunRandom final {
public:
    explicit RunRandom(std::optional<quint64> seed = std::nullopt);
    int draw();
    RandomDraw drawFunction();

private:
    std::mt19937_64 m_engine;
    std::uniform_int_distribution<int> m_thousand { 0, 999 };
};

// The value rule: advances the parameter by one task. Returns the new value
// (qint64 for integer kinds and check boxes, double for sliders and angles)
// and stores it as STARTVALUE, or returns an invalid QVariant and leaves the
// record unchanged (inactive, unknown mode, frame count not a positive
// number). `frames` is the frame-count text read as a real. A check box in
// toggle mode whose range is one state (MINVALUE = MAXVALUE) keeps that state.
QVariant nextVariationValue(Record& parameter, std::optional<double> frames, const RandomDraw& draw);

} // namespace quillon
