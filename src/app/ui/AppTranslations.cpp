#include "app/ui/AppTranslations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

namespace quillon {

AppTranslations::AppTranslations()
    : m_quillon(std::make_unique<QTranslator>())
    , m_qt(std::make_unique<QTranslator>())
{
}

AppTranslations::~AppTranslations()
{
    remove();
}

void AppTranslations::remove()
{
    if (!m_installed)
        return;
    QCoreApplication::removeTranslator(m_quillon.get());
    QCoreApplication::removeTranslator(m_qt.get());
    m_installed = false;
}

bool AppTranslations::load(const QLocale& locale)
{
    remove();
    if (!m_quillon->load(locale, QStringLiteral("quillon"), QStringLiteral("_"), QStringLiteral(":/i18n")))
        return false;
    QCoreApplication::installTranslator(m_quillon.get());
    // Qt's own texts (Yes, No, Cancel, the file dialog) follow when installed.
    if (m_qt->load(locale, QStringLiteral("qtbase"), QStringLiteral("_"),
            QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(m_qt.get());
    m_installed = true;
    return true;
}

} // namespace quillon
