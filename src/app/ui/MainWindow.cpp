#include "app/ui/MainWindow.h"

#include "app/Preferences.h"
#include "app/ui/ChainPreview.h"
#include "app/ui/SettingsPane.h"
#include "app/ui/WheelGuard.h"
#include "chain/ui/ChainPanel.h"
#include "variations/ui/ParameterEditor.h"

#include "ui_MainWindow.h"

#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMimeData>
#include <QScreen>
#include <QScrollArea>
#include <QShortcut>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>

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
    // Every area but the Start row scrolls when the screen is small, so the
    // window fits any screen and Start stays in sight.
    auto* chainScroll = new QScrollArea(m_ui->mainSplitter);
    chainScroll->setObjectName(QStringLiteral("chainScrollArea"));
    chainScroll->setWidgetResizable(true);
    chainScroll->setFrameShape(QFrame::NoFrame);
    chainScroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_chainPanel = new ChainPanel(chainScroll);
    chainScroll->setWidget(m_chainPanel);
    m_ui->mainSplitter->insertWidget(0, chainScroll);
    m_ui->mainSplitter->setStretchFactor(0, 0);
    m_ui->mainSplitter->setStretchFactor(1, 1);
    m_ui->mainSplitter->setSizes({ 300, 800 });
    m_chainPreview = new ChainPreview(m_chainPanel);
    m_chainPanel->layout()->addWidget(m_chainPreview);

    m_settingsPane = new SettingsPane(m_ui->settingsScrollArea);
    m_ui->settingsScrollArea->setWidget(m_settingsPane);

    auto* parametersScroll = new QScrollArea(m_ui->parametersTab);
    parametersScroll->setObjectName(QStringLiteral("parametersScrollArea"));
    parametersScroll->setWidgetResizable(true);
    parametersScroll->setFrameShape(QFrame::NoFrame);
    auto* parametersPage = new QWidget(parametersScroll);
    auto* parametersLayout = new QVBoxLayout(parametersPage);
    m_parameterEditor = new ParameterEditor(parametersPage);
    parametersLayout->addWidget(m_chainPanel->presetRow());
    parametersLayout->addWidget(m_parameterEditor, 1);
    parametersScroll->setWidget(parametersPage);
    m_ui->parametersTabLayout->setContentsMargins(0, 0, 0, 0);
    m_ui->parametersTabLayout->addWidget(parametersScroll);

    m_ui->startButton->setDefault(true);
    m_ui->startButton->setAccessibleName(tr("Start"));
    m_ui->mainTabControl->setAccessibleName(tr("Settings and filter parameters"));
    m_ui->outputFormatLabel->setAccessibleName(tr("Output format of the run"));
    // The wheel edits a value control only once it has the focus.
    WheelGuard::guard(m_ui->mainTabControl);
    for (const QKeySequence& keys :
        { QKeySequence(Qt::CTRL | Qt::Key_Return), QKeySequence(Qt::CTRL | Qt::Key_Enter) })
        connect(new QShortcut(keys, this), &QShortcut::activated, m_ui->startButton, &QPushButton::click);
    connect(m_settingsPane, &SettingsPane::formatChanged, this, [this](const QString& format) {
        m_ui->outputFormatLabel->setText(tr("Output format: %1").arg(format));
    });
    connect(m_chainPanel, &ChainPanel::documentChanged, this, &MainWindow::showChainDocument);
    showChainDocument();

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
    fitToScreen();
    const QByteArray split = QByteArray::fromBase64(prefs.value(pref::WINDOW_SPLITTER).toString().toLatin1());
    if (!split.isEmpty())
        m_ui->mainSplitter->restoreState(split);
}

void MainWindow::fitToScreen()
{
    // A size kept from a larger screen, or a large scale, must not push Start
    // off this one.
    const QScreen* screen = QGuiApplication::screenAt(geometry().center());
    if (!screen)
        screen = this->screen();
    if (!screen)
        return;
    const QRect available = screen->availableGeometry();
    // Room for the title bar and frame, which are known only once shown.
    const QMargins frame = isVisible()
        ? QMargins(geometry().left() - frameGeometry().left(), geometry().top() - frameGeometry().top(),
            frameGeometry().right() - geometry().right(), frameGeometry().bottom() - geometry().bottom())
        : QMargins(0, kTitleBarAllowance, 0, 0);
    const QRect room = available.marginsRemoved(frame);
    QRect fitted(geometry().topLeft(), size().boundedTo(room.size()));
    fitted.moveLeft(std::max(room.left(), std::min(fitted.left(), room.right() - fitted.width() + 1)));
    fitted.moveTop(std::max(room.top(), std::min(fitted.top(), room.bottom() - fitted.height() + 1)));
    setGeometry(fitted);
}

void MainWindow::showChainDocument()
{
    const QString file = m_chainPanel->chainFile();
    const QString name = file.isEmpty() ? tr("Untitled chain") : QFileInfo(file).fileName();
    setWindowTitle(tr("%1[*] — Quillon").arg(name));
    setWindowModified(m_chainPanel->isChainEdited());
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
