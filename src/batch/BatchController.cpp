#include "batch/BatchController.h"

#include "batch/BatchDisplay.h"
#include "step/FilterProcessObject.h"
#include "variations/ValueRule.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QEventLoop>
#include <QFileInfo>
#include <QMetaObject>
#include <QSaveFile>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace quillon {

const QString BatchController::kLogFileName = QStringLiteral("qlrn_logfile.txt");
const QString BatchController::kLogTitle = QStringLiteral("Quillon log");

namespace {

void printToStdout(const QString& text)
{
    const QByteArray bytes = text.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
    std::fflush(stdout);
}

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

} // namespace

BatchController::BatchController(BatchDisplay* display, QObject* parent)
    : QObject(parent)
    , m_display(display)
    , m_standardOutput(printToStdout)
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
    m_standardOutput = sink ? std::move(sink) : std::function<void(const QString&)>(printToStdout);
}

void BatchController::printLine(const QString& text) const
{
    m_standardOutput(text);
}

bool BatchController::failCheck(const QString& message, QString* error)
{
    if (error)
        *error = message;
    if (m_display)
        m_display->showErrorAlert(message);
    return false;
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

    if (m_chain.empty())
        return failCheck(QStringLiteral("No filters in the queue"), error);
    if (m_settings.toolPath.isEmpty() || !QFileInfo::exists(m_settings.toolPath))
        return failCheck(QStringLiteral("No Batchrender tool selected"), error);
    const QFileInfo output(m_settings.outputPath);
    if (m_settings.outputPath.isEmpty() || !output.exists() || !output.isDir())
        return failCheck(QStringLiteral("No output path selected"), error);

    // A handle left from an earlier run is never written again.
    closeRunLog();
    m_dolog = m_settings.toolLog == 1;
    if (m_dolog)
        openRunLog();

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
        const QStringList entries
            = QDir(source).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        if (entries.isEmpty())
            return failCheck(QStringLiteral("Input directory empty"), error);
        break;
    }
    case InputMode::None:
        if (m_outputPrefix.isEmpty())
            return failCheck(
                QStringLiteral("No filename gives (file prefix when running without input)"), error);
        break;
    default:
        break;
    }
    if (const auto frames = m_settings.frameCountReal(); frames && *frames < 0)
        return failCheck(QStringLiteral("Number of frames must not be negative"), error);

    // The steps write absolute paths into the task files and the tool is
    // started by path, never looked up in PATH.
    m_settings.toolPath = absolutePath(m_settings.toolPath);
    m_settings.outputPath = absolutePath(m_settings.outputPath);
    m_settings.sourcePath = absolutePath(m_settings.sourcePath);
    m_canonicalOutputDir = QFileInfo(m_settings.outputPath).canonicalFilePath();

    m_running = true;
    if (m_display)
        m_display->beginProgressSheet();
    Q_EMIT runStarted();
    buildLaunchQueue();
    return true;
}

void BatchController::openRunLog()
{
    const QString path = QDir(m_settings.outputPath).filePath(kLogFileName);
    QSaveFile title(path);
    if (!title.open(QIODevice::WriteOnly)) {
        printLine(QStringLiteral("Error creating logfile ") + title.errorString());
        return;
    }
    const QByteArray titleBytes = kLogTitle.toUtf8();
    // commit() ignores a failure to write the buffered bytes, hence the flush.
    if (title.write(titleBytes) != titleBytes.size() || !title.flush()) {
        const QString why = title.errorString();
        title.cancelWriting();
        printLine(QStringLiteral("Error creating logfile ") + why);
        return;
    }
    if (!title.commit()) {
        printLine(QStringLiteral("Error creating logfile ") + title.errorString());
        return;
    }
    auto handle = std::make_unique<QFile>(path);
    if (!handle->open(QIODevice::WriteOnly | QIODevice::Append)) {
        printLine(QStringLiteral("Error creating logfile ") + handle->errorString());
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

QStringList BatchController::makesFilesArray() const
{
    if (m_settings.sourcePath.isEmpty())
        return {};
    switch (m_settings.inputMode) {
    case InputMode::File:
        return { m_settings.sourcePath };
    case InputMode::Directory:
        return loadImagesFromSourceFolder(m_settings.sourcePath);
    default:
        return {};
    }
}

QStringList BatchController::loadImagesFromSourceFolder(const QString& directory)
{
    const QDir root(QFileInfo(directory).absoluteFilePath());
    QStringList files;
    QDirIterator it(root.path(), QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString relative = root.relativeFilePath(it.next());
        if (relative.startsWith(QLatin1Char('.')))
            continue;
        files.append(root.filePath(relative));
    }
    std::sort(files.begin(), files.end());
    return files;
}

QString BatchController::inputBaseName(const QString& path)
{
    const QString last = QFileInfo(path).fileName();
    const QStringList pieces = last.split(QLatin1Char('.'));
    return pieces.size() == 2 ? pieces.first() : last;
}

void BatchController::buildLaunchQueue()
{
    const QStringList inputs = makesFilesArray();
    m_originalInputs.clear();
    for (const QString& path : inputs + QStringList { m_settings.sourcePath }) {
        if (path.isEmpty())
            continue;
        m_originalInputs.insert(absolutePath(path));
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
        if (maps) {
            QVariantList chosen;
            for (size_t kind = 0; kind < m_settings.mapBoxes.size(); ++kind) {
                if (m_settings.mapBoxes[kind] == 1)
                    chosen.append(QVariant::fromValue<qint64>(static_cast<qint64>(kind)));
            }
            record->set(key::Maps, chosen);
            record->setBoolean(key::UseMaps, true);
        } else {
            record->setBoolean(key::UseMaps, false);
        }
        auto step = std::make_unique<filterProcessObject>(record, i == 0 ? inputs : QStringList(),
            QStringList(), i == 0, i == count - 1, i, this, baseNames);
        step->toolPath = m_settings.toolPath;
        step->outPath = m_settings.outputPath;
        step->randomDraw = m_random->drawFunction();
        queue->push_back(std::move(step));
    }

    m_worker = QThread::create([this, queue] {
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
            callOnControllerThread([this, step] {
                m_runningFilter = step;
                // An abort that came before the step was known still stops it.
                if (m_isAborted.load())
                    step->abortAction();
            });
            if (!step->isAborted.load())
                step->runSeries();
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
    QStringList interim;
    callOnControllerThread([this, &interim] { interim = beginCompletion(); });
    const QStringList deletedLines = deleteInterimFiles(interim);
    callOnControllerThread([this, &deletedLines] { finishCompletion(deletedLines); });
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
    m_runningFilter = nullptr;
    if (m_display)
        m_display->endProgressSheet();
    if (m_dolog)
        closeRunLog();
    m_interimSet.clear();
    return std::exchange(m_interimFiles, QStringList());
}

QStringList BatchController::deleteInterimFiles(const QStringList& paths) const
{
    ParentCache parents;
    QStringList deletedLines;
    for (const QString& path : paths) {
        const QFileInfo info(path);
        // Only files (or links) this run generated; never a whole directory.
        if (!isDeletable(path, parents) || (info.isDir() && !info.isSymLink()))
            continue;
        if (QFile::remove(path))
            deletedLines.append(QStringLiteral("deleted ") + path);
    }
    return deletedLines;
}

void BatchController::finishCompletion(const QStringList& deletedLines)
{
    for (const QString& line : deletedLines)
        printLine(line);

    m_running = false;
    const bool aborted = m_isAborted.load();
    if (m_display)
        m_display->runFinished(aborted);
    Q_EMIT runFinished(aborted);
}

void BatchController::abortProcessWithSender()
{
    if (m_runningFilter)
        m_runningFilter->abortAction();
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
    printLine(info);
}

void BatchController::writeLogFileWithMessage(const QString& message)
{
    if (!m_dolog || message.isEmpty() || !m_logfh || !m_logfh->isOpen())
        return;
    m_logfh->write(message.toUtf8());
    m_logfh->flush();
}

} // namespace quillon
