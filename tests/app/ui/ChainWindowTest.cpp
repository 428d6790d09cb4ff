#include "support/WindowFixture.h"

#include "library/FilterScan.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QFile>
#include <QGroupBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>

#include <tuple>

namespace quillon::test {
namespace {

const QString kSlider
    = QStringLiteral("<SliderControl id=\"amount\"><Name value-en=\"Amount\"/></SliderControl>");

struct Definition {
    QString name;
    QString filtertype;
    QString controls;
    int presets;
};

// The window, not launched, with a library handed over as a finished scan does.
class ChainWindowTest : public SettingsWindowTest {
protected:
    void SetUp() override
    {
        SettingsWindowTest::SetUp();
        delegate().window()->show();
        for (const char* name : { "filterList", "filterParamList", "addFilterList" })
            m_testers.push_back(std::make_unique<QAbstractItemModelTester>(
                widget<QTableView>(name)->model(), QAbstractItemModelTester::FailureReportingMode::Fatal));
    }

    void TearDown() override
    {
        m_testers.clear();
        SettingsWindowTest::TearDown();
    }

    // Writes the definitions, scans them and hands the library to the window
    // as a finished scan does.
    void installLibrary(const QList<Definition>& defs)
    {
        for (const Definition& def : defs) {
            QString presets;
            for (int i = 0; i < def.presets; ++i)
                presets
                    += QStringLiteral("<Preset name-en=\"P%1\"><Settings variation=\"1\"/></Preset>").arg(i);
            QFile file(m_dir.filePath(def.name + QStringLiteral(".ffxml")));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                      "<Filter><Information name-en=\"%1\" author=\"Test Author\"/>"
                                      "<Components><Result><FilterType value=\"%2\"/></Result>%3</Components>"
                                      "<Presets>%4</Presets></Filter>\n")
                           .arg(def.name, def.filtertype, def.controls, presets)
                           .toUtf8());
        }
        m_delegate->chainPanel()->fetchDoneWithArray(scanFilterDirectory(m_dir.path()));
    }

    void installLetters(const QStringList& names)
    {
        QList<Definition> defs;
        for (const QString& name : names)
            defs.append({ name, "0", kSlider, 1 });
        installLibrary(defs);
    }

    // Opens the sheet, selects the library rows in the order given and adds.
    void addFromSheet(const QList<int>& rows)
    {
        click("addFilterButton");
        auto* list = widget<QTableView>("addFilterList");
        for (const int row : rows)
            list->selectionModel()->select(
                list->model()->index(row, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        click("addBaseFiltersButton");
    }

    // The chain list as the user reads it: position number and name.
    QStringList chainRows()
    {
        QStringList rows;
        const QAbstractItemModel* model = widget<QTableView>("filterList")->model();
        for (int row = 0; row < model->rowCount(); ++row)
            rows.append(model->headerData(row, Qt::Vertical).toString() + QLatin1Char(' ')
                + model->index(row, 0).data().toString());
        return rows;
    }

    void selectRow(const char* table, int row)
    {
        auto* view = widget<QTableView>(table);
        view->selectionModel()->select(
            view->model()->index(row, 0), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }

    int selectedRow(const char* table)
    {
        const QModelIndexList rows = widget<QTableView>(table)->selectionModel()->selectedRows();
        return rows.isEmpty() ? -1 : rows.first().row();
    }

    void showParametersPage() { widget<QTabWidget>("mainTabControl")->setCurrentIndex(1); }

    QString paramCell(int row, int column)
    {
        const QAbstractItemModel* model = widget<QTableView>("filterParamList")->model();
        return model->index(row, column).data().toString();
    }

    void setActive(int row, bool on)
    {
        QAbstractItemModel* model = widget<QTableView>("filterParamList")->model();
        model->setData(model->index(row, 0), on ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole);
    }

    void click(const char* button) { QTest::mouseClick(widget<QPushButton>(button), Qt::LeftButton); }
    bool buttonEnabled(const char* name) { return widget<QPushButton>(name)->isEnabled(); }

    std::vector<std::unique_ptr<QAbstractItemModelTester>> m_testers;
};

TEST_F(ChainWindowTest, AddButtonWaitsForTheLibraryAndTheSheetAddsInLibraryOrder)
{
    EXPECT_FALSE(buttonEnabled("addFilterButton"));
    installLetters({ "Alpha", "Blur", "Crisp", "Dots" });
    EXPECT_TRUE(buttonEnabled("addFilterButton"));
    EXPECT_TRUE(widget<QProgressBar>("loadingSpinner")->isHidden());

    click("addFilterButton");
    auto* list = widget<QTableView>("addFilterList");
    auto* sheet = list->window();
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->windowModality(), Qt::WindowModal);
    EXPECT_EQ(list->model()->rowCount(), 4);
    EXPECT_EQ(list->model()->index(2, 1).data().toString(), "Test Author");
    EXPECT_FALSE(buttonEnabled("addBaseFiltersButton"));

    list->selectionModel()->select(
        list->model()->index(3, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    EXPECT_TRUE(buttonEnabled("addBaseFiltersButton"));
    list->selectionModel()->select(
        list->model()->index(1, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    click("addBaseFiltersButton");

    EXPECT_FALSE(sheet->isVisible());
    EXPECT_EQ(chainRows(), QStringList({ "1. Blur", "2. Dots" }));
    EXPECT_EQ(selectedRow("filterList"), -1);

    // Cancelling leaves the chain.
    click("addFilterButton");
    click("addFilterCancelButton");
    EXPECT_FALSE(sheet->isVisible());
    EXPECT_EQ(chainRows(), QStringList({ "1. Blur", "2. Dots" }));
}

TEST_F(ChainWindowTest, MoveAndRemoveButtonsFollowTheSelection)
{
    installLetters({ "A", "B", "C" });
    addFromSheet({ 0, 1, 2 });
    showParametersPage();
    for (const char* button : { "removeFilterButton", "moveFilterUpButton", "moveFilterDownButton" })
        EXPECT_FALSE(buttonEnabled(button)) << button;

    selectRow("filterList", 2);
    EXPECT_TRUE(buttonEnabled("moveFilterUpButton"));
    EXPECT_FALSE(buttonEnabled("moveFilterDownButton"));

    click("moveFilterUpButton");
    EXPECT_EQ(chainRows(), QStringList({ "1. A", "2. C", "3. B" }));
    EXPECT_EQ(selectedRow("filterList"), 1);
    EXPECT_TRUE(buttonEnabled("moveFilterUpButton") && buttonEnabled("moveFilterDownButton"));
    EXPECT_EQ(m_delegate->params(), m_delegate->chain()[1]->list(key::Components));

    click("moveFilterDownButton");
    EXPECT_EQ(chainRows(), QStringList({ "1. A", "2. B", "3. C" }));
    EXPECT_EQ(selectedRow("filterList"), 2);
    EXPECT_FALSE(buttonEnabled("moveFilterDownButton"));

    // The last filter cannot move down, the first cannot move up.
    click("moveFilterDownButton");
    EXPECT_EQ(chainRows(), QStringList({ "1. A", "2. B", "3. C" }));
    selectRow("filterList", 0);
    EXPECT_FALSE(buttonEnabled("moveFilterUpButton"));
    m_delegate->chainPanel()->moveFilterUpInListWithSender();
    EXPECT_EQ(chainRows(), QStringList({ "1. A", "2. B", "3. C" }));
    EXPECT_EQ(selectedRow("filterList"), 0);

    // Removing keeps the selection at that position, or the last row.
    selectRow("filterList", 1);
    click("removeFilterButton");
    EXPECT_EQ(chainRows(), QStringList({ "1. A", "2. C" }));
    EXPECT_EQ(selectedRow("filterList"), 1);
    EXPECT_EQ(m_delegate->params(), m_delegate->chain()[1]->list(key::Components));
    EXPECT_FALSE(buttonEnabled("moveFilterDownButton"));

    click("removeFilterButton");
    EXPECT_EQ(chainRows(), QStringList({ "1. A" }));
    EXPECT_EQ(selectedRow("filterList"), 0);

    click("removeFilterButton");
    EXPECT_TRUE(chainRows().isEmpty());
    EXPECT_EQ(selectedRow("filterList"), -1);
    EXPECT_FALSE(buttonEnabled("removeFilterButton"));
    EXPECT_EQ(widget<QTableView>("filterParamList")->model()->rowCount(), 0);
}

TEST_F(ChainWindowTest, MapsAreOfferedForAOneFilterChainOnly)
{
    installLibrary({ { "Full", "1", {}, 1 }, { "Plain", "2", {}, 1 } });
    auto* activate = widget<QCheckBox>("t_activateMaps");
    auto* box = widget<QGroupBox>("t_mapsBox");
    // (switch hidden, switch on, box hidden)
    const auto state
        = [&] { return std::tuple(activate->isHidden(), activate->isChecked(), box->isHidden()); };
    // Every map is offered, or only base and alpha; base is the one chosen.
    const auto expectMaps = [box](bool all) {
        const QList<QCheckBox*> maps = box->findChildren<QCheckBox*>();
        ASSERT_EQ(maps.size(), 10);
        for (QCheckBox* map : maps) {
            const QString name = map->objectName();
            EXPECT_EQ(map->isEnabled(), all || name == "t_defaultMap" || name == "t_alphaMap")
                << name.toStdString();
            EXPECT_EQ(map->isChecked(), name == "t_defaultMap") << name.toStdString();
        }
    };
    EXPECT_TRUE(activate->isHidden());

    addFromSheet({ 0 }); // Full, type "1"
    EXPECT_EQ(state(), std::tuple(false, false, true));
    QTest::mouseClick(activate, Qt::LeftButton);
    EXPECT_EQ(state(), std::tuple(false, true, false));
    expectMaps(true);

    // Switching on again starts from the default choice.
    QTest::mouseClick(widget<QCheckBox>("t_normalMap"), Qt::LeftButton);
    QTest::mouseClick(activate, Qt::LeftButton);
    EXPECT_TRUE(box->isHidden());
    QTest::mouseClick(activate, Qt::LeftButton);
    EXPECT_FALSE(widget<QCheckBox>("t_normalMap")->isChecked());

    // A second filter hides the switch and turns it off.
    addFromSheet({ 1 });
    EXPECT_EQ(state(), std::tuple(true, false, true));

    // Back to one filter (type "2"): the switch shows, off.
    selectRow("filterList", 0);
    click("removeFilterButton");
    EXPECT_EQ(state(), std::tuple(false, false, true));
    expectMaps(false);
}

TEST_F(ChainWindowTest, PresetPopupAndParametersFillOnTheParametersPageOnly)
{
    installLibrary({ { "Three", "0", kSlider, 3 } });
    addFromSheet({ 0 });
    auto* tabs = widget<QTabWidget>("mainTabControl");
    tabs->setCurrentIndex(0);
    selectRow("filterList", 0);
    EXPECT_TRUE(buttonEnabled("removeFilterButton"));
    EXPECT_EQ(widget<QTableView>("filterParamList")->model()->rowCount(), 0);
    EXPECT_EQ(widget<QComboBox>("filterPresetPopup")->count(), 0);

    tabs->setCurrentIndex(1);
    EXPECT_EQ(widget<QTableView>("filterParamList")->model()->rowCount(), 2);
    auto* presets = widget<QComboBox>("filterPresetPopup");
    ASSERT_EQ(presets->count(), 3);
    EXPECT_EQ(presets->itemText(2), "Preset 2");
    EXPECT_EQ(presets->currentIndex(), 0);

    // A preset picked by the user stays until the chain selection is refreshed.
    presets->setCurrentIndex(2);
    m_delegate->chain()[0]->setInteger(key::ChoosenPreset, 1);
    m_delegate->chainPanel()->filterListClick();
    EXPECT_EQ(presets->currentIndex(), 1);
    m_delegate->chain()[0]->setInteger(key::ChoosenPreset, 7);
    m_delegate->chainPanel()->filterListClick();
    EXPECT_EQ(presets->currentIndex(), 0);
}

TEST_F(ChainWindowTest, OneLibraryFilterAddedTwiceIsOneRecord)
{
    installLetters({ "A" });
    addFromSheet({ 0 });
    addFromSheet({ 0 });
    ASSERT_EQ(chainRows(), QStringList({ "1. A", "2. A" }));
    showParametersPage();

    selectRow("filterList", 0);
    selectRow("filterParamList", 1); // the Variations row, active from the start
    widget<QComboBox>("fpVariationModePopup")->setCurrentIndex(1);

    selectRow("filterList", 1);
    EXPECT_EQ(paramCell(1, 2), "[Sweep] 1 - 30000");
    EXPECT_EQ(m_delegate->chain()[0], m_delegate->chain()[1]);
}

TEST_F(ChainWindowTest, AFilterWhoseDefinitionIsGoneIsNotAdded)
{
    installLetters({ "Alpha", "Gone" });
    ASSERT_TRUE(QFile::remove(m_dir.filePath(QStringLiteral("Gone.ffxml"))));
    addFromSheet({ 0, 1 });
    EXPECT_EQ(chainRows(), QStringList({ "1. Alpha" }));
    ASSERT_EQ(alerts().size(), 1);
    EXPECT_TRUE(alerts().first().contains("Gone"));
}

using ChainFileWindowTest = ChainWindowTest;

TEST_F(ChainFileWindowTest, SaveThenOpenGivesTheSameChain)
{
    installLibrary({ { "A", "1", kSlider, 2 },
        { "B", "0", QStringLiteral("<CheckboxControl id=\"c\"><Name value-en=\"Invert\"/></CheckboxControl>"),
            1 } });
    addFromSheet({ 0, 1 });
    addFromSheet({ 0 });
    showParametersPage();
    selectRow("filterList", 0);
    setActive(0, true);
    selectRow("filterParamList", 0);
    typeInto("fpFloatSliderFromField", QStringLiteral("0.125"));

    // Cancelled dialogs change nothing.
    testing::internal::CaptureStdout();
    FileDialogs::instance().setNextFileName(QString());
    click("saveFilterChainButton");
    FileDialogs::instance().setNextFileName(QString());
    click("loadFilterChainButton");
    EXPECT_EQ(chainRows(), QStringList({ "1. A", "2. B", "3. A" }));
    EXPECT_TRUE(QDir(m_dir.path()).entryList({ QStringLiteral("*.qlch") }, QDir::Files).isEmpty());

    FileDialogs::instance().setNextFileName(m_dir.filePath(QStringLiteral("saved.qlch")));
    click("saveFilterChainButton");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Saveres=true\n");

    for (int i = 0; i < 3; ++i) {
        selectRow("filterList", 0);
        click("removeFilterButton");
    }
    ASSERT_TRUE(chainRows().isEmpty());
    FileDialogs::instance().setNextFileName(m_dir.filePath(QStringLiteral("saved.qlch")));
    click("loadFilterChainButton");

    EXPECT_EQ(chainRows(), QStringList({ "1. A", "2. B", "3. A" }));
    EXPECT_TRUE(alerts().isEmpty());

    selectRow("filterList", 0);
    EXPECT_EQ(paramCell(0, 2), "[Random] 0.12 - 1");
    EXPECT_EQ(widget<QComboBox>("filterPresetPopup")->count(), 2);
    selectRow("filterParamList", 0);
    EXPECT_FALSE(widget<QGroupBox>("filterParamGroup")->isHidden());
    EXPECT_EQ(widget<QLineEdit>("fpFloatSliderFromField")->text(), "0.125");
    selectRow("filterList", 1);
    EXPECT_EQ(paramCell(0, 1), "[Checkbox] Invert");
}

} // namespace
} // namespace quillon::test
