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
        const auto add = [this](controlType kind, const QString& name) {
            RecordPtr row = makeParameterRecord(kind, name.toLower());
            row->setString(key::CONTROL_NAME, name);
            m_params->push_back(row);
            return row;
        };
        add(controlType::kTypeSlider, QStringLiteral("Glow"));
        const RecordPtr radius = add(controlType::kTypeIntSlider, QStringLiteral("Radius"));
        radius->setInteger(key::CONTROL_MAX, 255);
        radius->setInteger(key::MAXVALUE, 255);
        add(controlType::kTypeAngle, QStringLiteral("Angle"));
        add(controlType::kTypeCheckbox, QStringLiteral("Invert"));
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
    void selectRow(int row) { m_editor.table()->selectRow(row); }
    void setActive(int row, bool on)
    {
        m_editor.model()->setData(
            m_editor.model()->index(row, 0), on ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole);
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

TEST_F(ParameterEditorTest, TableShowsKindNameModeAndRange)
{
    ASSERT_EQ(widget<QTableView>("filterParamList")->model()->rowCount(), 5);
    const QStringList expected[] = { { "[Slider] Glow", "[Random] 0 - 1" },
        { "[IntSlider] Radius", "[Random] 1 - 255" }, { "[Angle] Angle", "[Random] 0 - 360" },
        { "[Checkbox] Invert", "[Random] 0 - 1" }, { "[Variation] Variations", "[Random] 1 - 30000" } };
    for (int row = SliderRow; row <= VariationRow; ++row) {
        EXPECT_EQ(paramCell(row, 1), expected[row][0]);
        EXPECT_EQ(paramCell(row, 2), expected[row][1]);
    }
    const QAbstractItemModel* model = widget<QTableView>("filterParamList")->model();
    EXPECT_EQ(model->index(SliderRow, 0).data(Qt::CheckStateRole).toInt(), Qt::Unchecked);
    EXPECT_EQ(model->index(VariationRow, 0).data(Qt::CheckStateRole).toInt(), Qt::Checked);
}

TEST_F(ParameterEditorTest, EditorShowsOnlyForAnActiveRowAndNamesIt)
{
    selectRow(AngleRow);
    EXPECT_TRUE(editor()->isHidden());
    setActive(AngleRow, true);
    EXPECT_FALSE(editor()->isHidden());
    EXPECT_EQ(param(AngleRow).integer(key::ACTIVE), 1);
    EXPECT_EQ(editor()->title(), "Variation of Angle over the frames");
    EXPECT_EQ(widget<QTabWidget>("filterParamTabView")->currentIndex(), 2);
    EXPECT_EQ(widget<QLineEdit>("fpFloatSliderFromField")->text(), "0.0");
    EXPECT_EQ(widget<QLineEdit>("fpFloatSliderToField")->text(), "360.0");
    setActive(AngleRow, false);
    EXPECT_TRUE(editor()->isHidden());

    selectRow(VariationRow);
    EXPECT_FALSE(editor()->isHidden());
    EXPECT_EQ(editor()->title(), "Variation of Variations over the frames");
    EXPECT_EQ(widget<QTabWidget>("filterParamTabView")->currentIndex(), 3);
    EXPECT_EQ(widget<QLineEdit>("fpVariationToField")->text(), "30000");
}

TEST_F(ParameterEditorTest, IntegerSlidersMirrorAndBoundEachOther)
{
    setActive(IntRow, true);
    selectRow(IntRow);
    auto* from = widget<QSlider>("fpIntSliderFromSlider");
    auto* to = widget<QSlider>("fpIntSliderToSlider");
    EXPECT_EQ(from->maximum(), 255);
    EXPECT_EQ(to->minimum(), 1);

    from->setValue(40);
    EXPECT_EQ(widget<QLineEdit>("fpIntSliderFromField")->text(), "40");
    EXPECT_EQ(to->minimum(), 40);
    EXPECT_EQ(param(IntRow).integer(key::MINVALUE), 40);
    EXPECT_EQ(param(IntRow).integer(key::STARTVALUE), 40);

    to->setValue(60);
    EXPECT_EQ(widget<QLineEdit>("fpIntSliderToField")->text(), "60");
    EXPECT_EQ(from->maximum(), 60);
    EXPECT_EQ(paramCell(IntRow, 2), "[Random] 40 - 60");

    // A field moves its slider (which clamps) and stores, without bounding.
    typeInto("fpIntSliderFromField", QStringLiteral("50"));
    EXPECT_EQ(from->value(), 50);
    EXPECT_EQ(param(IntRow).integer(key::MINVALUE), 50);
    EXPECT_EQ(param(IntRow).integer(key::STARTVALUE), 50);
    EXPECT_EQ(to->minimum(), 40);
    typeInto("fpIntSliderToField", QStringLiteral("999"));
    EXPECT_EQ(to->value(), 255);
    EXPECT_EQ(param(IntRow).integer(key::MAXVALUE), 255);

    widget<QComboBox>("fpIntSliderModePopup")->setCurrentIndex(1);
    EXPECT_EQ(paramCell(IntRow, 2), "[Sweep] 50 - 255");
}

TEST_F(ParameterEditorTest, RealSlidersWorkInThousandths)
{
    setActive(SliderRow, true);
    selectRow(SliderRow);
    EXPECT_EQ(widget<QLineEdit>("fpFloatSliderToField")->text(), "1.0");

    typeInto("fpFloatSliderFromField", QStringLiteral("0.25"));
    EXPECT_EQ(widget<QSlider>("fpFloatSliderFromSlider")->value(), 250);
    EXPECT_DOUBLE_EQ(param(SliderRow).real(key::MINVALUE), 0.25);
    EXPECT_TRUE(param(SliderRow).holdsReal(key::MINVALUE));

    widget<QSlider>("fpFloatSliderToSlider")->setValue(500);
    EXPECT_EQ(widget<QLineEdit>("fpFloatSliderToField")->text(), "0.5");
    EXPECT_EQ(widget<QSlider>("fpFloatSliderFromSlider")->maximum(), 500);
    EXPECT_EQ(paramCell(SliderRow, 2), "[Random] 0.25 - 0.5");

    setActive(AngleRow, true);
    selectRow(AngleRow);
    widget<QSlider>("fpFloatSliderToSlider")->setValue(359999);
    EXPECT_EQ(widget<QLineEdit>("fpFloatSliderToField")->text(), "359.999");
    EXPECT_EQ(paramCell(AngleRow, 2), "[Random] 0 - 360");
}

TEST_F(ParameterEditorTest, ModeChanges)
{
    setActive(CheckRow, true);
    selectRow(CheckRow);
    EXPECT_EQ(widget<QTabWidget>("filterParamTabView")->currentIndex(), 0);
    widget<QComboBox>("fpCheckboxModePopup")->setCurrentIndex(1);
    EXPECT_EQ(paramCell(CheckRow, 2), "[Toggle] 0 - 1");
    EXPECT_EQ(param(CheckRow).integer(key::STARTVALUE), 0);
    EXPECT_EQ(param(CheckRow).integer(key::POPSTATE), 1);

    // A new mode restarts at From, though a run has advanced the value.
    selectRow(VariationRow);
    widget<QSlider>("fpVariationFromSlider")->setValue(10);
    (*m_params)[VariationRow]->setInteger(key::STARTVALUE, 14);
    widget<QComboBox>("fpVariationModePopup")->setCurrentIndex(1);
    EXPECT_EQ(param(VariationRow).integer(key::STARTVALUE), 10);
    EXPECT_EQ(paramCell(VariationRow, 2), "[Sweep] 10 - 30000");
}

} // namespace
} // namespace quillon
