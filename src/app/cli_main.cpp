#include "app/CliRun.h"
#include "app/MemoryTuning.h"
#include "batch/InputListing.h"
#include "run/Termination.h"

#include <QFile>

#include <QCoreApplication>
#include <QGuiApplication>
#include <QSocketNotifier>
#include <QTimer>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <unistd.h>

namespace {

// Self-pipe: the signal handler only writes a byte; the notifier turns it
// into an abort on the main thread.
int g_signalPipe[2] = { -1, -1 };

void onTerminationSignal(int)
{
    quillon::terminationRequested().store(true);
    const char byte = 1;
    const ssize_t written = ::write(g_signalPipe[1], &byte, 1);
    (void)written;
}

bool installTerminationHandlers()
{
    if (::pipe(g_signalPipe) != 0)
        return false;
    for (int fd : g_signalPipe) {
        ::fcntl(fd, F_SETFD, FD_CLOEXEC);
        ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
    }
    struct sigaction action { };
    action.sa_handler = onTerminationSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    // A closed terminal (SIGHUP), Ctrl-\ (SIGQUIT) and a reader that went
    // away (SIGPIPE, as in `quillon-cli ... | head -1`) end a run like
    // Ctrl-C: aborted, cleaned up, exit 130.
    for (const int signal : { SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE }) {
        if (::sigaction(signal, &action, nullptr) != 0)
            return false;
    }
    return true;
}

// Paths reach the render tool as UTF-8 text; an argument that is not valid
// UTF-8 would name another file. Returns the first such argument, escaped.
std::optional<QString> undecodableArgument(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        const QByteArray bytes(argv[i]);
        if (QFile::encodeName(QFile::decodeName(bytes)) != bytes)
            return quillon::escapedName(bytes);
    }
    return std::nullopt;
}

} // namespace

int main(int argc, char** argv)
{
    quillon::keepFreedMemoryForReuse();
    // A contact sheet draws text, which takes a QGuiApplication; the
    // offscreen platform needs no display.
    bool drawsText = false;
    for (int i = 1; i < argc; ++i)
        drawsText = drawsText || std::strncmp(argv[i], "--contact-sheet", 15) == 0;
    if (drawsText && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    std::unique_ptr<QCoreApplication> application = drawsText
        ? std::make_unique<QGuiApplication>(argc, argv)
        : std::make_unique<QCoreApplication>(argc, argv);
    QCoreApplication& app = *application;
    QCoreApplication::setApplicationName(QStringLiteral("quillon-cli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QUILLON_VERSION));
    // Qt's own warnings name the program, like every other line on standard error.
    qSetMessagePattern(QStringLiteral("quillon-cli: %{message}"));

    if (const auto argument = undecodableArgument(argc, argv)) {
        std::fprintf(
            stderr, "quillon-cli: %s is not valid UTF-8; rename it to run it\n", qPrintable(*argument));
        return quillon::kCliExitFailed;
    }

    quillon::CliRun run;
    if (installTerminationHandlers()) {
        auto* notifier = new QSocketNotifier(g_signalPipe[0], QSocketNotifier::Read, &app);
        QObject::connect(notifier, &QSocketNotifier::activated, &run, [&run] {
            char buffer[16];
            while (::read(g_signalPipe[0], buffer, sizeof buffer) > 0) { }
            run.requestAbort();
        });
    }

    int code = quillon::kCliExitOk;
    // Inside the event loop, so a signal during the run is seen at once.
    QTimer::singleShot(0, &app, [&] {
        code = run.exec(QCoreApplication::arguments());
        QCoreApplication::exit(code);
    });
    app.exec();
    // Output that did not arrive (a full disk, a closed pipe) is an error,
    // not a success.
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
        std::fprintf(stderr, "quillon-cli: cannot write to standard output: %s\n", std::strerror(errno));
        if (code == quillon::kCliExitOk)
            code = quillon::kCliExitFailed;
    }
    return code;
}
