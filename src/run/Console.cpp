#include "run/Console.h"

#include <QByteArray>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <sys/ioctl.h>
#include <unistd.h>

namespace quillon {

Q_LOGGING_CATEGORY(lcToolOutput, "quillon.tool", QtInfoMsg)
Q_LOGGING_CATEGORY(lcFiles, "quillon.files", QtInfoMsg)
Q_LOGGING_CATEGORY(lcProblems, "quillon.problems", QtInfoMsg)
Q_LOGGING_CATEGORY(lcProgress, "quillon.progress", QtInfoMsg)
Q_LOGGING_CATEGORY(lcPlan, "quillon.plan", QtWarningMsg)

namespace {

std::FILE* g_lines = stdout; // where console lines go
QByteArray g_transient; // the progress line shown now, if any
qsizetype g_drawnColumns = 0; // characters of the line on the terminal now
int g_columns = -1; // the terminal's width; -1: not read yet
std::atomic<bool> g_resized { false };

void onWindowChange(int)
{
    g_resized.store(true);
}

// The width of the terminal on standard error, read again after SIGWINCH.
int terminalColumns()
{
    if (g_columns < 0) {
        struct sigaction action { };
        action.sa_handler = onWindowChange;
        sigemptyset(&action.sa_mask);
        action.sa_flags = SA_RESTART;
        ::sigaction(SIGWINCH, &action, nullptr);
        g_resized.store(true);
    }
    if (g_resized.exchange(false)) {
        winsize size {};
        g_columns = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
    }
    return g_columns;
}

bool setTo(const char* name, const char* value)
{
    const char* text = std::getenv(name);
    return text && std::strcmp(text, value) == 0;
}

// A dumb terminal knows carriage return but no control sequence; NO_COLOR
// and CLICOLOR=0 ask for plain text too.
bool plainTerminal()
{
    const char* noColor = std::getenv("NO_COLOR");
    return setTo("TERM", "dumb") || (noColor && *noColor) || setTo("CLICOLOR", "0");
}

// Takes the progress line off the terminal's last row.
void eraseTransient()
{
    if (plainTerminal())
        std::fprintf(stderr, "\r%*s\r", static_cast<int>(g_drawnColumns), "");
    else
        std::fputs("\r\033[K", stderr);
    g_drawnColumns = 0;
}

// Draws the line within the width, one column short of it: a character in
// the last column makes some terminals wrap, and a wrapped line cannot be
// rewritten in place.
void drawTransient()
{
    const QString line = QString::fromUtf8(g_transient).left(std::max(1, terminalColumns() - 1));
    const QByteArray bytes = line.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stderr);
    g_drawnColumns = line.size();
    std::fflush(stderr);
}

} // namespace

void sendConsoleToStandardError()
{
    g_lines = stderr;
}

void consoleLine(const QLoggingCategory& category, const QString& line)
{
    if (!category.isInfoEnabled())
        return;
    if (!g_transient.isEmpty()) {
        eraseTransient();
        std::fflush(stderr);
    }
    const QByteArray bytes = line.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), g_lines);
    std::fflush(g_lines);
    if (!g_transient.isEmpty())
        drawTransient();
}

void showTransientLine(const QString& line)
{
    if (line.isEmpty()) {
        if (!g_transient.isEmpty())
            std::fputc('\n', stderr);
        g_transient.clear();
        g_drawnColumns = 0;
        std::fflush(stderr);
        return;
    }
    if (!g_transient.isEmpty())
        eraseTransient();
    else
        std::fputc('\r', stderr);
    g_transient = line.toUtf8();
    drawTransient();
}

} // namespace quillon
