#include "app/DemoProfile.h"
#include "app/MemoryTuning.h"
#include "app/Preferences.h"
#include "app/ui/AppDelegate.h"
#include "app/ui/AppTranslations.h"
#include "app/ui/Screenshot.h"

#include <QApplication>
#include <QCoreApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <QMainWindow>

#include <cstdio>
#include <optional>

namespace {

struct WindowOptions {
    QCommandLineOption version { { QStringLiteral("v"), QStringLiteral("V"), QStringLiteral("version") },
        QStringLiteral("Show the version.") };
    QCommandLineOption demo { QStringLiteral("demo"),
        QStringLiteral("Start with the demo settings (sample filters, stand-in render tool, demo output "
                       "folder), kept apart from your own preferences.") };
    // For the documentation: save a picture of the window (or of the results
    // of a run) and quit.
    QCommandLineOption screenshot { QStringLiteral("screenshot"),
        QStringLiteral("Save a picture of the window to PATH and quit."), QStringLiteral("PATH") };
    QCommandLineOption resultsShot { QStringLiteral("screenshot-results"),
        QStringLiteral("Run the chain, save a picture of its results to PATH and quit."), QStringLiteral("PATH") };

    void addTo(QCommandLineParser& parser)
    {
        parser.setApplicationDescription(QStringLiteral("Renders images in batches through a filter chain."));
        parser.addHelpOption();
        parser.addOption(version);
        parser.addPositionalArgument(QStringLiteral("chain"), QStringLiteral("A chain file (.qlch) to open."),
            QStringLiteral("[FILE.qlch]"));
        parser.addOption(demo);
        screenshot.setFlags(QCommandLineOption::HiddenFromHelp);
        resultsShot.setFlags(QCommandLineOption::HiddenFromHelp);
        parser.addOption(screenshot);
        parser.addOption(resultsShot);
    }
};

// --help and --version answer before the window's application exists, so
// they work without a display. Anything else (Qt's own -platform and the
// like included) is left to the full parse. Returns the exit code when the
// program is done.
std::optional<int> answerWithoutDisplay(int argc, char** argv)
{
    QCoreApplication probe(argc, argv);
    WindowOptions options;
    QCommandLineParser parser;
    options.addTo(parser);
    if (!parser.parse(QCoreApplication::arguments()))
        return std::nullopt;
    // Prints the help (--help-all with Qt's own options) and exits.
    if (parser.isSet(QStringLiteral("help")) || parser.isSet(QStringLiteral("help-all")))
        parser.process(QCoreApplication::arguments());
    if (parser.isSet(options.version)) {
        std::printf("quillon %s\n", QUILLON_VERSION);
        return 0;
    }
    return std::nullopt;
}

} // namespace

// quillon [--demo] [FILE.qlch]
int main(int argc, char** argv)
{
    quillon::keepFreedMemoryForReuse();
    if (const auto code = answerWithoutDisplay(argc, argv))
        return *code;
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

    WindowOptions options;
    QCommandLineParser parser;
    options.addTo(parser);
    parser.process(app);
    if (parser.isSet(options.version)) {
        std::printf("quillon %s\n", QUILLON_VERSION);
        return 0;
    }
    const QCommandLineOption& demoOption = options.demo;
    const QCommandLineOption& screenshotOption = options.screenshot;
    const QCommandLineOption& resultsShotOption = options.resultsShot;

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
