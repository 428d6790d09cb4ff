#pragma once

#include "app/ui/Thumbnails.h"

#include <QElapsedTimer>
#include <QFutureWatcher>
#include <QLabel>

class QTimer;

namespace quillon {

// A label showing the newest of a stream of image files as a thumbnail.
// Files come faster than they are worth decoding: at most four decodes a
// second start, one at a time, each of the newest file named so far; the
// decoding runs in the thumbnail pool. A file Qt cannot read shows its
// format and size as text.
class LatestThumbnail final : public QLabel {
    Q_OBJECT
public:
    static constexpr int kIntervalMs = 250;

    explicit LatestThumbnail(QWidget* parent = nullptr);

    void showFile(const QString& path);
    // Forgets the picture and any file not shown yet.
    void reset();
    // Decodes started since construction.
    int decodesStarted() const { return m_decodes; }

Q_SIGNALS:
    void thumbnailShown(const QString& path);

private:
    void startNext();
    void decoded();

    QFutureWatcher<Thumbnail> m_watcher;
    QTimer* m_gap = nullptr;
    QString m_pending;
    quint64 m_generation = 0;
    quint64 m_decodingGeneration = 0;
    int m_decodes = 0;
};

} // namespace quillon
