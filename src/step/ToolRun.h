#pragma once

#include "run/ToolLaunch.h"
#include "run/ToolRunOutcome.h"

#include <QByteArray>
#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <atomic>

namespace quillon {

// One start of the render tool, driven by its process's signals on the
// event loop of the thread that owns it (a step's worker thread). The tool's
// standard output arrives as whole UTF-8 text; standard error and input are
// the program's own. An abort terminates the tool and kills it after the
// grace period; it is recorded as the user's, never reported as a failure.
// The tool never outlives the program that started it.
class ToolRun final : public QObject {
    Q_OBJECT
public:
    static constexpr int kTerminateGraceMilliseconds = 3000;

    ToolRun(const QString& program, const QStringList& arguments, QObject* parent = nullptr);
    explicit ToolRun(const ToolLaunch& launch, QObject* parent = nullptr);
    ~ToolRun() override;
    Q_DISABLE_COPY_MOVE(ToolRun)

    // Starts the tool; the signals follow on this object's thread.
    void start();
    // Starts the tool and runs a local event loop until it has ended (finished
    // or failed). Returns how it ended.
    ToolRunOutcome exec();

    // Stops the tool: terminate, then kill after the grace period. Any
    // thread; the process is touched only on the owner's thread.
    void requestAbort();
    bool isUserAborted() const { return m_userAborted.load(); }

    const ToolRunOutcome& outcome() const { return m_outcome; }

Q_SIGNALS:
    void started();
    // A chunk of the tool's standard output: strict UTF-8 (an invalid chunk
    // is dropped), trimmed, never empty.
    void output(const QString& text);
    // The tool ended after it had started (on its own, by a signal or by the
    // abort); outcome() says which.
    void finished();
    // The tool could not be started; `message` says why.
    void failed(const QString& message);
    // The grace period after an abort passed and the tool was killed.
    void killed();

private:
    void stop();
    void routeAvailableOutput();
    void routeChunk(const QByteArray& chunk);
    void onFinished(int exitCode, QProcess::ExitStatus status);
    void onError(QProcess::ProcessError error);

    QProcess m_process;
    QTimer m_killTimer;
    QByteArray m_carried; // the start of a character the pipe cut off
    ToolRunOutcome m_outcome;
    std::atomic<bool> m_userAborted { false };
    bool m_terminated = false;
    bool m_ended = false;
};

} // namespace quillon
