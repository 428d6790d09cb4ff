#include "app/ui/WheelGuard.h"

#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QEvent>
#include <QScrollBar>
#include <QWidget>

namespace quillon {

WheelGuard::WheelGuard(QObject* parent)
    : QObject(parent)
{
}

void WheelGuard::guard(QWidget* page)
{
    auto* guard = new WheelGuard(page);
    const auto take = [guard](QWidget* control) {
        control->setFocusPolicy(Qt::StrongFocus);
        control->installEventFilter(guard);
    };
    for (QAbstractSlider* control : page->findChildren<QAbstractSlider*>()) {
        // A scroll bar is how the page scrolls.
        if (!qobject_cast<QScrollBar*>(control))
            take(control);
    }
    for (QAbstractSpinBox* control : page->findChildren<QAbstractSpinBox*>())
        take(control);
    for (QComboBox* control : page->findChildren<QComboBox*>())
        take(control);
}

bool WheelGuard::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::Wheel)
        return false;
    const auto* control = qobject_cast<QWidget*>(watched);
    if (control && control->hasFocus())
        return false;
    // Unaccepted, the turn is offered to the parents: the page scrolls.
    event->ignore();
    return true;
}

} // namespace quillon
