// The window's real dialogs and alerts (not the answers tests give in
// advance).

#include "support/WindowFixture.h"

#include "app/ui/ProgressSheet.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QTimer>

#include <functional>

namespace quillon::test {
namespace {

class WindowDialogsTest : public SettingsWindowTest {
protected:
    void SetUp() override
    {
        SettingsWindowTest::SetUp();
        MessageBoxes::instance().setRecording(false);
        delegate().applicationDidFinishLaunching();
        delegate().window()->show();
    }

    // Clicks `button`, closes the window-modal file dialog it opens as
    // `finish` does and waits until it is gone.
    void answerDialog(const char* button, const std::function<void(QFileDialog*)>& finish)
    {
        click(button);
        QFileDialog* dialog = delegate().window()->findChild<QFileDialog*>();
        ASSERT_NE(dialog, nullptr) << button;
        EXPECT_TRUE(dialog->isVisible() && dialog->windowModality() == Qt::WindowModal
            && dialog->parentWidget() == delegate().window())
            << button;
        finish(dialog);
        EXPECT_TRUE(waitFor([this] { return delegate().window()->findChild<QFileDialog*>() == nullptr; }));
    }

    static std::function<void(QFileDialog*)> acceptIn(const QString& dir, const QString& file = {})
    {
        return [dir, file](QFileDialog* d) {
            d->setDirectory(dir);
            if (!file.isEmpty())
                d->selectFile(file);
            static_cast<QDialog*>(d)->accept(); // the confirming button
        };
    }
};

TEST_F(WindowDialogsTest, EachFileDialogHasItsModePromptAndTitle)
{
    choose(popup("sourceTypePopup"), 0);
    const struct {
        const char* button;
        QFileDialog::FileMode mode;
        QString accept;
        QString title;
        bool readOnly; // no folder can be made from it
    } dialogs[] = {
        { "locateRenderToolButton", QFileDialog::ExistingFile, "Locate it",
            "Quillon needs you to locate to FilterForge Batch tool", true },
        { "locateFiltersButton", QFileDialog::Directory, "Locate it",
            "Quillon needs you to locate the Filters directory", true },
        { "locateOutputButton", QFileDialog::Directory, "This one",
            "Quillon needs you to locate or create the output directory", false },
        { "locateSourceButton", QFileDialog::ExistingFile, "This one",
            "Quillon needs you to locate an input image", true },
        { "saveFilterChainButton", QFileDialog::AnyFile, "Save", "Save filter chain", false },
        { "loadFilterChainButton", QFileDialog::ExistingFile, "Select Chain",
            "Quillon needs you to locate a saved filter chain", true },
    };
    for (const auto& d : dialogs) {
        answerDialog(d.button, [&d](QFileDialog* dialog) {
            EXPECT_EQ(dialog->fileMode(), d.mode) << d.button;
            EXPECT_EQ(dialog->labelText(QFileDialog::Accept), d.accept) << d.button;
            EXPECT_EQ(dialog->windowTitle(), d.title) << d.button;
            EXPECT_EQ(dialog->testOption(QFileDialog::ReadOnly), d.readOnly) << d.button;
            dialog->reject();
        });
    }
    // Cancelled, each changed nothing.
    EXPECT_EQ(shown({ "sourcePathField" }), QStringList { "[not set]" });
    EXPECT_EQ(savedStore()->stringForKey(pref::FILTERS_PATH), QString());
}

TEST_F(WindowDialogsTest, WhatADialogAcceptsBecomesTheSettingOrTheChainFile)
{
    const QString tool = QStringLiteral(QUILLON_STANDIN_PATH);
    answerDialog("locateRenderToolButton", acceptIn(QFileInfo(tool).path(), tool));
    EXPECT_EQ(field("renderToolPathField")->text(), tool);
    EXPECT_EQ(savedStore()->stringForKey(pref::TOOL_PATH), tool);
    // With nothing typed, the directory shown is the choice.
    answerDialog("locateOutputButton", acceptIn(m_dir.path()));
    answerDialog("locateFiltersButton", acceptIn(m_dir.path()));
    for (const QString& key : { pref::OUTPUT_DIR, pref::FILTERS_PATH })
        EXPECT_EQ(QFileInfo(savedStore()->stringForKey(key).value_or(QString())).canonicalFilePath(),
            QFileInfo(m_dir.path()).canonicalFilePath());

    // The save dialog adds the extension to the name typed.
    testing::internal::CaptureStdout();
    answerDialog("saveFilterChainButton", [this](QFileDialog* d) {
        EXPECT_TRUE(d->nameFilters().first().contains(QStringLiteral("*.qlch")));
        acceptIn(m_dir.path(), m_dir.filePath(QStringLiteral("empty")))(d);
    });
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Saveres=true\n");
    const QString saved = m_dir.filePath(QStringLiteral("empty.qlch"));
    ASSERT_TRUE(QFile::exists(saved));
    answerDialog("loadFilterChainButton", acceptIn(m_dir.path(), saved));
    EXPECT_TRUE(delegate().chain().empty());
}

TEST_F(WindowDialogsTest, AFailedCheckShowsTheCriticalErrorAlertWithOneOkButton)
{
    // Icon, text, informative text, parent, then the buttons.
    QStringList seen;
    // The alert runs its own loop; answer it from there once it is up.
    QTimer answer;
    answer.setInterval(0);
    QObject::connect(&answer, &QTimer::timeout, [this, &seen, &answer] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box)
            return;
        answer.stop();
        seen = { QString::number(box->icon()), box->text(), box->informativeText(),
            box->parentWidget() == delegate().window() ? "window" : "elsewhere" };
        for (QAbstractButton* button : box->buttons())
            seen.append(button->text());
        box->buttons().first()->click();
    });
    answer.start();
    click("startButton"); // an empty chain is the first check
    answer.stop();
    EXPECT_EQ(seen,
        (QStringList {
            QString::number(QMessageBox::Critical), "Error:", "No filters in the queue", "window", "OK" }));
    EXPECT_FALSE(delegate().progressSheet()->isVisible());
}

TEST_F(WindowDialogsTest, ClosingTheMainWindowQuits)
{
    QMainWindow* window = delegate().window();
    // Only the window's own close handling may end the loop here.
    const bool quitOnLastWindow = QGuiApplication::quitOnLastWindowClosed();
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QTimer::singleShot(0, window, [window] { window->close(); });
    // A loop that nothing ends would otherwise hang the test.
    QTimer::singleShot(60000, window, [] { QCoreApplication::exit(2); });
    const int code = QCoreApplication::exec();
    QGuiApplication::setQuitOnLastWindowClosed(quitOnLastWindow);
    EXPECT_EQ(code, 0);
}

} // namespace
} // namespace quillon::test
