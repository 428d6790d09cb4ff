#pragma once

#include "app/Preferences.h"
#include "app/ui/AppDelegate.h"
#include "app/ui/DialogSeams.h"
#include "app/ui/SettingsPane.h"
#include "chain/ui/ChainPanel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QMainWindow>
#include <QRadioButton>
#include <QSlider>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include <memory>

namespace quillon::test {

// A main window on a preferences file in a temporary directory, with alerts
// recorded instead of shown. Not launched: each test decides what the store
// holds before applicationDidFinishLaunching.
class SettingsWindowTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        MessageBoxes::instance().setRecording(true);
        MessageBoxes::instance().clearShownMessages();
        FileDialogs::instance().clearNextFileName();
        m_delegate = std::make_unique<AppDelegate>();
        m_delegate->setPreferences(std::make_unique<Preferences>(storePath()));
        m_delegate->setUrlOpener([this](const QUrl& url) {
            m_openedUrls.append(url);
            return true;
        });
    }

    void TearDown() override
    {
        closeDelegate();
        FileDialogs::instance().clearNextFileName();
        MessageBoxes::instance().clearShownMessages();
        MessageBoxes::instance().setRecording(false);
    }

    // A launch scans the Filters path; the window goes once the scan has
    // delivered, so no scan outlives the test.
    void closeDelegate()
    {
        if (!m_delegate)
            return;
        ChainPanel* chain = m_delegate->chainPanel();
        (void)QTest::qWaitFor([chain] { return !chain->scanning(); }, 10000);
        m_delegate.reset();
    }

    QString storePath() const { return m_dir.filePath(QStringLiteral("prefs.conf")); }
    // What is on disk, read by a separate store object.
    std::unique_ptr<Preferences> savedStore() const { return std::make_unique<Preferences>(storePath()); }

    AppDelegate& delegate() { return *m_delegate; }
    // A widget of the window by its object name; fails the test when absent.
    template <class T> T* widget(const char* name)
    {
        T* found = m_delegate->window()->findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    QLineEdit* field(const char* name) { return widget<QLineEdit>(name); }
    QCheckBox* box(const char* name) { return widget<QCheckBox>(name); }
    QRadioButton* radio(const char* name) { return widget<QRadioButton>(name); }
    QComboBox* popup(const char* name) { return widget<QComboBox>(name); }
    Preferences& prefs() { return m_delegate->preferences(); }

    // Puts a text into a field and leaves it, as the user does.
    void typeInto(const char* name, const QString& text)
    {
        field(name)->setText(text);
        Q_EMIT field(name)->editingFinished();
    }

    // A new window on the same preferences file, launched.
    void relaunch()
    {
        closeDelegate();
        m_delegate = std::make_unique<AppDelegate>();
        m_delegate->setPreferences(std::make_unique<Preferences>(storePath()));
        m_delegate->applicationDidFinishLaunching();
    }

    // The user picks item `index` of a pop-up.
    static void choose(QComboBox* popup, int index)
    {
        popup->setCurrentIndex(index);
        Q_EMIT popup->activated(index);
    }

    QStringList alerts() const { return MessageBoxes::instance().shownMessages(); }

    QTemporaryDir m_dir;
    std::unique_ptr<AppDelegate> m_delegate;
    QList<QUrl> m_openedUrls;
};

} // namespace quillon::test
