// The window as a new user meets it: keyboard, the add sheet's search,
// the screen size, what is remembered, drops and the Help menu.

#include "support/WindowFixture.h"

#include "chain/ChainFile.h"
#include "run/RunSettings.h"

#include <QAction>
#include <QApplication>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QProgressBar>
#include <QSplitter>

namespace quillon::test {
namespace {

class WindowUsabilityTest : public SettingsWindowTest {
protected:
    void SetUp() override
    {
        SettingsWindowTest::SetUp();
        writeLibrary({ QStringLiteral("Blur"), QStringLiteral("Glow"), QStringLiteral("Rust") });
        delegate().applicationDidFinishLaunching();
        delegate().window()->show();
        QApplication::setActiveWindow(delegate().window());
    }

    QTableView* openSheet()
    {
        click("addFilterButton");
        return widget<QTableView>("addFilterList");
    }

    QStringList chainNames() const
    {
        QStringList names;
        for (const RecordPtr& record : m_delegate->chain())
            names.append(record->string(key::name));
        return names;
    }

    // Drags one local file or folder over the window and drops it there.
    bool drop(const QString& path)
    {
        QMimeData data;
        data.setUrls({ QUrl::fromLocalFile(path) });
        QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(delegate().window(), &enter);
        QDropEvent event(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(delegate().window(), &event);
        return enter.isAccepted() && event.isAccepted();
    }
};

TEST_F(WindowUsabilityTest, AddWaitsForAFiltersDirectoryAndTheSheetSearchesAndAddsByKeyboardOrDoubleClick)
{
    auto* add = widget<QPushButton>("addFilterButton");
    EXPECT_FALSE(add->isEnabled());
    EXPECT_FALSE(add->toolTip().isEmpty()) << "a hint says what is missing";
    EXPECT_FALSE(widget<QLabel>("addFilterHint")->isHidden());
    readLibrary(3);
    EXPECT_TRUE(add->isEnabled());
    EXPECT_TRUE(widget<QLabel>("addFilterHint")->isHidden());
    EXPECT_TRUE(widget<QProgressBar>("loadingSpinner")->isHidden());

    // Cancel adds nothing; the sheet is modal and adds nothing unselected.
    QTableView* list = openSheet();
    click("addFilterCancelButton");
    EXPECT_FALSE(list->window()->isVisible());
    list = openSheet();
    EXPECT_EQ(list->window()->windowModality(), Qt::WindowModal);
    EXPECT_FALSE(widget<QPushButton>("addBaseFiltersButton")->isEnabled());
    // Typing narrows the list and picks the first match; Return adds it.
    QTest::keyClicks(field("addFilterSearchField"), QStringLiteral("ru"));
    ASSERT_EQ(list->model()->rowCount(), 1);
    QTest::keyClick(field("addFilterSearchField"), Qt::Key_Return);
    EXPECT_EQ(chainNames(), QStringList { QStringLiteral("Rust") });
    EXPECT_FALSE(list->window()->isVisible());

    list = openSheet();
    EXPECT_EQ(list->model()->rowCount(), 3) << "the search starts empty again";
    const QRect glow = list->visualRect(list->model()->index(1, 0));
    // A double click is a click, then the second press.
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, glow.center());
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, glow.center());
    EXPECT_EQ(chainNames(), QStringList({ QStringLiteral("Rust"), QStringLiteral("Glow") }));
}

TEST_F(WindowUsabilityTest, TabLeavesTheTablesAndUnlabelledControlsHaveAccessibleNames)
{
    // Two filters, the first selected: both tables have a row to move to.
    readLibrary(3);
    QTableView* sheet = openSheet();
    sheet->selectAll();
    QTest::keyClick(sheet, Qt::Key_Return);
    widget<QTabWidget>("mainTabControl")->setCurrentIndex(1);
    for (const char* name : { "filterList", "filterParamList" }) {
        auto* table = widget<QTableView>(name);
        table->setFocus();
        table->selectRow(0);
        ASSERT_GE(table->model()->rowCount(), 2) << name;
        QTest::keyClick(table, Qt::Key_Tab);
        EXPECT_NE(delegate().window()->focusWidget(), table) << name;
        EXPECT_EQ(table->currentIndex().row(), 0) << name;
    }
    for (const char* name : { "filterList", "filterParamList", "addFilterList", "addFilterSearchField",
             "fpIntSliderFromSlider", "fpFloatSliderToField", "fpVariationFromField", "mainTabControl",
             "imageHeightField", "f_jpgQualitySlider", "formatTabControl" })
        EXPECT_FALSE(widget<QWidget>(name)->accessibleName().isEmpty()) << name;
}

TEST_F(WindowUsabilityTest, TheWindowFitsA1280By720ScreenAndKeepsItsLayoutAndChain)
{
    readLibrary(3);
    openSheet()->selectRow(2);
    click("addBaseFiltersButton");
    QMainWindow* window = delegate().window();
    // A title bar and a panel take some 60 pixels of the 720.
    EXPECT_LE(window->minimumSizeHint().width(), 1280);
    EXPECT_LE(window->minimumSizeHint().height(), 660);
    window->resize(700, 500);
    widget<QSplitter>("mainSplitter")->setSizes({ 250, 450 });
    const QList<int> sizes = widget<QSplitter>("mainSplitter")->sizes();
    // The chain is edited and in no file: quitting asks first.
    EXPECT_FALSE(window->close());
    MessageBoxes::instance().setNextAnswer(true);
    ASSERT_TRUE(window->close());
    EXPECT_TRUE(alerts().last().contains(QStringLiteral("not saved"))) << alerts().last().toStdString();

    relaunch();
    delegate().window()->show();
    EXPECT_EQ(delegate().window()->size(), QSize(700, 500));
    EXPECT_EQ(widget<QSplitter>("mainSplitter")->sizes(), sizes);
    EXPECT_EQ(chainNames(), QStringList { QStringLiteral("Rust") });
}

TEST_F(WindowUsabilityTest, TypedPathsAndDroppedFilesBecomeTheSettingsOrTheChain)
{
    const QString image = m_dir.filePath(QStringLiteral("in.png"));
    ASSERT_TRUE(writeBatchInputImage(image));
    EXPECT_TRUE(drop(image));
    EXPECT_EQ(popup("sourceTypePopup")->currentIndex(), int(InputMode::File));
    EXPECT_EQ(delegate().settingsPane()->sourcePath(), image);
    EXPECT_TRUE(drop(filtersDir()));
    EXPECT_EQ(popup("sourceTypePopup")->currentIndex(), int(InputMode::Directory));
    EXPECT_EQ(field("sourcePathField")->text(), filtersDir());

    const QString chainFile = m_dir.filePath(QStringLiteral("two.qlch"));
    const RecordPtr glow = batchChainRecord(QDir(filtersDir()).filePath(QStringLiteral("Glow.ffxml")));
    ASSERT_TRUE(writeChainFile(chainFile, { glow, glow }));
    EXPECT_TRUE(drop(chainFile));
    EXPECT_EQ(chainNames(), QStringList({ QStringLiteral("Glow"), QStringLiteral("Glow") }));
    EXPECT_FALSE(drop(m_dir.filePath(QStringLiteral("gone.png"))));

    // A file that is no chain is refused with an alert, and the chain stays.
    QFile broken(m_dir.filePath(QStringLiteral("broken.qlch")));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly) && broken.write("no property list") > 0);
    broken.close();
    EXPECT_TRUE(drop(broken.fileName()));
    EXPECT_EQ(alerts().size(), 1);
    EXPECT_EQ(MessageBoxes::instance().beeps(), 0);
    EXPECT_EQ(chainNames().size(), 2);
}

TEST_F(WindowUsabilityTest, HelpMenuOpensTheGuideAndThePageOrSaysWhatFailed)
{
    const QString help = AppDelegate::helpDocumentPath();
    QTest::keyClick(delegate().window(), Qt::Key_F1);
    widget<QAction>("actionDonate")->trigger();
    EXPECT_EQ(m_openedUrls, QList<QUrl>({ QUrl::fromLocalFile(help), AppDelegate::donationUrl() }));

    delegate().setUrlOpener([](const QUrl&) { return false; });
    for (const char* action : { "actionHelp", "actionDonate" }) {
        delegate().window()->statusBar()->clearMessage();
        widget<QAction>(action)->trigger();
        EXPECT_FALSE(status().isEmpty()) << action;
    }

    widget<QAction>("actionAbout")->trigger();
    ASSERT_FALSE(alerts().isEmpty());
    EXPECT_TRUE(
        alerts().last().startsWith(QStringLiteral("Quillon ") + QCoreApplication::applicationVersion()));

    delegate().window()->statusBar()->showMessage(QStringLiteral("Run finished."));
    click("startButton"); // refused by a check
    EXPECT_EQ(status(), QString()) << "a run starting clears the last outcome";
}

} // namespace
} // namespace quillon::test
