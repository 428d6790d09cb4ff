// The chain side of the window: the add sheet, the edit buttons, maps,
// presets, and chain files saved and opened through the window.

#include "support/WindowFixture.h"

#include "library/FilterScan.h"

#include <QAbstractItemModelTester>
#include <QGroupBox>
#include <QSignalSpy>

#include <tuple>

namespace quillon::test {
namespace {

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

    // Sample definitions (a slider, a check box, two presets; filter type 1,
    // or 2 for "Plain") handed to the window as a finished scan does.
    void installLibrary(const QStringList& names)
    {
        for (const QString& name : names) {
            QFile file(writeBatchDefinition(m_dir.path(), name + ".ffxml", name, "Test Author"));
            if (name != QLatin1String("Plain"))
                continue;
            ASSERT_TRUE(file.open(QIODevice::ReadWrite));
            const QByteArray text
                = file.readAll().replace("<FilterType value=\"1\"/>", "<FilterType value=\"2\"/>");
            ASSERT_TRUE(file.seek(0) && file.write(text) == text.size());
        }
        m_delegate->chainPanel()->fetchDoneWithArray(scanFilterDirectory(m_dir.path()));
    }

    void selectRows(const char* table, const QList<int>& rows, bool clear = true)
    {
        auto* view = widget<QTableView>(table);
        for (const int row : rows) {
            const auto how = clear && row == rows.first() ? QItemSelectionModel::ClearAndSelect
                                                          : QItemSelectionModel::Select;
            view->selectionModel()->select(view->model()->index(row, 0), how | QItemSelectionModel::Rows);
        }
    }

    // Opens the sheet, selects the library rows in the order given and adds.
    void addFromSheet(const QList<int>& rows)
    {
        click("addFilterButton");
        selectRows("addFilterList", rows);
        click("addBaseFiltersButton");
    }

    // The chain list as the user reads it (position number and name), the
    // selected row and the edit buttons that are on:
    // "1. A, 2. B | selected 1 | remove up down".
    QString panel()
    {
        QStringList rows;
        const QAbstractItemModel* model = widget<QTableView>("filterList")->model();
        for (int row = 0; row < model->rowCount(); ++row)
            rows.append(model->headerData(row, Qt::Vertical).toString() + QLatin1Char(' ')
                + model->index(row, 0).data().toString());
        const QModelIndexList selected = widget<QTableView>("filterList")->selectionModel()->selectedRows();
        QString text = rows.join(QStringLiteral(", ")) + QStringLiteral(" | selected ")
            + (selected.isEmpty() ? QStringLiteral("none") : QString::number(selected.first().row())) + " |";
        for (const auto& [button, word] : { std::pair("removeFilterButton", " remove"),
                 std::pair("moveFilterUpButton", " up"), std::pair("moveFilterDownButton", " down") })
            text += widget<QPushButton>(button)->isEnabled() ? QString::fromLatin1(word) : QString();
        return text;
    }

    void showParametersPage() { widget<QTabWidget>("mainTabControl")->setCurrentIndex(1); }

    std::vector<std::unique_ptr<QAbstractItemModelTester>> m_testers;
};

TEST_F(ChainWindowTest, MoveAndRemoveButtonsFollowTheSelection)
{
    installLibrary({ "A", "B", "C" });
    // Edits insert, move and remove rows: the list is never reset under the user.
    QSignalSpy resets(widget<QTableView>("filterList")->model(), &QAbstractItemModel::modelReset);
    addFromSheet({ 2, 0, 1 }); // added in library order
    showParametersPage();
    EXPECT_EQ(panel(), "1. A, 2. B, 3. C | selected none |");
    selectRows("filterList", { 2 });
    EXPECT_EQ(panel(), "1. A, 2. B, 3. C | selected 2 | remove up");
    click("moveFilterUpButton");
    EXPECT_EQ(panel(), "1. A, 2. C, 3. B | selected 1 | remove up down");
    EXPECT_EQ(m_delegate->params(), m_delegate->chain()[1]->list(key::Components));
    click("moveFilterDownButton");
    EXPECT_EQ(panel(), "1. A, 2. B, 3. C | selected 2 | remove up");

    // The first filter cannot move up, even when asked directly.
    selectRows("filterList", { 0 });
    EXPECT_EQ(panel(), "1. A, 2. B, 3. C | selected 0 | remove down");
    m_delegate->chainPanel()->moveFilterUpInListWithSender();
    EXPECT_EQ(panel(), "1. A, 2. B, 3. C | selected 0 | remove down");

    // Removing keeps the selection at that position, or the last row.
    selectRows("filterList", { 1 });
    click("removeFilterButton");
    EXPECT_EQ(panel(), "1. A, 2. C | selected 1 | remove up");
    EXPECT_EQ(m_delegate->params(), m_delegate->chain()[1]->list(key::Components));
    click("removeFilterButton");
    EXPECT_EQ(panel(), "1. A | selected 0 | remove");
    click("removeFilterButton");
    EXPECT_EQ(panel(), " | selected none |");
    EXPECT_EQ(widget<QTableView>("filterParamList")->model()->rowCount(), 0);
    EXPECT_EQ(resets.count(), 0);
}

TEST_F(ChainWindowTest, MapsAreOfferedForAOneFilterChainOnly)
{
    installLibrary({ "Full", "Plain" });
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
    activate->click();
    EXPECT_EQ(state(), std::tuple(false, true, false));
    expectMaps(true);

    // Switching on again starts from the default choice.
    box->findChild<QCheckBox*>(QStringLiteral("t_normalMap"))->click();
    activate->click();
    EXPECT_TRUE(box->isHidden());
    activate->click();
    expectMaps(true);

    // A second filter hides the switch and turns it off.
    addFromSheet({ 1 });
    EXPECT_EQ(state(), std::tuple(true, false, true));

    // Back to one filter (type "2"): the switch shows, off.
    selectRows("filterList", { 0 });
    click("removeFilterButton");
    EXPECT_EQ(state(), std::tuple(false, false, true));
    expectMaps(false);
}

TEST_F(ChainWindowTest, PresetPopupAndParametersFillOnTheParametersPageOnly)
{
    installLibrary({ "Two" });
    addFromSheet({ 0 });
    auto* tabs = widget<QTabWidget>("mainTabControl");
    auto* presets = widget<QComboBox>("filterPresetPopup");
    tabs->setCurrentIndex(0);
    selectRows("filterList", { 0 });
    EXPECT_EQ(panel(), "1. Two | selected 0 | remove");
    EXPECT_EQ(widget<QTableView>("filterParamList")->model()->rowCount(), 0);
    EXPECT_EQ(presets->count(), 0);

    tabs->setCurrentIndex(1);
    EXPECT_EQ(widget<QTableView>("filterParamList")->model()->rowCount(), 3);
    ASSERT_EQ(presets->count(), 2);
    EXPECT_EQ(presets->itemText(1), "Preset 1 — Strong") << "the definition's name beside the number";
    EXPECT_EQ(presets->currentIndex(), 0);

    // The stored preset shows when the chain selection is refreshed; one out
    // of range falls back to the first.
    m_delegate->chain()[0]->setInteger(key::ChoosenPreset, 1);
    m_delegate->chainPanel()->filterListClick();
    EXPECT_EQ(presets->currentIndex(), 1);
    m_delegate->chain()[0]->setInteger(key::ChoosenPreset, 7);
    m_delegate->chainPanel()->filterListClick();
    EXPECT_EQ(presets->currentIndex(), 0);
}

TEST_F(ChainWindowTest, OneLibraryFilterAddedTwiceIsOneRecordAndAGoneOneIsNotAdded)
{
    installLibrary({ "A", "Gone" });
    ASSERT_TRUE(QFile::remove(m_dir.filePath(QStringLiteral("Gone.ffxml"))));
    addFromSheet({ 0, 1 });
    ASSERT_EQ(alerts().size(), 1);
    EXPECT_TRUE(alerts().first().contains("Gone"));
    addFromSheet({ 0 });
    ASSERT_EQ(panel(), "1. A, 2. A | selected none |");
    // An edit of one row's parameters is an edit of both.
    EXPECT_EQ(m_delegate->chain()[0], m_delegate->chain()[1]);
}

} // namespace
} // namespace quillon::test
