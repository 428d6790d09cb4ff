// The runner half of filterProcessObject: one tool run per input, the tool's
// output, abort, and the reports to the controller.

#include "step/FilterProcessObject.h"

#include "run/RunPlan.h"
#include "run/SafeFile.h"
#include "step/StepParent.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMetaObject>
#include <QObject>
#include <QProcess>
#include <QStringDecoder>
#include <QThread>

#include <csignal>
#include <utility>

#include <sys/prctl.h>
#include <unistd.h>

namespace quillon {

namespace {

// How long the worker waits for output before it looks at the abort flag.
constexpr int kPollMilliseconds = 50;
// Outputs looked at per round of the wait loop.
constexpr qsizetype kOutputsPolled = 8;
// How long a terminated tool gets to exit before it is killed.
constexpr int kTerminateGraceMilliseconds = 3000;

const QString kNoSource = QStringLiteral("<no source>");
const QString kKilledMessage = QStringLiteral("The render tool did not stop; it was killed.");
const QString kStartFailedMessage = QStringLiteral("Could not start the render tool: ");

// Runs `report` on the controller's thread and waits, so reports arrive in
// the order they were issued; directly when there is no other thread.
template <typename Report> void deliver(StepParent* parent, Report&& report)
{
    if (!parent)
        return;
    QObject* context = parent->reportContext();
    if (!context || context->thread() == QThread::currentThread()) {
        report();
        return;
    }
    QMetaObject::invokeMethod(context, std::forward<Report>(report), Qt::BlockingQueuedConnection);
}

// A chunk of tool output as shown: strict UTF-8 (an invalid chunk counts as
// empty), trimmed at both ends.
QString decodeChunk(const QByteArray& chunk)
{
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QString text = decoder.decode(chunk);
    if (decoder.hasError())
        return {};
    return text.trimmed();
}

// How many bytes at the end of `data` begin a UTF-8 character that the data
// does not complete: the pipe cuts the tool's output anywhere, and such a
// tail belongs to the next chunk.
qsizetype incompleteUtf8Tail(const QByteArray& data)
{
    const qsizetype size = data.size();
    for (qsizetype back = 1; back <= 3 && back <= size; ++back) {
        const auto byte = static_cast<unsigned char>(data.at(size - back));
        if ((byte & 0xC0) == 0x80)
            continue; // a continuation byte: look further back for the lead
        const qsizetype length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        return length > back ? back : 0;
    }
    return 0;
}

// The outputs of one tool run, and which of them the tool has written: a
// file counts once it is there, not empty, and new or changed since the
// tool run began.
class OutputWatch final {
public:
    explicit OutputWatch(const QStringList& paths)
        : m_paths(paths)
    {
        m_before.reserve(paths.size());
        for (const QString& path : paths)
            m_before.append(regularFileIdentity(path));
        m_seen.fill(false, paths.size());
    }

    FileIdentity before(qsizetype i) const { return m_before.value(i); }

    // Looks at up to `limit` outputs not yet seen, from the first of them.
    QStringList poll(qsizetype limit)
    {
        QStringList written;
        qsizetype looked = 0;
        for (qsizetype i = m_firstUnseen; i < m_paths.size() && looked < limit; ++i) {
            if (m_seen.at(i))
                continue;
            ++looked;
            const FileIdentity now = regularFileIdentity(m_paths.at(i));
            if (!now.isValid() || now.size <= 0 || !now.changedSince(m_before.at(i)))
                continue;
            m_seen[i] = true;
            written.append(m_paths.at(i));
        }
        while (m_firstUnseen < m_paths.size() && m_seen.at(m_firstUnseen))
            ++m_firstUnseen;
        return written;
    }

private:
    QStringList m_paths;
    QList<FileIdentity> m_before;
    QList<bool> m_seen;
    qsizetype m_firstUnseen = 0;
};

} // namespace

void filterProcessObject::runSeries()
{
    if (isAborted.load())
        return;
    showSetupInfo();
    if (inFiles.isEmpty()) {
        passOnSourceInfoWithData(kNoSource);
        runEmpty();
    } else {
        runOnSources();
    }
}

void filterProcessObject::showSetupInfo()
{
    const QString name = filterData ? filterData->string(key::name) : QString();
    const QString author = filterData ? filterData->string(key::author) : QString();
    passOnFilterInfoWithData({ name, author });
}

void filterProcessObject::runOnSources()
{
    for (qsizetype i = 0; i < inFiles.size(); ++i) {
        if (i > 0 && isAborted.load())
            break;
        const QString input = inFiles.at(i);
        plannedRun = plannedRuns.value(i);
        passOnSourceInfoWithData(QFileInfo(input).fileName());
        runFilterOn(input, i < originalFileNames.size() ? originalFileNames.at(i) : QString());
    }
}

void filterProcessObject::runEmpty()
{
    // The same tool run as for an input, without one (createBatchFileNoFile).
    plannedRun = plannedRuns.value(0);
    runFilterOn(QString(), QString());
}

void filterProcessObject::runFilterOn(const QString& inputPath, const QString& outfile)
{
    // Every output of this tool run is to be kept as it is: no tool run,
    // but the values advance as if it had rendered.
    if (plannedRun && !plannedRun->hasWork()) {
        for (const PlannedTask& task : plannedRun->tasks)
            outFiles.append(task.resultPath);
        storePlannedValues(*plannedRun);
        return;
    }
    toolTask = std::make_unique<QProcess>();
    toolTask->setProgram(toolPath);
    // The tool never outlives the program that started it, however that
    // program ends.
    const pid_t starter = ::getpid();
    toolTask->setChildProcessModifier([starter] {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != starter)
            ::_exit(127);
    });
    // The task files are written before the tool starts.
    const qsizetype known = outFiles.size();
    toolTask->setArguments({ createBatchFileWithFilepath(inputPath, outfile) });
    runOutputs = outFiles.mid(known);
    captureStandardOutputAndRouteToTextView(*toolTask);
}

// Starts the prepared tool run, routes its standard output to the progress
// line and the log while it runs, and waits for it to exit; then hands the
// run's files over. Worker thread only: the process is created, read and
// terminated here.
void filterProcessObject::captureStandardOutputAndRouteToTextView(QProcess& task)
{
    task.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    task.setInputChannelMode(QProcess::ForwardedInputChannel);
    task.setReadChannel(QProcess::StandardOutput);

    // A character cut by the pipe is completed by the next read, so valid
    // UTF-8 output reaches the display and the log whole.
    QByteArray carried;
    const auto routeChunk = [this](const QByteArray& chunk) {
        if (chunk.isEmpty())
            return;
        const QString text = decodeChunk(chunk);
        if (text.isEmpty())
            return;
        passOnRenderInfoWithData(text);
        if (parent)
            parent->writeLogFileWithMessage(text);
    };
    const auto routeAvailableOutput = [&task, &carried, &routeChunk] {
        QByteArray chunk = carried + task.readAllStandardOutput();
        const qsizetype tail = incompleteUtf8Tail(chunk);
        carried = chunk.right(tail);
        chunk.chop(tail);
        routeChunk(chunk);
    };

    // The outputs of an inner step are interim files: the run may delete
    // those the tool creates, and only those.
    if (!isLast && parent)
        parent->willWriteFiles(runOutputs);
    OutputWatch watch(runOutputs);
    const auto reportWritten = [this, &watch](qsizetype limit) {
        const QStringList written = watch.poll(limit);
        if (!written.isEmpty() && parent)
            parent->imagesWritten(written);
    };

    task.start(QIODevice::ReadOnly);
    if (!task.waitForStarted(-1)) {
        const QString message = kStartFailedMessage + task.errorString();
        passOnRenderInfoWithData(message);
        if (parent) {
            parent->writeLogFileWithMessage(message);
            parent->toolRunEnded(plannedRun, { ToolRunEnd::Kind::NotStarted, -1 });
        }
    } else {
        bool terminated = false;
        bool killed = false;
        QDeadlineTimer killDeadline;
        while (task.state() != QProcess::NotRunning) {
            if (isAborted.load() && !terminated) {
                task.terminate();
                terminated = true;
                killDeadline.setRemainingTime(kTerminateGraceMilliseconds);
            }
            if (terminated && !killed && killDeadline.hasExpired()) {
                task.kill();
                killed = true;
                passOnRenderInfoWithData(kKilledMessage);
            }
            // A few stats per round: the tool writes its outputs in order.
            reportWritten(kOutputsPolled);
            if (task.bytesAvailable() > 0) {
                routeAvailableOutput();
                continue;
            }
            QElapsedTimer waited;
            waited.start();
            if (task.waitForReadyRead(kPollMilliseconds)) {
                routeAvailableOutput();
                continue;
            }
            // A quick false means the tool closed its output but still runs:
            // wait for the exit instead of spinning.
            if (task.state() != QProcess::NotRunning && waited.elapsed() < kPollMilliseconds / 2)
                task.waitForFinished(kPollMilliseconds);
        }
        task.waitForFinished(-1);
        // What the tool wrote just before it exited, and a last character
        // it never completed (invalid, so it shows nothing).
        routeAvailableOutput();
        routeChunk(std::exchange(carried, QByteArray()));
        if (parent) {
            const bool crashed = task.exitStatus() == QProcess::CrashExit;
            parent->toolRunEnded(plannedRun,
                { crashed ? ToolRunEnd::Kind::Crashed : ToolRunEnd::Kind::Exited,
                    crashed ? -1 : task.exitCode() });
        }
    }

    reportWritten(runOutputs.size());
    if (!isLast && parent) {
        for (qsizetype i = 0; i < runOutputs.size(); ++i) {
            const FileIdentity now = regularFileIdentity(runOutputs.at(i));
            if (now.isValid() && now.changedSince(watch.before(i)))
                parent->didCreateFile(runOutputs.at(i), now);
        }
    }

    // The inputs of a later step are interim outputs of the step before:
    // handed over with the step's first tool run (again would only repeat).
    if (!isFirst && !inFiles.isEmpty() && !std::exchange(inputsHandedOver, true))
        taskIsDoneWithData(inFiles);
    const QStringList finishedFiles = filesToRemove;
    taskIsDoneWithData(finishedFiles);
}

void filterProcessObject::abortAction()
{
    // The worker sees the flag while it waits and terminates the tool itself.
    isAborted.store(true);
}

void filterProcessObject::passOnFilterInfoWithData(const QStringList& nameAndAuthor)
{
    StepParent* target = parent;
    deliver(parent, [target, nameAndAuthor] { target->setFilterInfoWithData(nameAndAuthor); });
}

void filterProcessObject::passOnSourceInfoWithData(const QString& source)
{
    StepParent* target = parent;
    deliver(parent, [target, source] { target->setSourceInfoWithSource(source); });
}

void filterProcessObject::passOnRenderInfoWithData(const QString& info)
{
    StepParent* target = parent;
    deliver(parent, [target, info] { target->setRenderInfoWithInfo(info); });
}

void filterProcessObject::taskIsDoneWithData(const QStringList& paths)
{
    if (paths.isEmpty())
        return;
    StepParent* target = parent;
    deliver(parent, [target, paths] { target->collectForDeletionWithList(paths); });
}

} // namespace quillon
