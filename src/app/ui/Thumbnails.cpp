#include "app/ui/Thumbnails.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QImageReader>
#include <QLocale>
#include <QPainter>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>

namespace quillon {

QString Thumbnail::description() const
{
    if (!exists())
        return QCoreApplication::translate("Thumbnail", "missing");
    return QStringLiteral("%1, %2").arg(format, QLocale().formattedDataSize(bytes));
}

Thumbnail decodeThumbnail(const QString& path, int maxSide)
{
    Thumbnail result;
    result.path = path;
    const QFileInfo info(path);
    result.format = info.suffix().toUpper();
    if (!info.isFile())
        return result;
    result.bytes = info.size();
    QImageReader reader(path);
    const QSize size = reader.size();
    if (size.isValid() && (size.width() > maxSide || size.height() > maxSide))
        reader.setScaledSize(size.scaled(maxSide, maxSide, Qt::KeepAspectRatio));
    result.image = reader.read();
    // A reader that cannot tell the size decodes at full size.
    if (!result.image.isNull() && (result.image.width() > maxSide || result.image.height() > maxSide))
        result.image = result.image.scaled(maxSide, maxSide, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return result;
}

QThreadPool* thumbnailPool()
{
    static QThreadPool* pool = [] {
        auto* created = new QThreadPool(QCoreApplication::instance());
        created->setMaxThreadCount(2);
        return created;
    }();
    return pool;
}

QFuture<Thumbnail> decodeThumbnailInPool(const QString& path, int maxSide)
{
    return QtConcurrent::run(thumbnailPool(), [path, maxSide] { return decodeThumbnail(path, maxSide); });
}

QPixmap placeholderPixmap(const QString& text, int side)
{
    QPixmap pixmap(side, side);
    pixmap.fill(QColor(0xd8, 0xd8, 0xd8));
    QPainter painter(&pixmap);
    painter.setPen(QColor(0x50, 0x50, 0x50));
    painter.drawRect(0, 0, side - 1, side - 1);
    painter.drawText(QRect(4, 4, side - 8, side - 8), Qt::AlignCenter | Qt::TextWordWrap, text);
    return pixmap;
}

} // namespace quillon
