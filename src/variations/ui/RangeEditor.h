#pragma once

#include <QWidget>

class QComboBox;
class QLineEdit;
class QSlider;

namespace quillon {

// One variation range: a mode pop-up (random or sweep) and a from and a to
// value, each a slider with a text field. The integer slider, real slider and
// variation number pages of the parameter editor are three of these; their
// children are named after the page (`fpIntSlider` + "FromSlider", ...).
//
// A slider move mirrors into its field, reports the edit, then bounds the
// opposite slider by the moved value. A field edit moves its slider (which
// clamps) and reports the edit. Values are always read from the sliders.
class RangeEditor final : public QWidget {
    Q_OBJECT
public:
    enum class Scale { Integer, Real };

    RangeEditor(const QString& namePrefix, const QString& sweepTitle, Scale scale, QWidget* parent = nullptr);

    QComboBox* modePopup() const { return m_mode; }
    QSlider* fromSlider() const { return m_fromSlider; }
    QSlider* toSlider() const { return m_toSlider; }

    // Fills the editor without reporting an edit. The sliders' bounds are the
    // caller's (setRange), set before.
    void setRange(double minimum, double maximum);
    void setValues(int mode, double from, double to);

    int mode() const;
    double from() const;
    double to() const;

Q_SIGNALS:
    // The user changed the mode, a slider or a field.
    void edited();

private:
    void sliderMoved(QSlider* moved, QLineEdit* mirror, QSlider* opposite, bool bindsMinimum);
    void fieldEdited(QLineEdit* field, QSlider* slider);
    int toSlider(double value) const;
    double fromSlider(const QSlider* slider) const;
    QString fieldText(double value) const;

    Scale m_scale;
    QComboBox* m_mode = nullptr;
    QSlider* m_fromSlider = nullptr;
    QSlider* m_toSlider = nullptr;
    QLineEdit* m_fromField = nullptr;
    QLineEdit* m_toField = nullptr;
};

} // namespace quillon
