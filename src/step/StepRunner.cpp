// The runner half of filterProcessObject: one tool run per input, the tool's
// output, abort, and the reports to the controller.

#include "step/FilterProcessObject.h"

#include "run/RunPlan.h"
#include "run/SafeFile.h"
#include "step/StepParent.h"

#include "step/ToolRun.h"

#include <QFileInfo>
#include <QMetaObject>
#include <QMutexLocker>
#include <QObject>
#include <QThread>
#include <QTimer>

#include <utility>

namespace quillon {

namespace {

// How often the outputs of a running tool are looked at, and how many at a
// time: the tool writes them in order.
constexpr int kWatchMilliseconds = 50;
constexpr qsizetype kOutputsPolled = 8;

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
    runOnSources();
}

void filterProcessObject::showSetupInfo()
{
    const QString name = filterData ? filterData->string(key::name) : QString();
    const QString author = filterData ? filterData->string(key::author) : QString();
    passOnFilterInfoWithData({ name, author });
}

void filterProcessObject::runOnSources()
{
    for (qsizetype i = 0; i < plannedRuns.size(); ++i) {
        if (i > 0 && isAborted.load())
            break;
        plannedRun = plannedRuns.at(i);
        if (!plannedRun)
            continue;
        const QString& input = plannedRun->input;
        passOnSourceInfoWithData(input.isEmpty() ? kNoSource : QFileInfo(input).fileName());
        runFilterOn(input, plannedRun->baseName);
    }
}

void filterProcessObject::runFilterOn(const QString& inputPath, const QString& outfile)
{
    if (!plannedRun)
        return;
    // Every output of this tool run is to be kept as it is: no tool run,
    // but the values advance as if it had rendered. A tool run without any
    // task still starts the tool.
    if (!plannedRun->hasWork()) {
        storePlannedValues(*plannedRun);
        return;
    }
    runOutputs.clear();
    for (qsizetype t = 0; t < plannedRun->tasks.size(); ++t) {
        if (!plannedRun->tasks.at(t).skipped)
            runOutputs.append(plannedRun->resultPath(t));
    }
    // The task files are written before the tool starts.
    unwrittenTaskFiles.clear();
    const QString controlFile = createBatchFileWithFilepath(inputPath, outfile);
    auto run = std::make_unique<ToolRun>(toolLaunch(controlFile));
    {
        QMutexLocker lock(&toolTaskMutex);
        toolTask = std::move(run);
        // An abort that came while the task files were written.
        if (isAborted.load())
            toolTask->requestAbort();
    }
    ToolRunOutcome outcome = captureStandardOutputAndRouteToTextView(*toolTask);
    outcome.unwrittenTaskFiles = unwrittenTaskFiles;
    if (parent)
        parent->toolRunEnded(plannedRun, outcome);
    {
        QMutexLocker lock(&toolTaskMutex);
        run = std::move(toolTask);
    }
}

// Starts the prepared tool run, routes its standard output to the progress
// line and the log while it runs, and waits for it to end on this thread's
// event loop; then hands the run's files over. Worker thread only: the
// process is created, read and terminated here.
ToolRunOutcome filterProcessObject::captureStandardOutputAndRouteToTextView(ToolRun& task)
{
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

    QTimer watchTimer;
    watchTimer.setInterval(kWatchMilliseconds);
    QObject::connect(
        &watchTimer, &QTimer::timeout, &task, [&reportWritten] { reportWritten(kOutputsPolled); });
    QObject::connect(&task, &ToolRun::started, &watchTimer, qOverload<>(&QTimer::start));
    QObject::connect(&task, &ToolRun::output, &task, [this, &reportWritten](const QString& text) {
        reportWritten(kOutputsPolled);
        passOnRenderInfoWithData(text);
        if (parent)
            parent->writeLogFileWithMessage(text);
    });
    QObject::connect(&task, &ToolRun::killed, &task, [this] { passOnRenderInfoWithData(kKilledMessage); });
    QObject::connect(&task, &ToolRun::failed, &task, [this](const QString& reason) {
        const QString message = kStartFailedMessage + reason;
        passOnRenderInfoWithData(message);
        if (parent)
            parent->writeLogFileWithMessage(message);
    });
    const ToolRunOutcome outcome = task.exec();
    watchTimer.stop();

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
    return outcome;
}

void filterProcessObject::abortAction()
{
    // The running tool is stopped on the worker's event loop; a step between
    // tool runs sees the flag before the next one.
    QMutexLocker lock(&toolTaskMutex);
    isAborted.store(true);
    if (toolTask)
        toolTask->requestAbort();
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
