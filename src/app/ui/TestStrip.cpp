#include "app/ui/TestStrip.h"

#include "app/ui/LatestThumbnail.h"
#include "batch/BatchController.h"
#include "app/ui/QuietBatchDisplay.h"
#include "run/RunPlan.h"
#include "variations/OutputValues.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QVBoxLayout>
#include <QtConcurrent/QtConcurrentRun>

namespace quillon {

namespace {

constexpr int kSide = 160;

} // namespace

TestStrip::TestStrip(QWidget* parent)
    : QDialog(parent)
    , m_display(std::make_unique<QuietBatchDisplay>())
    , m_batch(std::make_unique<BatchController>(m_display.get()))
{
    setObjectName(QStringLiteral("testStrip"));
    setWindowTitle(tr("Test Strip"));
    // The chain and the selection stay as they were until a value is chosen.
    setWindowModality(Qt::WindowModal);
    m_batch->setStandardOutput([](const QString&) {});
    connect(m_batch.get(), &BatchController::runFinished, this, &TestStrip::runFinished);

    m_strip = new QWidget(this);
    new QHBoxLayout(m_strip);
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("testStripStatus"));
    m_status->setWordWrap(true);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(this, &QDialog::rejected, this, [this] {
        m_cancelled = true;
        if (m_batch->isRunning())
            m_batch->abortProcessWithSender();
    });
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_strip);
    layout->addWidget(m_status);
    layout->addWidget(buttons);
}

TestStrip::~TestStrip()
{
    disconnect(m_batch.get(), nullptr, this, nullptr);
    m_batch.reset();
}

bool TestStrip::isRunning() const
{
    return m_listing || m_batch->isRunning();
}

void TestStrip::start(const RecordList& chain, const RunSettings& settings, int position, qsizetype index,
    const QString& name, QList<QVariant> values)
{
    if (isRunning())
        return;
    m_chain = chain;
    m_settings = settings;
    m_position = position;
    m_index = index;
    m_values = std::move(values);
    m_next = 0;
    m_shown = 0;
    m_cancelled = false;
    qDeleteAll(m_strip->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly));
    m_images.clear();
    m_choices.clear();
    for (int i = 0; i < m_values.size(); ++i) {
        auto* image = new LatestThumbnail(m_strip);
        image->setFixedSize(kSide, kSide);
        auto* choice
            = new QPushButton(QStringLiteral("%1 = %2").arg(name, plannedValueText(m_values.at(i))), m_strip);
        choice->setObjectName(QStringLiteral("testStripChoice%1").arg(i));
        choice->setToolTip(tr("Use this value"));
        choice->setEnabled(false);
        connect(choice, &QPushButton::clicked, this, [this, i] {
            Q_EMIT valueChosen(m_values.at(i));
            accept();
        });
        auto* tile = new QWidget(m_strip);
        auto* tileLayout = new QVBoxLayout(tile);
        tileLayout->addWidget(image, 0, Qt::AlignHCenter);
        tileLayout->addWidget(choice);
        m_strip->layout()->addWidget(tile);
        m_images.append(image);
        m_choices.append(choice);
    }
    m_status->setText(tr("Rendering %1 images…").arg(m_values.size()));
    show();

    m_dir = std::make_unique<QTemporaryDir>();
    if (!m_dir->isValid()) {
        stop(tr("No temporary folder could be made."));
        return;
    }
    m_settings.frameCountText = QStringLiteral("1");
    m_settings.toolLog = 0;
    m_settings.cleanup = 1;
    if (m_settings.inputMode != InputMode::Directory) {
        renderNext();
        return;
    }
    // The first input of a directory is found in the background.
    m_listing = true;
    auto* watcher = new QFutureWatcher<QString>(this);
    connect(watcher, &QFutureWatcher<QString>::finished, this, [this, watcher] {
        watcher->deleteLater();
        m_listing = false;
        m_settings.inputMode = InputMode::File;
        m_settings.sourcePath = watcher->result();
        if (m_settings.sourcePath.isEmpty())
            stop(tr("The input directory holds no file."));
        else if (!m_cancelled)
            renderNext();
    });
    watcher->setFuture(QtConcurrent::run(firstInputFileIn, m_settings.sourcePath));
}

void TestStrip::renderNext()
{
    if (m_cancelled || m_next >= m_values.size()) {
        stop(m_cancelled ? tr("Cancelled.") : tr("Choose the image to keep its value."));
        return;
    }
    const QString folder = m_dir->filePath(QString::number(m_next));
    if (!QDir().mkpath(folder)) {
        stop(tr("No temporary folder could be made."));
        return;
    }
    RunSettings settings = m_settings;
    settings.outputPath = folder;
    QString error;
    if (!m_batch->startBatchWithSender(
            testStripChain(m_chain, m_position, m_index, m_values.at(m_next)), settings, &error))
        stop(error.isEmpty() ? m_display->lastError : error);
}

void TestStrip::runFinished(bool aborted)
{
    if (aborted || m_cancelled) {
        stop(tr("Cancelled."));
        return;
    }
    const std::shared_ptr<const RunPlan> plan = m_batch->plan();
    const QString output = plan ? plan->finalOutputs().value(0) : QString();
    if (!output.isEmpty() && m_batch->outcome().written.contains(output)) {
        m_images.at(m_next)->showFile(output);
        m_choices.at(m_next)->setEnabled(true);
        ++m_shown;
    }
    ++m_next;
    // The next run starts once this one's completion has returned.
    QMetaObject::invokeMethod(this, &TestStrip::renderNext, Qt::QueuedConnection);
}

void TestStrip::stop(const QString& status)
{
    m_status->setText(status);
    Q_EMIT finished();
}

} // namespace quillon
