#include "app/CliRun.h"

#include "app/CliOptions.h"
#include "batch/BatchController.h"

#include <QEventLoop>

#include <cstdio>

namespace quillon {

namespace {

void writeLine(std::FILE* stream, const QString& text)
{
    const QByteArray bytes = text.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stream);
    std::fflush(stream);
}

// Every line on standard error carries the program's name.
void writeError(const QString& message)
{
    writeLine(stderr, QStringLiteral("quillon-cli: ") + message);
}

} // namespace

void CliDisplay::showErrorAlert(const QString& message)
{
    writeError(message);
}

void CliDisplay::showFilterInfo(const QString& name, const QString& author)
{
    writeLine(stdout,
        author.isEmpty() ? QStringLiteral("Filter: ") + name
                         : QStringLiteral("Filter: %1 (%2)").arg(name, author));
}

void CliDisplay::showSourceInfo(const QString& source)
{
    writeLine(stdout, QStringLiteral("Source: ") + source);
}

CliRun::CliRun(QObject* parent)
    : QObject(parent)
{
}

void CliRun::requestAbort()
{
    m_interrupted.store(true);
    Q_EMIT abortRequested();
}

int CliRun::exec(const QStringList& arguments)
{
    CliOptions options;
    QString error;
    switch (parseCliArguments(arguments, &options, &error)) {
    case CliParseResult::Help:
        writeLine(stdout, cliHelpText());
        return kCliExitOk;
    case CliParseResult::Version:
        writeLine(stdout, QStringLiteral("quillon-cli " QUILLON_VERSION));
        return kCliExitOk;
    case CliParseResult::UsageError:
        if (!error.isEmpty())
            writeError(error);
        writeError(cliUsageLine());
        return kCliExitFailed;
    case CliParseResult::Run:
        break;
    }
    if (m_interrupted.load())
        return kCliExitInterrupted;

    RecordList chain;
    if (!loadCliChain(options, &chain, &error) || !resolveCliPaths(&options, &error)) {
        writeError(error);
        return kCliExitFailed;
    }

    CliDisplay display;
    BatchController controller(&display);
    // The check's message already went to standard error through the display.
    if (!controller.startBatchWithSender(chain, options.settings, &error))
        return kCliExitFailed;

    QEventLoop loop;
    connect(&controller, &BatchController::runFinished, &loop, &QEventLoop::quit);
    connect(this, &CliRun::abortRequested, &controller, &BatchController::abortProcessWithSender);
    if (m_interrupted.load())
        controller.abortProcessWithSender();
    if (controller.isRunning())
        loop.exec();

    int code = m_interrupted.load() ? kCliExitInterrupted : kCliExitOk;
    if (!options.saveChainFile.isEmpty()) {
        if (!saveCliChain(options.saveChainFile, controller.chain(), &error)) {
            writeError(error);
            if (code == kCliExitOk)
                code = kCliExitFailed;
        }
    }
    return code;
}

} // namespace quillon
