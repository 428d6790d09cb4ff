#include "app/ui/ChainPreview.h"

#include "app/ui/LatestThumbnail.h"
#include "batch/BatchController.h"
#include "app/ui/QuietBatchDisplay.h"

#include <QFileInfo>
#include <QFutureWatcher>
#include <QHBoxLayout>
#include <QHash>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QVBoxLayout>
#include <QtConcurrent/QtConcurrentRun>

namespace quillon {

ChainPreview::ChainPreview(QWidget* parent)
    : QWidget(parent)
    , m_display(std::make_unique<QuietBatchDisplay>())
    , m_batch(std::make_unique<BatchController>(m_display.get()))
{
    setObjectName(QStringLiteral("chainPreview"));
    m_batch->setStandardOutput([](const QString&) {});
    connect(m_batch.get(), &BatchController::runFinished, this, &ChainPreview::runFinished);
    connect(m_batch.get(), &BatchController::runRefused, this,
        [this](const QString& message) { finish(tr("Preview: %1").arg(message), false); });

    m_previewButton = new QPushButton(tr("Preview"), this);
    m_previewButton->setObjectName(QStringLiteral("previewButton"));
    m_previewButton->setToolTip(tr("Render frame 1 through the whole chain into a temporary folder"));
    m_cancelButton = new QPushButton(tr("Cancel"), this);
    m_cancelButton->setObjectName(QStringLiteral("previewCancelButton"));
    m_cancelButton->setEnabled(false);
    m_image = new LatestThumbnail(this);
    m_image->setObjectName(QStringLiteral("previewImage"));
    m_image->setAccessibleName(tr("Preview of frame 1"));
    m_image->hide();
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("previewStatus"));
    m_status->setWordWrap(true);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_previewButton);
    buttons->addWidget(m_cancelButton);
    buttons->addStretch(1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(buttons);
    layout->addWidget(m_image, 0, Qt::AlignHCenter);
    layout->addWidget(m_status);

    connect(m_previewButton, &QPushButton::clicked, this, &ChainPreview::previewRequested);
    connect(m_cancelButton, &QPushButton::clicked, this, &ChainPreview::cancel);
}

ChainPreview::~ChainPreview()
{
    // A preview still going is aborted and wound down by the controller; its
    // end is no longer shown.
    disconnect(m_batch.get(), nullptr, this, nullptr);
    m_batch.reset();
}

bool ChainPreview::isRunning() const
{
    return m_listing || m_batch->isRunning();
}

RecordList ChainPreview::copyChain(const RecordList& chain)
{
    QHash<const Record*, RecordPtr> copies;
    RecordList result;
    result.reserve(chain.size());
    for (const RecordPtr& filter : chain) {
        if (!filter) {
            result.push_back(filter);
            continue;
        }
        RecordPtr& copy = copies[filter.get()];
        if (!copy) {
            copy = std::make_shared<Record>(*filter);
            if (const RecordListPtr components = filter->list(key::Components)) {
                auto parameters = std::make_shared<RecordList>();
                for (const RecordPtr& parameter : *components)
                    parameters->push_back(parameter ? std::make_shared<Record>(*parameter) : parameter);
                copy->setList(key::Components, parameters);
            }
        }
        result.push_back(copy);
    }
    return result;
}

void ChainPreview::start(const RecordList& chain, const RunSettings& settings)
{
    if (isRunning())
        return;
    m_cancelled = false;
    m_clock.start();
    m_previewButton->setEnabled(false);
    m_cancelButton->setEnabled(true);
    m_status->setText(tr("Rendering a preview…"));
    const RecordList copy = copyChain(chain);
    if (settings.inputMode != InputMode::Directory) {
        startWithInput(copy, settings, settings.sourcePath);
        return;
    }
    m_listing = true;
    auto* watcher = new QFutureWatcher<QString>(this);
    connect(watcher, &QFutureWatcher<QString>::finished, this, [this, watcher, copy, settings] {
        watcher->deleteLater();
        m_listing = false;
        if (m_cancelled)
            finish(tr("Preview cancelled."), false);
        else if (watcher->result().isEmpty())
            finish(tr("Preview: the input directory holds no file."), false);
        else
            startWithInput(copy, settings, watcher->result());
    });
    watcher->setFuture(QtConcurrent::run(firstInputFileIn, settings.sourcePath));
}

void ChainPreview::startWithInput(const RecordList& chain, RunSettings settings, const QString& input)
{
    m_dir = std::make_unique<QTemporaryDir>();
    if (!m_dir->isValid()) {
        finish(tr("Preview: no temporary folder could be made."), false);
        return;
    }
    settings.outputPath = m_dir->path();
    settings.frameCountText = QStringLiteral("1");
    settings.toolLog = 0;
    settings.cleanup = 1;
    if (settings.inputMode != InputMode::None) {
        settings.inputMode = InputMode::File;
        settings.sourcePath = input;
    }
    QString error;
    if (!m_batch->startBatchWithSender(chain, settings, &error))
        finish(tr("Preview: %1").arg(error.isEmpty() ? m_display->lastError : error), false);
}

void ChainPreview::cancel()
{
    m_cancelled = true;
    if (m_batch->isRunning())
        m_batch->abortProcessWithSender();
}

void ChainPreview::runFinished(bool aborted)
{
    if (aborted || m_cancelled) {
        finish(tr("Preview cancelled."), false);
        return;
    }
    const std::shared_ptr<const RunPlan> plan = m_batch->plan();
    const QString output = plan ? plan->finalOutputs().value(0) : QString();
    if (output.isEmpty() || !m_batch->outcome().written.contains(output)) {
        finish(tr("Preview: the render tool wrote no image."), false);
        return;
    }
    m_image->show();
    m_image->showFile(output);
    finish(tr("Frame 1 in %1 s").arg(QString::number(m_clock.elapsed() / 1000.0, 'f', 1)), true);
}

void ChainPreview::finish(const QString& status, bool shown)
{
    m_status->setText(status);
    m_previewButton->setEnabled(true);
    m_cancelButton->setEnabled(false);
    Q_EMIT previewFinished(shown);
}

} // namespace quillon
