#include "app/ui/LatestThumbnail.h"

#include <QFileInfo>
#include <QTimer>

namespace quillon {

LatestThumbnail::LatestThumbnail(QWidget* parent)
    : QLabel(parent)
    , m_gap(new QTimer(this))
{
    setAlignment(Qt::AlignCenter);
    setMinimumSize(kThumbnailSide / 2, kThumbnailSide / 2);
    setMaximumSize(kThumbnailSide, kThumbnailSide);
    setWordWrap(true);
    m_gap->setSingleShot(true);
    m_gap->setInterval(kIntervalMs);
    connect(m_gap, &QTimer::timeout, this, &LatestThumbnail::startNext);
    connect(&m_watcher, &QFutureWatcher<Thumbnail>::finished, this, &LatestThumbnail::decoded);
}

void LatestThumbnail::showFile(const QString& path)
{
    if (path.isEmpty())
        return;
    m_pending = path;
    startNext();
}

void LatestThumbnail::reset()
{
    ++m_generation;
    m_pending.clear();
    clear();
}

void LatestThumbnail::startNext()
{
    if (m_pending.isEmpty() || m_gap->isActive() || m_watcher.isRunning())
        return;
    m_decodingGeneration = m_generation;
    ++m_decodes;
    m_watcher.setFuture(decodeThumbnailInPool(m_pending));
    m_pending.clear();
    m_gap->start();
}

void LatestThumbnail::decoded()
{
    const Thumbnail thumbnail = m_watcher.result();
    if (m_decodingGeneration == m_generation) {
        if (!thumbnail.image.isNull()) {
            setPixmap(QPixmap::fromImage(thumbnail.image));
        } else {
            setText(QFileInfo(thumbnail.path).fileName() + QLatin1Char('\n') + thumbnail.description());
        }
        setToolTip(thumbnail.path);
        Q_EMIT thumbnailShown(thumbnail.path);
    }
    startNext();
}

} // namespace quillon
