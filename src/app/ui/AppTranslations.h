#pragma once

#include <QLocale>

#include <memory>

class QTranslator;

namespace quillon {

// The window's texts in the user's language: Quillon's own translation from
// the resources (":/i18n/quillon_<language>.qm") and Qt's for its standard
// dialogs and buttons. Installed for as long as the object lives.
class AppTranslations final {
public:
    AppTranslations();
    ~AppTranslations();
    AppTranslations(const AppTranslations&) = delete;
    AppTranslations& operator=(const AppTranslations&) = delete;

    // Loads and installs the translations for `locale` (for the system's
    // language by default); false when Quillon has none for it, which
    // leaves the texts in English.
    bool load(const QLocale& locale = QLocale::system());

private:
    void remove();

    std::unique_ptr<QTranslator> m_quillon;
    std::unique_ptr<QTranslator> m_qt;
    bool m_installed = false;
};

} // namespace quillon
