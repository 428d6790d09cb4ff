#pragma once

#include <QFuture>
#include <QImage>
#include <QPixmap>
#include <QString>

class QThreadPool;

namespace quillon {

// A decoded preview of an image file. Formats Qt cannot read here (EXR, PFM
// without a plugin) leave `image` null and give the format's name and the
// file's size instead.
struct Thumbnail {
    QString path;
    QImage image;
    QString format; // the file's extension in capitals, e.g. "EXR"
    qint64 bytes = -1; // -1: the file is not there
    bool exists() const { return bytes >= 0; }
    // "EXR, 1.2 MB" for a file without a picture.
    QString description() const;
};

// The largest side of the thumbnails of the progress and results sheets.
inline constexpr int kThumbnailSide = 256;

// Reads `path` scaled to fit `maxSide` (QImageReader decodes at the scaled
// size, so a large image costs little). Any thread.
Thumbnail decodeThumbnail(const QString& path, int maxSide = kThumbnailSide);

// decodeThumbnail in the thumbnail pool: a pool of its own, so thousands of
// requests never hold up other background work.
QFuture<Thumbnail> decodeThumbnailInPool(const QString& path, int maxSide = kThumbnailSide);
QThreadPool* thumbnailPool();

// A grey square of `side` pixels with `text` in its middle: what stands for
// a file that has no picture (missing, not run, unreadable). GUI thread.
QPixmap placeholderPixmap(const QString& text, int side);

} // namespace quillon
