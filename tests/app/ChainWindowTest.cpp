// The main window's chain side, driven through its widgets: the chain list
// and its buttons, the add-filter sheet, the maps box, the preset popup and
// the parameter editor.

#include "app/ui/AppDelegate.h"
#include "app/ui/DialogSeams.h"
#include "library/FilterScan.h"

#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QGroupBox>
#include <QLineEdit>
#include <QMainWindow>
#include <QProgressBar>
#include <QPushButton>
#include <QSlider>
#include <QTabWidget>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

using namespace quillon;

namespace {

struct Definition {
    QString file;
    QString name;
    QString filtertype = QStringLiteral("0");
    QString controls;
    int presets = 1;
};

class ChainWindowTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        MessageBoxes::instance().setRecording(true);
        MessageBoxes::instance().clearShownMessages();
        FileDialogs::instance().clearNextFileName();
        ASSERT_TRUE(m_dir.isValid());
        m_delegate = std::make_unique<AppDelegate>();
        window()->show();
        for (const char* name : { "filterList", "filterParamList", "addFilterList" }) {
            auto* view = child<QTableView>(name);
            m_testers.push_back(std::make_unique<QAbstractItemModelTester>(
                view->model(), QAbstractItemModelTester::FailureReportingMode::Fatal));
        }
    }

    void TearDown() override
    {
        m_testers.clear();
        m_delegate.reset();
        MessageBoxes::instance().setRecording(false);
    }

    QMainWindow* window() const { return m_delegate->window(); }

    template <typename T> T* child(const char* name) const
    {
        T* widget = window()->findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }

    void writeDefinition(const Definition& def)
    {
        QString presets;
        for (int i = 0; i < def.presets; ++i)
            presets += QStringLiteral("<Preset name-en=\"P%1\"><Settings variation=\"1\"/></Preset>").arg(i);
        const QString xml
            = QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             "<Filter><Information name-en=\"%1\" author=\"Test Author\"/>"
                             "<Components><Result><FilterType value=\"%2\"/></Result>%3</Components>"
                             "<Presets>%4</Presets></Filter>\n")
                  .arg(def.name, def.filtertype, def.controls, presets);
        QFile file(m_dir.filePath(def.file));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(xml.toUtf8());
    }

    // Writes the definitions, scans them and hands the library to the window
    // as a finished scan does.
    void installLibrary(const QList<Definition>& defs)
    {
        for (const Definition& def : defs)
            writeDefinition(def);
        m_delegate->fetchDoneWithArray(scanFilterDirectory(m_dir.path()));
    }

    void installLetters(const QStringList& names)
    {
        QList<Definition> defs;
        for (const QString& name : names)
            defs.append({ name + QStringLiteral(".ffxml"), name, QStringLiteral("0"), sliderControls(), 1 });
        installLibrary(defs);
    }

    static QString sliderControls()
    {
        return QStringLiteral("<SliderControl id=\"amount\"><Name value-en=\"Amount\"/></SliderControl>");
    }

    // Opens the sheet, selects the library rows in the order given and adds.
    void addFromSheet(const QList<int>& rows)
    {
        QTest::mouseClick(child<QPushButton>("addFilterButton"), Qt::LeftButton);
        auto* list = child<QTableView>("addFilterList");
        for (const int row : rows)
            list->selectionModel()->select(
                list->model()->index(row, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        QTest::mouseClick(child<QPushButton>("addBaseFiltersButton"), Qt::LeftButton);
    }

    QStringList chainRows() const
    {
        QStringList rows;
        const QAbstractItemModel* model = child<QTableView>("filterList")->model();
        for (int row = 0; row < model->rowCount(); ++row)
            rows.append(model->index(row, 0).data().toString());
        return rows;
    }

    void selectRow(const char* table, int row)
    {
        auto* view = child<QTableView>(table);
        view->selectionModel()->select(
            view->model()->index(row, 0), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }

    int selectedRow(const char* table) const
    {
        const QModelIndexList rows = child<QTableView>(table)->selectionModel()->selectedRows();
        return rows.isEmpty() ? -1 : rows.first().row();
    }

    void showParametersPage() { child<QTabWidget>("mainTabControl")->setCurrentIndex(1); }

    QString paramCell(int row, int column) const
    {
        const QAbstractItemModel* model = child<QTableView>("filterParamList")->model();
        return model->index(row, column).data().toString();
    }

    void setActive(int row, bool on)
    {
        QAbstractItemModel* model = child<QTableView>("filterParamList")->model();
        model->setData(model->index(row, 0), on ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole);
    }

    void typeInto(const char* fieldName, const QString& text)
    {
        auto* field = child<QLineEdit>(fieldName);
        field->clear();
        QTest::keyClicks(field, text);
        QTest::keyClick(field, Qt::Key_Return);
    }

    bool buttonEnabled(const char* name) const { return child<QPushButton>(name)->isEnabled(); }

    QTemporaryDir m_dir;
    std::unique_ptr<AppDelegate> m_delegate;
    std::vector<std::unique_ptr<QAbstractItemModelTester>> m_testers;
};

TEST_F(ChainWindowTest, AddButtonWaitsForTheLibraryAndTheSheetAddsInLibraryOrder)
{
    EXPECT_FALSE(buttonEnabled("addFilterButton"));
    installLetters(
        { QStringLiteral("Alpha"), QStringLiteral("Blur"), QStringLiteral("Crisp"), QStringLiteral("Dots") });
    EXPECT_TRUE(buttonEnabled("addFilterButton"));
    EXPECT_TRUE(child<QProgressBar>("loadingSpinner")->isHidden());

    QTest::mouseClick(child<QPushButton>("addFilterButton"), Qt::LeftButton);
    auto* sheet = child<QTableView>("addFilterList")->window();
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->windowModality(), Qt::WindowModal);
    EXPECT_EQ(child<QTableView>("addFilterList")->model()->rowCount(), 4);
    EXPECT_EQ(child<QTableView>("addFilterList")->model()->index(2, 1).data().toString(), "Test Author");
    EXPECT_FALSE(buttonEnabled("addBaseFiltersButton"));

    auto* list = child<QTableView>("addFilterList");
    list->selectionModel()->select(
        list->model()->index(3, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    EXPECT_TRUE(buttonEnabled("addBaseFiltersButton"));
    list->selectionModel()->select(
        list->model()->index(1, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    QTest::mouseClick(child<QPushButton>("addBaseFiltersButton"), Qt::LeftButton);

    EXPECT_FALSE(sheet->isVisible());
    EXPECT_EQ(chainRows(), QStringList({ "1. Blur", "2. Dots" }));
    EXPECT_EQ(selectedRow("filterList"), -1);
}

TEST_F(ChainWindowTest, CancellingTheSheetLeavesTheChain)
{
    installLetters({ QStringLiteral("Alpha"), QStringLiteral("Blur") });
    addFromSheet({ 0 });
    QTest::mouseClick(child<QPushButton>("addFilterButton"), Qt::LeftButton);
    QTest::mouseClick(child<QPushButton>("addFilterCancelButton"), Qt::LeftButton);
    EXPECT_FALSE(child<QTableView>("addFilterList")->window()->isVisible());
    EXPECT_EQ(chainRows(), QStringList({ "1. Alpha" }));
}

TEST_F(ChainWindowTest, MoveButtonsFollowTheSelection)
{
    installLetters({ QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C") });
    addFromSheet({ 0, 1, 2 });
    showParametersPage();
    EXPECT_FALSE(buttonEnabled("removeFilterButton"));
    EXPECT_FALSE(buttonEnabled("moveFilterUpButton"));
    EXPECT_FALSE(buttonEnabled("moveFilterDownButton"));

    selectRow("filterList", 2);
    EXPECT_TRUE(buttonEnabled("moveFilterUpButton"));
    EXPECT_FALSE(buttonEnabled("moveFilterDownButton"));

    QTest::mouseClick(child<QPushButton>("moveFilterUpButton"), Qt::LeftButton);
    EXPECT_EQ(chainRows(), QStringList({ "1. A", "2. C", "3. B" }));
    EXPECT_EQ(selectedRow("filterList"), 1);
    EXPECT_TRUE(buttonEnabled("moveFilterUpButton"));
    EXPECT_TRUE(buttonEnabled("moveFilterDownButton"));
    EXPECT_EQ(m_delegate->params(), m_delegate->chain()[1]->list(key::Components));

    QTest::mouseClick(child<QPushButton>("moveFilterDownButton"), Qt::LeftButton);
    EXPECT_EQ(chainRows(), QStringList({ "1. A", "2. B", "3. C" }));
    EXPECT_EQ(selectedRow("filterList"), 2);
    EXPECT_FALSE(buttonEnabled("moveFilterDownButton"));

    // The last filter cannot move down, the first cannot move up.
    QTest::mouseClick(child<QPushButton>("moveFilterDownButton"), Qt::LeftButton);
    EXPECT_EQ(chainRows(), QStringList({ "1. A", "2. B", "3. C" }));
    selectRow("filterList", 0);
    EXPECT_FALSE(buttonEnabled("moveFilterUpButton"));
    m_delegate->moveFilterUpInListWithSender();
    EXPECT_EQ(chainRows(), QStringList({ "1. A", "2. B", "3. C" }));
    EXPECT_EQ(selectedRow("filterList"), 0);
}

TEST_F(ChainWindowTest, RemovingKeepsTheSelectionAtThatPositionOrTheLastRow)
{
    installLetters({ QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C") });
    addFromSheet({ 0, 1, 2 });
    showParametersPage();

    selectRow("filterList", 1);
    QTest::mouseClick(child<QPushButton>("removeFilterButton"), Qt::LeftButton);
    EXPECT_EQ(chainRows(), QStringList({ "1. A", "2. C" }));
    EXPECT_EQ(selectedRow("filterList"), 1);
    EXPECT_EQ(m_delegate->params(), m_delegate->chain()[1]->list(key::Components));
    EXPECT_FALSE(buttonEnabled("moveFilterDownButton"));

    QTest::mouseClick(child<QPushButton>("removeFilterButton"), Qt::LeftButton);
    EXPECT_EQ(chainRows(), QStringList({ "1. A" }));
    EXPECT_EQ(selectedRow("filterList"), 0);

    QTest::mouseClick(child<QPushButton>("removeFilterButton"), Qt::LeftButton);
    EXPECT_TRUE(chainRows().isEmpty());
    EXPECT_EQ(selectedRow("filterList"), -1);
    EXPECT_FALSE(buttonEnabled("removeFilterButton"));
    EXPECT_EQ(child<QTableView>("filterParamList")->model()->rowCount(), 0);
}

TEST_F(ChainWindowTest, MapsAreOfferedForAOneFilterChainOnly)
{
    installLibrary({ { QStringLiteral("full.ffxml"), QStringLiteral("Full"), QStringLiteral("1"), {}, 1 },
        { QStringLiteral("plain.ffxml"), QStringLiteral("Plain"), QStringLiteral("2"), {}, 1 } });
    auto* activate = child<QCheckBox>("t_activateMaps");
    auto* box = child<QGroupBox>("t_mapsBox");
    const QList<QCheckBox*> maps = box->findChildren<QCheckBox*>();
    ASSERT_EQ(maps.size(), 10);
    EXPECT_TRUE(activate->isHidden());

    addFromSheet({ 0 }); // Full, type "1"
    EXPECT_FALSE(activate->isHidden());
    EXPECT_FALSE(activate->isChecked());
    EXPECT_TRUE(box->isHidden());
    QTest::mouseClick(activate, Qt::LeftButton);
    EXPECT_TRUE(activate->isChecked());
    EXPECT_FALSE(box->isHidden());
    for (QCheckBox* map : maps) {
        EXPECT_TRUE(map->isEnabled()) << map->objectName().toStdString();
        EXPECT_EQ(map->isChecked(), map->objectName() == "t_defaultMap") << map->objectName().toStdString();
    }

    // Switching on again starts from the default choice.
    QTest::mouseClick(child<QCheckBox>("t_normalMap"), Qt::LeftButton);
    QTest::mouseClick(activate, Qt::LeftButton);
    EXPECT_TRUE(box->isHidden());
    QTest::mouseClick(activate, Qt::LeftButton);
    EXPECT_FALSE(child<QCheckBox>("t_normalMap")->isChecked());

    // A second filter hides the switch and turns it off.
    addFromSheet({ 1 });
    EXPECT_TRUE(activate->isHidden());
    EXPECT_FALSE(activate->isChecked());
    EXPECT_TRUE(box->isHidden());

    // Back to one filter (type "2"): the switch shows, off; only base and alpha.
    selectRow("filterList", 0);
    QTest::mouseClick(child<QPushButton>("removeFilterButton"), Qt::LeftButton);
    EXPECT_FALSE(activate->isHidden());
    EXPECT_FALSE(activate->isChecked());
    EXPECT_TRUE(box->isHidden());
    for (QCheckBox* map : maps) {
        const bool offered = map->objectName() == "t_defaultMap" || map->objectName() == "t_alphaMap";
        EXPECT_EQ(map->isEnabled(), offered) << map->objectName().toStdString();
        EXPECT_EQ(map->isChecked(), map->objectName() == "t_defaultMap");
    }
}

TEST_F(ChainWindowTest, PresetPopupAndParametersFillOnTheParametersPageOnly)
{
    installLibrary({ { QStringLiteral("three.ffxml"), QStringLiteral("Three"), QStringLiteral("0"),
        sliderControls(), 3 } });
    addFromSheet({ 0 });
    auto* tabs = child<QTabWidget>("mainTabControl");
    EXPECT_EQ(tabs->widget(0)->property("identifier").toString(), "1");
    EXPECT_EQ(tabs->widget(1)->property("identifier").toString(), "2");
    ASSERT_NE(tabs->widget(0)->findChild<QWidget*>("settingsPage"), nullptr);

    tabs->setCurrentIndex(0);
    selectRow("filterList", 0);
    EXPECT_TRUE(buttonEnabled("removeFilterButton"));
    EXPECT_EQ(child<QTableView>("filterParamList")->model()->rowCount(), 0);
    EXPECT_EQ(child<QComboBox>("filterPresetPopup")->count(), 0);

    tabs->setCurrentIndex(1);
    EXPECT_EQ(child<QTableView>("filterParamList")->model()->rowCount(), 2);
    auto* presets = child<QComboBox>("filterPresetPopup");
    ASSERT_EQ(presets->count(), 3);
    EXPECT_EQ(presets->itemText(0), "Preset 0");
    EXPECT_EQ(presets->itemText(2), "Preset 2");
    EXPECT_EQ(presets->currentIndex(), 0);

    // A preset picked by the user stays until the chain selection is refreshed.
    presets->setCurrentIndex(2);
    m_delegate->chain()[0]->setInteger(key::ChoosenPreset, 1);
    m_delegate->filterListClick();
    EXPECT_EQ(presets->currentIndex(), 1);
    m_delegate->chain()[0]->setInteger(key::ChoosenPreset, 7);
    m_delegate->filterListClick();
    EXPECT_EQ(presets->currentIndex(), 0);
}

TEST_F(ChainWindowTest, OneLibraryFilterAddedTwiceIsOneRecord)
{
    installLibrary(
        { { QStringLiteral("a.ffxml"), QStringLiteral("A"), QStringLiteral("0"), sliderControls(), 1 } });
    addFromSheet({ 0 });
    addFromSheet({ 0 });
    ASSERT_EQ(chainRows(), QStringList({ "1. A", "2. A" }));
    showParametersPage();

    selectRow("filterList", 0);
    selectRow("filterParamList", 1); // the Variations row, active from the start
    child<QComboBox>("fpVariationModePopup")->setCurrentIndex(1);

    selectRow("filterList", 1);
    EXPECT_EQ(paramCell(1, 2), "[Sweep] 1 - 30000");
    EXPECT_EQ(m_delegate->chain()[0], m_delegate->chain()[1]);
}

TEST_F(ChainWindowTest, AFilterWhoseDefinitionIsGoneIsNotAdded)
{
    installLetters({ QStringLiteral("Alpha"), QStringLiteral("Gone") });
    ASSERT_TRUE(QFile::remove(m_dir.filePath(QStringLiteral("Gone.ffxml"))));
    addFromSheet({ 0, 1 });
    EXPECT_EQ(chainRows(), QStringList({ "1. Alpha" }));
    ASSERT_EQ(MessageBoxes::instance().shownMessages().size(), 1);
    EXPECT_TRUE(MessageBoxes::instance().shownMessages().first().contains("Gone"));
}

class ParameterEditorTest : public ChainWindowTest {
protected:
    void SetUp() override
    {
        ChainWindowTest::SetUp();
        installLibrary({ { QStringLiteral("all.ffxml"), QStringLiteral("All Kinds"), QStringLiteral("1"),
            QStringLiteral("<SliderControl id=\"s\"><Name value-en=\"Glow\"/></SliderControl>"
                           "<IntSliderControl id=\"i\"><Name value-en=\"Radius\"/>"
                           "<RangeMax value=\"255\"/></IntSliderControl>"
                           "<AngleControl id=\"a\"><Name value-en=\"Angle\"/></AngleControl>"
                           "<CheckboxControl id=\"c\"><Name value-en=\"Invert\"/></CheckboxControl>"),
            1 } });
        addFromSheet({ 0 });
        showParametersPage();
        selectRow("filterList", 0);
    }

    enum Row { SliderRow, IntRow, AngleRow, CheckRow, VariationRow };

    const Record& param(int row) const { return *(*m_delegate->params())[static_cast<size_t>(row)]; }
    QGroupBox* editor() const { return child<QGroupBox>("filterParamGroup"); }
};

TEST_F(ParameterEditorTest, TableShowsKindNameModeAndRange)
{
    ASSERT_EQ(child<QTableView>("filterParamList")->model()->rowCount(), 5);
    EXPECT_EQ(paramCell(SliderRow, 1), "[Slider] Glow");
    EXPECT_EQ(paramCell(SliderRow, 2), "[Random] 0 - 1");
    EXPECT_EQ(paramCell(IntRow, 1), "[IntSlider] Radius");
    EXPECT_EQ(paramCell(IntRow, 2), "[Random] 1 - 255");
    EXPECT_EQ(paramCell(AngleRow, 2), "[Random] 0 - 360");
    EXPECT_EQ(paramCell(CheckRow, 1), "[Checkbox] Invert");
    EXPECT_EQ(paramCell(CheckRow, 2), "[Random] 0 - 1");
    EXPECT_EQ(paramCell(VariationRow, 1), "[Variation] Variations");
    EXPECT_EQ(paramCell(VariationRow, 2), "[Random] 1 - 30000");

    const QAbstractItemModel* model = child<QTableView>("filterParamList")->model();
    EXPECT_EQ(model->index(SliderRow, 0).data(Qt::CheckStateRole).toInt(), Qt::Unchecked);
    EXPECT_EQ(model->index(VariationRow, 0).data(Qt::CheckStateRole).toInt(), Qt::Checked);
}

TEST_F(ParameterEditorTest, EditorShowsOnlyForAnActiveRow)
{
    selectRow("filterParamList", AngleRow);
    EXPECT_TRUE(editor()->isHidden());
    setActive(AngleRow, true);
    EXPECT_FALSE(editor()->isHidden());
    EXPECT_EQ(param(AngleRow).integer(key::ACTIVE), 1);
    EXPECT_EQ(child<QTabWidget>("filterParamTabView")->currentIndex(), 2);
    EXPECT_EQ(child<QLineEdit>("fpFloatSliderFromField")->text(), "0.0");
    EXPECT_EQ(child<QLineEdit>("fpFloatSliderToField")->text(), "360.0");
    setActive(AngleRow, false);
    EXPECT_TRUE(editor()->isHidden());

    selectRow("filterParamList", VariationRow);
    EXPECT_FALSE(editor()->isHidden());
    EXPECT_EQ(child<QTabWidget>("filterParamTabView")->currentIndex(), 3);
    EXPECT_EQ(child<QLineEdit>("fpVariationToField")->text(), "30000");
}

TEST_F(ParameterEditorTest, IntegerSlidersMirrorAndBoundEachOther)
{
    setActive(IntRow, true);
    selectRow("filterParamList", IntRow);
    auto* from = child<QSlider>("fpIntSliderFromSlider");
    auto* to = child<QSlider>("fpIntSliderToSlider");
    EXPECT_EQ(from->maximum(), 255);
    EXPECT_EQ(to->minimum(), 1);

    from->setValue(40);
    EXPECT_EQ(child<QLineEdit>("fpIntSliderFromField")->text(), "40");
    EXPECT_EQ(to->minimum(), 40);
    EXPECT_EQ(param(IntRow).integer(key::MINVALUE), 40);
    EXPECT_EQ(param(IntRow).integer(key::STARTVALUE), 40);

    to->setValue(60);
    EXPECT_EQ(child<QLineEdit>("fpIntSliderToField")->text(), "60");
    EXPECT_EQ(from->maximum(), 60);
    EXPECT_EQ(paramCell(IntRow, 2), "[Random] 40 - 60");

    // A field moves its slider (which clamps) and stores, without bounding.
    typeInto("fpIntSliderFromField", QStringLiteral("50"));
    EXPECT_EQ(from->value(), 50);
    EXPECT_EQ(param(IntRow).integer(key::MINVALUE), 50);
    EXPECT_EQ(to->minimum(), 40);
    typeInto("fpIntSliderToField", QStringLiteral("999"));
    EXPECT_EQ(to->value(), 255);
    EXPECT_EQ(param(IntRow).integer(key::MAXVALUE), 255);

    child<QComboBox>("fpIntSliderModePopup")->setCurrentIndex(1);
    EXPECT_EQ(paramCell(IntRow, 2), "[Sweep] 50 - 255");
}

TEST_F(ParameterEditorTest, TypingIntoTheFromFieldStoresWithoutBounding)
{
    setActive(IntRow, true);
    selectRow("filterParamList", IntRow);
    typeInto("fpIntSliderFromField", QStringLiteral("7"));
    EXPECT_EQ(child<QSlider>("fpIntSliderFromSlider")->value(), 7);
    EXPECT_EQ(param(IntRow).integer(key::MINVALUE), 7);
    EXPECT_EQ(param(IntRow).integer(key::STARTVALUE), 7);
    EXPECT_EQ(child<QSlider>("fpIntSliderToSlider")->minimum(), 1);
}

TEST_F(ParameterEditorTest, RealSlidersWorkInThousandths)
{
    setActive(SliderRow, true);
    selectRow("filterParamList", SliderRow);
    EXPECT_EQ(child<QLineEdit>("fpFloatSliderToField")->text(), "1.0");

    typeInto("fpFloatSliderFromField", QStringLiteral("0.25"));
    EXPECT_EQ(child<QSlider>("fpFloatSliderFromSlider")->value(), 250);
    EXPECT_DOUBLE_EQ(param(SliderRow).real(key::MINVALUE), 0.25);
    EXPECT_TRUE(param(SliderRow).holdsReal(key::MINVALUE));
    EXPECT_EQ(paramCell(SliderRow, 2), "[Random] 0.25 - 1");

    child<QSlider>("fpFloatSliderToSlider")->setValue(500);
    EXPECT_EQ(child<QLineEdit>("fpFloatSliderToField")->text(), "0.5");
    EXPECT_EQ(child<QSlider>("fpFloatSliderFromSlider")->maximum(), 500);
    EXPECT_EQ(paramCell(SliderRow, 2), "[Random] 0.25 - 0.5");

    setActive(AngleRow, true);
    selectRow("filterParamList", AngleRow);
    child<QSlider>("fpFloatSliderToSlider")->setValue(359999);
    EXPECT_EQ(child<QLineEdit>("fpFloatSliderToField")->text(), "359.999");
    EXPECT_EQ(paramCell(AngleRow, 2), "[Random] 0 - 360");
}

TEST_F(ParameterEditorTest, CheckboxModeChangesOnlyTheMode)
{
    setActive(CheckRow, true);
    selectRow("filterParamList", CheckRow);
    EXPECT_EQ(child<QTabWidget>("filterParamTabView")->currentIndex(), 0);
    child<QComboBox>("fpCheckboxModePopup")->setCurrentIndex(1);
    EXPECT_EQ(paramCell(CheckRow, 2), "[Toggle] 0 - 1");
    EXPECT_EQ(param(CheckRow).integer(key::STARTVALUE), 0);
    EXPECT_EQ(param(CheckRow).integer(key::POPSTATE), 1);
}

TEST_F(ParameterEditorTest, ChangingTheModeRestartsAtFrom)
{
    selectRow("filterParamList", VariationRow);
    child<QSlider>("fpVariationFromSlider")->setValue(10);
    EXPECT_EQ(child<QSlider>("fpVariationToSlider")->minimum(), 10);
    // A run has advanced the value meanwhile.
    (*m_delegate->params())[VariationRow]->setInteger(key::STARTVALUE, 14);
    child<QComboBox>("fpVariationModePopup")->setCurrentIndex(1);
    EXPECT_EQ(param(VariationRow).integer(key::STARTVALUE), 10);
    EXPECT_EQ(paramCell(VariationRow, 2), "[Sweep] 10 - 30000");
}

TEST_F(ParameterEditorTest, StoringWithoutASelectedRowChangesNothing)
{
    child<QTableView>("filterParamList")->clearSelection();
    testing::internal::CaptureStdout();
    m_delegate->reallyUpdateFilterValues();
    EXPECT_EQ(
        testing::internal::GetCapturedStdout(), "Tried to much filter values with no valueline selected\n");
}

TEST_F(ParameterEditorTest, EditorBoxNamesTheRowItEdits)
{
    setActive(IntRow, true);
    selectRow("filterParamList", IntRow);
    EXPECT_EQ(editor()->title(), "Variation of Radius over the frames");
    selectRow("filterParamList", VariationRow);
    EXPECT_EQ(editor()->title(), "Variation of Variations over the frames");
}

} // namespace

namespace {

class ChainFileWindowTest : public ChainWindowTest {
protected:
    QString chainPath(const char* name) const { return m_dir.filePath(QString::fromLatin1(name)); }

    QString clickCapturingStdout(const char* buttonName)
    {
        testing::internal::CaptureStdout();
        QTest::mouseClick(child<QPushButton>(buttonName), Qt::LeftButton);
        return QString::fromStdString(testing::internal::GetCapturedStdout());
    }

    void writeText(const QString& path, const QByteArray& text)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
};

TEST_F(ChainFileWindowTest, SaveThenOpenGivesTheSameChain)
{
    installLibrary({ { QStringLiteral("a.ffxml"), QStringLiteral("A"), QStringLiteral("1"), sliderControls(),
                         2 },
        { QStringLiteral("b.ffxml"), QStringLiteral("B"), QStringLiteral("0"),
            QStringLiteral("<CheckboxControl id=\"c\"><Name value-en=\"Invert\"/></CheckboxControl>"), 1 } });
    addFromSheet({ 0, 1 });
    addFromSheet({ 0 });
    showParametersPage();
    selectRow("filterList", 0);
    setActive(0, true);
    selectRow("filterParamList", 0);
    typeInto("fpFloatSliderFromField", QStringLiteral("0.125"));

    FileDialogs::instance().setNextFileName(chainPath("saved.qlch"));
    EXPECT_EQ(clickCapturingStdout("saveFilterChainButton"), "Saveres=true\n");
    const FileDialogRequest& save = FileDialogs::instance().lastRequest();
    EXPECT_EQ(save.mode, FileDialogRequest::Mode::Save);
    EXPECT_EQ(save.title, "Save filter chain");
    EXPECT_EQ(save.prompt, "Save");
    EXPECT_EQ(save.nameFilter, "Quillon chain (*.qlch)");
    EXPECT_EQ(save.defaultSuffix, "qlch");

    // Empty the chain, then open the file again.
    for (int i = 0; i < 3; ++i) {
        selectRow("filterList", 0);
        QTest::mouseClick(child<QPushButton>("removeFilterButton"), Qt::LeftButton);
    }
    ASSERT_TRUE(chainRows().isEmpty());
    FileDialogs::instance().setNextFileName(chainPath("saved.qlch"));
    QTest::mouseClick(child<QPushButton>("loadFilterChainButton"), Qt::LeftButton);
    const FileDialogRequest& open = FileDialogs::instance().lastRequest();
    EXPECT_EQ(open.mode, FileDialogRequest::Mode::Open);
    EXPECT_EQ(open.prompt, "Select Chain");
    EXPECT_EQ(open.message, "Quillon needs you to locate a saved filter chain");

    EXPECT_EQ(chainRows(), QStringList({ "1. A", "2. B", "3. A" }));
    EXPECT_TRUE(MessageBoxes::instance().shownMessages().isEmpty());
    // Opened records are independent of each other.
    EXPECT_NE(m_delegate->chain()[0], m_delegate->chain()[2]);

    selectRow("filterList", 0);
    EXPECT_EQ(paramCell(0, 1), "[Slider] Amount");
    EXPECT_EQ(paramCell(0, 2), "[Random] 0.12 - 1");
    EXPECT_EQ(child<QComboBox>("filterPresetPopup")->count(), 2);
    selectRow("filterParamList", 0);
    EXPECT_FALSE(child<QGroupBox>("filterParamGroup")->isHidden());
    EXPECT_EQ(child<QLineEdit>("fpFloatSliderFromField")->text(), "0.125");
    selectRow("filterList", 1);
    EXPECT_EQ(paramCell(0, 1), "[Checkbox] Invert");
}

TEST_F(ChainFileWindowTest, CancelledDialogsChangeNothing)
{
    installLetters({ QStringLiteral("A") });
    addFromSheet({ 0 });
    FileDialogs::instance().setNextFileName(QString());
    EXPECT_EQ(clickCapturingStdout("saveFilterChainButton"), "");
    FileDialogs::instance().setNextFileName(QString());
    QTest::mouseClick(child<QPushButton>("loadFilterChainButton"), Qt::LeftButton);
    EXPECT_EQ(chainRows(), QStringList({ "1. A" }));
    EXPECT_FALSE(QFile::exists(chainPath("A.qlch")));
}

TEST_F(ChainFileWindowTest, AFileThatIsNoChainIsRefusedAndTheChainStays)
{
    installLetters({ QStringLiteral("A") });
    addFromSheet({ 0 });
    writeText(chainPath("broken.qlch"), "this is not a property list");
    m_delegate->openChainFile(chainPath("broken.qlch"));
    EXPECT_EQ(chainRows(), QStringList({ "1. A" }));
    EXPECT_EQ(MessageBoxes::instance().shownMessages().size(), 1);
    EXPECT_EQ(MessageBoxes::instance().beeps(), 0);
}

TEST_F(ChainFileWindowTest, AnUnknownParameterCodeKeepsTheFiltersBeforeIt)
{
    const auto filter = [](const char* name, int code) {
        return QByteArray("<dict><key>name</key><string>") + name
            + "</string><key>Components</key><array><dict><key>CONTROL_ID</key><string>x</string>"
              "<key>CONTROL_PROXY</key><integer>"
            + QByteArray::number(code)
            + "</integer><key>ACTIVE</key><integer>0</integer><key>POPSTATE</key><integer>0</integer>"
              "<key>MINVALUE</key><integer>0</integer><key>MAXVALUE</key><integer>1</integer>"
              "<key>STARTVALUE</key><integer>0</integer></dict></array></dict>";
    };
    writeText(chainPath("odd.qlch"),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
        "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\"><array>"
            + filter("First", 0) + filter("Second", 7) + "</array></plist>\n");
    installLetters({ QStringLiteral("A"), QStringLiteral("B") });
    addFromSheet({ 0, 1 });

    testing::internal::CaptureStdout();
    m_delegate->openChainFile(chainPath("odd.qlch"));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Fuckdata in save\n");
    EXPECT_EQ(chainRows(), QStringList({ "1. First" }));
    EXPECT_EQ(MessageBoxes::instance().beeps(), 1);
    // One filter again: the maps switch is offered.
    EXPECT_FALSE(child<QCheckBox>("t_activateMaps")->isHidden());
}

} // namespace
