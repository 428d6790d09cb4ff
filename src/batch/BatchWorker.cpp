// The run's worker: the launch queue, its steps one after the other, and
// the tool runs of a step spread over several slots when asked.

#include "batch/BatchController.h"

#include "batch/BatchDisplay.h"

#include "batch/RunPlanner.h"
#include "run/RunPlan.h"
#include "run/WineTool.h"
#include "step/FilterProcessObject.h"
#include "variations/ValueRule.h"

#include <QDir>
#include <QFileInfo>
#include <QMetaObject>
#include <QThread>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace quillon {

void BatchController::buildLaunchQueue()
{
    const QStringList inputs = std::exchange(m_inputs, QStringList());
    m_originalInputs.clear();
    for (const QString& path : inputs + QStringList { m_settings.sourcePath }) {
        if (path.isEmpty())
            continue;
        m_originalInputs.insert(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
        const QString resolved = QFileInfo(path).canonicalFilePath();
        if (!resolved.isEmpty())
            m_originalInputs.insert(resolved);
    }

    QStringList baseNames;
    for (const QString& path : inputs)
        baseNames.append(inputBaseName(path));

    const qsizetype count = static_cast<qsizetype>(m_chain.size());
    if (m_display)
        m_display->planRun(static_cast<int>(inputs.size()), static_cast<int>(count), m_settings.frameCount());
    const bool maps = m_settings.activateMaps == 1 && count == 1;
    m_random = std::make_unique<RunRandom>(m_settings.seed);

    auto queue = std::make_shared<LaunchQueue>();
    for (qsizetype i = 0; i < count; ++i) {
        RecordPtr record = m_chain[static_cast<size_t>(i)];
        if (!record) {
            record = Record::create();
            m_chain[static_cast<size_t>(i)] = record;
        }
        applyMapChoice(*record, m_settings, maps);
        auto step = std::make_unique<filterProcessObject>(record, i == 0 ? inputs : QStringList(),
            QStringList(), i == 0, i == count - 1, i, this, baseNames);
        step->toolPath = m_settings.toolPath;
        step->wine = m_plan ? m_plan->wine : nullptr;
        // A part's task files go to its own folder; the plan names the outputs.
        step->outPath = m_part ? m_journal.jobFolder(m_part->jobFolder) : m_settings.outputPath;
        step->randomDraw = m_random->drawFunction();
        if (m_plan) {
            for (const PlannedToolRun& run : std::as_const(m_plan->toolRuns)) {
                if (run.step == i)
                    step->plannedRuns.append(&run);
            }
        }
        queue->push_back(std::move(step));
    }

    m_worker = QThread::create([this, queue, plan = m_plan] {
        runLaunchQueue(*queue);
        // The steps and their processes end on the thread that used them.
        queue->clear();
    });
    m_worker->setObjectName(QStringLiteral("quillon-batch-worker"));
    m_worker->start();
}

void BatchController::reapWorker()
{
    if (!m_worker)
        return;
    QThread* worker = std::exchange(m_worker, nullptr);
    if (worker->isFinished()) {
        delete worker;
        return;
    }
    // Past its completion call the worker only drops its steps; it may still
    // be inside that call when Start comes from a runFinished handler, so it
    // is not waited for here.
    m_retiredWorkers.append(worker);
    connect(worker, &QThread::finished, this, [this, worker] {
        if (m_retiredWorkers.removeOne(worker))
            worker->deleteLater();
    });
    if (worker->isFinished() && m_retiredWorkers.removeOne(worker))
        worker->deleteLater();
}

void BatchController::callOnControllerThread(const std::function<void()>& call)
{
    if (thread() == QThread::currentThread())
        call();
    else
        QMetaObject::invokeMethod(this, call, Qt::BlockingQueuedConnection);
}

void BatchController::runLaunchQueue(LaunchQueue& queue)
{
    QStringList previousOutputs;
    QStringList laterNames;
    if (!queue.empty() && !m_isAborted.load()) {
        for (size_t i = 0; i < queue.size(); ++i) {
            filterProcessObject* step = queue[i].get();
            if (i > 0) {
                step->inFiles = previousOutputs;
                step->originalFileNames = laterNames;
            }
            const int slots = m_settings.toolJobs > 1
                ? static_cast<int>(std::min<qsizetype>(m_settings.toolJobs, step->inFiles.size()))
                : 1;
            if (slots > 1) {
                runStepInSlots(*step, slots);
            } else {
                callOnControllerThread([this, step] {
                    m_runningFilters = { step };
                    // An abort that came before the step was known still stops it.
                    if (m_isAborted.load())
                        step->abortAction();
                });
                if (!step->isAborted.load())
                    step->runSeries();
            }
            previousOutputs = step->outFiles;
            if (i == 0) {
                laterNames = step->realFileNames;
                if (m_settings.inputMode == InputMode::None)
                    callOnControllerThread([this] { m_outputPrefix.clear(); });
            }
            if (m_isAborted.load())
                break;
        }
    }
    // A wineserver that the run's tool runs brought up is gone before the run ends.
    if (!queue.empty() && queue.front()->wine)
        queue.front()->wine->finishRun();
    QStringList interim;
    callOnControllerThread([this, &interim] { interim = beginCompletion(); });
    const QStringList deletedLines = deleteInterimFiles(interim);
    callOnControllerThread([this, &deletedLines] { finishCompletion(deletedLines); });
}

void BatchController::runStepInSlots(filterProcessObject& step, int slots)
{
    // Slot k takes the tool runs k, k + slots, ... of the step, each with the
    // plan's names and values; its task files go to a folder of its own.
    QStringList folders;
    for (int k = 0; k < slots; ++k)
        folders.append(m_journal.jobFolder(k));
    if (folders.contains(QString())) {
        // Without folders of their own the slots would share one control
        // file: one tool run at a time then.
        callOnControllerThread([this, &step] { m_runningFilters = { &step }; });
        if (!m_isAborted.load())
            step.runSeries();
        return;
    }
    std::vector<std::unique_ptr<filterProcessObject>> slotSteps;
    for (int k = 0; k < slots; ++k) {
        const QString& folder = folders.at(k);
        auto slot = std::make_unique<filterProcessObject>(step.filterData, QStringList(), QStringList(),
            step.isFirst, step.isLast, step.chainid, this, QStringList());
        slot->toolPath = step.toolPath;
        slot->wine = step.wine;
        slot->outPath = folder;
        slot->randomDraw = step.randomDraw;
        // The records are shared by the slots: they are left where the
        // step ends once every slot is done.
        slot->advancesRecords = false;
        for (qsizetype j = k; j < step.inFiles.size(); j += slots) {
            slot->inFiles.append(step.inFiles.at(j));
            slot->originalFileNames.append(step.originalFileNames.value(j));
            slot->plannedRuns.append(step.plannedRuns.value(j));
        }
        slotSteps.push_back(std::move(slot));
    }
    callOnControllerThread([this, &slotSteps] {
        m_runningFilters.clear();
        for (const auto& slot : slotSteps) {
            m_runningFilters.append(slot.get());
            if (m_isAborted.load())
                slot->abortAction();
        }
    });
    if (!m_isAborted.load()) {
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
    callOnControllerThread([this] { m_runningFilters.clear(); });

    // The step's outputs in plan order, whatever order the slots took.
    step.outFiles.clear();
    for (const PlannedToolRun* run : std::as_const(step.plannedRuns)) {
        if (!run)
            continue;
        for (const PlannedTask& task : run->tasks)
            step.outFiles.append(task.resultPath);
    }
    if (!step.plannedRuns.isEmpty() && step.plannedRuns.last())
        step.storePlannedValues(*step.plannedRuns.last());
}

} // namespace quillon
