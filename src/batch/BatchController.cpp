#include "batch/BatchController.h"

#include "batch/BatchDisplay.h"
#include "batch/PlanChecks.h"
#include "batch/RunWorker.h"
#include "run/Console.h"

#include <QFileInfo>
#include <QThread>
#include <QtConcurrent/QtConcurrentRun>

#include <utility>

namespace quillon {

const QString& BatchController::kLogFileName = RunLog::kFileName;
const QString& BatchController::kLogTitle = RunLog::kTitle;

BatchController::BatchController(BatchDisplay* display, QObject* parent)
    : QObject(parent)
{
    setDisplay(display);
    connect(&m_planning, &QFutureWatcher<StartPlan>::finished, this, &BatchController::planned);
}

BatchController::~BatchController()
{
    // The display usually goes first; a run still going winds down unseen.
    setDisplay(nullptr);
    m_planAbort.store(true);
    m_planning.waitForFinished();
    if (m_thread) {
        m_worker->abort();
        m_worker->releaseOutputs();
        m_thread->quit();
        m_thread->wait();
        delete m_thread;
    }
    m_journal.end();
}

void BatchController::setStandardOutput(std::function<void(const QString&)> sink)
{
    m_standardOutput = std::move(sink);
}

void BatchController::printLine(const QLoggingCategory& category, const QString& text) const
{
    if (m_standardOutput)
        m_standardOutput(text);
    else
        consoleLine(category, text);
}

bool BatchController::refuse(const QString& message, QString* error, bool alert)
{
    m_journal.end();
    m_plan.reset();
    m_refusal = message;
    if (error)
        *error = message;
    if (m_display && alert)
        m_display->showErrorAlert(message);
    return false;
}

bool BatchController::startBatchWithSender(const RecordList& chain, const RunSettings& settings, QString* error)
{
    if (m_running) {
        if (error)
            *error = QStringLiteral("A batch run is still going");
        if (m_display)
            m_display->beep();
        return false;
    }
    m_isAborted = false;
    m_planAbort.store(false);
    m_refusal.clear();
    m_settings = settings;
    m_chain = chain;
    for (RecordPtr& record : m_chain) {
        if (!record)
            record = Record::create();
    }
    if (const QString refusal = settingsRefusal(m_chain, m_settings); !refusal.isEmpty())
        return refuse(refusal, error);
    // Nothing is written into the directory before the run holds it.
    if (!takeOutputDirectory(error))
        return false;
    // A handle left from an earlier run is never written again.
    m_log.close();
    if (m_settings.toolLog == 1) {
        QString why;
        if (!m_log.open(m_settings.outputPath, &why))
            printLine(lcProblems(), QStringLiteral("Error creating logfile ") + why);
    }
    m_running = true;
    // The window stays covered while the run is planned.
    if (m_display)
        m_display->beginProgressSheet();
    if (m_part) {
        m_planning.setFuture(QtConcurrent::run(planPart, m_settings, m_part->plan));
    } else {
        m_planning.setFuture(
            QtConcurrent::run(planStart, PlanRequest { copyChain(m_chain), m_settings, false, &m_planAbort }));
    }
    return true;
}

bool BatchController::takeOutputDirectory(QString* error)
{
    QStringList leftovers;
    const RunJournal::Begin taken = m_part
        ? m_journal.beginPart(m_settings.outputPath, m_part->jobFolder, &leftovers)
        : m_journal.begin(m_settings.outputPath, &leftovers);
    switch (taken) {
    case RunJournal::Begin::Busy:
        return refuse(
            QStringLiteral("Another run is using this output directory\n") + m_journal.lockHolder(), error);
    case RunJournal::Begin::NotAFolder:
        return refuse(QStringLiteral("The output directory holds a file named %1; Quillon needs that name "
                                     "for a folder of its own")
                          .arg(RunJournal::kFolderName),
            error);
    case RunJournal::Begin::Ok:
        break;
    }
    for (const QString& notice : m_journal.notices()) {
        if (m_display)
            m_display->showNotice(notice);
    }
    for (const QString& path : std::as_const(leftovers))
        printLine(lcFiles(), QStringLiteral("deleted ") + path);
    for (const QString& path : m_journal.keptLeftovers())
        printLine(lcFiles(), QStringLiteral("kept %1: changed since the run wrote it").arg(path));
    // The parts of a run share the output directory: each keeps its task
    // files in a folder of its own, or does not run.
    if (m_part && m_journal.jobFolder(m_part->jobFolder).isEmpty())
        return refuse(QStringLiteral("Cannot make the folder %1/job-%2 in the output directory")
                          .arg(RunJournal::kFolderName)
                          .arg(m_part->jobFolder),
            error);
    return true;
}

bool BatchController::settle(StartPlan& start, QString* error)
{
    if (!start.refusal.isEmpty())
        return refuse(start.refusal, error);
    for (const QString& note : std::as_const(start.notes)) {
        if (m_display)
            m_display->showNotice(note);
    }
    if (!start.warning.isEmpty() && m_display && !m_display->confirmWarning(start.warning))
        return refuse(QString(), error, false);
    if (!start.existingFinals.isEmpty()) {
        const ExistingOutputs answer
            = m_display ? m_display->askExistingOutputs(start.existingFinals) : ExistingOutputs::Replace;
        applyExistingPolicy(start, answer);
        if (!start.refusal.isEmpty())
            return refuse(start.refusal, error, false);
    }
    return true;
}

bool BatchController::planBatch(
    const RecordList& chain, const RunSettings& settings, RunPlan* plan, QString* error, bool outputWillBeMade)
{
    if (m_running)
        return false;
    StartPlan start = planStart(PlanRequest { copyChain(chain), settings, outputWillBeMade });
    return settlePlanned(start, plan, error);
}

bool BatchController::settlePlanned(StartPlan& start, RunPlan* plan, QString* error)
{
    if (m_running || !settle(start, error))
        return false;
    if (plan)
        *plan = *start.plan;
    return true;
}

void BatchController::planned()
{
    StartPlan start = m_planning.result();
    m_settings = start.settings;
    m_plan = start.plan;
    m_inputs = start.inputs;
    m_finalBefore = start.finalsBefore;
    if (m_isAborted || start.refusal == kPlanningAborted) {
        m_isAborted = true;
        // Aborted while planned: the run ends as an aborted run that did nothing.
        m_plan = std::make_shared<RunPlan>();
        m_journal.end();
        m_running = false;
        if (m_display) {
            m_display->endProgressSheet();
            m_display->runFinished(true);
        }
        Q_EMIT runFinished(true);
        return;
    }
    if (!start.refusal.isEmpty() && m_display)
        m_display->endProgressSheet();
    if (!settle(start, nullptr)) {
        if (m_display)
            m_display->endProgressSheet();
        m_running = false;
        Q_EMIT runRefused(m_refusal);
        return;
    }
    startWorker();
}

void BatchController::startWorker()
{
    const bool maps = m_settings.activateMaps == 1 && m_chain.size() == 1;
    for (const RecordPtr& record : m_chain)
        applyMapChoice(*record, m_settings, maps);
    m_imagesDone = 0;
    m_imagesPlanned = 0;
    for (const PlannedToolRun& run : std::as_const(m_plan->toolRuns)) {
        for (const PlannedTask& task : run.tasks)
            m_imagesPlanned += task.skipped ? 0 : 1;
    }
    m_toolRunOutcomes = QList<ToolRunOutcome>(m_plan->toolRuns.size());
    m_cleanup.begin(m_settings.outputPath, m_inputs + QStringList { m_settings.sourcePath });
    m_clock.start();
    if (m_display)
        m_display->planRun(static_cast<int>(m_inputs.size()), static_cast<int>(m_chain.size()),
            m_settings.frameCount());
    Q_EMIT runStarted();

    RunWorker::Job job { m_plan, m_chain, m_settings, &m_journal, &m_log, &m_cleanup,
        m_part ? m_journal.jobFolder(m_part->jobFolder) : QString() };
    m_thread = new QThread;
    m_thread->setObjectName(QStringLiteral("quillon-batch-worker"));
    m_worker = new RunWorker(std::move(job));
    m_worker->moveToThread(m_thread);
    connect(m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    connect(m_worker, &RunWorker::filterStarted, this, [this](const QString& name, const QString& author) {
        if (m_display)
            m_display->showFilterInfo(name, author);
    });
    connect(m_worker, &RunWorker::sourceStarted, this, [this](const QString& source) {
        if (m_display)
            m_display->showSourceInfo(source);
    });
    connect(m_worker, &RunWorker::toolOutput, this, [this, worker = m_worker](const QString& text) {
        if (m_display)
            m_display->showRenderInfo(text);
        printLine(lcToolOutput(), text);
        worker->outputHandled();
    });
    connect(m_worker, &RunWorker::outputsWritten, this, &BatchController::showProgress);
    connect(m_worker, &RunWorker::toolRunFinished, this, [this](qsizetype index, const ToolRunOutcome& outcome) {
        if (index >= 0 && index < m_toolRunOutcomes.size())
            m_toolRunOutcomes[index] = outcome;
    });
    connect(m_worker, &RunWorker::finished, this, &BatchController::workerFinished);
    // An abort while the run was planned: the worker starts nothing.
    if (m_isAborted)
        m_worker->abort();
    m_thread->start();
    QMetaObject::invokeMethod(m_worker, &RunWorker::run, Qt::QueuedConnection);
}

void BatchController::workerFinished(const QStringList& deletedLines)
{
    if (m_display)
        m_display->endProgressSheet();
    for (const QString& line : deletedLines)
        printLine(lcFiles(), line);
    m_journal.end();
    m_elapsedMs = m_clock.isValid() ? m_clock.elapsed() : 0;
    m_thread->quit();
    m_thread->wait();
    delete std::exchange(m_thread, nullptr);
    m_worker = nullptr;
    m_running = false;
    if (m_display)
        m_display->runFinished(m_isAborted);
    Q_EMIT runFinished(m_isAborted);
}

void BatchController::abortProcessWithSender()
{
    if (m_worker)
        m_worker->abort();
    m_planAbort.store(true);
    m_isAborted = true;
    if (m_display)
        m_display->endProgressSheet();
}

} // namespace quillon
