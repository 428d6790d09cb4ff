// Turns the user guide (Markdown) into the Help.pdf the application opens
// from its Help menu. Runs at build time on the offscreen platform.
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMarginsF>
#include <QPageLayout>
#include <QPageSize>
#include <QPdfWriter>
#include <QSaveFile>
#include <QTextDocument>
#include <QUrl>

#include <cstdio>

// helpgen GUIDE.md OUTPUT.pdf
int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: helpgen GUIDE.md OUTPUT.pdf\n");
        return 2;
    }
    QFile guide(QString::fromLocal8Bit(argv[1]));
    if (!guide.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", argv[1]);
        return 1;
    }
    const QString markdown = QString::fromUtf8(guide.readAll());

    QSaveFile out(QString::fromLocal8Bit(argv[2]));
    if (!out.open(QIODevice::WriteOnly)) {
        std::fprintf(stderr, "cannot write %s\n", argv[2]);
        return 1;
    }
    {
        QPdfWriter writer(&out);
        writer.setTitle(QStringLiteral("Quillon Help"));
        writer.setCreator(QStringLiteral("Quillon"));
        writer.setResolution(300);
        writer.setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait,
            QMarginsF(18, 18, 18, 18), QPageLayout::Millimeter));

        QTextDocument document;
        document.setDefaultStyleSheet(QStringLiteral("h1 { color: #283c6e; } h2 { color: #283c6e; }"));
        QFont font(QStringLiteral("DejaVu Sans"));
        font.setPointSizeF(10.5);
        document.setDefaultFont(font);
        // Pictures are named relative to the guide.
        document.setBaseUrl(QUrl::fromLocalFile(QFileInfo(guide).absolutePath() + QLatin1Char('/')));
        document.setMarkdown(markdown);
        document.print(&writer);
    }
    if (!out.commit()) {
        std::fprintf(stderr, "cannot write %s\n", argv[2]);
        return 1;
    }
    return 0;
}
