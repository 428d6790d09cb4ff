// Renders the application's SVG icon to the PNG sizes the icon theme wants,
// as <dir>/<N>x<N>/apps/<name>.png. Runs at build time on the offscreen
// platform.
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSaveFile>
#include <QSvgRenderer>

#include <cstdio>

// icongen ICON.svg DIR SIZE...
int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    if (argc < 4) {
        std::fprintf(stderr, "usage: icongen ICON.svg DIR SIZE...\n");
        return 2;
    }
    const QString source = QString::fromLocal8Bit(argv[1]);
    QSvgRenderer renderer(source);
    if (!renderer.isValid()) {
        std::fprintf(stderr, "cannot read %s\n", argv[1]);
        return 1;
    }
    const QString name = QFileInfo(source).completeBaseName() + QStringLiteral(".png");
    for (int i = 3; i < argc; ++i) {
        const int size = QByteArray(argv[i]).toInt();
        if (size <= 0) {
            std::fprintf(stderr, "not a size: %s\n", argv[i]);
            return 2;
        }
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        {
            QPainter painter(&image);
            painter.setRenderHint(QPainter::Antialiasing);
            renderer.render(&painter);
        }
        const QString dir = QDir(QString::fromLocal8Bit(argv[2])).filePath(QStringLiteral("%1x%1/apps").arg(size));
        QSaveFile out(QDir(dir).filePath(name));
        if (!QDir().mkpath(dir) || !out.open(QIODevice::WriteOnly) || !image.save(&out, "PNG") || !out.commit()) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(out.fileName()));
            return 1;
        }
    }
    return 0;
}
