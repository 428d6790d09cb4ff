#include "variations/ui/ParameterEditor.h"
#include "variations/ui/ParamTableModel.h"

#include <QAbstractItemModelTester>
#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QSlider>
#include <QTabWidget>
#include <QTableView>
#include <gtest/gtest.h>

namespace quillon {
namespace {

// The editor over one row of each kind, as a chain filter's parameters.
class ParameterEditorTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        for (const auto& [kind, name] :
            { std::pair(controlType::kTypeSlider, "Glow"), std::pair(controlType::kTypeIntSlider, "Radius"),
                std::pair(controlType::kTypeAngle, "Angle"),
                std::pair(controlType::kTypeCheckbox, "Invert") }) {
            RecordPtr row = makeParameterRecord(kind, QString::fromLatin1(name).toLower());
            row->setString(key::CONTROL_NAME, QString::fromLatin1(name));
            m_params->push_back(row);
        }
        (*m_params)[IntRow]->setInteger(key::CONTROL_MAX, 255);
        (*m_params)[IntRow]->setInteger(key::MAXVALUE, 255);
        m_params->push_back(makeParameterRecord(controlType::kTypeVariations, {}));
        m_editor.setParams(m_params);
    }

    enum Row { SliderRow, IntRow, AngleRow, CheckRow, VariationRow };

    template <class T> T* widget(const char* name)
    {
        T* found = m_editor.findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    const Record& param(int row) const { return *(*m_params)[static_cast<size_t>(row)]; }
    QGroupBox* editor() { return widget<QGroupBox>("filterParamGroup"); }
    QString paramCell(int row, int column) { return m_editor.model()->index(row, column).data().toString(); }
    QString text(const char* field) { return widget<QLineEdit>(field)->text(); }
    int tab() { return widget<QTabWidget>("filterParamTabView")->currentIndex(); }
    // Selects the row, active or not.
    void select(int row, bool active)
    {
        m_editor.model()->setData(
            m_editor.model()->index(row, 0), active ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole);
        m_editor.table()->selectRow(row);
    }
    void typeInto(const char* name, const QString& text)
    {
        widget<QLineEdit>(name)->setText(text);
        Q_EMIT widget<QLineEdit>(name)->editingFinished();
    }

    RecordListPtr m_params = std::make_shared<RecordList>();
    ParameterEditor m_editor;
    QAbstractItemModelTester m_tester { m_editor.model(),
        QAbstractItemModelTester::FailureReportingMode::Fatal };
};

TEST_F(ParameterEditorTest, TableShowsActiveKindNameModeAndRange)
{
    QStringList rows;
    for (int row = 0; row < widget<QTableView>("filterParamList")->model()->rowCount(); ++row)
        rows.append(QString::number(m_editor.model()->index(row, 0).data(Qt::CheckStateRole).toInt())
            + QLatin1Char(' ') + paramCell(row, 1) + QLatin1Char(' ') + paramCell(row, 2));
    EXPECT_EQ(rows,
        (QStringList { "0 [Slider] Glow [Random] 0 - 1", "0 [IntSlider] Radius [Random] 1 - 255",
            "0 [Angle] Angle [Random] 0 - 360", "0 [Checkbox] Invert [Random] 0 - 1",
            "2 [Variation] Variations [Random] 1 - 30000" }));
    // Only the check box of a row is edited in the table.
    EXPECT_FALSE(m_editor.model()->setData(m_editor.model()->index(0, 0), Qt::Checked, Qt::EditRole));
}

TEST_F(ParameterEditorTest, EditorShowsOnlyForAnActiveRowAndNamesIt)
{
    m_editor.table()->selectRow(AngleRow);
    EXPECT_TRUE(editor()->isHidden());
    select(AngleRow, true);
    EXPECT_FALSE(editor()->isHidden());
    EXPECT_EQ(param(AngleRow).integer(key::ACTIVE), 1);
    EXPECT_EQ(editor()->title(), "Variation of Angle over the frames");
    EXPECT_EQ(tab(), 2);
    EXPECT_EQ(text("fpFloatSliderFromField") + " " + text("fpFloatSliderToField"), "0.0 360.0");
    select(AngleRow, false);
    EXPECT_TRUE(editor()->isHidden());

    m_editor.table()->selectRow(VariationRow);
    EXPECT_FALSE(editor()->isHidden());
    EXPECT_EQ(editor()->title(), "Variation of Variations over the frames");
    EXPECT_EQ(tab(), 3);
    EXPECT_EQ(text("fpVariationToField"), "30000");

    // A row whose record says nothing of being active (an odd chain file) is not.
    (*m_params)[CheckRow]->remove(key::ACTIVE);
    m_editor.table()->selectRow(CheckRow);
    EXPECT_TRUE(editor()->isHidden());
}

TEST_F(ParameterEditorTest, IntegerSlidersMirrorAndBoundEachOther)
{
    select(IntRow, true);
    auto* from = widget<QSlider>("fpIntSliderFromSlider");
    auto* to = widget<QSlider>("fpIntSliderToSlider");
    // "minimum<=value<=maximum field" of From and To, the stored start, the table's range.
    const auto state = [&] {
        const auto slider = [](QSlider* s) {
            return QStringLiteral("%1<=%2<=%3").arg(s->minimum()).arg(s->value()).arg(s->maximum());
        };
        return QStringList { slider(from), text("fpIntSliderFromField"), slider(to),
            text("fpIntSliderToField"), QString::number(param(IntRow).integer(key::STARTVALUE)),
            paramCell(IntRow, 2) }
            .join(" ");
    };
    EXPECT_EQ(state(), QStringLiteral("1<=1<=255 1 1<=255<=255 255 1 [Random] 1 - 255"));
    from->setValue(40);
    to->setValue(60);
    EXPECT_EQ(state(), QStringLiteral("1<=40<=60 40 40<=60<=255 60 40 [Random] 40 - 60"));

    // A field moves its slider (which clamps), shows what the slider took
    // and stores, without bounding.
    typeInto("fpIntSliderFromField", QStringLiteral("50"));
    typeInto("fpIntSliderToField", QStringLiteral("999"));
    widget<QComboBox>("fpIntSliderModePopup")->setCurrentIndex(1);
    EXPECT_EQ(state(), QStringLiteral("1<=50<=60 50 40<=255<=255 255 50 [Sweep] 50 - 255"));
    typeInto("fpIntSliderFromField", QStringLiteral("-7"));
    EXPECT_EQ(state(), QStringLiteral("1<=1<=60 1 40<=255<=255 255 1 [Sweep] 1 - 255"));
}

TEST_F(ParameterEditorTest, RealSlidersWorkInThousandths)
{
    select(SliderRow, true);
    EXPECT_EQ(text("fpFloatSliderToField"), "1.0");
    typeInto("fpFloatSliderFromField", QStringLiteral("0.25"));
    EXPECT_EQ(widget<QSlider>("fpFloatSliderFromSlider")->value(), 250);
    typeInto("fpFloatSliderToField", QStringLiteral("5"));
    EXPECT_EQ(text("fpFloatSliderToField"), "1.0") << "the field shows the 1 the run uses";
    EXPECT_TRUE(param(SliderRow).holdsReal(key::MINVALUE));
    widget<QSlider>("fpFloatSliderToSlider")->setValue(500);
    EXPECT_EQ(text("fpFloatSliderToField"), "0.5");
    EXPECT_EQ(widget<QSlider>("fpFloatSliderFromSlider")->maximum(), 500);
    EXPECT_EQ(paramCell(SliderRow, 2), "[Random] 0.25 - 0.5");

    select(AngleRow, true);
    widget<QSlider>("fpFloatSliderToSlider")->setValue(359999);
    EXPECT_EQ(text("fpFloatSliderToField"), "359.999");
    EXPECT_EQ(paramCell(AngleRow, 2), "[Random] 0 - 360");
}

TEST_F(ParameterEditorTest, ModeChangesRestartAtFrom)
{
    select(CheckRow, true);
    EXPECT_EQ(tab(), 0);
    widget<QComboBox>("fpCheckboxModePopup")->setCurrentIndex(1);
    EXPECT_EQ(paramCell(CheckRow, 2), "[Toggle] 0 - 1");
    EXPECT_EQ(param(CheckRow).integer(key::STARTVALUE), 0);
    EXPECT_EQ(param(CheckRow).integer(key::POPSTATE), 1);

    // A new mode restarts at From, though a run has advanced the value.
    m_editor.table()->selectRow(VariationRow);
    widget<QSlider>("fpVariationFromSlider")->setValue(10);
    (*m_params)[VariationRow]->setInteger(key::STARTVALUE, 14);
    widget<QComboBox>("fpVariationModePopup")->setCurrentIndex(1);
    EXPECT_EQ(param(VariationRow).integer(key::STARTVALUE), 10);
    EXPECT_EQ(paramCell(VariationRow, 2), "[Sweep] 10 - 30000");
}

} // namespace
} // namespace quillon
