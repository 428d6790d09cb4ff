#pragma once

#include "chain/ui/ChainDocument.h"
#include "library/Record.h"

#include <QStringList>
#include <QWidget>

#include <memory>
#include <optional>

class QComboBox;
class QLabel;
class QDialog;
class QSortFilterProxyModel;
class QUrl;

namespace Ui {
class ChainPanel;
class AddFilterSheet;
} // namespace Ui

namespace quillon {

class ChainListModel;
class FilterFetcher;
class LibraryListModel;
class PresetTitles;
struct RunSettings;

// The chain side of the window: the chain list (`filterList`) with Add,
// Remove, Up and Down, Open and Save of chain files, the maps box of a
// one-filter chain, the preset pop-up of the selected filter, and the
// add-filter sheet over the library read from the Filters directory.
class ChainPanel final : public QWidget {
    Q_OBJECT
public:
    explicit ChainPanel(QWidget* parent = nullptr);
    ~ChainPanel() override;

    Ui::ChainPanel* ui() const { return m_ui.get(); }
    ChainListModel* chainModel() const { return m_chainModel; }
    const RecordList& chain() const;
    const std::optional<RecordList>& library() const;
    // The preset label and pop-up; the window shows them above the parameters.
    QWidget* presetRow() const { return m_presetRow; }
    QDialog* addFilterSheet() const { return m_addFilterSheet; }
    // The selected row of the chain list, -1 for none.
    int selectedChainRow() const;
    // True while a scan of the Filters directory runs.
    bool scanning() const { return m_scans > 0; }

    // The parameters of the selected filter are shown only while their page
    // is; choosing the page refreshes them.
    void setParameterPageShown(bool shown);
    // The preset index, maps switch and map boxes of the run.
    void fillRunSettings(RunSettings& settings) const;

    // Opens a chain file given by name (command line, a dropped file); an
    // edited chain is replaced only when the user agrees.
    void openChainFile(const QString& path);
    // The chain file the chain was last opened from or saved to (empty for
    // none) and whether it was edited since.
    const QString& chainFile() const { return m_document->file(); }
    bool isChainEdited() const { return m_document->isEdited(); }
    // The chain now matches `path` (empty: no file), unedited.
    void setChainDocument(const QString& path);
    // True when the chain may be replaced: unedited, empty, or the user agrees.
    bool mayReplaceChain();
    // Shows another chain with nothing selected.
    void showChain(RecordList chain);
    // Puts new records in place of the chain's (the same filters with other
    // values), keeping the selection and the maps box.
    void replaceChainRecords(RecordList chain);

public Q_SLOTS:
    // A change of the chain or of a parameter of it.
    void markChainEdited();
    // Library scan: reads `filterPath` in the background; an empty path means
    // no Filters directory, and Add stays off with a hint.
    void launchFilterFetcher(const QString& filterPath);
    void fetchDoneWithArray(const quillon::RecordList& list);

    void filterListClick();
    void showAddSheetWithSender(QObject* sender = nullptr);
    void addFilterListClick();
    void closeAddSheetWithSender(QObject* sender = nullptr);
    void addFilterToListWithSender(QObject* sender = nullptr);
    void removeFilterFromListWithSender(QObject* sender = nullptr);
    void moveFilterUpInListWithSender(QObject* sender = nullptr);
    void moveFilterDownInListWithSender(QObject* sender = nullptr);
    void setupMapsCheckboxesDefaults();
    void toggleUseMapsWithSender(QObject* sender = nullptr);

    void saveFilterChainWithSender(QObject* sender = nullptr);
    void loadFilterChainWithSender(QObject* sender = nullptr);
    void openFilterChainWithUrl(const QUrl& url);

Q_SIGNALS:
    // The parameter rows to show (null: none).
    void parametersChanged(quillon::RecordListPtr params);
    // The chain file or its edited state changed.
    void documentChanged();

private:
    void selectChainRow(int row);
    void updateChainButtons();
    void moveSelected(int by);
    QList<int> selectedLibraryRows() const;
    void showError(const QString& message);

    std::unique_ptr<Ui::ChainPanel> m_ui;
    std::unique_ptr<Ui::AddFilterSheet> m_sheetUi;
    std::unique_ptr<PresetTitles> m_presetTitles;
    QDialog* m_addFilterSheet = nullptr;
    QWidget* m_presetRow = nullptr;
    QComboBox* m_presetPopup = nullptr;
    QLabel* m_addHint = nullptr;
    QLabel* m_shownFilterLabel = nullptr;
    ChainListModel* m_chainModel = nullptr;
    LibraryListModel* m_libraryModel = nullptr;
    QSortFilterProxyModel* m_librarySearch = nullptr;
    FilterFetcher* m_fetcher = nullptr;
    int m_scans = 0;
    bool m_hasFiltersDirectory = false;
    bool m_parameterPageShown = false;
    ChainDocument* m_document = nullptr;
};

} // namespace quillon
