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
//   QUILLON_STANDIN_BUSY_MS=N        spend N ms of CPU time before each task (a
//                                    render tool that computes)
//   QUILLON_STANDIN_EXIT_CODE=N      exit with status N after the tasks
//   QUILLON_STANDIN_CRASH=1          abort() before the first task
//   QUILLON_STANDIN_HANG=1           sleep forever after the first output line;
//                                    "ignore-term" also ignores SIGTERM
//   QUILLON_STANDIN_BAD_UTF8=1       print a line with invalid UTF-8 bytes first
//   QUILLON_STANDIN_FLOOD_BYTES=N    print N bytes of filler lines first (at most 1 GiB)
//   QUILLON_STANDIN_FLOOD_FILL=TEXT  the filler of those lines (UTF-8; default "x")
//   QUILLON_STANDIN_GATE=FILE        after the first output line, wait until FILE
//                                    exists (at most 60 s) before the tasks
//   QUILLON_STANDIN_CRASH_AFTER=N    abort() once N tasks are done (0 included:
//                                    before the first task)
//   QUILLON_STANDIN_JOURNAL=FILE     append "pid <pid>" at start and "wrote <path>"
//                                    after each result written
//   QUILLON_STANDIN_RECORD=FILE      append "control <path>" and one "result <path>"
//                                    line per task to FILE
//   QUILLON_STANDIN_KEEP=DIR         copy each task's run file to DIR, named after
//                                    the task's result file plus ".ffxml"
// A switch that is empty or "0" is off.

#include "StandinRender.h"
#include "StandinTasks.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <time.h>
#include <unistd.h>

using namespace quillon::standin;

namespace {

constexpr qint64 kMaxControlFileBytes = qint64(16) * 1024 * 1024;
constexpr qint64 kMaxFloodBytes = qint64(1) << 30;
constexpr qint64 kMaxFillBytes = 4096;
constexpr int kGatePollMs = 10;
constexpr int kGateLimitMs = 60 * 1000;

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

void appendLine(const char* variable, const QByteArray& line)
{
    const QString path = QString::fromLocal8Bit(env(variable));
    if (path.isEmpty())
        return;
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Append))
        file.write(line + '\n');
}

void record(const QByteArray& line)
{
    appendLine("QUILLON_STANDIN_RECORD", line);
}

void journal(const QByteArray& line)
{
    appendLine("QUILLON_STANDIN_JOURNAL", line);
}

// Waits until the gate file exists, so a test can change the world while
// the tool is between its first line and its tasks.
void waitAtGate()
{
    const QString gate = QString::fromLocal8Bit(env("QUILLON_STANDIN_GATE"));
    if (gate.isEmpty())
        return;
    for (int waited = 0; waited < kGateLimitMs && !QFile::exists(gate); waited += kGatePollMs)
        std::this_thread::sleep_for(std::chrono::milliseconds(kGatePollMs));
}

// Exactly `bytes` bytes of numbered filler lines; a last line that would not
// fit whole is replaced by dots, so a multi-byte filler is never cut inside a
// character.
void flood(qint64 bytes)
{
    bytes = std::min(bytes, kMaxFloodBytes);
    QByteArray fill = env("QUILLON_STANDIN_FLOOD_FILL").left(kMaxFillBytes);
    if (fill.isEmpty())
        fill = "x";
    QByteArray filler;
    while (filler.size() < 99)
        filler += fill;
    qint64 written = 0;
    for (qint64 n = 0; written < bytes; ++n) {
        QByteArray line = QByteArray::number(n).rightJustified(8, '0') + ' ' + filler + '\n';
        if (line.size() > bytes - written)
            line = QByteArray(bytes - written, '.');
        std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stdout);
        written += line.size();
    }
    std::fflush(stdout);
}

// Keeps one processor busy until the process has used `ms` more milliseconds
// of CPU time.
void spendCpu(qint64 ms)
{
    const auto cpuNs = [] {
        timespec now {};
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
        return qint64(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
    };
    const qint64 until = cpuNs() + ms * 1'000'000;
    volatile quint64 sink = 0;
    while (cpuNs() < until) {
        for (int i = 0; i < 10000; ++i)
            sink = sink * 6364136223846793005ULL + 1442695040888963407ULL;
    }
}

[[noreturn]] void hangForever()
{
    for (;;)
        std::this_thread::sleep_for(std::chrono::hours(1));
}

} // namespace

int main(int argc, char** argv)
{
    // Before any output: a caller that terminates the tool at its first line
    // must find SIGTERM already ignored.
    if (env("QUILLON_STANDIN_HANG") == "ignore-term")
        std::signal(SIGTERM, SIG_IGN);
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
    journal("pid " + QByteArray::number(static_cast<qint64>(::getpid())));
    printLine("Quillon stand-in render tool: " + controlPath.toUtf8());

    if (switchOn("QUILLON_STANDIN_CRASH"))
        std::abort();
    if (switchOn("QUILLON_STANDIN_HANG"))
        hangForever();
    if (switchOn("QUILLON_STANDIN_BAD_UTF8"))
        printLine(QByteArray("Bad bytes: \xff\xfe \xc3\x28 \xed\xa0\x80 end"));
    if (const qint64 bytes = envNumber("QUILLON_STANDIN_FLOOD_BYTES", 0); bytes > 0)
        flood(bytes);
    waitAtGate();

    ControlSpec control;
    if (!parseControlFile(controlBytes, &control, &error)) {
        printError(error);
        return 1;
    }

    const qint64 delayMs = std::clamp<qint64>(envNumber("QUILLON_STANDIN_DELAY_MS", 0), 0, 24 * 3600 * 1000);
    const qint64 busyMs = std::clamp<qint64>(envNumber("QUILLON_STANDIN_BUSY_MS", 0), 0, 3600 * 1000);
    const auto total = control.tasks.size();
    const qint64 crashAfter = env("QUILLON_STANDIN_CRASH_AFTER").trimmed().isEmpty()
        ? -1
        : envNumber("QUILLON_STANDIN_CRASH_AFTER", -1);
    bool allWritten = true;
    for (std::size_t i = 0; i < total; ++i) {
        if (crashAfter >= 0 && static_cast<qint64>(i) >= crashAfter)
            std::abort();
        const TaskSpec& task = control.tasks[i];
        if (delayMs > 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
        if (busyMs > 0)
            spendCpu(busyMs);
        printLine(
            QStringLiteral("Rendering task %1/%2: %3").arg(i + 1).arg(total).arg(task.resultPath).toUtf8());
        record("result " + task.resultPath.toUtf8());
        if (const QString keep = QString::fromLocal8Bit(env("QUILLON_STANDIN_KEEP")); !keep.isEmpty())
            QFile::copy(
                task.filterPath, keep + QLatin1Char('/') + QFileInfo(task.resultPath).fileName() + ".ffxml");
        RunSpec run;
        if (!readRunFile(task.filterPath, &run, &error)
            || !writeResult(renderTask(task, run), task.resultPath, control.defaultFormat, &error)) {
            printLine(QStringLiteral("Error: %1").arg(error).toUtf8());
            allWritten = false;
        } else {
            journal("wrote " + task.resultPath.toUtf8());
        }
    }
    printLine("Done");

    if (!env("QUILLON_STANDIN_EXIT_CODE").trimmed().isEmpty())
        return static_cast<int>(envNumber("QUILLON_STANDIN_EXIT_CODE", 0));
    return allWritten ? 0 : 2;
}
