#include "step/ToolRun.h"

#include <QEventLoop>
#include <QMetaObject>
#include <QProcessEnvironment>
#include <QStringDecoder>

#include <csignal>
#include <utility>

#include <sys/prctl.h>
#include <unistd.h>

namespace quillon {

namespace {

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

} // namespace

ToolRun::ToolRun(const QString& program, const QStringList& arguments, QObject* parent)
    : QObject(parent)
{
    m_process.setProgram(program);
    m_process.setArguments(arguments);
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.setInputChannelMode(QProcess::ForwardedInputChannel);
    // The tool never outlives the program that started it, however that
    // program ends: the kernel kills it when its parent goes, and a parent
    // gone before the flag was set is caught by the check after it.
    const pid_t starter = ::getpid();
    m_process.setChildProcessModifier([starter] {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != starter)
            ::_exit(127);
    });

    m_killTimer.setSingleShot(true);
    connect(&m_killTimer, &QTimer::timeout, this, [this] {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.kill();
        Q_EMIT killed();
    });
    connect(&m_process, &QProcess::started, this, [this] {
        Q_EMIT started();
        // An abort that came while the tool was being started.
        if (m_userAborted.load())
            stop();
    });
    connect(&m_process, &QProcess::readyReadStandardOutput, this, &ToolRun::routeAvailableOutput);
    connect(&m_process, &QProcess::finished, this, &ToolRun::onFinished);
    connect(&m_process, &QProcess::errorOccurred, this, &ToolRun::onError);
}

ToolRun::ToolRun(const ToolLaunch& launch, QObject* parent)
    : ToolRun(launch.program, launch.arguments, parent)
{
    if (launch.environment.isEmpty())
        return;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const auto& [name, value] : launch.environment)
        environment.insert(name, value);
    m_process.setProcessEnvironment(environment);
}

ToolRun::~ToolRun()
{
    // Only a run left before its end gets here with a live tool.
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished(-1);
    }
}

void ToolRun::start()
{
    m_process.setReadChannel(QProcess::StandardOutput);
    m_process.start(QIODevice::ReadOnly);
}

ToolRunOutcome ToolRun::exec()
{
    QEventLoop loop;
    connect(this, &ToolRun::finished, &loop, &QEventLoop::quit);
    connect(this, &ToolRun::failed, &loop, &QEventLoop::quit);
    start();
    if (!m_ended)
        loop.exec();
    return m_outcome;
}

void ToolRun::requestAbort()
{
    m_userAborted.store(true);
    QMetaObject::invokeMethod(this, &ToolRun::stop, Qt::QueuedConnection);
}

void ToolRun::stop()
{
    m_userAborted.store(true);
    if (m_ended || m_terminated || m_process.state() != QProcess::Running)
        return;
    m_terminated = true;
    m_process.terminate();
    m_killTimer.start(kTerminateGraceMilliseconds);
}

void ToolRun::routeAvailableOutput()
{
    // A character cut by the pipe is completed by the next read, so valid
    // UTF-8 output arrives whole.
    QByteArray chunk = m_carried + m_process.readAllStandardOutput();
    const qsizetype tail = incompleteUtf8Tail(chunk);
    m_carried = chunk.right(tail);
    chunk.chop(tail);
    routeChunk(chunk);
}

void ToolRun::routeChunk(const QByteArray& chunk)
{
    if (chunk.isEmpty())
        return;
    const QString text = decodeChunk(chunk);
    if (!text.isEmpty())
        Q_EMIT output(text);
}

void ToolRun::onFinished(int exitCode, QProcess::ExitStatus status)
{
    if (m_ended)
        return;
    m_killTimer.stop();
    // What the tool wrote just before it exited, and a last character it
    // never completed (invalid, so it shows nothing).
    routeAvailableOutput();
    routeChunk(std::exchange(m_carried, QByteArray()));
    m_ended = true;
    if (m_userAborted.load()) {
        m_outcome.end = ToolRunOutcome::End::Aborted;
    } else if (status == QProcess::CrashExit) {
        // A process ended by a signal reports the signal as its exit code.
        m_outcome.end = ToolRunOutcome::End::Crashed;
        m_outcome.signal = exitCode;
    } else {
        m_outcome.end = ToolRunOutcome::End::Exited;
        m_outcome.exitCode = exitCode;
    }
    Q_EMIT finished();
}

void ToolRun::onError(QProcess::ProcessError error)
{
    // Every other error ends in finished().
    if (error != QProcess::FailedToStart || m_ended)
        return;
    m_ended = true;
    m_outcome.end = m_userAborted.load() ? ToolRunOutcome::End::Aborted : ToolRunOutcome::End::StartFailed;
    m_outcome.startError = m_process.errorString();
    Q_EMIT failed(m_outcome.startError);
}

} // namespace quillon
