#include "variations/ui/RangeEditor.h"

#include "run/RunSettings.h"
#include "variations/ui/ParamTableModel.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QRegularExpressionValidator>
#include <QSignalBlocker>
#include <QSlider>

#include <algorithm>
#include <cmath>
#include <limits>

namespace quillon {

namespace {

// Real values sit on the sliders in thousandths.
constexpr double kRealSliderScale = 1000.0;

int clampToInt(double value)
{
    if (!std::isfinite(value))
        return 0;
    return static_cast<int>(std::lround(
        std::clamp(value, double(std::numeric_limits<int>::min()), double(std::numeric_limits<int>::max()))));
}

} // namespace

RangeEditor::RangeEditor(const QString& namePrefix, const QString& sweepTitle, Scale scale, QWidget* parent)
    : QWidget(parent)
    , m_scale(scale)
    , m_mode(new QComboBox(this))
    , m_fromSlider(new QSlider(Qt::Horizontal, this))
    , m_toSlider(new QSlider(Qt::Horizontal, this))
    , m_fromField(new QLineEdit(this))
    , m_toField(new QLineEdit(this))
{
    m_mode->setObjectName(namePrefix + QStringLiteral("ModePopup"));
    m_mode->addItems({ tr("Random"), sweepTitle });
    m_fromSlider->setObjectName(namePrefix + QStringLiteral("FromSlider"));
    m_toSlider->setObjectName(namePrefix + QStringLiteral("ToSlider"));
    m_fromField->setObjectName(namePrefix + QStringLiteral("FromField"));
    m_toField->setObjectName(namePrefix + QStringLiteral("ToField"));
    m_fromSlider->setAccessibleName(tr("From"));
    m_toSlider->setAccessibleName(tr("To"));
    m_fromField->setAccessibleName(tr("From value"));
    m_toField->setAccessibleName(tr("To value"));
    // Only a number can be typed: whole for integers, decimal or with an
    // exponent for reals, as the fields show them.
    static const QRegularExpression integer(QStringLiteral("[-+]?[0-9]{0,10}"));
    static const QRegularExpression real(QStringLiteral("[-+]?[0-9]*[.]?[0-9]*([eE][-+]?[0-9]{0,3})?"));
    for (QLineEdit* field : { m_fromField, m_toField }) {
        field->setMaximumWidth(110);
        field->setValidator(new QRegularExpressionValidator(scale == Scale::Real ? real : integer, field));
    }

    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    const auto label = [this](const QString& text, QWidget* buddy) {
        auto* l = new QLabel(text, this);
        l->setBuddy(buddy);
        return l;
    };
    layout->addWidget(label(tr("&Mode:"), m_mode), 0, 0);
    layout->addWidget(m_mode, 0, 1, 1, 2);
    layout->addWidget(label(tr("&From:"), m_fromSlider), 1, 0);
    layout->addWidget(m_fromSlider, 1, 1);
    layout->addWidget(m_fromField, 1, 2);
    layout->addWidget(label(tr("&To:"), m_toSlider), 2, 0);
    layout->addWidget(m_toSlider, 2, 1);
    layout->addWidget(m_toField, 2, 2);
    layout->setRowStretch(3, 1);

    connect(m_mode, &QComboBox::currentIndexChanged, this, &RangeEditor::edited);
    connect(m_fromSlider, &QSlider::valueChanged, this,
        [this] { sliderMoved(m_fromSlider, m_fromField, m_toSlider, true); });
    connect(m_toSlider, &QSlider::valueChanged, this,
        [this] { sliderMoved(m_toSlider, m_toField, m_fromSlider, false); });
    connect(
        m_fromField, &QLineEdit::editingFinished, this, [this] { fieldEdited(m_fromField, m_fromSlider); });
    connect(m_toField, &QLineEdit::editingFinished, this, [this] { fieldEdited(m_toField, m_toSlider); });
}

int RangeEditor::toSlider(double value) const
{
    return clampToInt(m_scale == Scale::Real ? value * kRealSliderScale : value);
}

double RangeEditor::fromSlider(const QSlider* slider) const
{
    return m_scale == Scale::Real ? slider->value() / kRealSliderScale : slider->value();
}

QString RangeEditor::fieldText(double value) const
{
    return m_scale == Scale::Real ? fieldRealText(value) : QString::number(static_cast<qint64>(value));
}

void RangeEditor::setRange(double minimum, double maximum)
{
    for (QSlider* slider : { m_fromSlider, m_toSlider }) {
        const QSignalBlocker blocker(slider);
        slider->setRange(toSlider(minimum), toSlider(maximum));
    }
}

void RangeEditor::setValues(int mode, double from, double to)
{
    const QSignalBlocker blockMode(m_mode);
    const QSignalBlocker blockFrom(m_fromSlider);
    const QSignalBlocker blockTo(m_toSlider);
    m_mode->setCurrentIndex(mode);
    m_fromSlider->setValue(toSlider(from));
    m_fromField->setText(fieldText(from));
    m_toSlider->setValue(toSlider(to));
    m_toField->setText(fieldText(to));
}

int RangeEditor::mode() const
{
    return m_mode->currentIndex();
}

double RangeEditor::from() const
{
    return fromSlider(m_fromSlider);
}

double RangeEditor::to() const
{
    return fromSlider(m_toSlider);
}

void RangeEditor::sliderMoved(QSlider* moved, QLineEdit* mirror, QSlider* opposite, bool bindsMinimum)
{
    mirror->setText(fieldText(fromSlider(moved)));
    Q_EMIT edited();
    const QSignalBlocker blocker(opposite);
    if (bindsMinimum)
        opposite->setMinimum(moved->value());
    else
        opposite->setMaximum(moved->value());
}

void RangeEditor::fieldEdited(QLineEdit* field, QSlider* slider)
{
    // A real field is read as a single-precision number, as the tool keeps it.
    const double value = m_scale == Scale::Real
        ? static_cast<float>(leadingReal(field->text()).value_or(0.0))
        : static_cast<double>(leadingInteger(field->text()).value_or(0));
    {
        const QSignalBlocker blocker(slider);
        slider->setValue(toSlider(value));
    }
    // The field shows what the slider took, which is what is stored.
    field->setText(fieldText(fromSlider(slider)));
    Q_EMIT edited();
}

} // namespace quillon
