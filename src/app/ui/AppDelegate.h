#pragma once

#include "app/ui/MainWindow.h"
#include "app/ui/WindowBatchDisplay.h"
#include "batch/RunPlanner.h"
#include "chain/ChainKeeper.h"
#include "library/Record.h"

#include <QFutureWatcher>
#include <QObject>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

class QUrl;

namespace quillon {

class BatchController;
class ChainPanel;
class ParameterEditor;
class Preferences;
class ProgressSheet;
class ResultsSheet;
class SettingsPane;
class TestStrip;
struct RunSettings;

// The application controller: owns the window, the preferences and the run,
// and does what the window's areas cannot do alone: start-up, Reset
// Preferences, Start and Abort, Help, Donate and About, and the end of the
// application. Chain editing, the parameter editor and the settings controls
// belong to the window's panels.
class AppDelegate final : public QObject {
    Q_OBJECT
public:
    // Builds the window (not shown) with the chain empty and the library absent.
    explicit AppDelegate(QObject* parent = nullptr);
    ~AppDelegate() override;

    MainWindow* window() const { return m_window.get(); }
    ChainPanel* chainPanel() const;
    ParameterEditor* parameterEditor() const;
    SettingsPane* settingsPane() const;
    ProgressSheet* progressSheet() const { return m_progressSheet; }
    // Shown when a run ends.
    ResultsSheet* resultsSheet() const { return m_resultsSheet; }
    BatchController* batchController() const { return m_batch.get(); }

    // The chain, the library and the rows shown in the parameter table.
    const RecordList& chain() const;
    const std::optional<RecordList>& library() const;
    const RecordListPtr& params() const;

    // The preferences store. Give one (a test file, the demo profile) before
    // applicationDidFinishLaunching; otherwise the user's own is opened on
    // first use.
    void setPreferences(std::unique_ptr<Preferences> prefs);
    Preferences& preferences();

    // Opens a chain file given on the command line.
    void openChainFile(const QString& path);
    // Chooses a source type as the user would (0 image, 1 directory, 2 none).
    void selectSourceMode(int mode);
    // The window's run values as one snapshot (GUI thread).
    RunSettings captureRunSettings() const;

    // Where the current chain is kept between launches: beside the
    // preferences file, named after it.
    QString keptChainPath();

    // The one form in which failures are shown: "Error:", the message, "OK".
    void showApplicationErrorAlertWithMessage(const QString& message);

    // Help.pdf next to the executable (<bin>/../share/quillon); empty when
    // there is none.
    static QString helpDocumentPath();
    static QUrl donationUrl();
    // How files and web pages are opened (default: QDesktopServices).
    void setUrlOpener(std::function<bool(const QUrl&)> opener);

public Q_SLOTS:
    void applicationDidFinishLaunching();
    void prefsReset();
    // Asks first; a confirmed reset writes the factory values and restores
    // the window from them.
    void resetPreferencesWithSender(QObject* sender = nullptr);
    void startupGUI();

    void startBatchWithSender(QObject* sender = nullptr);
    void abortProcessWithSender(QObject* sender = nullptr);
    // Shows the plan of a run (every output and its values) in a sheet.
    void previewRunWithSender(QObject* sender = nullptr);

    void showHelpWithSender(QObject* sender = nullptr);
    void ppDonationWithSender(QObject* sender = nullptr);
    void showAboutWithSender(QObject* sender = nullptr);
    // Quits when the main window has closed.
    void windowWillClose();

    // Use These Values: sets the chain to make the last run's final output
    // at `row` (plan order) again; false when there is no such output.
    bool useValuesOfOutput(int row);
    // "Test Strip…" on parameter `row` of the selected chain filter.
    void showTestStrip(int row);
    TestStrip* testStrip() const { return m_testStrip; }

private:
    // True when the window may close: no run, or the user chose to abort it.
    bool mayClose();
    bool openUrl(const QUrl& url);
    // The last run's counts line, output folder and final outputs in plan order.
    WindowBatchDisplay::Results runResults() const;
    // Preview Run's plan is ready: its questions, then the sheet.
    void previewPlanned();

    std::unique_ptr<Preferences> m_prefs;
    std::unique_ptr<MainWindow> m_window;
    ProgressSheet* m_progressSheet = nullptr; // owned by the window
    ResultsSheet* m_resultsSheet = nullptr; // owned by the window
    TestStrip* m_testStrip = nullptr; // owned by the window
    std::unique_ptr<WindowBatchDisplay> m_batchDisplay;
    std::unique_ptr<BatchController> m_batch; // declared after its display: goes first
    std::function<bool(const QUrl&)> m_urlOpener;
    // Preview Run plans on another thread; the flag outlives the window.
    QFutureWatcher<StartPlan> m_previewPlanning;
    std::shared_ptr<std::atomic<bool>> m_previewAbort = std::make_shared<std::atomic<bool>>(false);
    // Each pending write holds its own bytes; the keeper waits for them as it goes.
    ChainKeeper m_keptChain;
};

} // namespace quillon
