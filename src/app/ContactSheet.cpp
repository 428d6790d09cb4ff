#include "app/ContactSheet.h"

#include "run/RunPlan.h"
#include "variations/OutputValues.h"

#include <QBuffer>
#include <QFileInfo>
#include <QFont>
#include <QFontMetrics>
#include <QImageReader>
#include <QPainter>
#include <QSaveFile>

#include <algorithm>
#include <cmath>

namespace quillon {

namespace {

constexpr int kCell = 256; // the picture's square
constexpr int kGap = 12;
constexpr int kMaxLabelLines = 8;

QImage scaledImage(const QString& path)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    // Decoding at the tile's size keeps a sheet of large images fast and small.
    if (size.isValid() && (size.width() > kCell || size.height() > kCell))
        reader.setScaledSize(size.scaled(kCell, kCell, Qt::KeepAspectRatio));
    QImage image = reader.read();
    if (!image.isNull() && (image.width() > kCell || image.height() > kCell))
        image = image.scaled(kCell, kCell, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return image;
}

} // namespace

QList<ContactTile> contactTilesFor(const RunPlan& plan)
{
    QList<ContactTile> tiles;
    for (const OutputValues& output : finalOutputValues(plan)) {
        ContactTile tile { output.resultPath, { QFileInfo(output.resultPath).fileName() } };
        for (const auto& [name, value] : namedOutputValues(output, plan.stepParameters))
            tile.label.append(name + QLatin1Char('=') + plannedValueText(value));
        tiles.append(tile);
    }
    return tiles;
}

QImage drawContactSheet(const QList<ContactTile>& tiles, const std::atomic<bool>* aborted)
{
    QFont font;
    font.setPixelSize(13);
    const QFontMetrics metrics(font);
    qsizetype lines = 1;
    for (const ContactTile& tile : tiles)
        lines = std::max(lines, std::min<qsizetype>(tile.label.size(), kMaxLabelLines));
    const int labelHeight = static_cast<int>(lines) * metrics.lineSpacing() + 4;
    const int count = static_cast<int>(std::max<qsizetype>(tiles.size(), 1));
    const int columns = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(count))));
    const int rows = (count + columns - 1) / columns;
    const int tileWidth = kCell + kGap;
    const int tileHeight = kCell + labelHeight + kGap;

    QImage sheet(columns * tileWidth + kGap, rows * tileHeight + kGap, QImage::Format_RGB32);
    sheet.fill(QColor(250, 250, 250));
    QPainter painter(&sheet);
    painter.setFont(font);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    for (int i = 0; i < tiles.size(); ++i) {
        if (aborted && aborted->load())
            break;
        const ContactTile& tile = tiles.at(i);
        const QPoint origin(kGap + (i % columns) * tileWidth, kGap + (i / columns) * tileHeight);
        const QRect cell(origin, QSize(kCell, kCell));
        painter.fillRect(cell, QColor(225, 225, 225));
        const QImage image = scaledImage(tile.path);
        if (image.isNull()) {
            painter.setPen(QColor(160, 160, 160));
            painter.drawRect(cell.adjusted(0, 0, -1, -1));
        } else {
            const QRect target(QPoint(), image.size());
            painter.drawImage(target.translated(cell.center() - target.center()), image);
        }
        painter.setPen(Qt::black);
        const int shown = static_cast<int>(std::min<qsizetype>(tile.label.size(), kMaxLabelLines));
        for (int line = 0; line < shown; ++line) {
            const QString text = metrics.elidedText(tile.label.at(line), Qt::ElideMiddle, kCell);
            painter.drawText(
                origin.x(), origin.y() + kCell + 2 + metrics.ascent() + line * metrics.lineSpacing(), text);
        }
    }
    painter.end();
    return sheet;
}

bool saveContactSheet(const QString& path, const QList<ContactTile>& tiles, QString* error)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!drawContactSheet(tiles).save(&buffer, "PNG")) {
        if (error)
            *error = QStringLiteral("Cannot encode the contact sheet");
        return false;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        if (error)
            *error = QStringLiteral("Cannot write the contact sheet %1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

} // namespace quillon
