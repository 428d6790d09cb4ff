#pragma once

#include "app/Preferences.h"
#include "app/ui/AppDelegate.h"
#include "app/ui/DialogSeams.h"
#include "app/ui/SettingsPane.h"
#include "chain/ui/ChainPanel.h"
#include "support/BatchFixtures.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include <memory>

namespace quillon::test {

// Handles events until `done` holds; the bound only ends a test that hangs.
template <class Done> bool waitFor(Done done)
{
    return QTest::qWaitFor(done, 60000);
}

// A main window on a preferences file in a temporary directory, with alerts
// recorded and URLs noted instead of shown. Not launched: each test decides
// what the store holds before applicationDidFinishLaunching.
class SettingsWindowTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        MessageBoxes::instance().setRecording(true);
        MessageBoxes::instance().clearShownMessages();
        FileDialogs::instance().clearNextFileName();
        m_delegate = newDelegate();
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

    std::unique_ptr<AppDelegate> newDelegate() const
    {
        auto delegate = std::make_unique<AppDelegate>();
        delegate->setPreferences(std::make_unique<Preferences>(storePath()));
        return delegate;
    }

    // A launch scans the Filters path; the window goes once the scan has
    // delivered, so no scan outlives the test.
    void closeDelegate()
    {
        if (!m_delegate)
            return;
        ChainPanel* chain = m_delegate->chainPanel();
        EXPECT_TRUE(waitFor([chain] { return !chain->scanning(); }));
        m_delegate.reset();
    }

    // A new window on the same preferences file, launched.
    void relaunch()
    {
        closeDelegate();
        m_delegate = newDelegate();
        m_delegate->applicationDidFinishLaunching();
    }

    QString storePath() const { return m_dir.filePath(QStringLiteral("prefs.conf")); }
    // What is on disk, read by a separate store object.
    std::unique_ptr<Preferences> savedStore() const { return std::make_unique<Preferences>(storePath()); }
    AppDelegate& delegate() { return *m_delegate; }
    Preferences& prefs() { return m_delegate->preferences(); }
    QStringList alerts() const { return MessageBoxes::instance().shownMessages(); }
    QString status() { return m_delegate->window()->statusBar()->currentMessage(); }

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
    void click(const char* button) { widget<QPushButton>(button)->click(); }

    // What the named controls show: a field's text (an empty field's
    // placeholder in brackets), "on" or "off" for a check box or radio
    // button, a pop-up's index, a slider's value.
    QStringList shown(std::initializer_list<const char*> names)
    {
        QStringList states;
        for (const char* name : names) {
            QWidget* control = widget<QWidget>(name);
            if (auto* text = qobject_cast<QLineEdit*>(control))
                states.append(text->text().isEmpty() && !text->placeholderText().isEmpty()
                        ? QStringLiteral("[%1]").arg(text->placeholderText())
                        : text->text());
            else if (auto* button = qobject_cast<QAbstractButton*>(control))
                states.append(button->isChecked() ? QStringLiteral("on") : QStringLiteral("off"));
            else if (auto* choice = qobject_cast<QComboBox*>(control))
                states.append(QString::number(choice->currentIndex()));
            else if (auto* slider = qobject_cast<QSlider*>(control))
                states.append(QString::number(slider->value()));
        }
        return states;
    }

    // Puts a text into a field and leaves it, as the user does.
    void typeInto(const char* name, const QString& text)
    {
        field(name)->setText(text);
        Q_EMIT field(name)->editingFinished();
    }

    // The user picks item `index` of a pop-up.
    static void choose(QComboBox* popup, int index)
    {
        popup->setCurrentIndex(index);
        Q_EMIT popup->activated(index);
    }

    // A locate button whose file dialog answers `path`.
    void locate(const char* button, const QString& path)
    {
        FileDialogs::instance().setNextFileName(path);
        click(button);
    }

    // Sample definitions in filters/ (read through the Filters locate
    // button), runs into out/.
    QString filtersDir() const { return m_dir.filePath(QStringLiteral("filters")); }
    QString outputDir() const { return m_dir.filePath(QStringLiteral("out")); }
    void writeLibrary(const QStringList& names)
    {
        ASSERT_TRUE(QDir().mkpath(filtersDir()) && QDir().mkpath(outputDir()));
        for (const QString& name : names)
            writeBatchDefinition(filtersDir(), name + QStringLiteral(".ffxml"), name, QStringLiteral("Ann"));
    }
    void readLibrary(size_t size)
    {
        locate("locateFiltersButton", filtersDir());
        ASSERT_TRUE(
            waitFor([this, size] { return delegate().library() && delegate().library()->size() == size; }));
    }

    // The library's first `count` filters added to the chain, then everything
    // else a run without input needs (stand-in tool, out/, PNG).
    void prepareRun(int count, const QString& frames, const QString& prefix)
    {
        readLibrary(2);
        auto* library = widget<QTableView>("addFilterList");
        for (int row = 0; row < count; ++row) {
            library->clearSelection();
            library->selectRow(row);
            delegate().chainPanel()->addFilterToListWithSender();
        }
        ASSERT_EQ(static_cast<int>(delegate().chain().size()), count);
        locate("locateRenderToolButton", QStringLiteral(QUILLON_STANDIN_PATH));
        locate("locateOutputButton", outputDir());
        choose(popup("sourceTypePopup"), 2);
        field("outputFilenamePrefixField")->setText(prefix);
        field("numberOfFramesField")->setText(frames);
        widget<QTabWidget>("formatTabControl")->setCurrentIndex(1); // PNG
    }

    QTemporaryDir m_dir;
    std::unique_ptr<AppDelegate> m_delegate;
    QList<QUrl> m_openedUrls;
};

} // namespace quillon::test
