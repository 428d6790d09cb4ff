#pragma once

#include <QObject>

class QWidget;

namespace quillon {

// Keeps the mouse wheel from editing controls the pointer merely passes over
// while a page scrolls: every slider, spin box and combo box below a page
// takes focus only by click or Tab, and a wheel turn reaches it only while it
// has the focus; otherwise the turn goes on to the scrolling page.
class WheelGuard final : public QObject {
    Q_OBJECT
public:
    // Guards the value controls below `page` (those there now); once per page.
    static void guard(QWidget* page);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit WheelGuard(QObject* parent);
};

} // namespace quillon
