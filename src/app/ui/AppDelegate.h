#pragma once

#include "library/Record.h"

#include <QList>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class QAbstractItemView;
class QMainWindow;
class QDialog;
class QUrl;
class QComboBox;
class QRadioButton;

namespace Ui {
class MainWindow;
class AddFilterSheet;
class SettingsPane;
} // namespace Ui

namespace quillon {

class ChainListModel;
class LibraryListModel;
class ParamTableModel;
class FilterFetcher;
class BatchController;
class Preferences;
class ProgressSheet;
class WindowBatchDisplay;
struct RunSettings;

// The application controller: builds and drives the main window, owns the
// filter library, the chain and the parameter rows of the selected chain
// filter. Widgets are looked up through the form (the window owns them).
class AppDelegate final : public QObject {
    Q_OBJECT
public:
    // Builds the window (not shown) with the chain empty, the library absent
    // and the add button disabled until a scan delivers the library.
    explicit AppDelegate(QObject* parent = nullptr);
    ~AppDelegate() override;

    QMainWindow* window() const { return m_window; }
    Ui::MainWindow* ui() const { return m_ui.get(); }

    // The chain, the library and the rows shown in the parameter table.
    const RecordList& chain() const { return filterArray; }
    const std::optional<RecordList>& library() const { return baseFiltersArray; }
    const RecordListPtr& params() const { return fp_ParamsArray; }

    // Opens a chain file given on the command line (as the Open command
    // does after its dialog).
    void openChainFile(const QString& path);

    // The one form in which failures are shown: "Error:", the message, "OK".
    // Returns when the alert is closed.
    void showApplicationErrorAlertWithMessage(const QString& message);

    bool eventFilter(QObject* watched, QEvent* event) override;

public Q_SLOTS:
    // Library scan: starts a background scan of filterPath; the result comes
    // back through fetchDoneWithArray. The caller disables addFilterButton.
    void launchFilterFetcher();
    void fetchDoneWithArray(const quillon::RecordList& list);

    // Chain editing.
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

    // Chain file.
    void saveFilterChainWithSender(QObject* sender = nullptr);
    void loadFilterChainWithSender(QObject* sender = nullptr);
    void openFilterChainWithUrl(const QUrl& url);

    // Parameter editor.
    void filterParamListClick();
    void updateFilterValuesWithSender(QObject* sender = nullptr);
    void reallyUpdateFilterValues();
    void filterIntFromSettingsSliderChangeWithSender(QObject* sender = nullptr);
    void filterIntToSettingsSliderChangeWithSender(QObject* sender = nullptr);
    void filterVariationFromSettingsSliderChangeWithSender(QObject* sender = nullptr);
    void filterVariationToSettingsSliderChangeWithSender(QObject* sender = nullptr);
    void filterFloatFromSettingsSliderChangeWithSender(QObject* sender = nullptr);
    void filterFloatToSettingsSliderChangeWithSender(QObject* sender = nullptr);
    void filterIntFromSettingsTextChangeWithSender(QObject* sender = nullptr);
    void filterIntToSettingsTextChangeWithSender(QObject* sender = nullptr);
    void filterVariationFromSettingsTextChangeWithSender(QObject* sender = nullptr);
    void filterVariationToSettingsTextChangeWithSender(QObject* sender = nullptr);
    void filterFloatSliderFromSettingsTextChangeWithSender(QObject* sender = nullptr);
    void filterFloatSliderToSettingsTextChangeWithSender(QObject* sender = nullptr);

    // Table delegate: dispatches a selection change by the table.
    void tableViewSelectionDidChange(QAbstractItemView* table);
    // Main tab view: choosing page "2" refreshes the selected chain filter.
    void mainTabDidSelectItem(int index);
    // Quits when the closing window is the main window.
    void windowWillClose(QObject* closingWindow);

public:
    // The selected row of the chain list, -1 for none.
    int selectedChainRow() const;
    // The identifier ("1" or "2") of the selected page of mainTabControl.
    QString selectedMainTabIdentifier() const;

private:
    void connectChainSide();
    void connectParameterEditor();
    QDialog* addFilterSheet();
    RecordPtr selectedParamRecord() const;
    void selectChainRow(int row);
    void updateChainButtons();

    QMainWindow* m_window = nullptr;
    std::unique_ptr<Ui::MainWindow> m_ui;
    QDialog* m_addFilterSheet = nullptr;
    std::unique_ptr<Ui::AddFilterSheet> m_sheetUi;
    ChainListModel* m_chainModel = nullptr;
    LibraryListModel* m_libraryModel = nullptr;
    ParamTableModel* m_paramModel = nullptr;
    FilterFetcher* m_fetcher = nullptr;

    // Chain and library (names as the rest of the system uses them).
    RecordList filterArray;
    std::optional<RecordList> baseFiltersArray;
    RecordListPtr fp_ParamsArray;

public:
    // Paths and run values of the controller; written by the settings side,
    // read by the scan and the run.
    QString toolPath;
    QString filterPath;
    QString outputPath;
    QString sourcePath;
    QString outputPrefix;
    qint64 frameMaxValue = 999;
    qint64 png_bitdepth = 0;
    qint64 png_compression = 0;
    qint64 tiff_bitdepth = 0;
    qint64 tiff_compression = 0;
    qint64 tga_bitdepth = 0;

    // ---- Settings side (AppDelegate_settings.cpp) ----
    // Members and slots of the settings pane, the preferences, Start and the
    // progress sheet go here.
public:
    // The preferences store. Give one (a test file, the demo profile) before
    // applicationDidFinishLaunching; otherwise the user's own is opened on
    // first use.
    void setPreferences(std::unique_ptr<Preferences> prefs);
    Preferences& preferences();

    Ui::SettingsPane* settingsUi() const { return m_settingsUi.get(); }
    ProgressSheet* progressSheet() const { return m_progressSheet; }
    BatchController* batchController() const { return m_batch.get(); }
    // The source-type pop-up under the name the batch start uses.
    QComboBox* inputTypePopup() const;
    // Chooses a source type as the user would (0 image, 1 directory, 2 none).
    void selectSourceMode(int mode);

    // The window's run values as one snapshot (GUI thread).
    RunSettings captureRunSettings() const;

    // Texts of the radio-group choices, from the controller's codes.
    QString getPNGBitDepth() const;
    QString getPNGCompression() const;
    QString getTIFFBitDepth() const;
    QString getTIFFCompression() const;
    QString getTGABitDepth() const;

    // Help.pdf next to the executable (<bin>/../share/quillon), else in the
    // build tree; empty when there is none.
    static QString helpDocumentPath();
    static QUrl donationUrl();
    // How files and web pages are opened (default: QDesktopServices).
    void setUrlOpener(std::function<bool(const QUrl&)> opener);

public Q_SLOTS:
    // Start-up and preferences.
    void applicationDidFinishLaunching();
    void prefsReset();
    void resetPreferencesWithSender(QObject* sender = nullptr);
    void startupGUI();
    void settingsSaverWithSender(QObject* sender = nullptr);

    // Locate dialogs and the input.
    void locateRenderToolWithSender(QObject* sender = nullptr);
    void locateFilterDirectoryWithSender(QObject* sender = nullptr);
    void locateCreateOutputDirectoryWithSender(QObject* sender = nullptr);
    void locateImagePathWithSender(QObject* sender = nullptr);
    void clearImagePathWithSender(QObject* sender = nullptr);

    // Source type, frame suffix, output format and its options.
    void changeSourceModeWithSender(QObject* sender = nullptr);
    void changeOutputSuffixWithSender(QObject* sender = nullptr);
    void pngBitDepthClickWithSender(QObject* sender = nullptr);
    void pngCompressionClickWithSender(QObject* sender = nullptr);
    void tiffBitDepthClickWithSender(QObject* sender = nullptr);
    void tiffCompressionClickWithSender(QObject* sender = nullptr);
    void tgaBitDepthClickWithSender(QObject* sender = nullptr);
    void jpgPrecisionSwitchWithSender(QObject* sender = nullptr);
    void pngTransSwitchWithSender(QObject* sender = nullptr);
    void tiffTransSwitchWithSender(QObject* sender = nullptr);
    void tiffFloatFormatSwitchWithSender(QObject* sender = nullptr);
    void tgaTransSwitchWithSender(QObject* sender = nullptr);
    void tgaFlipOrderWithSender(QObject* sender = nullptr);
    void jpegQualityChangeWithSender(QObject* sender = nullptr);
    void jpegQualityTextChangeWithSender(QObject* sender = nullptr);
    // Format tab view: stores the selected tab's identifier.
    void formatTabDidSelectItem(int index);

    // The run.
    void startBatchWithSender(QObject* sender = nullptr);
    void abortProcessWithSender(QObject* sender = nullptr);

    // Help menu.
    void showHelpWithSender(QObject* sender = nullptr);
    void ppDonationWithSender(QObject* sender = nullptr);

private:
    void setupSettingsSide();
    void shutdownSettingsSide();
    void radioClick(QObject* sender, const QList<QRadioButton*>& group, qint64& variable, const QString& key);
    void selectRadio(const QList<QRadioButton*>& group, qint64 code);
    void switchClick(QObject* sender, const QString& key);
    QString selectedFormatIdentifier() const;
    QList<QRadioButton*> pngBitDepthGroup() const;
    QList<QRadioButton*> pngCompressionGroup() const;
    QList<QRadioButton*> tiffBitDepthGroup() const;
    QList<QRadioButton*> tiffCompressionGroup() const;
    QList<QRadioButton*> tgaBitDepthGroup() const;

    // Deletes the settings side's objects where their types are complete, so
    // the rest of the controller needs none of their headers.
    struct SettingsSideDeleter {
        void operator()(Ui::SettingsPane* p) const;
        void operator()(Preferences* p) const;
        void operator()(WindowBatchDisplay* p) const;
        void operator()(BatchController* p) const;
    };
    std::unique_ptr<Ui::SettingsPane, SettingsSideDeleter> m_settingsUi;
    std::unique_ptr<Preferences, SettingsSideDeleter> m_prefs;
    ProgressSheet* m_progressSheet = nullptr; // owned by the window
    std::unique_ptr<WindowBatchDisplay, SettingsSideDeleter> m_batchDisplay;
    std::unique_ptr<BatchController, SettingsSideDeleter> m_batch; // declared after its display: goes first
    std::function<bool(const QUrl&)> m_urlOpener;

    // ---- end of settings side ----
};

} // namespace quillon
