#pragma once

#include <QtGlobal>

#include <functional>

class QLineEdit;

namespace quillon {

// A whole-number field: only digits can be typed, and when editing finishes
// the text becomes the number the run will use, within [minimum, maximum()]
// (an empty or unreadable text becomes `fallback()`), so the field always
// shows what is stored. The bounds are asked on each edit.
struct IntegerFieldRule {
    qint64 minimum = 0;
    std::function<qint64()> maximum;
    std::function<qint64()> fallback;
};

// Allows only digits to be typed into `field`.
void acceptDigitsOnly(QLineEdit* field);
// Rewrites the field's text by the rule; true when it changed.
bool correctIntegerField(QLineEdit* field, const IntegerFieldRule& rule);

} // namespace quillon
