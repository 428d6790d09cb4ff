#include "app/ui/AppDelegate.h"

#include "app/Preferences.h"
#include "app/ui/ChainPreview.h"
#include "app/ui/DialogSeams.h"
#include "app/ui/MainWindow.h"
#include "app/ui/PlanPreview.h"
#include "app/ui/ProgressSheet.h"
#include "app/ui/ResultsSheet.h"
#include "app/ui/SettingsPane.h"
#include "app/ui/TestStrip.h"
#include "app/ui/WindowBatchDisplay.h"
#include "batch/BatchController.h"
#include "chain/ui/ChainListModel.h"
#include "chain/ui/ChainPanel.h"
#include "run/RunSettings.h"
#include "variations/OutputValues.h"
#include "variations/ui/ParamTableModel.h"
#include "variations/ui/ParameterEditor.h"

#include "ui_MainWindow.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QSet>
#include <QStatusBar>
#include <QUrl>
#include <QtConcurrent/QtConcurrentRun>

namespace quillon {

namespace {

// The reason of each missing output from the closing report's lines
// ("missing PATH: how its tool run ended").
QHash<QString, QString> missingOutputReasons(const QStringList& lines, const QSet<QString>& missing)
{
    const QString prefix = QStringLiteral("missing ");
    const QString separator = QStringLiteral(": ");
    QHash<QString, QString> reasons;
    for (const QString& line : lines) {
        if (!line.startsWith(prefix))
            continue;
        // A path may hold ": " itself: take the first split that names a missing output.
        for (qsizetype at = line.indexOf(separator, prefix.size()); at >= 0;
             at = line.indexOf(separator, at + 1)) {
            const QString path = line.mid(prefix.size(), at - prefix.size());
            if (missing.contains(path)) {
                reasons.insert(path, line.mid(at + separator.size()));
                break;
            }
        }
    }
    return reasons;
}

} // namespace

AppDelegate::AppDelegate(QObject* parent)
    : QObject(parent)
    , m_window(std::make_unique<MainWindow>())
{
    m_progressSheet = new ProgressSheet(m_window.get());
    m_batchDisplay = std::make_unique<WindowBatchDisplay>(
        m_progressSheet, [this](const QString& message) { showApplicationErrorAlertWithMessage(message); },
        [this](const QString& status) { m_window->statusBar()->showMessage(status); });
    m_batch = std::make_unique<BatchController>(m_batchDisplay.get());
    m_batchDisplay->setResultsSource([this] { return runResults(); });
    m_resultsSheet = new ResultsSheet(m_window.get());
    m_resultsSheet->setUrlOpener([this](const QUrl& url) { return openUrl(url); });
    m_resultsSheet->setFailureSink([this](const QString& text) { m_window->statusBar()->showMessage(text); });
    m_batchDisplay->setResultsSink([this](const WindowBatchDisplay::Results& results) {
        MessageBoxes::instance().noteResults(results.summary);
        m_resultsSheet->showResults(results.summary, results.folder, results.outputs, results.details);
    });
    connect(m_resultsSheet, &ResultsSheet::useValuesRequested, this, &AppDelegate::useValuesOfOutput);
    m_resultsSheet->setPlanSource([this] { return m_batch->plan(); });
    m_testStrip = new TestStrip(m_window.get());
    connect(parameterEditor(), &ParameterEditor::testStripRequested, this, &AppDelegate::showTestStrip);

    settingsPane()->setPreferencesSource([this]() -> Preferences& { return preferences(); });
    m_window->setLayoutStore([this]() -> Preferences& { return preferences(); });
    m_window->setCloseGuard([this] { return mayClose(); });

    Ui::MainWindow& ui = *m_window->ui();
    connect(ui.startButton, &QPushButton::clicked, this, [this] { startBatchWithSender(); });
    connect(m_progressSheet, &ProgressSheet::abortRequested, this, [this] { abortProcessWithSender(); });
    connect(m_window->chainPreview(), &ChainPreview::previewRequested, this,
        [this] { m_window->chainPreview()->start(chain(), captureRunSettings()); });
    connect(ui.actionPreviewRun, &QAction::triggered, this, [this] { previewRunWithSender(); });
    connect(&m_previewPlanning, &QFutureWatcherBase::finished, this, &AppDelegate::previewPlanned);
    connect(ui.actionResetPreferences, &QAction::triggered, this, [this] { resetPreferencesWithSender(); });
    connect(ui.actionHelp, &QAction::triggered, this, [this] { showHelpWithSender(); });
    connect(ui.actionDonate, &QAction::triggered, this, [this] { ppDonationWithSender(); });
    connect(ui.actionAbout, &QAction::triggered, this, [this] { showAboutWithSender(); });
    connect(m_window.get(), &MainWindow::closing, this, &AppDelegate::windowWillClose);

    // Every edit of the chain or of a parameter is kept for the next start.
    const auto keep = [this] { m_keptChain.keep(chain()); };
    connect(chainPanel()->chainModel(), &ChainListModel::chainChanged, this, keep);
    connect(parameterEditor()->model(), &QAbstractItemModel::dataChanged, this, keep);
    connect(parameterEditor()->model(), &QAbstractItemModel::dataChanged, chainPanel(),
        &ChainPanel::markChainEdited);
}

AppDelegate::~AppDelegate()
{
    // A preview still planned stops early and is never shown.
    m_previewAbort->store(true);
    disconnect(&m_previewPlanning, nullptr, this, nullptr);
    // A run still going is aborted and wound down while the sheet it reports
    // to still exists.
    m_batch.reset();
    m_batchDisplay.reset();
    m_window.reset();
}

ChainPanel* AppDelegate::chainPanel() const
{
    return m_window->chainPanel();
}

ParameterEditor* AppDelegate::parameterEditor() const
{
    return m_window->parameterEditor();
}

SettingsPane* AppDelegate::settingsPane() const
{
    return m_window->settingsPane();
}

const RecordList& AppDelegate::chain() const
{
    return chainPanel()->chain();
}

const std::optional<RecordList>& AppDelegate::library() const
{
    return chainPanel()->library();
}

const RecordListPtr& AppDelegate::params() const
{
    return parameterEditor()->params();
}

void AppDelegate::setPreferences(std::unique_ptr<Preferences> prefs)
{
    m_prefs = std::move(prefs);
}

Preferences& AppDelegate::preferences()
{
    if (!m_prefs)
        m_prefs = std::make_unique<Preferences>();
    return *m_prefs;
}

void AppDelegate::openChainFile(const QString& path)
{
    chainPanel()->openChainFile(path);
}

void AppDelegate::selectSourceMode(int mode)
{
    settingsPane()->selectSourceMode(mode);
}

RunSettings AppDelegate::captureRunSettings() const
{
    RunSettings settings = settingsPane()->runSettings();
    chainPanel()->fillRunSettings(settings);
    return settings;
}

void AppDelegate::showApplicationErrorAlertWithMessage(const QString& message)
{
    MessageBoxes::instance().showError(m_window.get(), message);
}

// ---- Start-up and preferences ----

void AppDelegate::applicationDidFinishLaunching()
{
    if (!preferences().stringForKey(pref::PREF_RESET))
        prefsReset();
    m_window->restoreLayout(preferences());
    startupGUI();
    m_keptChain.setPath(keptChainPath());
    chainPanel()->showChain(m_keptChain.restore());
    // The kept chain is where it was left: nothing to save yet.
    chainPanel()->setChainDocument(QString());
}

QString AppDelegate::keptChainPath()
{
    const QFileInfo store(preferences().fileName());
    return store.dir().filePath(store.completeBaseName() + QStringLiteral("-chain.qlch"));
}

void AppDelegate::prefsReset()
{
    preferences().prefsReset();
}

void AppDelegate::resetPreferencesWithSender(QObject* /*sender*/)
{
    if (!MessageBoxes::instance().confirm(
            m_window.get(), tr("Reset every setting to its factory value? The chain is kept.")))
        return;
    prefsReset();
    startupGUI();
}

void AppDelegate::startupGUI()
{
    settingsPane()->restore();
    chainPanel()->filterListClick();
}

// ---- The run ----

void AppDelegate::startBatchWithSender(QObject* /*sender*/)
{
    // The last run's outcome does not describe this one.
    m_window->statusBar()->clearMessage();
    m_batch->startBatchWithSender(chain(), captureRunSettings());
}

void AppDelegate::previewRunWithSender(QObject* /*sender*/)
{
    // The same checks and plan as Start, planned off this thread as Start's
    // are; one preview at a time.
    if (m_batch->isRunning() || m_previewPlanning.isRunning())
        return;
    m_previewAbort->store(false);
    m_previewPlanning.setFuture(QtConcurrent::run(
        [records = copyChain(chain()), settings = captureRunSettings(), abort = m_previewAbort] {
            return planStart(PlanRequest { records, settings, false, abort.get() });
        }));
}

void AppDelegate::previewPlanned()
{
    // A failed check shows its alert.
    StartPlan start = m_previewPlanning.result();
    RunPlan plan;
    if (start.refusal == kPlanningAborted || !m_batch->settlePlanned(start, &plan))
        return;
    (new PlanPreview(plan, start.settings.format, m_window.get()))->open();
}

void AppDelegate::abortProcessWithSender(QObject* /*sender*/)
{
    m_batch->abortProcessWithSender();
}

WindowBatchDisplay::Results AppDelegate::runResults() const
{
    WindowBatchDisplay::Results results { m_batch->outcomeLine(), m_batch->runSettings().outputPath, {}, {} };
    const BatchController::Outcome outcome = m_batch->outcome();
    const QSet<QString> written(outcome.written.cbegin(), outcome.written.cend());
    const QSet<QString> missing(outcome.missing.cbegin(), outcome.missing.cend());
    // Each missing output with how its tool run ended.
    const QStringList details = m_batch->outcomeDetails(outcome.missing.size());
    const QHash<QString, QString> reasons = missingOutputReasons(details, missing);
    results.details = m_batch->outcomeDetails();
    if (const std::shared_ptr<const RunPlan> plan = m_batch->plan()) {
        for (const OutputValues& output : finalOutputValues(*plan)) {
            const QString& path = output.resultPath;
            const OutputStatus status = written.contains(path) ? OutputStatus::Written
                : missing.contains(path)                       ? OutputStatus::Missing
                                                               : OutputStatus::NotRun;
            ResultItem item { path, status, {}, {}, reasons.value(path) };
            for (const auto& [name, value] : namedOutputValues(output, plan->stepParameters)) {
                item.values.insert(name, value);
                item.valueNames.append(name);
            }
            results.outputs.append(std::move(item));
        }
    }
    return results;
}

bool AppDelegate::useValuesOfOutput(int row)
{
    const std::shared_ptr<const RunPlan> plan = m_batch->plan();
    if (!plan || m_batch->isRunning())
        return false;
    const QList<OutputValues> outputs = finalOutputValues(*plan);
    const RecordList& runChain = m_batch->chain();
    if (row < 0 || row >= outputs.size() || static_cast<int>(runChain.size()) != plan->steps)
        return false;
    // The chain of that run with its varying values held; the chain model
    // reports the change, which keeps the chain and marks the window.
    chainPanel()->replaceChainRecords(chainFixedAt(runChain, outputs.at(row)));
    m_window->statusBar()->showMessage(
        tr("The chain now makes %1 again.").arg(QFileInfo(outputs.at(row).resultPath).fileName()));
    return true;
}

void AppDelegate::showTestStrip(int row)
{
    const int position = chainPanel()->selectedChainRow();
    const RecordListPtr& rows = params();
    if (position < 0 || !rows || row < 0 || row >= static_cast<int>(rows->size()) || m_testStrip->isRunning())
        return;
    const Record& parameter = *(*rows)[static_cast<size_t>(row)];
    constexpr int kValues = 5;
    disconnect(m_testStrip, &TestStrip::valueChosen, this, nullptr);
    connect(m_testStrip, &TestStrip::valueChosen, this,
        [this, row](const QVariant& value) { parameterEditor()->holdRowAt(row, value); });
    m_testStrip->start(chain(), captureRunSettings(), position, row,
        parameter.string(key::CONTROL_NAME, tr("Variations")), testStripValues(parameter, kValues));
}

bool AppDelegate::mayClose()
{
    if (!m_batch->isRunning()) {
        return !chainPanel()->isChainEdited() || chain().empty()
            || MessageBoxes::instance().confirm(
                m_window.get(), tr("The chain has changes that are not saved in a chain file. Quit anyway?"));
    }
    if (!MessageBoxes::instance().confirm(m_window.get(), tr("A run is going. Abort it and quit?")))
        return false;
    abortProcessWithSender();
    return true;
}

void AppDelegate::windowWillClose()
{
    QCoreApplication::quit();
}

// ---- Help menu ----

QString AppDelegate::helpDocumentPath()
{
    const QString candidate
        = QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("../share/quillon/Help.pdf"));
    return QFileInfo(candidate).isFile() ? QDir::cleanPath(QFileInfo(candidate).absoluteFilePath())
                                         : QString();
}

QUrl AppDelegate::donationUrl()
{
    return QUrl(QStringLiteral("https://quillon.example.org/donate"));
}

void AppDelegate::setUrlOpener(std::function<bool(const QUrl&)> opener)
{
    m_urlOpener = std::move(opener);
}

bool AppDelegate::openUrl(const QUrl& url)
{
    return m_urlOpener ? m_urlOpener(url) : QDesktopServices::openUrl(url);
}

void AppDelegate::showHelpWithSender(QObject* /*sender*/)
{
    const QString path = helpDocumentPath();
    if (path.isEmpty()) {
        m_window->statusBar()->showMessage(tr("The user guide (Help.pdf) is not installed."));
        return;
    }
    if (!openUrl(QUrl::fromLocalFile(path)))
        m_window->statusBar()->showMessage(tr("No viewer could open the user guide %1.").arg(path));
}

void AppDelegate::ppDonationWithSender(QObject* /*sender*/)
{
    if (!openUrl(donationUrl()))
        m_window->statusBar()->showMessage(
            tr("No browser could open the donation page %1.").arg(donationUrl().toString()));
}

void AppDelegate::showAboutWithSender(QObject* /*sender*/)
{
    MessageBoxes::instance().showInformation(m_window.get(), tr("About Quillon"),
        tr("Quillon %1\nRenders images in batches through a filter chain.")
            .arg(QCoreApplication::applicationVersion()));
}

} // namespace quillon
