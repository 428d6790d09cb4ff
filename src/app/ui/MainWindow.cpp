#include "app/ui/MainWindow.h"

#include "app/Preferences.h"
#include "app/ui/ChainPreview.h"
#include "app/ui/SettingsPane.h"
#include "chain/ui/ChainPanel.h"
#include "variations/ui/ParameterEditor.h"

#include "ui_MainWindow.h"

#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QUrl>

namespace quillon {

namespace {

bool isChainFile(const QString& path)
{
    return QFileInfo(path).suffix().compare(QLatin1String("qlch"), Qt::CaseInsensitive) == 0;
}

} // namespace

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent)
    , m_ui(std::make_unique<Ui::MainWindow>())
{
    m_ui->setupUi(this);
    m_chainPanel = new ChainPanel(m_ui->mainSplitter);
    m_ui->mainSplitter->insertWidget(0, m_chainPanel);
    m_ui->mainSplitter->setStretchFactor(0, 0);
    m_ui->mainSplitter->setStretchFactor(1, 1);
    m_ui->mainSplitter->setSizes({ 300, 800 });
    m_chainPreview = new ChainPreview(m_chainPanel);
    m_chainPanel->layout()->addWidget(m_chainPreview);

    m_settingsPane = new SettingsPane(m_ui->settingsScrollArea);
    m_ui->settingsScrollArea->setWidget(m_settingsPane);

    m_parameterEditor = new ParameterEditor(m_ui->parametersTab);
    m_ui->parametersTabLayout->addWidget(m_chainPanel->presetRow());
    m_ui->parametersTabLayout->addWidget(m_parameterEditor, 1);

    m_ui->startButton->setDefault(true);
    m_ui->mainTabControl->setAccessibleName(tr("Settings and filter parameters"));

    connect(m_chainPanel, &ChainPanel::parametersChanged, m_parameterEditor, &ParameterEditor::setParams);
    connect(m_settingsPane, &SettingsPane::filterPathChanged, m_chainPanel, &ChainPanel::launchFilterFetcher);
    connect(m_ui->mainTabControl, &QTabWidget::currentChanged, this, &MainWindow::mainTabDidSelectItem);
    connect(m_ui->actionOpenChain, &QAction::triggered, m_chainPanel,
        [this] { m_chainPanel->loadFilterChainWithSender(m_ui->actionOpenChain); });
    connect(m_ui->actionSaveChain, &QAction::triggered, m_chainPanel,
        [this] { m_chainPanel->saveFilterChainWithSender(m_ui->actionSaveChain); });
    connect(m_ui->actionQuit, &QAction::triggered, this, &QMainWindow::close);
}

MainWindow::~MainWindow() = default;

QString MainWindow::selectedMainTabIdentifier() const
{
    const QWidget* page = m_ui->mainTabControl->currentWidget();
    if (!page)
        return {};
    const QVariant identifier = page->property("identifier");
    return identifier.isValid() ? identifier.toString() : page->objectName();
}

void MainWindow::mainTabDidSelectItem(int /*index*/)
{
    // Choosing the parameters page refreshes the selected chain filter.
    m_chainPanel->setParameterPageShown(selectedMainTabIdentifier() == QLatin1String("2"));
}

void MainWindow::restoreLayout(const Preferences& prefs)
{
    const QByteArray geometry
        = QByteArray::fromBase64(prefs.value(pref::WINDOW_GEOMETRY).toString().toLatin1());
    if (geometry.isEmpty() || !restoreGeometry(geometry))
        resize(1100, 640);
    const QByteArray split = QByteArray::fromBase64(prefs.value(pref::WINDOW_SPLITTER).toString().toLatin1());
    if (!split.isEmpty())
        m_ui->mainSplitter->restoreState(split);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (m_closeGuard && !m_closeGuard()) {
        event->ignore();
        return;
    }
    if (m_layoutStore) {
        Preferences& prefs = m_layoutStore();
        prefs.set(pref::WINDOW_GEOMETRY, QString::fromLatin1(saveGeometry().toBase64()));
        prefs.set(pref::WINDOW_SPLITTER, QString::fromLatin1(m_ui->mainSplitter->saveState().toBase64()));
        prefs.sync();
    }
    event->accept();
    Q_EMIT closing();
}

bool MainWindow::openDroppedPath(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return false;
    if (info.isFile() && isChainFile(path))
        m_chainPanel->openChainFile(path);
    else
        m_settingsPane->setSource(info.absoluteFilePath());
    return true;
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.size() == 1 && urls.first().isLocalFile())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.size() == 1 && urls.first().isLocalFile() && openDroppedPath(urls.first().toLocalFile()))
        event->acceptProposedAction();
}

} // namespace quillon
