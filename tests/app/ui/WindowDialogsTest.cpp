// The window's real dialogs and alerts (not the answers tests give in
// advance).

#include "support/WindowFixture.h"

#include "app/ui/ProgressSheet.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
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
        MessageBoxes::instance().setRecording(false);
        delegate().applicationDidFinishLaunching();
        delegate().window()->show();
    }

    // Clicks `button`, checks the window-modal file dialog it opens, then
    // closes it as `finish` does and waits until it is gone.
    void answerDialog(const char* button, QFileDialog::FileMode mode, const QString& accept,
        const QString& title, const std::function<void(QFileDialog*)>& finish)
    {
        SCOPED_TRACE(button);
        widget<QPushButton>(button)->click();
        QFileDialog* dialog = delegate().window()->findChild<QFileDialog*>();
        ASSERT_NE(dialog, nullptr);
        EXPECT_TRUE(dialog->isVisible());
        EXPECT_EQ(dialog->windowModality(), Qt::WindowModal);
        EXPECT_EQ(dialog->parentWidget(), delegate().window());
        EXPECT_EQ(dialog->fileMode(), mode);
        EXPECT_EQ(dialog->labelText(QFileDialog::Accept), accept);
        EXPECT_EQ(dialog->windowTitle(), title);
        finish(dialog);
        QTRY_VERIFY(delegate().window()->findChild<QFileDialog*>() == nullptr);
    }

    static void cancel(QFileDialog* dialog) { dialog->reject(); }
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

TEST_F(WindowDialogsTest, LocateDialogsAreWindowModalWithTheirPromptsAndMessages)
{
    const QString tool = QStringLiteral(QUILLON_STANDIN_PATH);
    answerDialog("locateRenderToolButton", QFileDialog::ExistingFile, QStringLiteral("Locate it"),
        QStringLiteral("Quillon needs you to locate to FilterForge Batch tool"),
        acceptIn(QFileInfo(tool).path(), tool));
    EXPECT_EQ(field("renderToolPathField")->text(), tool);
    EXPECT_EQ(savedStore()->stringForKey(pref::TOOL_PATH), tool);

    answerDialog("locateFiltersButton", QFileDialog::Directory, QStringLiteral("Locate it"),
        QStringLiteral("Quillon needs you to locate the Filters directory"), [](QFileDialog* d) {
            EXPECT_TRUE(d->testOption(QFileDialog::ReadOnly));
            cancel(d);
        });
    EXPECT_EQ(savedStore()->stringForKey(pref::FILTERS_PATH), QString());

    // The output directory may be created from the dialog; with nothing
    // typed, the directory shown is the choice.
    answerDialog("locateOutputButton", QFileDialog::Directory, QStringLiteral("This one"),
        QStringLiteral("Quillon needs you to locate or create the output directory"), [this](QFileDialog* d) {
            EXPECT_FALSE(d->testOption(QFileDialog::ReadOnly));
            acceptIn(m_dir.path())(d);
        });
    EXPECT_EQ(QFileInfo(delegate().settingsPane()->outputPath()).canonicalFilePath(),
        QFileInfo(m_dir.path()).canonicalFilePath());

    choose(popup("sourceTypePopup"), 0);
    answerDialog("locateSourceButton", QFileDialog::ExistingFile, QStringLiteral("This one"),
        QStringLiteral("Quillon needs you to locate an input image"), cancel);
    EXPECT_EQ(field("sourcePathField")->text(), QStringLiteral("not set"));
}

TEST_F(WindowDialogsTest, ChainDialogsSaveAndOpenQlchFiles)
{
    // The dialog adds the extension to the name typed.
    testing::internal::CaptureStdout();
    answerDialog("saveFilterChainButton", QFileDialog::AnyFile, QStringLiteral("Save"),
        QStringLiteral("Save filter chain"), [this](QFileDialog* d) {
            EXPECT_EQ(d->acceptMode(), QFileDialog::AcceptSave);
            EXPECT_EQ(d->defaultSuffix(), QStringLiteral("qlch"));
            EXPECT_TRUE(d->nameFilters().first().contains(QStringLiteral("*.qlch")));
            acceptIn(m_dir.path(), m_dir.filePath(QStringLiteral("empty")))(d);
        });
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Saveres=true\n");
    const QString saved = m_dir.filePath(QStringLiteral("empty.qlch"));
    ASSERT_TRUE(QFile::exists(saved));

    answerDialog("loadFilterChainButton", QFileDialog::ExistingFile, QStringLiteral("Select Chain"),
        QStringLiteral("Quillon needs you to locate a saved filter chain"), [this, &saved](QFileDialog* d) {
            EXPECT_TRUE(d->nameFilters().first().contains(QStringLiteral("*.qlch")));
            acceptIn(m_dir.path(), saved)(d);
        });
    EXPECT_TRUE(delegate().chain().empty());
    EXPECT_TRUE(widget<QWidget>("t_activateMaps")->isHidden());
}

TEST_F(WindowDialogsTest, AFailedCheckShowsTheCriticalErrorAlertWithOneOkButton)
{
    struct Seen {
        bool shown = false;
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        QString text, informative;
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
        seen = { true, box->icon(), box->text(), box->informativeText(), {}, box->parentWidget() };
        for (QAbstractButton* button : box->buttons())
            seen.buttons.append(button->text());
        box->buttons().first()->click();
    });
    answer.start();
    widget<QPushButton>("startButton")->click(); // an empty chain is the first check
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
        delegate().chainPanel()->showAddSheetWithSender();
        if (auto* sheet = window->findChild<QDialog*>(QStringLiteral("AddFilterSheet")))
            sheet->close();
        // Queued behind anything the sheet's closing may have posted.
        QTimer::singleShot(0, window, [window, &windowClosed] {
            windowClosed = true;
            window->close();
        });
    });
    // A loop that nothing ends would otherwise hang the test.
    QTimer::singleShot(30000, window, [] { QCoreApplication::exit(2); });

    const int code = QCoreApplication::exec();
    QGuiApplication::setQuitOnLastWindowClosed(quitOnLastWindow);
    EXPECT_EQ(code, 0);
    EXPECT_TRUE(windowClosed);
}

} // namespace
} // namespace quillon::test
