#include "app/DemoProfile.h"
#include "app/MemoryTuning.h"
#include "app/Preferences.h"
#include "app/ui/AppDelegate.h"
#include "app/ui/AppTranslations.h"
#include "app/ui/Screenshot.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <QMainWindow>

#include <cstdio>

// quillon [--demo] [FILE.qlch]
int main(int argc, char** argv)
{
    quillon::keepFreedMemoryForReuse();
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Quillon"));
    QApplication::setOrganizationName(QStringLiteral("Quillon"));
    QApplication::setApplicationVersion(QStringLiteral(QUILLON_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.quillon.Quillon"));
    // The window speaks the system's language where Quillon has a translation.
    quillon::AppTranslations translations;
    translations.load();
    // The icon theme has the icon once installed; a build tree keeps the same
    // files at the same place relative to the executable.
    QIcon icon = QIcon::fromTheme(QStringLiteral("quillon"));
    if (icon.isNull()) {
        for (const char* size : { "48x48", "128x128", "256x256" })
            icon.addFile(QCoreApplication::applicationDirPath() + QStringLiteral("/../share/icons/hicolor/")
                + QLatin1String(size) + QStringLiteral("/apps/quillon.png"));
    }
    QApplication::setWindowIcon(icon);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Renders images in batches through a filter chain."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("chain"), QStringLiteral("A chain file (.qlch) to open."),
        QStringLiteral("[FILE.qlch]"));
    const QCommandLineOption demoOption(QStringLiteral("demo"),
        QStringLiteral("Start with the demo settings (sample filters, stand-in render tool, demo output "
                       "folder), kept apart from your own preferences."));
    parser.addOption(demoOption);
    // For the documentation: saves a picture of the window and quits.
    QCommandLineOption screenshotOption(QStringLiteral("screenshot"),
        QStringLiteral("Save a picture of the window to PATH and quit."), QStringLiteral("PATH"));
    screenshotOption.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOption(screenshotOption);
    QCommandLineOption resultsShotOption(QStringLiteral("screenshot-results"),
        QStringLiteral("Run the chain, save a picture of its results to PATH and quit."), QStringLiteral("PATH"));
    resultsShotOption.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOption(resultsShotOption);
    parser.process(app);

    quillon::AppDelegate delegate;
    if (parser.isSet(demoOption)) {
        QString error;
        auto demo = quillon::openDemoPreferences(
            quillon::findDemoLocations(QCoreApplication::applicationDirPath()), &error);
        if (!demo) {
            std::fprintf(stderr, "%s\n", qPrintable(error));
            return 1;
        }
        delegate.setPreferences(std::move(demo));
    }
    // Preferences into the window, the library scan, the maps box.
    delegate.applicationDidFinishLaunching();
    delegate.window()->show();
    // The demo renders without input, so Start works as soon as a filter is
    // in the chain; the choice is not stored.
    if (parser.isSet(demoOption))
        delegate.selectSourceMode(2);

    const QStringList positional = parser.positionalArguments();
    if (!positional.isEmpty())
        delegate.openChainFile(positional.first());

    if (parser.isSet(screenshotOption))
        quillon::takeScreenshotWhenReady(delegate, parser.value(screenshotOption), false);
    else if (parser.isSet(resultsShotOption))
        quillon::takeScreenshotWhenReady(delegate, parser.value(resultsShotOption), true);

    return app.exec();
}
