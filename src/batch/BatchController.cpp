#include "batch/BatchController.h"

#include "batch/BatchDisplay.h"
#include "batch/InputListing.h"
#include "batch/PlanChecks.h"
#include "batch/RunPlanner.h"
#include "run/Console.h"
#include "run/SafeFile.h"
#include "step/FilterProcessObject.h"
#include "variations/ValueRule.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QMetaObject>
#include <QMutexLocker>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <random>
#include <utility>

#include <unistd.h>

namespace quillon {

const QString BatchController::kLogFileName = QStringLiteral("qlrn_logfile.txt");
const QString BatchController::kLogTitle = QStringLiteral("Quillon log");

namespace {

// The canonical form of a path whose last component may not exist (or may
// be a link that must not be followed): the parent resolved, the name kept.
// A run hands over thousands of files of one directory, so each parent is
// resolved once per cache.
QString canonicalParentJoined(const QString& path, QHash<QString, QString>& parents)
{
    const QFileInfo info(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
    const QString parentPath = info.absolutePath();
    auto known = parents.constFind(parentPath);
    if (known == parents.cend())
        known = parents.insert(parentPath, QFileInfo(parentPath).canonicalFilePath());
    const QString& parent = known.value();
    if (parent.isEmpty())
        return {};
    return parent.endsWith(QLatin1Char('/')) ? parent + info.fileName()
                                             : parent + QLatin1Char('/') + info.fileName();
}

QString absolutePath(const QString& path)
{
    return path.isEmpty() ? path : QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

// Runs `work` on a thread of its own while this thread goes on serving its
// events (painting, timers, signals), all but user input, which waits until
// the work is done: nothing can start a second Start meanwhile.
void runAside(const std::function<void()>& work)
{
    QEventLoop loop;
    std::unique_ptr<QThread> thread(QThread::create(work));
    thread->setObjectName(QStringLiteral("quillon-planner"));
    QObject::connect(thread.get(), &QThread::finished, &loop, &QEventLoop::quit);
    thread->start();
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    // An application quitting ends the loop early; the work is waited for.
    thread->wait();
}

} // namespace

BatchController::BatchController(BatchDisplay* display, QObject* parent)
    : QObject(parent)
    , m_display(display)
{
}

BatchController::~BatchController()
{
    // The display usually goes first; a run still going winds down unseen.
    m_display = nullptr;
    if (m_running) {
        abortProcessWithSender();
        QEventLoop loop;
        connect(this, &BatchController::runFinished, &loop, &QEventLoop::quit);
        if (m_running)
            loop.exec();
    }
    reapWorker();
    for (QThread* worker : std::as_const(m_retiredWorkers)) {
        worker->wait();
        delete worker;
    }
    m_retiredWorkers.clear();
    closeRunLog();
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

bool BatchController::failCheck(const QString& message, QString* error, bool alert)
{
    m_journal.end();
    m_plan.reset();
    if (error)
        *error = message;
    if (m_display && alert)
        m_display->showErrorAlert(message);
    return false;
}

bool BatchController::checkSettings(QString* error)
{
    if (m_chain.empty())
        return failCheck(QStringLiteral("No filters in the queue"), error);
    if (m_settings.toolPath.isEmpty() || !QFileInfo::exists(m_settings.toolPath))
        return failCheck(QStringLiteral("No Batchrender tool selected"), error);
    const QFileInfo output(m_settings.outputPath);
    if (m_settings.outputPath.isEmpty() || !output.exists() || !output.isDir())
        return failCheck(QStringLiteral("No output path selected"), error);
    // Output names are the prefix followed by more name: a slash would put
    // them in another directory.
    if (m_outputPrefix.contains(QLatin1Char('/')) || m_outputPrefix.contains(QChar(0)))
        return failCheck(QStringLiteral("The file name prefix cannot contain a slash"), error);
    return true;
}

bool BatchController::checkInputs(QString* error)
{
    const QString& source = m_settings.sourcePath;
    switch (m_settings.inputMode) {
    case InputMode::File:
        if (source.isEmpty() || !QFileInfo::exists(source))
            return failCheck(QStringLiteral("Input file does not exist"), error);
        break;
    case InputMode::Directory: {
        const QFileInfo directory(source);
        if (source.isEmpty() || !directory.exists() || !directory.isDir())
            return failCheck(QStringLiteral("Input directory does not exist"), error);
        if (!directory.isReadable() || !directory.isExecutable())
            return failCheck(QStringLiteral("Error scanning input directory"), error);
        if (!hasAnyEntry(source))
            return failCheck(QStringLiteral("Input directory empty"), error);
        break;
    }
    case InputMode::None:
        if (m_outputPrefix.isEmpty())
            return failCheck(
                QStringLiteral("No filename gives (file prefix when running without input)"), error);
        break;
    }
    if (const auto frames = m_settings.frameCountReal(); frames && *frames < 0)
        return failCheck(QStringLiteral("Number of frames must not be negative"), error);
    // The steps write absolute paths into the task files and the tool is
    // started by path, never looked up in PATH. The inputs keep the form the
    // user gave.
    const QString givenSource = m_settings.sourcePath;
    m_settings.toolPath = absolutePath(m_settings.toolPath);
    m_settings.outputPath = absolutePath(m_settings.outputPath);
    m_settings.sourcePath = absolutePath(m_settings.sourcePath);
    m_canonicalOutputDir = QFileInfo(m_settings.outputPath).canonicalFilePath();
    // The whole run, computed before anything of it is written. Listing a
    // folder of tens of thousands of inputs, planning their outputs and
    // looking at each final output take a while, so they run aside, on
    // copies of the records.
    StartPlan start;
    if (m_part) {
        // A part of a bundled run: its inputs and plan are those the bundle
        // fixed.
        for (const PlannedToolRun& run : std::as_const(m_part->plan->toolRuns)) {
            if (run.step == 0 && !run.input.isEmpty())
                start.inputs.append(run.input);
        }
        start.plan = m_part->plan;
        m_settings.seed = start.plan->seed;
        checkStartPlan(start);
    } else {
        if (!m_settings.seed)
            m_settings.seed = std::random_device()() | (quint64(std::random_device()()) << 32);
        runAside([&start, chain = copyChain(m_chain), settings = m_settings, givenSource] {
            start = planStart(chain, settings, givenSource);
        });
    }
    m_inputs = std::move(start.inputs);
    m_plan = std::move(start.plan);
    m_existingFinals = std::move(start.existingFinals);
    m_finalBefore = std::move(start.finalsBefore);
    if (!start.refusal.isEmpty())
        return failCheck(start.refusal, error);
    return true;
}

bool BatchController::planBatch(
    const RecordList& chain, const RunSettings& settings, RunPlan* plan, QString* error)
{
    if (m_running)
        return false;
    m_settings = settings;
    m_chain = chain;
    m_outputPrefix = settings.outputPrefix;
    if (!checkSettings(error) || !checkInputs(error))
        return false;
    if (plan)
        *plan = *m_plan;
    m_plan.reset();
    return true;
}

bool BatchController::startBatchWithSender(
    const RecordList& chain, const RunSettings& settings, QString* error)
{
    // Until the completion has run, the old worker still reads the abort flag
    // and the snapshot.
    if (m_running) {
        if (error)
            *error = QStringLiteral("A batch run is still going");
        if (m_display)
            m_display->beep();
        return false;
    }
    reapWorker();

    m_isAborted.store(false);
    m_settings = settings;
    m_chain = chain;
    m_outputPrefix = settings.outputPrefix;

    if (!checkSettings(error))
        return false;
    // Nothing is written into the directory before the run holds it.
    QStringList leftovers;
    const RunJournal::Begin taken = m_part
        ? m_journal.beginPart(m_settings.outputPath, m_part->jobFolder, &leftovers)
        : m_journal.begin(m_settings.outputPath, &leftovers);
    switch (taken) {
    case RunJournal::Begin::Busy:
        return failCheck(QStringLiteral("Another run is using this output directory"), error);
    case RunJournal::Begin::NotAFolder:
        return failCheck(QStringLiteral("The output directory holds a file named %1; Quillon needs that name "
                                        "for a folder of its own")
                             .arg(RunJournal::kFolderName),
            error);
    case RunJournal::Begin::Ok:
        break;
    }
    for (const QString& path : std::as_const(leftovers))
        printLine(lcFiles(), QStringLiteral("deleted ") + path);
    // The parts of a run share the output directory: each keeps its task
    // files in a folder of its own, or does not run.
    if (m_part && m_journal.jobFolder(m_part->jobFolder).isEmpty())
        return failCheck(QStringLiteral("Cannot make the folder %1/job-%2 in the output directory")
                             .arg(RunJournal::kFolderName)
                             .arg(m_part->jobFolder),
            error);

    // A handle left from an earlier run is never written again.
    closeRunLog();
    m_dolog = m_settings.toolLog == 1;
    if (m_dolog)
        openRunLog();

    if (!checkInputs(error))
        return false;
    if (const QString warning = outputInsideInputWarning(m_settings); !warning.isEmpty()) {
        if (m_display && !m_display->confirmWarning(warning))
            return failCheck(QString(), error, false);
    }
    if (const QStringList existing = std::exchange(m_existingFinals, {}); !existing.isEmpty()) {
        switch (m_display ? m_display->askExistingOutputs(existing) : ExistingOutputs::Replace) {
        case ExistingOutputs::Cancel:
            return failCheck(QStringLiteral("%1 of the planned outputs exist already: %2")
                                 .arg(existing.size())
                                 .arg(nameSome(existing)),
                error, false);
        case ExistingOutputs::Skip:
            m_plan->skipOutputs(existing);
            break;
        case ExistingOutputs::Replace:
            break;
        }
    }

    m_imagesDone = 0;
    m_imagesPlanned = 0;
    for (const PlannedToolRun& run : std::as_const(m_plan->toolRuns)) {
        for (const PlannedTask& task : run.tasks)
            m_imagesPlanned += task.skipped ? 0 : 1;
    }
    {
        QMutexLocker lock(&m_outcomeMutex);
        m_toolRunOutcomes = QList<ToolRunOutcome>(m_plan->toolRuns.size());
    }
    m_clock.start();
    m_running = true;
    if (m_display)
        m_display->beginProgressSheet();
    Q_EMIT runStarted();
    buildLaunchQueue();
    return true;
}

void BatchController::openRunLog()
{
    // A new file takes the name (a link there is replaced, never followed)
    // and stays open, so the appends go to that file whatever comes later.
    const QString path = QDir(m_settings.outputPath).filePath(kLogFileName);
    QString why;
    const int fd = createFileAtomically(path, kLogTitle.toUtf8(), &why);
    if (fd < 0) {
        printLine(lcProblems(), QStringLiteral("Error creating logfile ") + why);
        return;
    }
    auto handle = std::make_unique<QFile>();
    if (!handle->open(fd, QIODevice::WriteOnly | QIODevice::Append, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        printLine(lcProblems(), QStringLiteral("Error creating logfile ") + handle->errorString());
        return;
    }
    m_logfh = std::move(handle);
}

void BatchController::closeRunLog()
{
    if (!m_logfh)
        return;
    m_logfh->flush();
    m_logfh->close();
    m_logfh.reset();
}

bool BatchController::isLogOpen() const
{
    return m_logfh && m_logfh->isOpen();
}

QStringList BatchController::loadImagesFromSourceFolder(const QString& directory)
{
    return listInputDirectory(directory).paths;
}

QString BatchController::inputBaseName(const QString& path)
{
    const QString last = QFileInfo(path).fileName();
    const QStringList pieces = last.split(QLatin1Char('.'));
    return pieces.size() == 2 ? pieces.first() : last;
}

bool BatchController::isDeletable(const QString& path, ParentCache& parents) const
{
    if (path.isEmpty() || m_canonicalOutputDir.isEmpty())
        return false;
    const QString candidate = canonicalParentJoined(path, parents);
    if (candidate.isEmpty())
        return false;
    const QString inside = m_canonicalOutputDir.endsWith(QLatin1Char('/'))
        ? m_canonicalOutputDir
        : m_canonicalOutputDir + QLatin1Char('/');
    if (!candidate.startsWith(inside) || candidate.size() == inside.size())
        return false;
    if (m_originalInputs.contains(candidate) || m_originalInputs.contains(absolutePath(path)))
        return false;
    // Anything but a link resolves to the candidate itself, checked above.
    const QFileInfo info(path);
    if (!info.isSymLink())
        return true;
    const QString resolved = info.canonicalFilePath();
    return resolved.isEmpty() || !m_originalInputs.contains(resolved);
}

void BatchController::collectForDeletionWithList(const QStringList& paths)
{
    ParentCache parents;
    for (const QString& path : paths) {
        // A path handed over again (every tool run of a step rewrites the
        // same control file) is deleted once all the same.
        if (m_interimSet.contains(path) || !isDeletable(path, parents))
            continue;
        m_interimSet.insert(path);
        m_interimFiles.append(path);
    }
}

void BatchController::operationComplete()
{
    finishCompletion(deleteInterimFiles(beginCompletion()));
}

QStringList BatchController::beginCompletion()
{
    m_runningFilters.clear();
    if (m_display)
        m_display->endProgressSheet();
    if (m_dolog)
        closeRunLog();
    m_interimSet.clear();
    return std::exchange(m_interimFiles, QStringList());
}

QStringList BatchController::deleteInterimFiles(const QStringList& paths)
{
    ParentCache parents;
    QStringList deletedLines;
    for (const QString& path : paths) {
        // Only files this run created and still finds as it left them.
        if (!isDeletable(path, parents))
            continue;
        if (m_journal.removeIfCreated(path))
            deletedLines.append(QStringLiteral("deleted ") + path);
    }
    return deletedLines;
}

void BatchController::finishCompletion(const QStringList& deletedLines)
{
    for (const QString& line : deletedLines)
        printLine(lcFiles(), line);
    m_journal.end();
    m_elapsedMs = m_clock.isValid() ? m_clock.elapsed() : 0;

    m_running = false;
    const bool aborted = m_isAborted.load();
    if (m_display)
        m_display->runFinished(aborted);
    Q_EMIT runFinished(aborted);
}

void BatchController::abortProcessWithSender()
{
    for (filterProcessObject* step : std::as_const(m_runningFilters))
        step->abortAction();
    m_isAborted.store(true);
    if (m_display)
        m_display->endProgressSheet();
}

void BatchController::setFilterInfoWithData(const QStringList& nameAndAuthor)
{
    if (m_display)
        m_display->showFilterInfo(nameAndAuthor.value(0), nameAndAuthor.value(1));
}

void BatchController::setSourceInfoWithSource(const QString& source)
{
    if (m_display)
        m_display->showSourceInfo(source);
}

void BatchController::setRenderInfoWithInfo(const QString& info)
{
    if (m_display)
        m_display->showRenderInfo(info);
    printLine(lcToolOutput(), info);
}

void BatchController::writeLogFileWithMessage(const QString& message)
{
    // Tool runs of several slots write at once.
    const QMutexLocker locker(&m_logMutex);
    if (!m_dolog || message.isEmpty() || !m_logfh || !m_logfh->isOpen())
        return;
    m_logfh->write(message.toUtf8());
    m_logfh->flush();
}

} // namespace quillon
