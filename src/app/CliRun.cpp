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

} // namespace

void CliDisplay::showErrorAlert(const QString& message)
{
    writeLine(stderr, message);
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

ExistingOutputs CliDisplay::askExistingOutputs(const QStringList& paths)
{
    if (existingPolicy == ExistingOutputs::Replace)
        replaced = paths.size();
    return existingPolicy;
}

bool CliDisplay::confirmWarning(const QString& message)
{
    writeLine(stderr, QStringLiteral("quillon-cli: warning: ") + message);
    return true;
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
        writeLine(stderr, QStringLiteral("quillon-cli: ") + error);
        writeLine(stderr, cliUsageLine());
        return kCliExitFailed;
    case CliParseResult::Run:
        break;
    }
    if (m_interrupted.load())
        return kCliExitInterrupted;

    RecordList chain;
    if (!loadCliChain(options, &chain, &error)) {
        writeLine(stderr, error);
        return kCliExitFailed;
    }

    CliDisplay display;
    display.existingPolicy = options.existing;
    BatchController controller(&display);
    if (options.dryRun) {
        RunPlan plan;
        if (!controller.planBatch(chain, options.settings, &plan, &error))
            return kCliExitFailed;
        const QByteArray text = options.json ? plan.toJson() : plan.describe().toUtf8() + '\n';
        std::fwrite(text.constData(), 1, static_cast<size_t>(text.size()), stdout);
        return kCliExitOk;
    }
    // The check's message already went to standard error through the display.
    if (!controller.startBatchWithSender(chain, options.settings, &error)) {
        if (options.existing == ExistingOutputs::Cancel && !error.isEmpty())
            writeLine(stderr, error);
        return kCliExitFailed;
    }

    QEventLoop loop;
    connect(&controller, &BatchController::runFinished, &loop, &QEventLoop::quit);
    connect(this, &CliRun::abortRequested, &controller, &BatchController::abortProcessWithSender);
    if (m_interrupted.load())
        controller.abortProcessWithSender();
    if (controller.isRunning())
        loop.exec();

    if (display.replaced > 0)
        writeLine(stdout, QStringLiteral("replaced %1 existing files").arg(display.replaced));
    writeLine(stderr, controller.outcomeLine());
    int code = kCliExitOk;
    if (m_interrupted.load() || controller.isAborted())
        code = kCliExitInterrupted;
    else if (!controller.outcome().missing.isEmpty())
        code = kCliExitIncomplete;
    if (!options.saveChainFile.isEmpty()) {
        if (!saveCliChain(options.saveChainFile, controller.chain(), &error)) {
            writeLine(stderr, error);
            if (code == kCliExitOk)
                code = kCliExitFailed;
        }
    }
    return code;
}

} // namespace quillon
