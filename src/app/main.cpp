#include "app/DemoProfile.h"
#include "app/Preferences.h"
#include "app/ui/AppDelegate.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QMainWindow>

#include <cstdio>

// quillon [--demo] [FILE.qlch]
int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Quillon"));
    QApplication::setOrganizationName(QStringLiteral("Quillon"));
    QApplication::setApplicationVersion(QStringLiteral(QUILLON_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Renders images in batches through a filter chain."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("chain"), QStringLiteral("A chain file (.qlch) to open."),
                                 QStringLiteral("[FILE.qlch]"));
    const QCommandLineOption demoOption(
        QStringLiteral("demo"),
        QStringLiteral("Start with the demo settings (sample filters, stand-in render tool, demo output "
                       "folder), kept apart from your own preferences."));
    parser.addOption(demoOption);
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

    return app.exec();
}
