// Stand-in for the render tool, for tests and demo runs.
//
// Usage: quillon-standin-render CONTROLFILE
//
// Reads the control file and each task's run file and writes a real image at
// every task's Result path: the input image with a visible effect when it
// loads, otherwise a canvas of the task's width x height (600 when a text is
// not a number, clamped to 1..8192). The pixels depend on the run file's
// variation, control values and map_type. Formats Qt cannot write here get
// PNG bytes at the Result path. One line per task on standard output, then
// "Done". Exit status: 0 when every task was written, 2 when a task failed,
// 1 when the control file is missing, unreadable or not a control file.
//
// Fault switches (environment variables), for tests of the code that runs the tool:
//   QUILLON_STANDIN_DELAY_MS=N       sleep N ms before each task
//   QUILLON_STANDIN_EXIT_CODE=N      exit with status N after the tasks
//   QUILLON_STANDIN_CRASH=1          abort() before the first task
//   QUILLON_STANDIN_HANG=1           sleep forever after the first output line;
//                                    "ignore-term" also ignores SIGTERM
//   QUILLON_STANDIN_BAD_UTF8=1       print a line with invalid UTF-8 bytes first
//   QUILLON_STANDIN_FLOOD_BYTES=N    print N bytes of filler lines first (at most 1 GiB)
//   QUILLON_STANDIN_RECORD=FILE      append "control <path>" and one "result <path>"
//                                    line per task to FILE
// A switch that is empty or "0" is off.

#include "StandinRender.h"
#include "StandinTasks.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>

using namespace quillon::standin;

namespace {

constexpr qint64 kMaxControlFileBytes = qint64(16) * 1024 * 1024;
constexpr qint64 kMaxFloodBytes = qint64(1) << 30;

QByteArray env(const char* name)
{
    return qgetenv(name);
}

bool switchOn(const char* name)
{
    const QByteArray value = env(name);
    return !value.isEmpty() && value != "0";
}

qint64 envNumber(const char* name, qint64 fallback)
{
    bool ok = false;
    const qint64 value = env(name).trimmed().toLongLong(&ok);
    return ok ? value : fallback;
}

void printLine(const QByteArray& line)
{
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

void printError(const QString& message)
{
    std::fprintf(stderr, "quillon-standin-render: %s\n", message.toLocal8Bit().constData());
    std::fflush(stderr);
}

void record(const QByteArray& line)
{
    const QString path = QString::fromLocal8Bit(env("QUILLON_STANDIN_RECORD"));
    if (path.isEmpty())
        return;
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Append))
        file.write(line + '\n');
}

void flood(qint64 bytes)
{
    bytes = std::min(bytes, kMaxFloodBytes);
    const QByteArray filler(99, 'x');
    qint64 written = 0;
    for (qint64 n = 0; written < bytes; ++n) {
        const QByteArray line = QByteArray::number(n).rightJustified(8, '0') + ' ' + filler;
        const qint64 take = std::min<qint64>(line.size() + 1, bytes - written);
        std::fwrite(
            line.constData(), 1, static_cast<std::size_t>(std::min<qint64>(take, line.size())), stdout);
        if (take > line.size())
            std::fputc('\n', stdout);
        written += take;
    }
    std::fflush(stdout);
}

[[noreturn]] void hangForever()
{
    if (env("QUILLON_STANDIN_HANG") == "ignore-term")
        std::signal(SIGTERM, SIG_IGN);
    for (;;)
        std::this_thread::sleep_for(std::chrono::hours(1));
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    const QString controlPath = args.size() > 1 ? args.at(1) : QString();
    if (controlPath.isEmpty()) {
        printError(QStringLiteral("no control file given (usage: quillon-standin-render CONTROLFILE)"));
        return 1;
    }
    QByteArray controlBytes;
    QString error;
    if (!readSmallFile(controlPath, kMaxControlFileBytes, &controlBytes, &error)) {
        printError(error);
        return 1;
    }
    record("control " + controlPath.toUtf8());
    printLine("Quillon stand-in render tool: " + controlPath.toUtf8());

    if (switchOn("QUILLON_STANDIN_CRASH"))
        std::abort();
    if (switchOn("QUILLON_STANDIN_HANG"))
        hangForever();
    if (switchOn("QUILLON_STANDIN_BAD_UTF8"))
        printLine(QByteArray("Bad bytes: \xff\xfe \xc3\x28 \xed\xa0\x80 end"));
    if (const qint64 bytes = envNumber("QUILLON_STANDIN_FLOOD_BYTES", 0); bytes > 0)
        flood(bytes);

    ControlSpec control;
    if (!parseControlFile(controlBytes, &control, &error)) {
        printError(error);
        return 1;
    }

    const qint64 delayMs = std::clamp<qint64>(envNumber("QUILLON_STANDIN_DELAY_MS", 0), 0, 24 * 3600 * 1000);
    const auto total = control.tasks.size();
    bool allWritten = true;
    for (std::size_t i = 0; i < total; ++i) {
        const TaskSpec& task = control.tasks[i];
        if (delayMs > 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
        printLine(
            QStringLiteral("Rendering task %1/%2: %3").arg(i + 1).arg(total).arg(task.resultPath).toUtf8());
        record("result " + task.resultPath.toUtf8());
        RunSpec run;
        if (!readRunFile(task.filterPath, &run, &error)
            || !writeResult(renderTask(task, run), task.resultPath, control.defaultFormat, &error)) {
            printLine(QStringLiteral("Error: %1").arg(error).toUtf8());
            allWritten = false;
        }
    }
    printLine("Done");

    if (!env("QUILLON_STANDIN_EXIT_CODE").trimmed().isEmpty())
        return static_cast<int>(envNumber("QUILLON_STANDIN_EXIT_CODE", 0));
    return allWritten ? 0 : 2;
}
