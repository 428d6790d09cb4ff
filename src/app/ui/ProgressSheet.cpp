#include "app/ui/ProgressSheet.h"

#include "app/ui/DialogSeams.h"
#include "app/ui/LatestThumbnail.h"

#include <QLabel>
#include <climits>

#include "ui_ProgressSheet.h"

#include <QTimer>

#include <algorithm>
#include <limits>

// The resources live in the static quillon_ui library; registering them
// explicitly keeps the linker from dropping them.
static void initQuillonResources()
{
    Q_INIT_RESOURCE(quillon);
}

namespace quillon {

namespace {

constexpr int kAnimationFrames = 6;
constexpr int kAnimationIntervalMilliseconds = 100;

int clampedRuns(qint64 runs)
{
    return static_cast<int>(std::clamp<qint64>(runs, 0, std::numeric_limits<int>::max()));
}

} // namespace

ProgressSheet::ProgressSheet(QWidget* parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::ProgressSheet>())
{
    initQuillonResources();
    m_ui->setupUi(this);
    setWindowModality(Qt::WindowModal);
    animArray = loadAnimationFrames();
    if (!animArray.isEmpty())
        m_ui->prAmination->setPixmap(animArray.first());

    m_clockTimer = new QTimer(this);
    m_clockTimer->setInterval(1000);
    connect(m_clockTimer, &QTimer::timeout, this, &ProgressSheet::updateClock);
    m_animTimer = new QTimer(this);
    m_animTimer->setInterval(kAnimationIntervalMilliseconds);
    connect(m_animTimer, &QTimer::timeout, this, &ProgressSheet::animationTimerLoopWithTimer);
    connect(m_ui->abortButton, &QPushButton::clicked, this, &ProgressSheet::abortRequested);

    m_thumbnail = new LatestThumbnail(this);
    m_thumbnail->setObjectName(QStringLiteral("prThumbnail"));
    m_thumbnail->setAccessibleName(tr("Newest output"));
    m_ui->progressTopRow->addWidget(m_thumbnail);
}

ProgressSheet::~ProgressSheet() = default;

QList<QPixmap> ProgressSheet::loadAnimationFrames()
{
    initQuillonResources();
    QList<QPixmap> frames;
    for (int i = 0; i < kAnimationFrames; ++i)
        frames.append(QPixmap(QStringLiteral(":/wobble/wobble0%1.png").arg(i)));
    return frames;
}

int ProgressSheet::plannedToolRuns(int inputCount, int steps, qint64 frames)
{
    if (steps <= 0)
        return 0;
    const qint64 firstRuns = std::max(1, inputCount);
    // A later step with nothing to read still runs the tool once.
    const qint64 laterRuns = std::max<qint64>(1, firstRuns * std::max<qint64>(0, frames));
    return clampedRuns(firstRuns + (steps - 1) * laterRuns);
}

void ProgressSheet::setPlannedToolRuns(int runs)
{
    m_planned = std::max(0, runs);
    updateBar();
}

void ProgressSheet::beginRun(int plannedRuns)
{
    m_planned = std::max(0, plannedRuns);
    m_started = 0;
    m_steps = 0;
    m_ui->prStepField->clear();
    m_finished = false;
    m_shownFrame = -1;
    m_imagesDone = 0;
    m_imagesTotal = 0;
    if (m_timeLeft)
        m_timeLeft->clear();
    m_thumbnail->reset();
    updateBar();
    m_clock.start();
    updateClock();
    m_clockTimer->start();
    m_animState = 0;
    m_animDirection = 1;
    m_animTimer->start();
    open();
}

void ProgressSheet::endRun()
{
    m_clockTimer->stop();
    m_animTimer->stop();
    updateClock();
    if (isVisible())
        done(QDialog::Accepted);
}

void ProgressSheet::showImageProgress(qint64 done, qint64 total, qint64 leftMs)
{
    m_imagesDone = done;
    m_imagesTotal = total;
    if (!m_timeLeft) {
        m_timeLeft = new QLabel(this);
        m_timeLeft->setObjectName(QStringLiteral("prTimeLeft"));
        m_ui->progressLayout->insertWidget(
            m_ui->progressLayout->indexOf(m_ui->prRunProgress) + 1, m_timeLeft);
    }
    if (leftMs >= 0 && done < total) {
        const qint64 seconds = leftMs / 1000;
        m_timeLeft->setText(
            tr("About %1:%2 left").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0')));
    } else {
        m_timeLeft->clear();
    }
    updateBar();
}

void ProgressSheet::showLatestOutput(const QString& path)
{
    m_thumbnail->showFile(path);
}

void ProgressSheet::finishRun()
{
    m_finished = true;
    m_clockTimer->stop();
    m_animTimer->stop();
    updateBar();
}

void ProgressSheet::showFilterInfo(const QString& name, const QString& author)
{
    m_ui->psFilterField->setText(name);
    m_ui->prAuthorField->setText(author);
    // Each filter of the chain reports itself once, in chain order.
    ++m_steps;
    m_ui->prStepField->setText(
        m_plannedSteps > 0 ? tr("%1 of %2").arg(m_steps).arg(m_plannedSteps) : QString::number(m_steps));
}

void ProgressSheet::showSourceInfo(const QString& source, int started)
{
    m_ui->prSourceField->setText(source);
    m_started += started;
    updateBar();
}

void ProgressSheet::showRenderInfo(const QString& info)
{
    m_ui->prProgress->setText(info);
}

void ProgressSheet::showAnimationFrame(int frame)
{
    if (frame < 0 || frame >= animArray.size())
        return;
    m_shownFrame = frame;
    m_ui->prAmination->setPixmap(animArray.at(frame));
    Q_EMIT animationFrameShown(frame);
}

void ProgressSheet::animationTimerLoopWithTimer()
{
    // The frames play forwards, then backwards, and so on.
    showAnimationFrame(m_animState);
    m_animState += m_animDirection;
    if (m_animState == kAnimationFrames - 1)
        m_animDirection = -1;
    else if (m_animState == 0)
        m_animDirection = 1;
}

void ProgressSheet::reject()
{
    // The sheet goes away only when the run ends; Escape means Abort, asked
    // first once something has been rendered, so one stray key loses nothing.
    if (m_imagesDone > 0
        && !MessageBoxes::instance().confirm(this,
            tr("%n image(s) of this run are rendered. Abort the run?", nullptr,
                static_cast<int>(m_imagesDone))))
        return;
    Q_EMIT abortRequested();
}

void ProgressSheet::updateBar()
{
    if (m_imagesTotal > 0) {
        m_ui->prRunProgress->setFormat(tr("%v of %m images"));
        m_ui->prRunProgress->setMaximum(static_cast<int>(std::min<qint64>(m_imagesTotal, INT_MAX)));
        m_ui->prRunProgress->setValue(static_cast<int>(std::min(m_imagesDone, m_imagesTotal)));
        return;
    }
    m_ui->prRunProgress->setFormat(tr("%v of %m tool runs"));
    // While a tool run is going, the runs before it are done.
    const int done = m_finished ? m_started : std::max(0, m_started - 1);
    const int maximum = std::max({ 1, m_planned, m_started });
    m_ui->prRunProgress->setMaximum(maximum);
    m_ui->prRunProgress->setValue(std::min(done, maximum));
}

void ProgressSheet::updateClock()
{
    const qint64 seconds = m_clock.isValid() ? m_clock.elapsed() / 1000 : 0;
    m_ui->prElapsedField->setText(
        QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0')));
}

} // namespace quillon
