#include "batch/RunWorker.h"

#include "batch/RunCleanup.h"
#include "batch/RunJournal.h"
#include "batch/RunLog.h"
#include "run/WineTool.h"
#include "step/FilterProcessObject.h"

#include <QMutexLocker>
#include <QThread>

#include <algorithm>
#include <memory>
#include <vector>

namespace quillon {

RunWorker::RunWorker(Job job)
    : m_job(std::move(job))
{
}

RunWorker::~RunWorker() = default;

void RunWorker::abort()
{
    const QMutexLocker lock(&m_runningMutex);
    m_aborted.store(true);
    for (filterProcessObject* step : std::as_const(m_running))
        step->abortAction();
}

void RunWorker::setRunning(const QList<filterProcessObject*>& steps)
{
    const QMutexLocker lock(&m_runningMutex);
    m_running = steps;
    // An abort that came before the steps were known still stops them.
    if (m_aborted.load()) {
        for (filterProcessObject* step : steps)
            step->abortAction();
    }
}

void RunWorker::run()
{
    const RunPlan& plan = *m_job.plan;
    QList<QList<const PlannedToolRun*>> byStep(plan.steps);
    for (const PlannedToolRun& toolRun : plan.toolRuns) {
        if (toolRun.step >= 0 && toolRun.step < plan.steps)
            byStep[toolRun.step].append(&toolRun);
    }
    for (int step = 0; step < plan.steps && !m_aborted.load(); ++step)
        runStep(step, byStep.at(step));
    setRunning({});
    // A wineserver that the run's tool runs brought up is gone before the run ends.
    if (m_job.plan->wine)
        m_job.plan->wine->finishRun();
    if (m_job.settings.toolLog == 1 && m_job.log)
        m_job.log->close();
    // The images of an inner step are handed over by the step after it,
    // which an abort may never start: every interim output of the plan is
    // handed over here, and the pass removes those the run created.
    if (m_job.cleanup)
        m_job.cleanup->collect(plan.interimOutputs());
    Q_EMIT finished(m_job.cleanup ? m_job.cleanup->deleteCollected(*m_job.journal) : QStringList());
}

void RunWorker::runStep(int index, const QList<const PlannedToolRun*>& runs)
{
    RecordPtr record = m_job.chain.at(static_cast<size_t>(index));
    filterProcessObject step(record, {}, {}, index == 0, index == m_job.plan->steps - 1, index, this, {});
    step.toolPath = m_job.settings.toolPath;
    step.setWine(m_job.plan->wine);
    step.outPath = m_job.taskFolder.isEmpty() ? m_job.settings.outputPath : m_job.taskFolder;
    step.plannedRuns = runs;
    // A later step's inputs are the outputs of the step before: handed over
    // for deletion with its first tool run.
    if (index > 0) {
        for (const PlannedToolRun* run : runs) {
            if (!run->input.isEmpty())
                step.inFiles.append(run->input);
        }
    }
    const int slots = m_job.taskFolder.isEmpty() && m_job.settings.toolJobs > 1
        ? static_cast<int>(std::min<qsizetype>(m_job.settings.toolJobs, runs.size()))
        : 1;
    if (slots > 1 && runStepInSlots(step, slots))
        return;
    setRunning({ &step });
    step.runSeries();
    setRunning({});
}

bool RunWorker::runStepInSlots(filterProcessObject& step, int slots)
{
    QStringList folders;
    for (int k = 0; k < slots; ++k)
        folders.append(m_job.journal->jobFolder(k));
    if (folders.contains(QString()))
        return false;
    // Slot k takes the tool runs k, k + slots, ... of the step.
    std::vector<std::unique_ptr<filterProcessObject>> slotSteps;
    QList<filterProcessObject*> running;
    for (int k = 0; k < slots; ++k) {
        auto slot = std::make_unique<filterProcessObject>(
            step.filterData, QStringList(), QStringList(), step.isFirst, step.isLast, step.chainid, this, QStringList());
        slot->toolPath = step.toolPath;
        slot->setWine(step.wine());
        slot->outPath = folders.at(k);
        // The slots share the records: they are left where the step ends
        // once every slot is done.
        slot->setAdvancesRecords(false);
        slot->inFiles = step.inFiles;
        for (qsizetype j = k; j < step.plannedRuns.size(); j += slots)
            slot->plannedRuns.append(step.plannedRuns.at(j));
        running.append(slot.get());
        slotSteps.push_back(std::move(slot));
    }
    setRunning(running);
    if (!m_aborted.load()) {
        step.showSetupInfo();
        std::vector<std::unique_ptr<QThread>> threads;
        for (const auto& slot : slotSteps) {
            filterProcessObject* own = slot.get();
            threads.emplace_back(QThread::create([own] { own->runOnSources(); }));
            threads.back()->setObjectName(QStringLiteral("quillon-tool-slot"));
            threads.back()->start();
        }
        for (const auto& thread : threads)
            thread->wait();
    }
    setRunning({});
    if (!step.plannedRuns.isEmpty())
        step.storePlannedValues(*step.plannedRuns.last());
    return true;
}

void RunWorker::setFilterInfoWithData(const QStringList& nameAndAuthor)
{
    Q_EMIT filterStarted(nameAndAuthor.value(0), nameAndAuthor.value(1));
}

void RunWorker::setSourceInfoWithSource(const QString& source)
{
    Q_EMIT sourceStarted(source);
}

void RunWorker::setRenderInfoWithInfo(const QString& info)
{
    m_outputRoom.acquire();
    Q_EMIT toolOutput(info);
}

void RunWorker::collectForDeletionWithList(const QStringList& paths)
{
    if (m_job.cleanup)
        m_job.cleanup->collect(paths);
}

void RunWorker::writeLogFileWithMessage(const QString& message)
{
    if (m_job.settings.toolLog == 1 && m_job.log)
        m_job.log->write(message);
}

void RunWorker::willWriteFiles(const QStringList& paths)
{
    m_job.journal->intend(paths);
}

void RunWorker::didCreateFile(const QString& path, const FileIdentity& identity)
{
    m_job.journal->recordCreated(path, identity);
}

void RunWorker::imagesWritten(const QStringList& paths)
{
    Q_EMIT outputsWritten(paths);
}

void RunWorker::toolRunEnded(const PlannedToolRun* run, const ToolRunOutcome& outcome)
{
    const qsizetype index = run ? run - m_job.plan->toolRuns.constData() : -1;
    if (index >= 0 && index < m_job.plan->toolRuns.size())
        Q_EMIT toolRunFinished(index, outcome);
}

} // namespace quillon
