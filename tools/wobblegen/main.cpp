// Draws the six frames of the progress animation: a quill that rocks on its
// nib over an ink line. Run by hand (target `wobble-frames`) when the drawing
// changes; the PNGs it writes are kept in the source tree.
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <cstdio>

namespace {

constexpr int kFrames = 6;
constexpr int kSize = 96;

QPainterPath featherPath()
{
    // Drawn pointing up with the nib at the origin.
    QPainterPath vane;
    vane.moveTo(0, -14);
    vane.cubicTo(-20, -30, -22, -62, -6, -82);
    vane.cubicTo(2, -74, 14, -58, 12, -40);
    vane.cubicTo(10, -28, 6, -20, 0, -14);
    return vane;
}

QImage drawFrame(int frame)
{
    QImage image(kSize, kSize, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);

    const QPointF nib(kSize / 2.0, kSize - 14.0);
    // Frames 0..5 sweep from -18 to +18 degrees; the nib writes a short wave.
    const double angle = -18.0 + 36.0 * frame / (kFrames - 1);

    QPen ink(QColor(40, 60, 110), 2.5, Qt::SolidLine, Qt::RoundCap);
    painter.setPen(ink);
    QPainterPath line;
    line.moveTo(8, nib.y() + 4);
    const double reach = nib.x() + angle * 0.6;
    line.cubicTo(20, nib.y() - 2, reach - 14, nib.y() + 8, reach, nib.y() + 4);
    painter.drawPath(line);

    painter.translate(nib.x() + angle * 0.6, nib.y());
    painter.rotate(angle);

    // Shaft.
    painter.setPen(QPen(QColor(90, 70, 50), 2.0, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(0, 0), QPointF(-4, -84));

    // Vane with a lighter barb pattern.
    QLinearGradient fill(QPointF(-20, -80), QPointF(14, -20));
    fill.setColorAt(0.0, QColor(120, 170, 230));
    fill.setColorAt(1.0, QColor(60, 100, 180));
    painter.setPen(QPen(QColor(30, 50, 100), 1.5));
    painter.setBrush(fill);
    painter.drawPath(featherPath());
    painter.setPen(QPen(QColor(255, 255, 255, 110), 1.0));
    for (int barb = 0; barb < 6; ++barb) {
        const double y = -24.0 - barb * 9.0;
        painter.drawLine(QPointF(-1.5, y), QPointF(-14 + barb * 1.2, y - 8));
        painter.drawLine(QPointF(-1.5, y), QPointF(8 - barb * 0.8, y - 6));
    }

    // Metal nib.
    QPainterPath tip;
    tip.moveTo(0, 0);
    tip.lineTo(-3, -14);
    tip.lineTo(3, -14);
    tip.closeSubpath();
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(50, 50, 60));
    painter.drawPath(tip);
    return image;
}

} // namespace

// wobblegen OUTPUT_DIR: writes wobble00.png .. wobble05.png.
int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: wobblegen OUTPUT_DIR\n");
        return 2;
    }
    const QDir out(QString::fromLocal8Bit(argv[1]));
    if (!QDir().mkpath(out.path())) {
        std::fprintf(stderr, "cannot create %s\n", argv[1]);
        return 1;
    }
    for (int frame = 0; frame < kFrames; ++frame) {
        const QString path = out.filePath(QStringLiteral("wobble%1.png").arg(frame, 2, 10, QLatin1Char('0')));
        if (!drawFrame(frame).save(path, "PNG")) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
            return 1;
        }
    }
    return 0;
}
