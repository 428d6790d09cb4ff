// What keeps a user from changing things by accident and tells what the
// window does: the wheel, corrected fields, the chosen format, the keys, the
// chain file in the title, the screen size, accessible names and German.

#include "support/WindowFixture.h"

#include "app/ui/AppTranslations.h"
#include "app/ui/MainWindow.h"
#include "run/RunSettings.h"

#include <QAbstractSlider>
#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QProcess>
#include <QScreen>
#include <QScrollBar>
#include <QSignalSpy>
#include <QWheelEvent>

namespace quillon::test {
namespace {

class WindowCareTest : public SettingsWindowTest {
protected:
    void SetUp() override
    {
        SettingsWindowTest::SetUp();
        writeLibrary({ QStringLiteral("Blur"), QStringLiteral("Glow"), QStringLiteral("Rust") });
        launch();
    }

    void launch()
    {
        delegate().applicationDidFinishLaunching();
        delegate().window()->show();
        QApplication::setActiveWindow(delegate().window());
    }

    // The whole library in the chain.
    void addLibrary()
    {
        readLibrary(3);
        click("addFilterButton");
        widget<QTableView>("addFilterList")->selectAll();
        click("addBaseFiltersButton");
    }

    // One notch of the mouse wheel, downwards, over `control`; true when
    // the control took it (the window system offers a turn it leaves to
    // its parents, the scrolling page).
    static bool turnWheel(QWidget* control)
    {
        const QPointF at = control->rect().center();
        QWheelEvent event(at, control->mapToGlobal(at), QPoint(), QPoint(0, -120), Qt::NoButton,
            Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(control, &event);
        return event.isAccepted();
    }

    QStringList chainNames() const
    {
        QStringList names;
        for (const RecordPtr& record : m_delegate->chain())
            names.append(record->string(key::name));
        return names;
    }
};

TEST_F(WindowCareTest, TheWheelScrollsThePageAndEditsOnlyTheFocusedControl)
{
    for (const char* name : { "f_jpgQualitySlider", "outputFilenameSuffixPopup", "sourceTypePopup" }) {
        QWidget* control = widget<QWidget>(name);
        const QStringList before = shown({ name });
        EXPECT_FALSE(turnWheel(control)) << name << ": the page scrolls instead";
        EXPECT_EQ(shown({ name }), before) << name;
        control->setFocus();
        EXPECT_TRUE(turnWheel(control)) << name;
        EXPECT_NE(shown({ name }), before) << name;
    }
}

TEST_F(WindowCareTest, FieldsShowTheNumberTheRunTakesAndAnEmptyInputHoldsNoText)
{
    struct Case {
        const char* field;
        const char* typed;
        const char* shown;
    };
    const Case cases[] = { { "numberOfFramesField", "5000", "999" }, { "numberOfFramesField", "0", "1" },
        { "imageWidthField", "", "600" }, { "imageHeightField", "99999", "65535" },
        { "toolJobsField", "4096", "1024" } };
    for (const Case& c : cases) {
        typeInto(c.field, QString::fromLatin1(c.typed));
        EXPECT_EQ(field(c.field)->text(), QString::fromLatin1(c.shown)) << c.field << " " << c.typed;
    }
    EXPECT_EQ(savedStore()->stringForKey(pref::NUM_FRAMES), QStringLiteral("1"));
    field("numberOfFramesField")->clear();
    QTest::keyClicks(field("numberOfFramesField"), QStringLiteral("1x2-"));
    EXPECT_EQ(field("numberOfFramesField")->text(), QStringLiteral("12"));

    // "not set" is shown, not held: a typed path is the path.
    QTest::keyClicks(field("sourcePathField"), QStringLiteral("/tmp/x.png"));
    EXPECT_EQ(field("sourcePathField")->text(), QStringLiteral("/tmp/x.png"));
}

TEST_F(WindowCareTest, TheSelectedFormatTabIsTheFormatAndIsNamedBesideStart)
{
    auto* label = widget<QLabel>("outputFormatLabel");
    auto* tabs = widget<QTabWidget>("formatTabControl");
    EXPECT_EQ(label->text(), QStringLiteral("Output format: JPEG"));
    tabs->setCurrentIndex(1);
    EXPECT_EQ(label->text(), QStringLiteral("Output format: PNG"));
    EXPECT_EQ(delegate().captureRunSettings().format, QStringLiteral("PNG"));
    for (int i = 0; i < tabs->count(); ++i)
        EXPECT_EQ(!tabs->tabIcon(i).isNull(), i == 1) << "only the chosen tab is marked; tab " << i;
}

TEST_F(WindowCareTest, KeysEditTheChainAndTheTitleNamesItsFileAndEditsAreNotLostUnasked)
{
    addLibrary();
    QMainWindow* window = delegate().window();
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Untitled chain[*] — Quillon"));
    EXPECT_TRUE(window->isWindowModified());
    auto* list = widget<QTableView>("filterList");
    list->setFocus();
    list->selectRow(2);
    QTest::keyClick(list, Qt::Key_Up, Qt::ControlModifier);
    EXPECT_EQ(chainNames(), QStringList({ "Blur", "Rust", "Glow" }));
    QTest::keyClick(list, Qt::Key_Delete);
    QTest::keyClick(list, Qt::Key_Down, Qt::ControlModifier);
    EXPECT_EQ(chainNames(), QStringList({ "Blur", "Glow" }));
    QTest::keyClick(list, Qt::Key_Up, Qt::ControlModifier);
    EXPECT_EQ(chainNames(), QStringList({ "Glow", "Blur" }));
    widget<QTabWidget>("mainTabControl")->setCurrentIndex(1);
    EXPECT_TRUE(widget<QLabel>("parameterFilterLabel")->text().contains(QStringLiteral("Glow")));

    // Dialogs open in the home folder, then where the chain file is.
    const QString file = m_dir.filePath(QStringLiteral("two.qlch"));
    FileDialogs::instance().setNextFileName(file);
    widget<QAction>("actionSaveChain")->trigger();
    EXPECT_EQ(FileDialogs::instance().lastRequest().directory, QDir::homePath());
    EXPECT_EQ(window->windowTitle(), QStringLiteral("two.qlch[*] — Quillon"));
    EXPECT_FALSE(window->isWindowModified());

    // An edited chain is replaced only when the user agrees.
    QTest::keyClick(list, Qt::Key_Delete);
    EXPECT_TRUE(window->isWindowModified());
    FileDialogs::instance().setNextFileName(file);
    widget<QAction>("actionOpenChain")->trigger();
    EXPECT_EQ(chainNames(), QStringList { "Blur" });
    ASSERT_FALSE(alerts().isEmpty());
    EXPECT_TRUE(alerts().last().contains(QStringLiteral("Replace it anyway?")));
    MessageBoxes::instance().setNextAnswer(true);
    FileDialogs::instance().setNextFileName(file);
    widget<QAction>("actionOpenChain")->trigger();
    EXPECT_EQ(FileDialogs::instance().lastRequest().directory, m_dir.path());
    EXPECT_EQ(chainNames(), QStringList({ "Glow", "Blur" }));
    EXPECT_FALSE(window->isWindowModified());
    EXPECT_FALSE(widget<QLabel>("parameterFilterLabel")->text().contains(QStringLiteral("Glow")));

    QSignalSpy started(widget<QPushButton>("startButton"), &QPushButton::clicked);
    QTest::keyClick(window, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(started.count(), 1);
}

TEST_F(WindowCareTest, EveryControlHasAnAccessibleNameTheActiveBoxesIncluded)
{
    addLibrary();
    widget<QTabWidget>("mainTabControl")->setCurrentIndex(1);
    widget<QTableView>("filterList")->selectRow(0);
    QStringList unnamed;
    for (QWidget* control : delegate().window()->findChildren<QWidget*>()) {
        const bool isControl = qobject_cast<QAbstractButton*>(control) || qobject_cast<QComboBox*>(control)
            || qobject_cast<QLineEdit*>(control) || qobject_cast<QAbstractItemView*>(control)
            || qobject_cast<QTabWidget*>(control)
            || (qobject_cast<QAbstractSlider*>(control) && !qobject_cast<QScrollBar*>(control));
        // Parts of other controls (a pop-up's list, a table's header and corner) are named by them.
        const QWidget* parent = control->parentWidget();
        const bool part = qobject_cast<QHeaderView*>(control)
            || qobject_cast<const QAbstractItemView*>(parent)
            || (parent && qobject_cast<const QComboBox*>(parent->parentWidget()))
            || qobject_cast<const QComboBox*>(parent) || qobject_cast<const QLineEdit*>(parent)
            || control->objectName().startsWith(QLatin1String("qt_"));
        QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(control);
        if (isControl && !part && (!accessible || accessible->text(QAccessible::Name).trimmed().isEmpty()))
            unnamed.append(control->objectName() + QLatin1Char('/') + control->metaObject()->className());
    }
    EXPECT_EQ(unnamed, QStringList());
    QAbstractItemModel* params = widget<QTableView>("filterParamList")->model();
    ASSERT_GT(params->rowCount(), 0);
    for (int row = 0; row < params->rowCount(); ++row)
        EXPECT_TRUE(params->index(row, 0).data(Qt::AccessibleTextRole).toString().startsWith("Active: "));
}

TEST_F(WindowCareTest, UnderAGermanLocaleTheWindowAndQtsOwnButtonsSpeakGerman)
{
    // Every message of the German translation is translated.
    QFile ts(QStringLiteral(QUILLON_SOURCE_DIR "/translations/quillon_de.ts"));
    ASSERT_TRUE(ts.open(QIODevice::ReadOnly));
    const QByteArray text = ts.readAll();
    EXPECT_GT(text.count("<message"), 200);
    EXPECT_EQ(text.count("type=\"unfinished\""), 0);

    closeDelegate();
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    {
        AppTranslations german;
        ASSERT_TRUE(german.load(QLocale()));
        m_delegate = newDelegate();
        launch();
        EXPECT_EQ(widget<QPushButton>("startButton")->text(), QStringLiteral("Starten"));
        EXPECT_EQ(widget<QTabWidget>("mainTabControl")->tabText(0), QStringLiteral("Einstellungen"));
        EXPECT_EQ(widget<QLabel>("outputFormatLabel")->text(), QStringLiteral("Ausgabeformat: JPEG"));
        EXPECT_EQ(QCoreApplication::translate("QPlatformTheme", "&Yes"), QStringLiteral("&Ja"));
        closeDelegate();
    }
    QLocale::setDefault(before);
    m_delegate = newDelegate();
    launch();
    EXPECT_EQ(widget<QPushButton>("startButton")->text(), QStringLiteral("Start"));
}

TEST_F(WindowCareTest, TheFirstSizeAndASizeSavedOnALargerScreenFitThisScreen)
{
    // The first launch's size, then a size saved on a larger screen.
    for (int launch = 0; launch < 2; ++launch) {
        QMainWindow* window = delegate().window();
        const QRect available = window->screen()->availableGeometry();
        EXPECT_TRUE(available.contains(window->geometry())) << "launch " << launch;
        window->setGeometry(QRect(available.topLeft(), available.size() * 3));
        ASSERT_TRUE(window->close());
        relaunch();
    }
}

// The real program on a 1280x720 screen at scale 1.25 and 2: the window, and
// with it Start, fits the screen.
TEST(WindowScreenTest, OnA1280By720ScreenTheWindowFitsAtEveryScale)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    QFile screen(dir.filePath(QStringLiteral("screen.json")));
    ASSERT_TRUE(screen.open(QIODevice::WriteOnly));
    screen.write(R"({"screens":[{"name":"s","x":0,"y":0,"width":1280,"height":720,"logicalDpi":96}]})");
    screen.close();
    for (const char* scale : { "1.25", "2" }) {
        const QString shot = dir.filePath(QStringLiteral("window-%1.png").arg(QLatin1String(scale)));
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(
            QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen:configfile=") + screen.fileName());
        env.insert(QStringLiteral("QT_SCALE_FACTOR"), QLatin1String(scale));
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), dir.filePath(QStringLiteral("config")));
        env.insert(QStringLiteral("QUILLON_DEMO_OUTPUT"), dir.filePath(QStringLiteral("out")));
        QProcess quillon;
        quillon.setProcessEnvironment(env);
        quillon.start(QStringLiteral(QUILLON_WINDOW_PATH), { "--demo", "--screenshot", shot });
        ASSERT_TRUE(quillon.waitForFinished(60000)) << scale;
        const QImage image(shot);
        ASSERT_FALSE(image.isNull()) << scale << quillon.readAllStandardError().toStdString();
        // The picture is in device pixels; a title bar takes some of the height.
        EXPECT_LE(image.width(), 1280) << scale;
        EXPECT_LE(image.height(), 720 - MainWindow::kTitleBarAllowance) << scale;
    }
}

} // namespace
} // namespace quillon::test
