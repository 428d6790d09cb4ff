#include "app/AnimationMaker.h"
#include "app/CliOptions.h"
#include "app/CliRun.h"
#include "app/ContactSheet.h"
#include "batch/BatchController.h"
#include "run/Console.h"
#include "variations/OutputValues.h"

#include <QEventLoop>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace quillon {

namespace {

// The definitions the report's chain names, in chain order.
QStringList reportDefinitions(const QByteArray& json)
{
    QStringList paths;
    const QJsonArray chain = QJsonDocument::fromJson(json).object().value(QStringLiteral("chain")).toArray();
    for (const QJsonValue& entry : chain)
        paths.append(entry.toObject().value(QStringLiteral("path")).toString());
    return paths;
}

} // namespace

int CliRun::execFromReport(const CliOptions& options)
{
    QFile file(options.fromReport);
    if (!file.open(QIODevice::ReadOnly)) {
        writeCliError(
            QStringLiteral("Cannot read the run report %1: %2").arg(options.fromReport, file.errorString()));
        return kCliExitFailed;
    }
    const QByteArray json = file.readAll();

    CliOptions chainSource = options;
    if (chainSource.chainFile.isEmpty() && chainSource.filterFiles.isEmpty())
        chainSource.filterFiles = reportDefinitions(json);
    RecordList chain;
    QString error;
    if (!loadCliChain(chainSource, &chain, &error)) {
        writeCliError(error);
        return kCliExitFailed;
    }
    QList<OutputValues> outputs;
    if (!finalOutputValuesFromReport(json, chain, &outputs, &error)) {
        writeCliError(QStringLiteral("%1: %2").arg(options.fromReport, error));
        return kCliExitFailed;
    }
    if (options.outputIndex < 1 || options.outputIndex > outputs.size()) {
        writeCliError(QStringLiteral("--output-index %1: the report has outputs 1 to %2")
                          .arg(options.outputIndex)
                          .arg(outputs.size()));
        return kCliExitFailed;
    }
    const OutputValues& output = outputs.at(options.outputIndex - 1);
    if (!saveCliChain(options.saveChainFile, chainFixedAt(chain, output), &error)) {
        writeCliError(error);
        return kCliExitFailed;
    }
    return kCliExitOk;
}

int CliRun::writeRunResults(const CliOptions& options, const BatchController& controller)
{
    const std::shared_ptr<const RunPlan> plan = controller.plan();
    if (!plan)
        return kCliExitFailed;
    int code = kCliExitOk;
    QString error;
    if (!options.contactSheet.isEmpty()) {
        if (saveContactSheet(options.contactSheet, contactTilesFor(*plan), &error)) {
            consoleLine(lcFiles(), QStringLiteral("contact sheet ") + options.contactSheet);
        } else {
            writeCliError(error);
            code = kCliExitFailed;
        }
    }
    if (!options.animation.isEmpty() && !m_interrupted.load()) {
        AnimationMaker maker;
        QEventLoop loop;
        bool made = false;
        connect(&maker, &AnimationMaker::finished, &loop, [&](bool ok, const QString& message) {
            made = ok;
            if (!message.isEmpty())
                writeCliError(message);
            loop.quit();
        });
        connect(this, &CliRun::abortRequested, &maker, &AnimationMaker::abort);
        const QList<AnimationClip> clips = animationClipsFor(*plan, options.animation);
        maker.start(clips, options.framesPerSecond);
        if (maker.isRunning())
            loop.exec();
        if (made) {
            for (const AnimationClip& clip : clips)
                consoleLine(lcFiles(),
                    QStringLiteral("animation %1 (%2 frames)").arg(clip.outputPath).arg(clip.frames.size()));
        } else {
            code = m_interrupted.load() ? kCliExitInterrupted : kCliExitFailed;
        }
    }
    return code;
}

} // namespace quillon
