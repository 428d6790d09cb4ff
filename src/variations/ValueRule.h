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

// The value rule over one parameter record, its keys read once: a run's
// planning steps it task by task without looking the record up each time,
// then stores where it ended. An inactive parameter, an unknown mode, an
// unknown kind or a frame count that is not a positive number never varies.
class VariationCursor final {
public:
    VariationCursor(const Record& parameter, std::optional<double> frames);

    bool varies() const { return m_varies; }
    // The parameter's value for the next task (see nextVariationValue), or an
    // invalid QVariant when it does not vary.
    QVariant next(const RandomDraw& draw);
    // Leaves STARTVALUE where the last next() left it; does nothing before
    // the first.
    void storeInto(Record& parameter) const;

private:
    bool m_varies = false;
    bool m_advanced = false;
    bool m_sweep = false;
    controlType m_kind = controlType::kTypeSlider;
    double m_fromReal = 0.0;
    double m_toReal = 0.0;
    double m_step = 0.0;
    qint64 m_from = 0;
    qint64 m_to = 0;
    qint64 m_integer = 0;
    double m_real = 0.0;
};

// The value rule: advances the parameter by one task. Returns the new value
// (qint64 for integer kinds and check boxes, double for sliders and angles)
// and stores it as STARTVALUE, or returns an invalid QVariant and leaves the
// record unchanged (inactive, unknown mode, frame count not a positive
// number). `frames` is the frame-count text read as a real. A check box in
// toggle mode whose range is one state (MINVALUE = MAXVALUE) keeps that state.
QVariant nextVariationValue(Record& parameter, std::optional<double> frames, const RandomDraw& draw);

} // namespace quillon
