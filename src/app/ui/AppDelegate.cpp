#include "app/ui/AppDelegate.h"

#include "run/RunSettings.h"
#include "app/ui/DialogSeams.h"
#include "chain/ChainFile.h"
#include "chain/ui/ChainListModel.h"
#include "library/DefinitionReader.h"
#include "library/FilterScan.h"
#include "variations/ui/ParamTableModel.h"

#include "ui_AddFilterSheet.h"
#include "ui_MainWindow.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QMainWindow>
#include <QSignalBlocker>
#include <QTabBar>
#include <QUrl>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

namespace quillon {

namespace {

// Real values sit on the sliders in thousandths.
constexpr double kRealSliderScale = 1000.0;

int clampToInt(qint64 value)
{
    return static_cast<int>(
        std::clamp<qint64>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

int realToSlider(double value)
{
    if (!std::isfinite(value))
        return 0;
    const double scaled = std::clamp(value * kRealSliderScale, double(std::numeric_limits<int>::min()),
        double(std::numeric_limits<int>::max()));
    return static_cast<int>(std::lround(scaled));
}

double sliderToReal(const QSlider* slider)
{
    return slider->value() / kRealSliderScale;
}

void setSliderValueQuietly(QSlider* slider, int value)
{
    const QSignalBlocker blocker(slider);
    slider->setValue(value);
}

int selectedRowOf(const QAbstractItemView* view)
{
    const QItemSelectionModel* selection = view->selectionModel();
    if (!selection)
        return -1;
    const QModelIndexList rows = selection->selectedRows();
    if (rows.isEmpty())
        return -1;
    int row = rows.first().row();
    for (const QModelIndex& index : rows)
        row = std::min(row, index.row());
    return row;
}

} // namespace

AppDelegate::AppDelegate(QObject* parent)
    : QObject(parent)
    , m_window(new QMainWindow)
    , m_ui(std::make_unique<Ui::MainWindow>())
    , m_sheetUi(std::make_unique<Ui::AddFilterSheet>())
{
    m_ui->setupUi(m_window);
    m_window->installEventFilter(this);

    m_addFilterSheet = new QDialog(m_window);
    m_sheetUi->setupUi(m_addFilterSheet);
    m_addFilterSheet->setWindowModality(Qt::WindowModal);

    m_chainModel = new ChainListModel(&filterArray, this);
    m_libraryModel = new LibraryListModel(&baseFiltersArray, this);
    m_paramModel = new ParamTableModel(this);
    m_ui->filterList->setModel(m_chainModel);
    m_sheetUi->addFilterList->setModel(m_libraryModel);
    m_ui->filterParamList->setModel(m_paramModel);

    QHeaderView* paramHeader = m_ui->filterParamList->horizontalHeader();
    paramHeader->setSectionResizeMode(
        ParamTableModel::filterParamActiveColumn, QHeaderView::ResizeToContents);
    paramHeader->setSectionResizeMode(ParamTableModel::filterParamNameColumn, QHeaderView::Stretch);
    paramHeader->setSectionResizeMode(ParamTableModel::filterParamTypeColumn, QHeaderView::ResizeToContents);
    m_sheetUi->addFilterList->horizontalHeader()->setSectionResizeMode(
        LibraryListModel::adsFilterNameColumn, QHeaderView::Stretch);
    // The editor page is chosen by the kind of the selected row, not by the user.
    m_ui->filterParamTabView->tabBar()->hide();

    m_fetcher = new FilterFetcher(this);
    connect(m_fetcher, &FilterFetcher::fetched, this, &AppDelegate::fetchDoneWithArray);

    connectChainSide();
    connectParameterEditor();
    setupSettingsSide();

    // Until the first scan has delivered a library there is nothing to add.
    m_ui->addFilterButton->setEnabled(false);
    m_ui->loadingSpinner->hide();
    m_ui->t_mapsBox->hide();
    filterListClick();
    setupMapsCheckboxesDefaults();
}

AppDelegate::~AppDelegate()
{
    shutdownSettingsSide();
    m_window->removeEventFilter(this);
    delete m_window;
}

void AppDelegate::connectChainSide()
{
    Ui::MainWindow& ui = *m_ui;
    const auto bySender = [this](QObject* sender, void (AppDelegate::*action)(QObject*)) {
        return [this, sender, action] { (this->*action)(sender); };
    };
    connect(ui.addFilterButton, &QPushButton::clicked, this,
        bySender(ui.addFilterButton, &AppDelegate::showAddSheetWithSender));
    connect(ui.removeFilterButton, &QPushButton::clicked, this,
        bySender(ui.removeFilterButton, &AppDelegate::removeFilterFromListWithSender));
    connect(ui.moveFilterUpButton, &QPushButton::clicked, this,
        bySender(ui.moveFilterUpButton, &AppDelegate::moveFilterUpInListWithSender));
    connect(ui.moveFilterDownButton, &QPushButton::clicked, this,
        bySender(ui.moveFilterDownButton, &AppDelegate::moveFilterDownInListWithSender));
    connect(ui.loadFilterChainButton, &QPushButton::clicked, this,
        bySender(ui.loadFilterChainButton, &AppDelegate::loadFilterChainWithSender));
    connect(ui.saveFilterChainButton, &QPushButton::clicked, this,
        bySender(ui.saveFilterChainButton, &AppDelegate::saveFilterChainWithSender));
    connect(ui.actionOpenChain, &QAction::triggered, this,
        bySender(ui.actionOpenChain, &AppDelegate::loadFilterChainWithSender));
    connect(ui.actionSaveChain, &QAction::triggered, this,
        bySender(ui.actionSaveChain, &AppDelegate::saveFilterChainWithSender));
    connect(ui.actionQuit, &QAction::triggered, m_window, &QMainWindow::close);
    // clicked, not toggled: turning the switch off from code is no user action.
    connect(ui.t_activateMaps, &QCheckBox::clicked, this,
        bySender(ui.t_activateMaps, &AppDelegate::toggleUseMapsWithSender));

    connect(m_sheetUi->addBaseFiltersButton, &QPushButton::clicked, this,
        bySender(m_sheetUi->addBaseFiltersButton, &AppDelegate::addFilterToListWithSender));
    connect(m_sheetUi->addFilterCancelButton, &QPushButton::clicked, this,
        bySender(m_sheetUi->addFilterCancelButton, &AppDelegate::closeAddSheetWithSender));

    for (QAbstractItemView* table : { static_cast<QAbstractItemView*>(ui.filterList),
             static_cast<QAbstractItemView*>(m_sheetUi->addFilterList),
             static_cast<QAbstractItemView*>(ui.filterParamList) }) {
        connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this, table] { tableViewSelectionDidChange(table); });
    }
    connect(ui.mainTabControl, &QTabWidget::currentChanged, this, &AppDelegate::mainTabDidSelectItem);
}

void AppDelegate::connectParameterEditor()
{
    Ui::MainWindow& ui = *m_ui;
    const auto connectSlider = [this](QSlider* slider, void (AppDelegate::*action)(QObject*)) {
        connect(slider, &QSlider::valueChanged, this, [this, slider, action] { (this->*action)(slider); });
    };
    const auto connectField = [this](QLineEdit* field, void (AppDelegate::*action)(QObject*)) {
        connect(field, &QLineEdit::editingFinished, this, [this, field, action] { (this->*action)(field); });
    };
    connectSlider(ui.fpIntSliderFromSlider, &AppDelegate::filterIntFromSettingsSliderChangeWithSender);
    connectSlider(ui.fpIntSliderToSlider, &AppDelegate::filterIntToSettingsSliderChangeWithSender);
    connectSlider(ui.fpVariationFromSlider, &AppDelegate::filterVariationFromSettingsSliderChangeWithSender);
    connectSlider(ui.fpVariationToSlider, &AppDelegate::filterVariationToSettingsSliderChangeWithSender);
    connectSlider(ui.fpFloatSliderFromSlider, &AppDelegate::filterFloatFromSettingsSliderChangeWithSender);
    connectSlider(ui.fpFloatSliderToSlider, &AppDelegate::filterFloatToSettingsSliderChangeWithSender);
    connectField(ui.fpIntSliderFromField, &AppDelegate::filterIntFromSettingsTextChangeWithSender);
    connectField(ui.fpIntSliderToField, &AppDelegate::filterIntToSettingsTextChangeWithSender);
    connectField(ui.fpVariationFromField, &AppDelegate::filterVariationFromSettingsTextChangeWithSender);
    connectField(ui.fpVariationToField, &AppDelegate::filterVariationToSettingsTextChangeWithSender);
    connectField(ui.fpFloatSliderFromField, &AppDelegate::filterFloatSliderFromSettingsTextChangeWithSender);
    connectField(ui.fpFloatSliderToField, &AppDelegate::filterFloatSliderToSettingsTextChangeWithSender);

    for (QComboBox* popup : { ui.fpCheckboxModePopup, ui.fpIntSliderModePopup, ui.fpFloatSliderModePopup,
             ui.fpVariationModePopup }) {
        connect(popup, &QComboBox::currentIndexChanged, this,
            [this, popup] { updateFilterValuesWithSender(popup); });
    }
    connect(m_paramModel, &ParamTableModel::activeEdited, this, [this] {
        m_paramModel->reload();
        filterParamListClick();
    });
}

bool AppDelegate::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_window && event->type() == QEvent::Close)
        windowWillClose(watched);
    return QObject::eventFilter(watched, event);
}

void AppDelegate::windowWillClose(QObject* closingWindow)
{
    if (closingWindow == m_window)
        QCoreApplication::quit();
}

int AppDelegate::selectedChainRow() const
{
    return selectedRowOf(m_ui->filterList);
}

QString AppDelegate::selectedMainTabIdentifier() const
{
    const QWidget* page = m_ui->mainTabControl->currentWidget();
    if (!page)
        return {};
    const QVariant identifier = page->property("identifier");
    return identifier.isValid() ? identifier.toString() : page->objectName();
}

void AppDelegate::selectChainRow(int row)
{
    QItemSelectionModel* selection = m_ui->filterList->selectionModel();
    if (row < 0) {
        selection->clearSelection();
        return;
    }
    const QModelIndex index = m_chainModel->index(row, ChainListModel::filterColumn);
    selection->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void AppDelegate::showApplicationErrorAlertWithMessage(const QString& message)
{
    MessageBoxes::instance().showError(m_window, message);
}

// ---- Library scan ----

void AppDelegate::launchFilterFetcher()
{
    m_ui->loadingSpinner->show();
    m_fetcher->launch(filterPath);
}

void AppDelegate::fetchDoneWithArray(const RecordList& list)
{
    m_ui->addFilterButton->setEnabled(true);
    m_ui->loadingSpinner->hide();
    baseFiltersArray = list;
    m_libraryModel->reload();
}

// ---- Table delegate ----

void AppDelegate::tableViewSelectionDidChange(QAbstractItemView* table)
{
    if (table == m_ui->filterList)
        filterListClick();
    else if (table == m_sheetUi->addFilterList)
        addFilterListClick();
    else if (table == m_ui->filterParamList)
        filterParamListClick();
}

void AppDelegate::mainTabDidSelectItem(int index)
{
    const QWidget* page = m_ui->mainTabControl->widget(index);
    if (page && page->property("identifier").toString() == QLatin1String("2"))
        filterListClick();
}

// ---- Chain editing ----

void AppDelegate::updateChainButtons()
{
    const int r = selectedChainRow();
    const int n = static_cast<int>(filterArray.size());
    m_ui->removeFilterButton->setEnabled(r != -1);
    m_ui->moveFilterUpButton->setEnabled(r > 0);
    m_ui->moveFilterDownButton->setEnabled(r != -1 && r < n - 1);
}

void AppDelegate::filterListClick()
{
    const int r = selectedChainRow();
    const int n = static_cast<int>(filterArray.size());
    updateChainButtons();
    m_ui->filterParamGroup->hide();
    if (r == -1 || r >= n) {
        // Nothing selected: show no parameters rather than those of a filter
        // that may be gone.
        fp_ParamsArray.reset();
        m_paramModel->setParams(nullptr);
        m_ui->filterPresetPopup->clear();
        return;
    }
    if (selectedMainTabIdentifier() == QLatin1String("1"))
        return;

    const RecordPtr& record = filterArray[static_cast<size_t>(r)];
    fp_ParamsArray = record->list(key::Components);
    m_paramModel->setParams(fp_ParamsArray);

    QComboBox* presets = m_ui->filterPresetPopup;
    const QSignalBlocker blocker(presets);
    presets->clear();
    const qint64 count = std::max<qint64>(0, presetCount(*record));
    for (qint64 i = 0; i < count; ++i)
        presets->addItem(QStringLiteral("Preset %1").arg(i));
    const qint64 chosen = record->integer(key::ChoosenPreset);
    // A choice beyond the presets (an edited chain file) falls back to the first.
    presets->setCurrentIndex(count == 0 ? -1 : (chosen >= 0 && chosen < count ? int(chosen) : 0));
}

QDialog* AppDelegate::addFilterSheet()
{
    return m_addFilterSheet;
}

void AppDelegate::showAddSheetWithSender(QObject* /*sender*/)
{
    m_libraryModel->reload();
    // Row numbers from an earlier showing may name other filters after a rescan.
    m_sheetUi->addFilterList->clearSelection();
    addFilterListClick();
    addFilterSheet()->open();
}

void AppDelegate::addFilterListClick()
{
    m_sheetUi->addBaseFiltersButton->setEnabled(selectedRowOf(m_sheetUi->addFilterList) != -1);
}

void AppDelegate::closeAddSheetWithSender(QObject* /*sender*/)
{
    addFilterSheet()->done(QDialog::Rejected);
}

void AppDelegate::addFilterToListWithSender(QObject* /*sender*/)
{
    QList<int> rows;
    if (const QItemSelectionModel* selection = m_sheetUi->addFilterList->selectionModel()) {
        for (const QModelIndex& index : selection->selectedRows())
            rows.append(index.row());
    }
    // Library order, whatever the order of the clicks.
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());

    QStringList unreadable;
    if (baseFiltersArray) {
        for (const int i : rows) {
            if (i < 0 || i >= static_cast<int>(baseFiltersArray->size()))
                continue;
            const RecordPtr& record = (*baseFiltersArray)[static_cast<size_t>(i)];
            if (!record)
                continue;
            if (!loadXMLInfoWithFilterdata(record)) {
                unreadable.append(
                    QStringLiteral("%1 (%2)").arg(record->string(key::name), record->string(key::path)));
                continue;
            }
            filterArray.push_back(record);
        }
    }
    m_chainModel->reload();
    addFilterSheet()->done(QDialog::Accepted);
    setupMapsCheckboxesDefaults();
    // The chain's selection is left alone, but the move buttons follow the new length.
    updateChainButtons();

    if (!unreadable.isEmpty()) {
        showApplicationErrorAlertWithMessage(
            tr("The filter definition of %1 could not be read; the filter was not added.")
                .arg(unreadable.join(QStringLiteral(", "))));
    }
}

void AppDelegate::removeFilterFromListWithSender(QObject* /*sender*/)
{
    const int r = selectedChainRow();
    if (r == -1 || r >= static_cast<int>(filterArray.size())) {
        filterListClick();
        return;
    }
    filterArray.erase(filterArray.begin() + r);
    m_chainModel->reload();
    setupMapsCheckboxesDefaults();
    // The selection stays at that position (now the next filter), or moves to
    // the new last one; the parameter view follows it.
    const int n = static_cast<int>(filterArray.size());
    selectChainRow(n == 0 ? -1 : std::min(r, n - 1));
    filterListClick();
}

void AppDelegate::moveFilterUpInListWithSender(QObject* /*sender*/)
{
    const int r = selectedChainRow();
    if (r <= 0 || r >= static_cast<int>(filterArray.size())) {
        filterListClick();
        return;
    }
    std::swap(filterArray[static_cast<size_t>(r)], filterArray[static_cast<size_t>(r - 1)]);
    m_chainModel->reload();
    selectChainRow(r - 1);
}

void AppDelegate::moveFilterDownInListWithSender(QObject* /*sender*/)
{
    const int r = selectedChainRow();
    const int n = static_cast<int>(filterArray.size());
    if (r == -1 || r >= n - 1) {
        filterListClick();
        return;
    }
    std::swap(filterArray[static_cast<size_t>(r)], filterArray[static_cast<size_t>(r + 1)]);
    m_chainModel->reload();
    selectChainRow(r + 1);
}

void AppDelegate::setupMapsCheckboxesDefaults()
{
    Ui::MainWindow& ui = *m_ui;
    if (filterArray.size() != 1) {
        ui.t_activateMaps->hide();
        ui.t_activateMaps->setChecked(false);
        ui.t_mapsBox->hide();
        return;
    }
    ui.t_activateMaps->show();

    const std::array<QCheckBox*, 10> maps { ui.t_defaultMap, ui.t_alphaMap, ui.t_diffuseMap, ui.t_bumppMap,
        ui.t_normalMap, ui.t_specStrengthMap, ui.t_specComponentMap, ui.t_AOMap, ui.t_ROMap,
        ui.t_metallicMap };
    for (QCheckBox* box : maps)
        box->setChecked(box == ui.t_defaultMap);

    const bool allMaps
        = filterArray.front() && filterArray.front()->string(key::filtertype) == QLatin1String("1");
    for (QCheckBox* box : maps)
        box->setEnabled(allMaps || box == ui.t_defaultMap || box == ui.t_alphaMap);
}

void AppDelegate::toggleUseMapsWithSender(QObject* /*sender*/)
{
    if (m_ui->t_activateMaps->isChecked()) {
        m_ui->t_mapsBox->show();
        setupMapsCheckboxesDefaults();
    } else {
        m_ui->t_mapsBox->hide();
    }
}

// ---- Chain file ----

void AppDelegate::openChainFile(const QString& path)
{
    // A name given on the command line is relative to the working directory.
    openFilterChainWithUrl(QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()));
}

void AppDelegate::saveFilterChainWithSender(QObject* /*sender*/)
{
    FileDialogRequest request;
    request.mode = FileDialogRequest::Mode::Save;
    request.title = QStringLiteral("Save filter chain");
    request.prompt = QStringLiteral("Save");
    request.nameFilter = QStringLiteral("Quillon chain (*.qlch)");
    request.defaultSuffix = QStringLiteral("qlch");
    request.canCreateDirectories = true;
    // The result goes to standard output only; the user is not told either way.
    FileDialogs::instance().open(
        m_window, request, [this](const QString& path) { saveChainAndReport(path, filterArray); });
}

void AppDelegate::loadFilterChainWithSender(QObject* /*sender*/)
{
    FileDialogRequest request;
    request.mode = FileDialogRequest::Mode::Open;
    request.prompt = QStringLiteral("Select Chain");
    request.message = QStringLiteral("Quillon needs you to locate a saved filter chain");
    request.nameFilter = QStringLiteral("Quillon chain (*.qlch)");
    request.defaultSuffix = QStringLiteral("qlch");
    request.canChooseFiles = true;
    FileDialogs::instance().open(m_window, request,
        [this](const QString& path) { openFilterChainWithUrl(QUrl::fromLocalFile(path)); });
}

void AppDelegate::openFilterChainWithUrl(const QUrl& url)
{
    if (!url.isLocalFile()) {
        showApplicationErrorAlertWithMessage(tr("Only chain files on this computer can be opened."));
        return;
    }
    ChainReadResult result = readChainFile(url.toLocalFile());
    if (result.status == ChainReadResult::Refused) {
        // A file that is no chain file leaves the chain as it was.
        showApplicationErrorAlertWithMessage(result.error);
        return;
    }
    filterArray = std::move(result.chain);
    if (result.status == ChainReadResult::UnknownCode) {
        reportUnknownChainCode();
        MessageBoxes::instance().beep();
    }
    // The list must never show positions past the end of the new chain, even
    // after a partial read, and the maps box follows the chain now shown; no
    // position of the old chain stays selected.
    m_chainModel->reload();
    setupMapsCheckboxesDefaults();
    selectChainRow(-1);
    filterListClick();
}

// ---- Parameter editor ----

RecordPtr AppDelegate::selectedParamRecord() const
{
    const int row = selectedRowOf(m_ui->filterParamList);
    if (row < 0 || !fp_ParamsArray || row >= static_cast<int>(fp_ParamsArray->size()))
        return nullptr;
    return (*fp_ParamsArray)[static_cast<size_t>(row)];
}

void AppDelegate::filterParamListClick()
{
    Ui::MainWindow& ui = *m_ui;
    ui.filterParamGroup->hide();
    const RecordPtr param = selectedParamRecord();
    if (!param || param->integer(key::ACTIVE, 0) != 1)
        return;
    const std::optional<controlType> kind = param->type();
    if (!kind)
        return;

    // Filling the editor is not a user edit: nothing may be stored meanwhile.
    const QList<QWidget*> editors { ui.fpCheckboxModePopup, ui.fpIntSliderModePopup,
        ui.fpFloatSliderModePopup, ui.fpVariationModePopup, ui.fpIntSliderFromSlider, ui.fpIntSliderToSlider,
        ui.fpFloatSliderFromSlider, ui.fpFloatSliderToSlider, ui.fpVariationFromSlider,
        ui.fpVariationToSlider };
    std::vector<std::unique_ptr<QSignalBlocker>> blockers;
    for (QWidget* editor : editors)
        blockers.push_back(std::make_unique<QSignalBlocker>(editor));

    // The box names the row it edits, and the row stays in sight above it.
    const QString name = param->string(key::CONTROL_NAME);
    ui.filterParamGroup->setTitle(
        tr("Variation of %1 over the frames").arg(name.isEmpty() ? paramNameText(*param).trimmed() : name));
    ui.filterParamGroup->show();
    ui.parametersTabLayout->activate();
    ui.filterParamList->scrollTo(
        m_paramModel->index(selectedRowOf(ui.filterParamList), ParamTableModel::filterParamNameColumn));
    const int popState = clampToInt(param->integer(key::POPSTATE));
    switch (*kind) {
    case controlType::kTypeCheckbox:
        ui.filterParamTabView->setCurrentIndex(0);
        ui.fpCheckboxModePopup->setCurrentIndex(popState);
        break;
    case controlType::kTypeIntSlider: {
        ui.filterParamTabView->setCurrentIndex(1);
        const int minimum = clampToInt(param->integer(key::MINVALUE));
        // Without a RangeMax the range ends at the row's to value.
        const int maximum = clampToInt(param->contains(key::CONTROL_MAX) ? param->integer(key::CONTROL_MAX)
                                                                         : param->integer(key::MAXVALUE));
        for (QSlider* slider : { ui.fpIntSliderFromSlider, ui.fpIntSliderToSlider }) {
            slider->setMaximum(maximum);
            slider->setMinimum(minimum);
        }
        ui.fpIntSliderModePopup->setCurrentIndex(popState);
        ui.fpIntSliderFromSlider->setValue(minimum);
        ui.fpIntSliderFromField->setText(QString::number(param->integer(key::MINVALUE)));
        ui.fpIntSliderToSlider->setValue(clampToInt(param->integer(key::MAXVALUE)));
        ui.fpIntSliderToField->setText(QString::number(param->integer(key::MAXVALUE)));
        break;
    }
    case controlType::kTypeSlider:
    case controlType::kTypeAngle: {
        ui.filterParamTabView->setCurrentIndex(2);
        const double from = param->real(key::MINVALUE);
        const double to = param->real(key::MAXVALUE);
        // A slider runs over 0 to 1, an angle over 0 to 360; the row's own
        // values always fit.
        const int top = *kind == controlType::kTypeAngle ? realToSlider(360.0) : realToSlider(1.0);
        for (QSlider* slider : { ui.fpFloatSliderFromSlider, ui.fpFloatSliderToSlider })
            slider->setRange(std::min({ 0, realToSlider(from), realToSlider(to) }),
                std::max({ top, realToSlider(from), realToSlider(to) }));
        ui.fpFloatSliderModePopup->setCurrentIndex(popState);
        ui.fpFloatSliderFromSlider->setValue(realToSlider(from));
        ui.fpFloatSliderFromField->setText(fieldRealText(from));
        ui.fpFloatSliderToSlider->setValue(realToSlider(to));
        ui.fpFloatSliderToField->setText(fieldRealText(to));
        break;
    }
    case controlType::kTypeVariations: {
        ui.filterParamTabView->setCurrentIndex(3);
        for (QSlider* slider : { ui.fpVariationFromSlider, ui.fpVariationToSlider })
            slider->setRange(1, 30000);
        ui.fpVariationModePopup->setCurrentIndex(popState);
        ui.fpVariationFromSlider->setValue(clampToInt(param->integer(key::MINVALUE)));
        ui.fpVariationFromField->setText(QString::number(param->integer(key::MINVALUE)));
        ui.fpVariationToSlider->setValue(clampToInt(param->integer(key::MAXVALUE)));
        ui.fpVariationToField->setText(QString::number(param->integer(key::MAXVALUE)));
        break;
    }
    }
}

void AppDelegate::updateFilterValuesWithSender(QObject* /*sender*/)
{
    reallyUpdateFilterValues();
}

void AppDelegate::reallyUpdateFilterValues()
{
    const RecordPtr param = selectedParamRecord();
    if (!param) {
        std::printf("Tried to much filter values with no valueline selected\n");
        std::fflush(stdout);
        return;
    }
    const Ui::MainWindow& ui = *m_ui;
    const std::optional<controlType> kind = param->type();
    if (!kind)
        return;
    switch (*kind) {
    case controlType::kTypeVariations:
        param->setInteger(key::POPSTATE, ui.fpVariationModePopup->currentIndex());
        param->setInteger(key::STARTVALUE, ui.fpVariationFromSlider->value());
        param->setInteger(key::MINVALUE, ui.fpVariationFromSlider->value());
        param->setInteger(key::MAXVALUE, ui.fpVariationToSlider->value());
        break;
    case controlType::kTypeCheckbox:
        param->setInteger(key::POPSTATE, ui.fpCheckboxModePopup->currentIndex());
        break;
    case controlType::kTypeSlider:
    case controlType::kTypeAngle:
        param->setInteger(key::POPSTATE, ui.fpFloatSliderModePopup->currentIndex());
        param->setReal(key::STARTVALUE, sliderToReal(ui.fpFloatSliderFromSlider));
        param->setReal(key::MINVALUE, sliderToReal(ui.fpFloatSliderFromSlider));
        param->setReal(key::MAXVALUE, sliderToReal(ui.fpFloatSliderToSlider));
        break;
    case controlType::kTypeIntSlider:
        param->setInteger(key::POPSTATE, ui.fpIntSliderModePopup->currentIndex());
        param->setInteger(key::STARTVALUE, ui.fpIntSliderFromSlider->value());
        param->setInteger(key::MINVALUE, ui.fpIntSliderFromSlider->value());
        param->setInteger(key::MAXVALUE, ui.fpIntSliderToSlider->value());
        break;
    }
    m_paramModel->reload();
}

// Slider moves: mirror into the field, store, then bound the opposite slider.

void AppDelegate::filterIntFromSettingsSliderChangeWithSender(QObject* sender)
{
    auto* slider = qobject_cast<QSlider*>(sender);
    if (!slider)
        return;
    m_ui->fpIntSliderFromField->setText(QString::number(slider->value()));
    updateFilterValuesWithSender(sender);
    const QSignalBlocker blocker(m_ui->fpIntSliderToSlider);
    m_ui->fpIntSliderToSlider->setMinimum(slider->value());
}

void AppDelegate::filterIntToSettingsSliderChangeWithSender(QObject* sender)
{
    auto* slider = qobject_cast<QSlider*>(sender);
    if (!slider)
        return;
    m_ui->fpIntSliderToField->setText(QString::number(slider->value()));
    updateFilterValuesWithSender(sender);
    const QSignalBlocker blocker(m_ui->fpIntSliderFromSlider);
    m_ui->fpIntSliderFromSlider->setMaximum(slider->value());
}

void AppDelegate::filterVariationFromSettingsSliderChangeWithSender(QObject* sender)
{
    auto* slider = qobject_cast<QSlider*>(sender);
    if (!slider)
        return;
    m_ui->fpVariationFromField->setText(QString::number(slider->value()));
    updateFilterValuesWithSender(sender);
    const QSignalBlocker blocker(m_ui->fpVariationToSlider);
    m_ui->fpVariationToSlider->setMinimum(slider->value());
}

void AppDelegate::filterVariationToSettingsSliderChangeWithSender(QObject* sender)
{
    auto* slider = qobject_cast<QSlider*>(sender);
    if (!slider)
        return;
    m_ui->fpVariationToField->setText(QString::number(slider->value()));
    updateFilterValuesWithSender(sender);
    const QSignalBlocker blocker(m_ui->fpVariationFromSlider);
    m_ui->fpVariationFromSlider->setMaximum(slider->value());
}

void AppDelegate::filterFloatFromSettingsSliderChangeWithSender(QObject* sender)
{
    auto* slider = qobject_cast<QSlider*>(sender);
    if (!slider)
        return;
    m_ui->fpFloatSliderFromField->setText(fieldRealText(sliderToReal(slider)));
    updateFilterValuesWithSender(sender);
    const QSignalBlocker blocker(m_ui->fpFloatSliderToSlider);
    m_ui->fpFloatSliderToSlider->setMinimum(slider->value());
}

void AppDelegate::filterFloatToSettingsSliderChangeWithSender(QObject* sender)
{
    auto* slider = qobject_cast<QSlider*>(sender);
    if (!slider)
        return;
    m_ui->fpFloatSliderToField->setText(fieldRealText(sliderToReal(slider)));
    updateFilterValuesWithSender(sender);
    const QSignalBlocker blocker(m_ui->fpFloatSliderFromSlider);
    m_ui->fpFloatSliderFromSlider->setMaximum(slider->value());
}

// Field edits: move the slider (which clamps), then store from the sliders.

void AppDelegate::filterIntFromSettingsTextChangeWithSender(QObject* sender)
{
    auto* field = qobject_cast<QLineEdit*>(sender);
    if (!field)
        return;
    setSliderValueQuietly(m_ui->fpIntSliderFromSlider, clampToInt(leadingInteger(field->text()).value_or(0)));
    updateFilterValuesWithSender(sender);
}

void AppDelegate::filterIntToSettingsTextChangeWithSender(QObject* sender)
{
    auto* field = qobject_cast<QLineEdit*>(sender);
    if (!field)
        return;
    setSliderValueQuietly(m_ui->fpIntSliderToSlider, clampToInt(leadingInteger(field->text()).value_or(0)));
    updateFilterValuesWithSender(sender);
}

void AppDelegate::filterVariationFromSettingsTextChangeWithSender(QObject* sender)
{
    auto* field = qobject_cast<QLineEdit*>(sender);
    if (!field)
        return;
    setSliderValueQuietly(m_ui->fpVariationFromSlider, clampToInt(leadingInteger(field->text()).value_or(0)));
    updateFilterValuesWithSender(sender);
}

void AppDelegate::filterVariationToSettingsTextChangeWithSender(QObject* sender)
{
    auto* field = qobject_cast<QLineEdit*>(sender);
    if (!field)
        return;
    setSliderValueQuietly(m_ui->fpVariationToSlider, clampToInt(leadingInteger(field->text()).value_or(0)));
    updateFilterValuesWithSender(sender);
}

void AppDelegate::filterFloatSliderFromSettingsTextChangeWithSender(QObject* sender)
{
    auto* field = qobject_cast<QLineEdit*>(sender);
    if (!field)
        return;
    const float value = static_cast<float>(leadingReal(field->text()).value_or(0.0));
    setSliderValueQuietly(m_ui->fpFloatSliderFromSlider, realToSlider(value));
    updateFilterValuesWithSender(sender);
}

void AppDelegate::filterFloatSliderToSettingsTextChangeWithSender(QObject* sender)
{
    auto* field = qobject_cast<QLineEdit*>(sender);
    if (!field)
        return;
    const float value = static_cast<float>(leadingReal(field->text()).value_or(0.0));
    setSliderValueQuietly(m_ui->fpFloatSliderToSlider, realToSlider(value));
    updateFilterValuesWithSender(sender);
}

} // namespace quillon
