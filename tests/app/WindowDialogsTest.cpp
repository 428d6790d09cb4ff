// The window's real dialogs and alerts (not the answers tests give in
// advance): the file dialogs are window-modal with the prompts the commands
// ask for, a failed check shows the critical "Error:" alert, and closing the
// main window ends the application.

#include "SettingsWindowFixture.h"

#include "app/ui/ProgressSheet.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <functional>

namespace quillon::test {
namespace {

class WindowDialogsTest : public SettingsWindowTest {
protected:
    void SetUp() override
    {
        SettingsWindowTest::SetUp();
        // Dialogs and alerts are shown for real here.
        MessageBoxes::instance().setRecording(false);
        delegate().applicationDidFinishLaunching();
        delegate().window()->show();
    }

    // The file dialog a command has just opened on the main window.
    QFileDialog* openedDialog()
    {
        QFileDialog* dialog = delegate().window()->findChild<QFileDialog*>();
        EXPECT_NE(dialog, nullptr);
        return dialog;
    }

    // Closes the dialog as `finish` does and waits until it is gone.
    void finishDialog(QFileDialog* dialog, const std::function<void(QFileDialog*)>& finish)
    {
        finish(dialog);
        QTRY_VERIFY(delegate().window()->findChild<QFileDialog*>() == nullptr);
    }

    static void cancel(QFileDialog* dialog) { dialog->reject(); }
};

TEST_F(WindowDialogsTest, LocateDialogsAreWindowModalWithTheirPromptsAndMessages)
{
    widget<QPushButton>("locateRenderToolButton")->click();
    QFileDialog* dialog = openedDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(dialog->windowModality(), Qt::WindowModal);
    EXPECT_EQ(dialog->parentWidget(), delegate().window());
    EXPECT_EQ(dialog->labelText(QFileDialog::Accept), QStringLiteral("Locate it"));
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Quillon needs you to locate to FilterForge Batch tool"));
    EXPECT_EQ(dialog->fileMode(), QFileDialog::ExistingFile);
    EXPECT_TRUE(dialog->testOption(QFileDialog::ReadOnly));
    finishDialog(dialog, [](QFileDialog* d) {
        d->selectFile(QStringLiteral(QUILLON_STANDIN_PATH));
        static_cast<QDialog*>(d)->accept(); // the confirming button
    });
    EXPECT_EQ(delegate().toolPath, QStringLiteral(QUILLON_STANDIN_PATH));
    EXPECT_EQ(field("renderToolPathField")->text(), QStringLiteral(QUILLON_STANDIN_PATH));
    EXPECT_EQ(savedStore()->stringForKey(pref::TOOL_PATH), QStringLiteral(QUILLON_STANDIN_PATH));

    widget<QPushButton>("locateFiltersButton")->click();
    dialog = openedDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowModality(), Qt::WindowModal);
    EXPECT_EQ(dialog->labelText(QFileDialog::Accept), QStringLiteral("Locate it"));
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Quillon needs you to locate the Filters directory"));
    EXPECT_EQ(dialog->fileMode(), QFileDialog::Directory);
    EXPECT_TRUE(dialog->testOption(QFileDialog::ShowDirsOnly));
    EXPECT_TRUE(dialog->testOption(QFileDialog::ReadOnly));
    // Cancelling changes nothing.
    finishDialog(dialog, cancel);
    EXPECT_EQ(savedStore()->stringForKey(pref::FILTERS_PATH), QString());

    widget<QPushButton>("locateOutputButton")->click();
    dialog = openedDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowModality(), Qt::WindowModal);
    EXPECT_EQ(dialog->labelText(QFileDialog::Accept), QStringLiteral("This one"));
    EXPECT_EQ(
        dialog->windowTitle(), QStringLiteral("Quillon needs you to locate or create the output directory"));
    EXPECT_EQ(dialog->fileMode(), QFileDialog::Directory);
    // The output directory may be created from the dialog.
    EXPECT_FALSE(dialog->testOption(QFileDialog::ReadOnly));
    // With nothing typed, the directory shown is the choice.
    finishDialog(dialog, [this](QFileDialog* d) {
        d->setDirectory(m_dir.path());
        static_cast<QDialog*>(d)->accept(); // the confirming button
    });
    EXPECT_EQ(
        QFileInfo(delegate().outputPath).canonicalFilePath(), QFileInfo(m_dir.path()).canonicalFilePath());
    EXPECT_EQ(field("outputDirectoryPathField")->text(), delegate().outputPath);

    choose(popup("sourceTypePopup"), 0);
    widget<QPushButton>("locateSourceButton")->click();
    dialog = openedDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowModality(), Qt::WindowModal);
    EXPECT_EQ(dialog->labelText(QFileDialog::Accept), QStringLiteral("This one"));
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Quillon needs you to locate an input image"));
    EXPECT_EQ(dialog->fileMode(), QFileDialog::ExistingFile);
    finishDialog(dialog, cancel);
    EXPECT_EQ(field("sourcePathField")->text(), QStringLiteral("not set"));
    EXPECT_TRUE(delegate().sourcePath.isEmpty());
}

TEST_F(WindowDialogsTest, ChainDialogsSaveAndOpenQlchFiles)
{
    widget<QPushButton>("saveFilterChainButton")->click();
    QFileDialog* dialog = openedDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowModality(), Qt::WindowModal);
    EXPECT_EQ(dialog->acceptMode(), QFileDialog::AcceptSave);
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Save filter chain"));
    EXPECT_EQ(dialog->labelText(QFileDialog::Accept), QStringLiteral("Save"));
    EXPECT_EQ(dialog->defaultSuffix(), QStringLiteral("qlch"));
    ASSERT_EQ(dialog->nameFilters().size(), 1);
    EXPECT_TRUE(dialog->nameFilters().first().contains(QStringLiteral("*.qlch")));

    // The dialog adds the extension to the name typed.
    testing::internal::CaptureStdout();
    finishDialog(dialog, [this](QFileDialog* d) {
        d->setDirectory(m_dir.path());
        d->selectFile(m_dir.filePath(QStringLiteral("empty")));
        static_cast<QDialog*>(d)->accept(); // the confirming button
    });
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Saveres=true\n");
    const QString saved = m_dir.filePath(QStringLiteral("empty.qlch"));
    ASSERT_TRUE(QFile::exists(saved));

    widget<QPushButton>("loadFilterChainButton")->click();
    dialog = openedDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowModality(), Qt::WindowModal);
    EXPECT_EQ(dialog->acceptMode(), QFileDialog::AcceptOpen);
    EXPECT_EQ(dialog->fileMode(), QFileDialog::ExistingFile);
    EXPECT_EQ(dialog->labelText(QFileDialog::Accept), QStringLiteral("Select Chain"));
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Quillon needs you to locate a saved filter chain"));
    EXPECT_TRUE(dialog->nameFilters().first().contains(QStringLiteral("*.qlch")));
    finishDialog(dialog, [&saved](QFileDialog* d) {
        d->selectFile(saved);
        static_cast<QDialog*>(d)->accept(); // the confirming button
    });
    EXPECT_TRUE(delegate().chain().empty());
    EXPECT_TRUE(widget<QWidget>("t_activateMaps")->isHidden());
}

TEST_F(WindowDialogsTest, AFailedCheckShowsTheCriticalErrorAlertWithOneOkButton)
{
    struct Seen {
        bool shown = false;
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        QString text;
        QString informative;
        QStringList buttons;
        QWidget* parent = nullptr;
    } seen;

    // The alert runs its own loop; answer it from there.
    QTimer answer;
    answer.setInterval(0);
    QObject::connect(&answer, &QTimer::timeout, [&seen, &answer] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box)
            return;
        answer.stop();
        seen.shown = true;
        seen.icon = box->icon();
        seen.text = box->text();
        seen.informative = box->informativeText();
        seen.parent = box->parentWidget();
        for (QAbstractButton* button : box->buttons())
            seen.buttons.append(button->text());
        box->buttons().first()->click();
    });
    answer.start();

    // An empty chain is the first check.
    widget<QPushButton>("startButton")->click();
    answer.stop();

    EXPECT_TRUE(seen.shown);
    EXPECT_EQ(seen.icon, QMessageBox::Critical);
    EXPECT_EQ(seen.text, QStringLiteral("Error:"));
    EXPECT_EQ(seen.informative, QStringLiteral("No filters in the queue"));
    EXPECT_EQ(seen.buttons, QStringList { QStringLiteral("OK") });
    EXPECT_EQ(seen.parent, delegate().window());
    EXPECT_FALSE(delegate().progressSheet()->isVisible());
}

TEST_F(WindowDialogsTest, ClosingTheMainWindowQuitsButClosingASheetDoesNot)
{
    QMainWindow* window = delegate().window();
    // Only the window's own close handling may end the loop here.
    const bool quitOnLastWindow = QGuiApplication::quitOnLastWindowClosed();
    QGuiApplication::setQuitOnLastWindowClosed(false);

    bool windowClosed = false;
    QTimer::singleShot(0, window, [this, window, &windowClosed] {
        delegate().showAddSheetWithSender();
        auto* sheet = window->findChild<QDialog*>(QStringLiteral("AddFilterSheet"));
        if (sheet)
            sheet->close();
        // Queued behind anything the sheet's closing may have posted.
        QTimer::singleShot(0, window, [window, &windowClosed] {
            windowClosed = true;
            window->close();
        });
    });
    // A loop that nothing ends would otherwise hang the test.
    QTimer guard;
    guard.setSingleShot(true);
    QObject::connect(&guard, &QTimer::timeout, [] { QCoreApplication::exit(2); });
    guard.start(30000);

    const int code = QCoreApplication::exec();
    guard.stop();
    QGuiApplication::setQuitOnLastWindowClosed(quitOnLastWindow);

    EXPECT_EQ(code, 0);
    EXPECT_TRUE(windowClosed);
}

} // namespace
} // namespace quillon::test
