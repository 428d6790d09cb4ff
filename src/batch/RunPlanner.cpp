#include "batch/RunPlanner.h"

#include "batch/InputListing.h"
#include "batch/PlanChecks.h"
#include "run/Termination.h"
#include "run/WineTool.h"
#include "step/FilterProcessObject.h"
#include "step/SilentStepParent.h"
#include "variations/ValueRule.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>

#include <memory>
#include <random>
#include <vector>

namespace quillon {

namespace {

// A copy of a filter record whose parameter records are copies too.
RecordPtr copyFilter(const RecordPtr& original)
{
    auto copy = std::make_shared<Record>(original ? *original : Record());
    if (const RecordListPtr components = copy->list(key::Components)) {
        auto parameters = std::make_shared<RecordList>();
        parameters->reserve(components->size());
        for (const RecordPtr& parameter : *components)
            parameters->push_back(parameter ? std::make_shared<Record>(*parameter) : parameter);
        copy->setList(key::Components, parameters);
    }
    return copy;
}

// Whether planning is to stop: the run's abort flag or a termination signal.
bool planningStopped(const std::atomic<bool>* abort)
{
    return (abort && abort->load()) || terminationRequested().load();
}

} // namespace

void applyMapChoice(Record& record, const RunSettings& settings, bool maps)
{
    if (maps) {
        QVariantList chosen;
        for (size_t kind = 0; kind < settings.mapBoxes.size(); ++kind) {
            if (settings.mapBoxes[kind] == 1)
                chosen.append(QVariant::fromValue<qint64>(static_cast<qint64>(kind)));
        }
        record.set(key::Maps, chosen);
    }
    record.setBoolean(key::UseMaps, maps);
}

QString inputBaseName(const QString& path)
{
    const QStringList pieces = QFileInfo(path).fileName().split(QLatin1Char('.'));
    return pieces.size() == 2 ? pieces.first() : QFileInfo(path).fileName();
}

RunPlan planRun(const RecordList& chain, const RunSettings& settings, const QStringList& inputs, quint64 seed,
    const std::atomic<bool>* abort)
{
    const auto stopped = [abort] { return planningStopped(abort); };
    RunPlan plan;
    plan.seed = seed;
    plan.steps = static_cast<int>(chain.size());
    SilentStepParent parent(settings);
    RunRandom random(seed);

    QHash<const Record*, RecordPtr> copies;
    const bool maps = settings.activateMaps == 1 && chain.size() == 1;
    QStringList baseNames;
    for (const QString& path : inputs)
        baseNames.append(inputBaseName(path));

    QStringList previousOutputs;
    QStringList laterNames;
    for (int i = 0; i < plan.steps && !stopped(); ++i) {
        const RecordPtr& original = chain[static_cast<size_t>(i)];
        RecordPtr& record = copies[original.get()];
        if (!record)
            record = copyFilter(original);
        applyMapChoice(*record, settings, maps);
        plan.stepParameters.append(parameterNames(*record));

        filterProcessObject step(record, i == 0 ? inputs : previousOutputs, {}, i == 0, i == plan.steps - 1,
            i, &parent, i == 0 ? baseNames : laterNames);
        step.outPath = settings.outputPath;
        step.randomDraw = random.drawFunction();
        step.recordsNames = i < plan.steps - 1;
        if (step.inFiles.isEmpty()) {
            plan.toolRuns.append(step.planToolRun(QString(), QString()));
        } else {
            for (qsizetype j = 0; j < step.inFiles.size() && !stopped(); ++j)
                plan.toolRuns.append(step.planToolRun(step.inFiles.at(j), step.originalFileNames.value(j)));
        }
        previousOutputs = step.outFiles;
        if (i == 0) {
            laterNames = step.realFileNames;
            if (settings.inputMode == InputMode::None)
                parent.settings.outputPrefix.clear();
        }
    }
    return plan;
}

RecordList copyChain(const RecordList& chain)
{
    QHash<const Record*, RecordPtr> copies;
    RecordList copy;
    copy.reserve(chain.size());
    for (const RecordPtr& original : chain) {
        RecordPtr& record = copies[original.get()];
        if (!record)
            record = original ? copyFilter(original) : original;
        copy.push_back(record);
    }
    return copy;
}

namespace {

QString absolutePath(const QString& path)
{
    return path.isEmpty() ? path : QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

// The output directory when it lies under the input directory, in the
// listing's form of the path; empty otherwise. Its outputs and Quillon's own
// state there are never inputs.
QString outputFolderUnder(const QString& inputDir, const QString& outputDir)
{
    const QString input = QFileInfo(inputDir).canonicalFilePath();
    const QString output = QFileInfo(outputDir).canonicalFilePath();
    if (input.isEmpty() || output.isEmpty() || !output.startsWith(input + QLatin1Char('/')))
        return {};
    return QDir::cleanPath(absolutePath(inputDir) + QLatin1Char('/') + QDir(input).relativeFilePath(output));
}

QString leftOutNote(const QStringList& leftOut)
{
    constexpr qsizetype kNamed = 5;
    QString names = leftOut.mid(0, kNamed).join(QStringLiteral(", "));
    if (leftOut.size() > kNamed)
        names += QStringLiteral(" and %1 more").arg(leftOut.size() - kNamed);
    return QStringLiteral("%1 entries of the input directory are not images and were left out: %2")
        .arg(leftOut.size())
        .arg(names);
}

} // namespace

StartPlan planStart(const PlanRequest& request)
{
    StartPlan start;
    start.settings = request.settings;
    RunSettings& settings = start.settings;
    start.refusal = settingsRefusal(request.chain, settings, request.outputWillBeMade);
    if (start.refusal.isEmpty())
        start.refusal = inputRefusal(settings);
    if (start.refusal.isEmpty())
        start.refusal = presetRefusal(request.chain, settings.presetIndex);
    if (!start.refusal.isEmpty())
        return start;
    const QString source = settings.sourcePath;
    settings.toolPath = absolutePath(settings.toolPath);
    settings.outputPath = absolutePath(settings.outputPath);
    settings.sourcePath = absolutePath(settings.sourcePath);
    if (!settings.seed)
        settings.seed = std::random_device()() | (quint64(std::random_device()()) << 32);

    if (settings.inputMode == InputMode::File && !source.isEmpty()) {
        start.inputs = QStringList { source };
    } else if (settings.inputMode == InputMode::Directory && !source.isEmpty()) {
        InputListing listing = listInputDirectory(source, outputFolderUnder(source, settings.outputPath));
        if (!listing.undecodable.isEmpty()) {
            constexpr qsizetype kNamed = 5;
            QString names = listing.undecodable.mid(0, kNamed).join(QStringLiteral(", "));
            if (listing.undecodable.size() > kNamed)
                names += QStringLiteral(" and %1 more").arg(listing.undecodable.size() - kNamed);
            start.refusal
                = QStringLiteral("Input names that are not valid UTF-8 cannot be given to the render tool: %1")
                      .arg(names);
            return start;
        }
        if (!listing.leftOut.isEmpty())
            start.notes.append(leftOutNote(listing.leftOut));
        start.inputs = std::move(listing.paths);
    }
    start.plan
        = std::make_shared<RunPlan>(planRun(request.chain, settings, start.inputs, *settings.seed, request.abort));
    if (planningStopped(request.abort)) {
        start.refusal = kPlanningAborted;
        return start;
    }
    start.refusal = WineTool::attachTo(*start.plan, settings);
    if (!start.refusal.isEmpty())
        return start;
    start.warning = outputInsideInputWarning(settings);
    checkStartPlan(start, request.abort);
    return start;
}

void checkStartPlan(StartPlan& start, const std::atomic<bool>* abort)
{
    OutputsNow now = outputsNow(*start.plan, start.settings.outputPath, [abort] { return planningStopped(abort); });
    if (now.stopped) {
        start.refusal = kPlanningAborted;
        return;
    }
    start.refusal = planRefusal(now);
    if (!start.refusal.isEmpty())
        return;
    start.existingFinals = std::move(now.existingFinals);
    // A final output not named here did not exist (its identity is invalid).
    start.finalsBefore = std::move(now.finalIdentities);
}

StartPlan planPart(const RunSettings& settings, const std::shared_ptr<RunPlan>& plan)
{
    StartPlan part;
    part.settings = settings;
    part.plan = plan;
    part.settings.seed = plan->seed;
    for (const PlannedToolRun& run : std::as_const(plan->toolRuns)) {
        if (run.step == 0 && !run.input.isEmpty())
            part.inputs.append(run.input);
    }
    checkStartPlan(part);
    return part;
}

void applyExistingPolicy(StartPlan& start, ExistingOutputs policy)
{
    if (start.existingFinals.isEmpty() || !start.refusal.isEmpty())
        return;
    switch (policy) {
    case ExistingOutputs::Cancel:
        start.refusal = QStringLiteral("%1 of the planned outputs exist already: %2")
                            .arg(start.existingFinals.size())
                            .arg(nameSome(start.existingFinals));
        break;
    case ExistingOutputs::Skip:
        start.plan->skipOutputs(start.existingFinals);
        break;
    case ExistingOutputs::Replace:
        break;
    }
}

} // namespace quillon
