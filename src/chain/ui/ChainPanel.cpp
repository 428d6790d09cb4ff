#include "chain/ui/ChainPanel.h"

#include "app/ui/DialogSeams.h"
#include "chain/ChainFile.h"
#include "chain/ui/ChainListModel.h"
#include "chain/ui/PresetTitles.h"
#include "library/DefinitionReader.h"
#include "library/FilterScan.h"
#include "run/RunSettings.h"

#include "ui_AddFilterSheet.h"
#include "ui_ChainPanel.h"

#include <QComboBox>
#include <QDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeySequence>
#include <QLabel>
#include <QShortcut>
#include <QSignalBlocker>
#include <QSortFilterProxyModel>
#include <QUrl>

#include <algorithm>
#include <array>

namespace quillon {

namespace {

const char* const kNoFiltersHint = QT_TRANSLATE_NOOP(
    "quillon::ChainPanel", "Choose the Filters directory on the Settings page to add filters.");

} // namespace

ChainPanel::ChainPanel(QWidget* parent)
    : QWidget(parent)
    , m_ui(std::make_unique<Ui::ChainPanel>())
    , m_sheetUi(std::make_unique<Ui::AddFilterSheet>())
    , m_presetTitles(std::make_unique<PresetTitles>())
    , m_chainModel(new ChainListModel(this))
    , m_libraryModel(new LibraryListModel(this))
    , m_librarySearch(new QSortFilterProxyModel(this))
    , m_fetcher(new FilterFetcher(this))
    , m_document(new ChainDocument(this))
{
    m_ui->setupUi(this);
    m_ui->filterList->setModel(m_chainModel);
    m_ui->filterList->setAccessibleName(tr("Filter chain"));
    m_ui->loadingSpinner->setAccessibleName(tr("Reading the Filters directory"));
    // Tab moves on to the buttons instead of from cell to cell.
    m_ui->filterList->setTabKeyNavigation(false);

    m_addFilterSheet = new QDialog(this);
    m_sheetUi->setupUi(m_addFilterSheet);
    m_addFilterSheet->setWindowModality(Qt::WindowModal);
    m_librarySearch->setSourceModel(m_libraryModel);
    m_librarySearch->setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_librarySearch->setFilterKeyColumn(-1);
    m_sheetUi->addFilterList->setModel(m_librarySearch);
    m_sheetUi->addFilterList->setTabKeyNavigation(false);
    m_sheetUi->addFilterList->setAccessibleName(tr("Filter library"));
    m_sheetUi->addFilterList->horizontalHeader()->setSectionResizeMode(
        LibraryListModel::adsFilterNameColumn, QHeaderView::Stretch);
    // Return adds the selection; Cancel must not take it over.
    m_sheetUi->addBaseFiltersButton->setDefault(true);
    m_sheetUi->addFilterCancelButton->setAutoDefault(false);

    m_presetRow = new QWidget(this);
    auto* presetLayout = new QHBoxLayout(m_presetRow);
    presetLayout->setContentsMargins(0, 0, 0, 0);
    m_shownFilterLabel = new QLabel(m_presetRow);
    m_shownFilterLabel->setObjectName(QStringLiteral("parameterFilterLabel"));
    m_shownFilterLabel->setTextFormat(Qt::PlainText);
    m_presetPopup = new QComboBox(m_presetRow);
    m_presetPopup->setObjectName(QStringLiteral("filterPresetPopup"));
    m_presetPopup->setAccessibleName(tr("Preset"));
    auto* presetLabel = new QLabel(tr("&Preset:"), m_presetRow);
    presetLabel->setBuddy(m_presetPopup);
    presetLayout->addWidget(m_shownFilterLabel);
    presetLayout->addSpacing(12);
    presetLayout->addWidget(presetLabel);
    presetLayout->addWidget(m_presetPopup);
    presetLayout->addStretch(1);

    Ui::ChainPanel& ui = *m_ui;
    connect(ui.addFilterButton, &QPushButton::clicked, this, [this] { showAddSheetWithSender(); });
    connect(ui.removeFilterButton, &QPushButton::clicked, this, [this] { removeFilterFromListWithSender(); });
    connect(ui.moveFilterUpButton, &QPushButton::clicked, this, [this] { moveFilterUpInListWithSender(); });
    connect(
        ui.moveFilterDownButton, &QPushButton::clicked, this, [this] { moveFilterDownInListWithSender(); });
    connect(ui.loadFilterChainButton, &QPushButton::clicked, this, [this] { loadFilterChainWithSender(); });
    connect(ui.saveFilterChainButton, &QPushButton::clicked, this, [this] { saveFilterChainWithSender(); });
    // clicked, not toggled: turning the switch off from code is no user action.
    connect(ui.t_activateMaps, &QCheckBox::clicked, this, [this] { toggleUseMapsWithSender(); });
    connect(ui.filterList->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        &ChainPanel::filterListClick);
    // Keys of the chain list: Delete removes, Ctrl+Up and Ctrl+Down move.
    const auto listKey = [this](QKeySequence keys, void (ChainPanel::*command)(QObject*)) {
        auto* shortcut = new QShortcut(keys, m_ui->filterList, nullptr, nullptr, Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, [this, command] { (this->*command)(nullptr); });
    };
    listKey(QKeySequence::Delete, &ChainPanel::removeFilterFromListWithSender);
    listKey(QKeySequence(Qt::CTRL | Qt::Key_Up), &ChainPanel::moveFilterUpInListWithSender);
    listKey(QKeySequence(Qt::CTRL | Qt::Key_Down), &ChainPanel::moveFilterDownInListWithSender);
    ui.removeFilterButton->setToolTip(tr("Remove the selected filter (Delete)"));
    ui.moveFilterUpButton->setToolTip(tr("Move the selected filter up (Ctrl+Up)"));
    ui.moveFilterDownButton->setToolTip(tr("Move the selected filter down (Ctrl+Down)"));
    connect(m_chainModel, &ChainListModel::chainChanged, this, &ChainPanel::markChainEdited);
    connect(m_document, &ChainDocument::changed, this, &ChainPanel::documentChanged);

    connect(m_sheetUi->addBaseFiltersButton, &QPushButton::clicked, this,
        [this] { addFilterToListWithSender(); });
    connect(
        m_sheetUi->addFilterCancelButton, &QPushButton::clicked, this, [this] { closeAddSheetWithSender(); });
    connect(m_sheetUi->addFilterList->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        &ChainPanel::addFilterListClick);
    connect(
        m_sheetUi->addFilterList, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex& index) {
            m_sheetUi->addFilterList->selectionModel()->select(
                index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
            addFilterToListWithSender();
        });
    // Searching selects the first match, so Return adds it at once.
    connect(m_sheetUi->addFilterSearchField, &QLineEdit::textChanged, this, [this](const QString& text) {
        m_librarySearch->setFilterFixedString(text);
        if (!text.isEmpty() && m_librarySearch->rowCount() > 0)
            m_sheetUi->addFilterList->selectRow(0);
    });

    connect(m_fetcher, &FilterFetcher::fetched, this, &ChainPanel::fetchDoneWithArray);

    // Until the first scan has delivered a library there is nothing to add;
    // without a Filters directory a line under the buttons says why.
    m_addHint = new QLabel(tr(kNoFiltersHint), this);
    m_addHint->setObjectName(QStringLiteral("addFilterHint"));
    m_addHint->setWordWrap(true);
    ui.chainLayout->insertWidget(ui.chainLayout->indexOf(ui.loadingSpinner), m_addHint);
    ui.addFilterButton->setEnabled(false);
    ui.addFilterButton->setToolTip(tr(kNoFiltersHint));
    ui.loadingSpinner->hide();
    ui.t_mapsBox->hide();
    filterListClick();
    setupMapsCheckboxesDefaults();
}

ChainPanel::~ChainPanel() = default;

const RecordList& ChainPanel::chain() const
{
    return m_chainModel->records();
}

const std::optional<RecordList>& ChainPanel::library() const
{
    return m_libraryModel->library();
}

int ChainPanel::selectedChainRow() const
{
    const QModelIndexList rows = m_ui->filterList->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

void ChainPanel::selectChainRow(int row)
{
    QItemSelectionModel* selection = m_ui->filterList->selectionModel();
    if (row < 0) {
        selection->clearSelection();
        return;
    }
    selection->setCurrentIndex(m_chainModel->index(row, ChainListModel::filterColumn),
        QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void ChainPanel::showError(const QString& message)
{
    MessageBoxes::instance().showError(window(), message);
}

void ChainPanel::setParameterPageShown(bool shown)
{
    m_parameterPageShown = shown;
    if (shown)
        filterListClick();
}

void ChainPanel::fillRunSettings(RunSettings& settings) const
{
    const Ui::ChainPanel& ui = *m_ui;
    settings.presetIndex = std::max(0, m_presetPopup->currentIndex());
    settings.activateMaps = ui.t_activateMaps->isChecked() ? 1 : 0;
    const std::array<const QCheckBox*, 10> maps { ui.t_defaultMap, ui.t_alphaMap, ui.t_diffuseMap,
        ui.t_bumppMap, ui.t_normalMap, ui.t_specStrengthMap, ui.t_specComponentMap, ui.t_AOMap, ui.t_ROMap,
        ui.t_metallicMap };
    for (std::size_t i = 0; i < settings.mapBoxes.size() && i < maps.size(); ++i)
        settings.mapBoxes[i] = maps[i]->isChecked() ? 1 : 0;
}

// ---- Library scan ----

void ChainPanel::launchFilterFetcher(const QString& filterPath)
{
    m_hasFiltersDirectory = !filterPath.isEmpty();
    m_ui->addFilterButton->setEnabled(false);
    m_ui->addFilterButton->setToolTip(m_hasFiltersDirectory ? QString() : tr(kNoFiltersHint));
    m_addHint->setVisible(!m_hasFiltersDirectory);
    if (!m_hasFiltersDirectory)
        return;
    m_ui->loadingSpinner->show();
    ++m_scans;
    m_fetcher->launch(filterPath);
}

void ChainPanel::fetchDoneWithArray(const RecordList& list)
{
    m_scans = std::max(0, m_scans - 1);
    m_ui->addFilterButton->setEnabled(true);
    m_ui->addFilterButton->setToolTip(QString());
    m_addHint->hide();
    m_ui->loadingSpinner->setVisible(m_scans > 0);
    m_libraryModel->setLibrary(list);
}

// ---- Chain editing ----

void ChainPanel::updateChainButtons()
{
    const int r = selectedChainRow();
    const int n = static_cast<int>(chain().size());
    m_ui->removeFilterButton->setEnabled(r != -1);
    m_ui->moveFilterUpButton->setEnabled(r > 0);
    m_ui->moveFilterDownButton->setEnabled(r != -1 && r < n - 1);
}

void ChainPanel::filterListClick()
{
    const int r = selectedChainRow();
    const int n = static_cast<int>(chain().size());
    updateChainButtons();
    if (r == -1 || r >= n) {
        // Nothing selected: show no parameters rather than those of a filter
        // that may be gone.
        Q_EMIT parametersChanged(nullptr);
        m_presetPopup->clear();
        m_shownFilterLabel->setText(tr("No filter selected: select one in the chain."));
        return;
    }
    if (!m_parameterPageShown)
        return;

    const RecordPtr& record = chain()[static_cast<size_t>(r)];
    Q_EMIT parametersChanged(record->list(key::Components));
    m_shownFilterLabel->setText(
        tr("Parameters of %1 (position %2)").arg(record->string(key::name)).arg(r + 1));

    const QSignalBlocker blocker(m_presetPopup);
    m_presetPopup->clear();
    const QStringList titles = m_presetTitles->titlesFor(*record);
    const qint64 count = titles.size();
    m_presetPopup->addItems(titles);
    const qint64 chosen = record->integer(key::ChoosenPreset);
    // A choice beyond the presets (an edited chain file) falls back to the first.
    m_presetPopup->setCurrentIndex(count == 0 ? -1 : (chosen >= 0 && chosen < count ? int(chosen) : 0));
}

void ChainPanel::showAddSheetWithSender(QObject* /*sender*/)
{
    // Row numbers from an earlier showing may name other filters after a rescan.
    m_sheetUi->addFilterList->clearSelection();
    m_sheetUi->addFilterSearchField->clear();
    m_sheetUi->addFilterSearchField->setFocus();
    addFilterListClick();
    m_addFilterSheet->open();
}

QList<int> ChainPanel::selectedLibraryRows() const
{
    QList<int> rows;
    for (const QModelIndex& index : m_sheetUi->addFilterList->selectionModel()->selectedRows())
        rows.append(m_librarySearch->mapToSource(index).row());
    // Library order, whatever the order of the clicks.
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

void ChainPanel::addFilterListClick()
{
    m_sheetUi->addBaseFiltersButton->setEnabled(!selectedLibraryRows().isEmpty());
}

void ChainPanel::closeAddSheetWithSender(QObject* /*sender*/)
{
    m_addFilterSheet->done(QDialog::Rejected);
}

void ChainPanel::addFilterToListWithSender(QObject* /*sender*/)
{
    RecordList added;
    QStringList unreadable;
    for (const int i : selectedLibraryRows()) {
        const RecordPtr record = m_libraryModel->recordAt(i);
        if (!record)
            continue;
        if (!loadXMLInfoWithFilterdata(record)) {
            const QString path = record->string(key::path);
            const QString why = definitionProblem(path);
            unreadable.append(
                QStringLiteral("%1 (%2: %3)")
                    .arg(record->string(key::name), path, why.isEmpty() ? tr("it cannot be read") : why));
            continue;
        }
        added.push_back(record);
    }
    m_chainModel->append(added);
    m_addFilterSheet->done(QDialog::Accepted);
    setupMapsCheckboxesDefaults();
    // The chain's selection is left alone, but the move buttons follow the new length.
    updateChainButtons();

    if (!unreadable.isEmpty()) {
        showError(tr("The filter definition of %1 could not be read; the filter was not added.")
                      .arg(unreadable.join(QStringLiteral(", "))));
    }
}

void ChainPanel::removeFilterFromListWithSender(QObject* /*sender*/)
{
    const int r = selectedChainRow();
    if (r == -1 || r >= static_cast<int>(chain().size())) {
        filterListClick();
        return;
    }
    m_chainModel->removeRecord(r);
    setupMapsCheckboxesDefaults();
    // The selection stays at that position (now the next filter), or moves to
    // the new last one; the parameter view follows it.
    const int n = static_cast<int>(chain().size());
    selectChainRow(n == 0 ? -1 : std::min(r, n - 1));
    filterListClick();
}

void ChainPanel::moveSelected(int by)
{
    const int r = selectedChainRow();
    const int target = r + by;
    if (r == -1 || target < 0 || target >= static_cast<int>(chain().size())) {
        filterListClick();
        return;
    }
    m_chainModel->moveRecord(r, by);
    selectChainRow(target);
    filterListClick();
}

void ChainPanel::moveFilterUpInListWithSender(QObject* /*sender*/)
{
    moveSelected(-1);
}

void ChainPanel::moveFilterDownInListWithSender(QObject* /*sender*/)
{
    moveSelected(+1);
}

void ChainPanel::setupMapsCheckboxesDefaults()
{
    Ui::ChainPanel& ui = *m_ui;
    if (chain().size() != 1) {
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

    const bool allMaps = chain().front() && chain().front()->string(key::filtertype) == QLatin1String("1");
    for (QCheckBox* box : maps)
        box->setEnabled(allMaps || box == ui.t_defaultMap || box == ui.t_alphaMap);
}

void ChainPanel::toggleUseMapsWithSender(QObject* /*sender*/)
{
    if (m_ui->t_activateMaps->isChecked()) {
        m_ui->t_mapsBox->show();
        setupMapsCheckboxesDefaults();
    } else {
        m_ui->t_mapsBox->hide();
    }
}

// ---- Chain file ----

void ChainPanel::openChainFile(const QString& path)
{
    if (!mayReplaceChain())
        return;
    // A name given on the command line is relative to the working directory.
    openFilterChainWithUrl(QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()));
}

void ChainPanel::saveFilterChainWithSender(QObject* /*sender*/)
{
    FileDialogRequest request;
    request.mode = FileDialogRequest::Mode::Save;
    request.title = tr("Save filter chain");
    request.prompt = tr("Save");
    request.nameFilter = tr("Quillon chain (*.qlch)");
    request.defaultSuffix = QStringLiteral("qlch");
    request.canCreateDirectories = true;
    request.directory = m_document->dialogDirectory();
    FileDialogs::instance().open(window(), request, [this](const QString& path) {
        QString error;
        if (saveChainAndReport(path, chain(), &error))
            setChainDocument(path);
        else
            showError(tr("The chain could not be saved to %1: %2").arg(path, error));
    });
}

void ChainPanel::loadFilterChainWithSender(QObject* /*sender*/)
{
    if (!mayReplaceChain())
        return;
    FileDialogRequest request;
    request.mode = FileDialogRequest::Mode::Open;
    request.prompt = tr("Select Chain");
    request.message = tr("Quillon needs you to locate a saved filter chain");
    request.nameFilter = tr("Quillon chain (*.qlch)");
    request.defaultSuffix = QStringLiteral("qlch");
    request.canChooseFiles = true;
    request.directory = m_document->dialogDirectory();
    FileDialogs::instance().open(window(), request,
        [this](const QString& path) { openFilterChainWithUrl(QUrl::fromLocalFile(path)); });
}

void ChainPanel::openFilterChainWithUrl(const QUrl& url)
{
    if (!url.isLocalFile()) {
        showError(tr("Only chain files on this computer can be opened."));
        return;
    }
    ChainReadResult result = readChainFile(url.toLocalFile());
    if (result.status == ChainReadResult::Refused) {
        // A file that is no chain file leaves the chain as it was.
        showError(result.error);
        return;
    }
    if (result.status == ChainReadResult::UnknownCode) {
        reportUnknownChainCode();
        MessageBoxes::instance().beep();
    }
    // Even a partial read replaces the whole chain.
    showChain(std::move(result.chain));
    setChainDocument(url.toLocalFile());
}

// ---- The chain as a document ----

void ChainPanel::setChainDocument(const QString& path)
{
    m_document->setFile(path);
}

void ChainPanel::markChainEdited()
{
    m_document->markEdited();
}

bool ChainPanel::mayReplaceChain()
{
    return !m_document->isEdited() || chain().empty()
        || MessageBoxes::instance().confirm(
            window(), tr("The chain has changes that are not saved in a chain file. Replace it anyway?"));
}

void ChainPanel::showChain(RecordList chain)
{
    // The maps box follows the chain now shown; no position of the old chain
    // stays selected.
    m_chainModel->setRecords(std::move(chain));
    setupMapsCheckboxesDefaults();
    selectChainRow(-1);
    filterListClick();
}

void ChainPanel::replaceChainRecords(RecordList chain)
{
    const int row = selectedChainRow();
    m_chainModel->setRecords(std::move(chain));
    selectChainRow(row < m_chainModel->rowCount() ? row : -1);
    filterListClick();
}

} // namespace quillon
