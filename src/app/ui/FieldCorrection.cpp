#include "app/ui/FieldCorrection.h"

#include "run/RunSettings.h"

#include <QLineEdit>
#include <QRegularExpression>
#include <QRegularExpressionValidator>

#include <algorithm>

namespace quillon {

void acceptDigitsOnly(QLineEdit* field)
{
    static const QRegularExpression digits(QStringLiteral("[0-9]{0,9}"));
    field->setValidator(new QRegularExpressionValidator(digits, field));
}

bool correctIntegerField(QLineEdit* field, const IntegerFieldRule& rule)
{
    const std::optional<qint64> typed = leadingInteger(field->text());
    qint64 value = typed ? *typed : (rule.fallback ? rule.fallback() : rule.minimum);
    const qint64 maximum = rule.maximum ? rule.maximum() : value;
    value = std::clamp(value, rule.minimum, std::max(rule.minimum, maximum));
    const QString text = QString::number(value);
    if (field->text() == text)
        return false;
    field->setText(text);
    return true;
}

} // namespace quillon
