#include "variations/ui/ParameterEditor.h"

#include "variations/OutputValues.h"
#include "variations/ui/ParamTableModel.h"
#include "variations/ui/RangeEditor.h"

#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTabBar>
#include <QTabWidget>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>
#include <climits>
#include <cstdio>

namespace quillon {

namespace {

enum Page { CheckboxPage, IntSliderPage, FloatSliderPage, VariationPage };

} // namespace

ParameterEditor::ParameterEditor(QWidget* parent)
    : QWidget(parent)
    , m_model(new ParamTableModel(this))
    , m_table(new QTableView(this))
    , m_group(new QGroupBox(tr("Variation over the frames"), this))
    , m_pages(new QTabWidget(m_group))
{
    m_table->setObjectName(QStringLiteral("filterParamList"));
    m_table->setAccessibleName(tr("Filter parameters"));
    m_table->setModel(m_model);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setAlternatingRowColors(true);
    // Tab moves on to the editor instead of from cell to cell.
    m_table->setTabKeyNavigation(false);
    m_table->verticalHeader()->hide();
    QHeaderView* header = m_table->horizontalHeader();
    header->setStretchLastSection(true);
    header->setSectionResizeMode(ParamTableModel::filterParamActiveColumn, QHeaderView::ResizeToContents);
    header->setSectionResizeMode(ParamTableModel::filterParamNameColumn, QHeaderView::Stretch);
    header->setSectionResizeMode(ParamTableModel::filterParamTypeColumn, QHeaderView::ResizeToContents);

    m_group->setObjectName(QStringLiteral("filterParamGroup"));
    m_group->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    m_pages->setObjectName(QStringLiteral("filterParamTabView"));
    // The page is chosen by the kind of the selected row, not by the user.
    m_pages->tabBar()->hide();

    auto* checkboxPage = new QWidget(m_pages);
    checkboxPage->setObjectName(QStringLiteral("fpCheckboxTab"));
    m_checkboxMode = new QComboBox(checkboxPage);
    m_checkboxMode->setObjectName(QStringLiteral("fpCheckboxModePopup"));
    m_checkboxMode->addItems({ tr("Random"), tr("Toggle") });
    auto* checkboxLayout = new QHBoxLayout(checkboxPage);
    auto* modeLabel = new QLabel(tr("&Mode:"), checkboxPage);
    modeLabel->setBuddy(m_checkboxMode);
    checkboxLayout->addWidget(modeLabel);
    checkboxLayout->addWidget(m_checkboxMode, 1);
    m_pages->addTab(checkboxPage, tr("Check box"));

    m_intRange
        = new RangeEditor(QStringLiteral("fpIntSlider"), tr("Sweep"), RangeEditor::Scale::Integer, m_pages);
    m_realRange
        = new RangeEditor(QStringLiteral("fpFloatSlider"), tr("Sweep"), RangeEditor::Scale::Real, m_pages);
    m_variationRange
        = new RangeEditor(QStringLiteral("fpVariation"), tr("Sweep"), RangeEditor::Scale::Integer, m_pages);
    m_pages->addTab(m_intRange, tr("Integer"));
    m_pages->addTab(m_realRange, tr("Real"));
    m_pages->addTab(m_variationRange, tr("Variation"));
    // The variation number runs over 1 to 30000 whatever the row.
    m_variationRange->setRange(1, 30000);

    auto* testStrip = new QPushButton(tr("Test Strip…"), m_group);
    testStrip->setObjectName(QStringLiteral("testStripButton"));
    testStrip->setToolTip(tr("Render frame 1 with several values of this parameter side by side"));
    connect(testStrip, &QPushButton::clicked, this, [this] {
        if (const int row = selectedRow(); row >= 0)
            Q_EMIT testStripRequested(row);
    });
    auto* groupLayout = new QVBoxLayout(m_group);
    groupLayout->addWidget(m_pages);
    groupLayout->addWidget(testStrip, 0, Qt::AlignLeft);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_table, 1);
    layout->addWidget(m_group);
    m_group->hide();

    connect(m_checkboxMode, &QComboBox::currentIndexChanged, this,
        [this] { updateFilterValuesWithSender(m_checkboxMode); });
    for (RangeEditor* range : { m_intRange, m_realRange, m_variationRange })
        connect(range, &RangeEditor::edited, this, [this, range] { updateFilterValuesWithSender(range); });
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        &ParameterEditor::filterParamListClick);
    connect(m_model, &ParamTableModel::activeEdited, this, &ParameterEditor::filterParamListClick);
}

void ParameterEditor::setParams(RecordListPtr params)
{
    m_group->hide();
    fp_ParamsArray = params;
    m_model->setParams(std::move(params));
}

void ParameterEditor::holdRowAt(int row, const QVariant& value)
{
    if (!fp_ParamsArray || row < 0 || row >= static_cast<int>(fp_ParamsArray->size()))
        return;
    if (Record* param = (*fp_ParamsArray)[static_cast<size_t>(row)].get())
        holdParameterAt(*param, value);
    m_model->refreshRow(row);
    if (row == selectedRow())
        filterParamListClick();
}

int ParameterEditor::selectedRow() const
{
    const QModelIndexList rows = m_table->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

RecordPtr ParameterEditor::selectedParamRecord() const
{
    const int row = selectedRow();
    if (row < 0 || !fp_ParamsArray || row >= static_cast<int>(fp_ParamsArray->size()))
        return nullptr;
    return (*fp_ParamsArray)[static_cast<size_t>(row)];
}

void ParameterEditor::filterParamListClick()
{
    m_group->hide();
    const RecordPtr param = selectedParamRecord();
    if (!param || param->integer(key::ACTIVE, 0) != 1)
        return;
    const std::optional<controlType> kind = param->type();
    if (!kind)
        return;

    // The box names the row it edits, and the row stays in sight above it.
    const QString name = param->string(key::CONTROL_NAME);
    m_group->setTitle(
        tr("Variation of %1 over the frames").arg(name.isEmpty() ? paramNameText(*param).trimmed() : name));
    m_group->show();
    layout()->activate();
    m_table->scrollTo(m_model->index(selectedRow(), ParamTableModel::filterParamNameColumn));

    const int popState
        = static_cast<int>(std::clamp<qint64>(param->integer(key::POPSTATE), INT_MIN, INT_MAX));
    switch (*kind) {
    case controlType::kTypeCheckbox: {
        m_pages->setCurrentIndex(CheckboxPage);
        const QSignalBlocker blocker(m_checkboxMode);
        m_checkboxMode->setCurrentIndex(popState);
        break;
    }
    case controlType::kTypeIntSlider: {
        m_pages->setCurrentIndex(IntSliderPage);
        // Without a RangeMax the range ends at the row's to value.
        const qint64 maximum = param->contains(key::CONTROL_MAX) ? param->integer(key::CONTROL_MAX)
                                                                 : param->integer(key::MAXVALUE);
        m_intRange->setRange(double(param->integer(key::MINVALUE)), double(maximum));
        m_intRange->setValues(
            popState, double(param->integer(key::MINVALUE)), double(param->integer(key::MAXVALUE)));
        break;
    }
    case controlType::kTypeSlider:
    case controlType::kTypeAngle: {
        m_pages->setCurrentIndex(FloatSliderPage);
        const double from = param->real(key::MINVALUE);
        const double to = param->real(key::MAXVALUE);
        // A slider runs over 0 to 1, an angle over 0 to 360; the row's own
        // values always fit.
        const double top = *kind == controlType::kTypeAngle ? 360.0 : 1.0;
        m_realRange->setRange(std::min({ 0.0, from, to }), std::max({ top, from, to }));
        m_realRange->setValues(popState, from, to);
        break;
    }
    case controlType::kTypeVariations:
        m_pages->setCurrentIndex(VariationPage);
        m_variationRange->setValues(
            popState, double(param->integer(key::MINVALUE)), double(param->integer(key::MAXVALUE)));
        break;
    }
}

void ParameterEditor::updateFilterValuesWithSender(QObject* /*sender*/)
{
    reallyUpdateFilterValues();
}

void ParameterEditor::reallyUpdateFilterValues()
{
    const RecordPtr param = selectedParamRecord();
    if (!param) {
        std::printf("Tried to much filter values with no valueline selected\n");
        std::fflush(stdout);
        return;
    }
    const std::optional<controlType> kind = param->type();
    if (!kind)
        return;
    const auto storeInteger = [&param](const RangeEditor* range) {
        param->setInteger(key::POPSTATE, range->mode());
        param->setInteger(key::STARTVALUE, static_cast<qint64>(range->from()));
        param->setInteger(key::MINVALUE, static_cast<qint64>(range->from()));
        param->setInteger(key::MAXVALUE, static_cast<qint64>(range->to()));
    };
    switch (*kind) {
    case controlType::kTypeVariations:
        storeInteger(m_variationRange);
        break;
    case controlType::kTypeIntSlider:
        storeInteger(m_intRange);
        break;
    case controlType::kTypeCheckbox:
        param->setInteger(key::POPSTATE, m_checkboxMode->currentIndex());
        break;
    case controlType::kTypeSlider:
    case controlType::kTypeAngle:
        param->setInteger(key::POPSTATE, m_realRange->mode());
        param->setReal(key::STARTVALUE, m_realRange->from());
        param->setReal(key::MINVALUE, m_realRange->from());
        param->setReal(key::MAXVALUE, m_realRange->to());
        break;
    }
    m_model->refreshRow(selectedRow());
}

} // namespace quillon
