#include "run/Console.h"

#include <cstdio>

namespace quillon {

Q_LOGGING_CATEGORY(lcToolOutput, "quillon.tool", QtInfoMsg)
Q_LOGGING_CATEGORY(lcFiles, "quillon.files", QtInfoMsg)
Q_LOGGING_CATEGORY(lcProblems, "quillon.problems", QtInfoMsg)
Q_LOGGING_CATEGORY(lcProgress, "quillon.progress", QtInfoMsg)
Q_LOGGING_CATEGORY(lcPlan, "quillon.plan", QtWarningMsg)

namespace {

QByteArray g_transient; // the progress line shown now, if any

void drawTransient(const char* before)
{
    std::fputs(before, stderr);
    std::fwrite(g_transient.constData(), 1, static_cast<size_t>(g_transient.size()), stderr);
    std::fflush(stderr);
}

} // namespace

void consoleLine(const QLoggingCategory& category, const QString& line)
{
    if (!category.isInfoEnabled())
        return;
    if (!g_transient.isEmpty()) {
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
    }
    const QByteArray bytes = line.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
    std::fflush(stdout);
    if (!g_transient.isEmpty())
        drawTransient("");
}

void showTransientLine(const QString& line)
{
    if (line.isEmpty()) {
        if (!g_transient.isEmpty())
            std::fputc('\n', stderr);
        g_transient.clear();
        std::fflush(stderr);
        return;
    }
    g_transient = line.toUtf8();
    drawTransient("\r\033[K");
}

} // namespace quillon
