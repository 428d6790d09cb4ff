#include "app/ui/AppDelegate.h"

namespace quillon {

AppDelegate::AppDelegate(QObject* parent)
    : QObject(parent)
    , m_window(new QMainWindow)
{
    m_window->setWindowTitle(QStringLiteral("Quillon"));
    m_window->resize(1000, 700);
}

AppDelegate::~AppDelegate()
{
    delete m_window;
}

} // namespace quillon
