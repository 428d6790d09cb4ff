// The task-file writers of filterProcessObject: the control file and the run
// files (ordinary and map tasks); the values they carry are in TaskValues.

#include "step/FilterProcessObject.h"

#include "run/RunPlan.h"
#include "run/RunSettings.h"
#include "run/SafeFile.h"
#include "step/StepParent.h"
#include "step/TaskValues.h"
#include "step/XmlFiles.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <optional>

namespace quillon {

namespace {

const char* const kControlFileName = "controlfile.xml";

QString joinPath(const QString& directory, const QString& name)
{
    if (directory.isEmpty())
        return name;
    if (directory.endsWith(QLatin1Char('/')))
        return directory + name;
    return directory + QLatin1Char('/') + name;
}

// The last child element of that name (a later duplicate wins).
pugi::xml_node lastChildNamed(pugi::xml_node parent, const char* name)
{
    pugi::xml_node found;
    for (pugi::xml_node child = parent.first_child(); child; child = child.next_sibling()) {
        if (child.type() == pugi::node_element && std::strcmp(child.name(), name) == 0)
            found = child;
    }
    return found;
}


QString runFilePath(const filterProcessObject& step, qint64 index)
{
    return joinPath(step.outPath, QStringLiteral("bth-run-%1.ffxml").arg(index));
}

// Task, Image, Selection: the start of every task.
pugi::xml_node beginTask(const filterProcessObject& step, pugi::xml_node tasks, const QString& imagepath)
{
    pugi::xml_node task = tasks.append_child("Task");
    pugi::xml_node image = task.append_child("Image");
    setAttribute(image, "value", step.pathForTool(imagepath));
    setAttribute(image, "width", step.settings().widthText);
    setAttribute(image, "height", step.settings().heightText);
    setAttribute(task.append_child("Selection"), "value", QString());
    return task;
}

// Result and Preset, after the output name has been recorded.
void appendResultAndPreset(const filterProcessObject& step, pugi::xml_node task, const QString& resultPath)
{
    setAttribute(task.append_child("Result"), "path", step.pathForTool(resultPath));
    appendOption(task, "Preset", QStringLiteral("0"));
}

// How one tool run names its outputs (see OutputNaming): the output
// prefix, the input's base name, the step for interim outputs.
OutputNaming outputNaming(const filterProcessObject& step, const QString& outfile, bool maps)
{
    const QString prefix = step.parent->outputPrefix();
    const QString base
        = outfile.isEmpty() ? QString() : filterProcessObject::makeBaseNameFromPathWithPath(outfile);
    OutputNaming naming;
    naming.extension = step.getSelectedFileExtension();
    naming.style = step.settings().nameStyle;
    QString name;
    if (maps)
        name = prefix + base;
    else if (outfile.isEmpty())
        name = QStringLiteral("NX_") + prefix;
    else if (!step.isLast)
        name = prefix + base + QLatin1Char('_') + QString::number(step.chainid);
    else
        name = prefix + base;
    naming.numbered = maps || outfile.isEmpty() || !step.isLast || step.isFirst;
    naming.head = joinPath(step.outPath, name);
    return naming;
}

// Records task `t`'s output in outFiles and, where the next steps need it,
// its name in realFileNames.
void recordOutputName(filterProcessObject& step, const PlannedToolRun& run, qsizetype t, const QString& outfile)
{
    step.outFiles.append(run.resultPath(t));
    const PlannedTask& task = run.tasks.at(t);
    const QString prefix = step.parent->outputPrefix();
    const QString suffix = frameSuffix(run.naming.style, task.index);
    const QString& ext = run.naming.extension;
    const QString base
        = outfile.isEmpty() ? QString() : filterProcessObject::makeBaseNameFromPathWithPath(outfile);
    if (task.map >= 0)
        step.realFileNames.append(prefix + base + suffix + mapSuffix(task.map) + ext);
    else if (outfile.isEmpty() || step.isFirst)
        step.realFileNames.append(prefix + base + suffix + ext);
}

void reportUnusableDefinition(const QString& path, const QString& reason)
{
    printConsoleLine(QStringLiteral("Could not use filter definition %1: %2").arg(path, reason));
}

// Why the preset at `index` of the document cannot be taken, or an empty
// string when it can.
QString presetProblem(pugi::xml_node root, qint64 index)
{
    const pugi::xml_node presets = root.child("Presets");
    if (!presets)
        return QStringLiteral("it has no Presets element");
    if (!elementChildAt(presets, index))
        return QStringLiteral("it has no preset at index %1").arg(index);
    return {};
}

// Writes one task file for the tool, reported to the controller before and
// after.
bool writeTaskFile(filterProcessObject& step, const QString& path, const QByteArray& bytes)
{
    if (step.parent)
        step.parent->willWriteFiles({ path });
    FileIdentity written;
    if (!writeFileAtomically(path, bytes, nullptr, &written)) {
        step.unwrittenTaskFiles.append(path);
        return false;
    }
    if (step.parent)
        step.parent->didCreateFile(path, written);
    return true;
}

// Room for a re-serialised file: its source and some more indentation.
qsizetype expectedOutputSize(const QByteArray& source)
{
    return source.size() + source.size() / 4 + 4096;
}

// Serialises `document` to the run file of task `index`, records it and
// appends the task's Filter element.
bool writeRunFile(filterProcessObject& step, pugi::xml_document& document, qint64 index, pugi::xml_node task,
    qsizetype expectedSize, QString* error)
{
    const QString path = runFilePath(step, index);
    step.filesToRemove.append(path);
    appendOption(task, "Filter", step.pathForTool(path));
    if (!writeTaskFile(step, path, serializeXml(document, expectedSize))) {
        printConsoleLine(QStringLiteral("HILFE!! - Could not create runfile."));
        if (error)
            *error = QStringLiteral("-1");
        return false;
    }
    return true;
}

// The run file of a frame's first (or only) task: the definition with the
// chosen preset and this task's values; map tasks also set map_type.
bool writeDefinitionRunFile(filterProcessObject& step, qint64 index, std::optional<qint64> mapindex,
    const ParameterValues* values, pugi::xml_node task, QString* error)
{
    if (!step.filterData) {
        if (error)
            *error = QStringLiteral("the step has no filter record");
        return false;
    }
    const QString definition = step.filterData->string(key::path);
    // Parsed in place: `source` holds the tree's text and outlives it.
    QByteArray source;
    pugi::xml_document document;
    if (!loadXmlFile(document, definition, error, &source))
        return false;
    const pugi::xml_node root = document.document_element();
    const QString problem = presetProblem(root, step.settings().presetIndex);
    if (!problem.isEmpty()) {
        reportUnusableDefinition(definition, problem);
        if (error)
            *error = problem;
        return false;
    }
    const pugi::xml_node preset = step.getPresetFromRootWithRoot(root);
    const pugi::xml_node settingsNode = lastChildNamed(preset, "Settings");
    const pugi::xml_node controls = lastChildNamed(preset, "Controls");
    if (!settingsNode || !controls) {
        const QString reason
            = QStringLiteral("its preset %1 has no %2 element")
                  .arg(step.settings().presetIndex)
                  .arg(settingsNode ? QStringLiteral("Controls") : QStringLiteral("Settings"));
        reportUnusableDefinition(definition, reason);
        if (error)
            *error = reason;
        return false;
    }
    if (mapindex)
        rewriteAttribute(settingsNode, "map_type", QString::number(*mapindex));
    applyParameters(step, values ? *values : advanceParameters(step), settingsNode, controls);
    filterProcessObject::setPresetWithPreset(preset, root);
    return writeRunFile(step, document, index, task, expectedOutputSize(source), error);
}

} // namespace

// ---- Control file ---------------------------------------------------------

PlannedToolRun filterProcessObject::planToolRun(const QString& filepath, const QString& out)
{
    PlannedToolRun run;
    run.step = static_cast<int>(chainid);
    run.input = filepath;
    run.baseName = out;
    forEachTask(run, out, true, [](qsizetype) { return true; });
    run.tasks.squeeze();
    run.valueCells.squeeze();
    return run;
}

void filterProcessObject::forEachTask(
    PlannedToolRun& run, const QString& out, bool withValues, const std::function<bool(qsizetype)>& take)
{
    const qint64 count = isFirst ? std::max<qint64>(settings().frameCount(), 0) : 1;
    const bool useMaps = isFirst && filterData && filterData->boolean(key::UseMaps);
    const QList<qint64> maps = useMaps ? filterData->integers(key::Maps) : QList<qint64>();
    // With maps on and none chosen there is no task at all, whatever the count.
    const qint64 frames = useMaps && maps.isEmpty() ? 0 : count;
    run.naming = outputNaming(*this, out, useMaps);
    run.tasks.reserve(frames * std::max<qsizetype>(maps.size(), 1));
    std::optional<TaskValueSource> source;
    if (withValues && frames > 0)
        source.emplace(*this);
    const auto valuesOf = [&source](bool carries) {
        return source && carries ? std::optional<ParameterValues>(source->next()) : std::nullopt;
    };
    qint64 k = 0;
    for (qint64 f = 0; f < frames; ++f) {
        if (!useMaps) {
            planOrdinaryTask(run, f, out, valuesOf(true));
            if (!take(run.tasks.size() - 1))
                return;
            continue;
        }
        for (qsizetype m = 0; m < maps.size(); ++m, ++k) {
            planMapTask(run, k, out, maps[m], m == 0, valuesOf(m == 0));
            if (!take(run.tasks.size() - 1))
                return;
        }
    }
}

void filterProcessObject::planOrdinaryTask(
    PlannedToolRun& run, qint64 index, const QString& outfile, const std::optional<ParameterValues>& values)
{
    PlannedTask task;
    task.index = index;
    task.valuesKnown = values.has_value();
    run.appendTask(task, values.value_or(ParameterValues()));
    if (recordsNames)
        recordOutputName(*this, run, run.tasks.size() - 1, outfile);
}

void filterProcessObject::planMapTask(PlannedToolRun& run, qint64 index, const QString& outfile, qint64 mapindex,
    bool first, const std::optional<ParameterValues>& values)
{
    PlannedTask task;
    task.index = index;
    task.map = static_cast<qint32>(mapindex);
    task.carriesValues = first;
    task.valuesKnown = first && values.has_value();
    run.appendTask(task, task.valuesKnown ? *values : ParameterValues());
    if (recordsNames)
        recordOutputName(*this, run, run.tasks.size() - 1, outfile);
}

QString filterProcessObject::createBatchFileWithFilepath(const QString& filepath, const QString& out)
{
    if (plannedRun)
        return writeToolRunFiles(*plannedRun, filepath);
    // A step without a run plan names each task as it writes it; its values
    // come when its run file is written, so a task that fails ends the file
    // with the values where they were.
    pugi::xml_document document;
    pugi::xml_node tasks = document.append_child("Tasks");
    filesToRemove = QStringList();
    QString error;
    bool written = true;
    PlannedToolRun run;
    forEachTask(run, out, false, [&](qsizetype t) {
        written = !writePlannedTask(run, t, filepath, &error, tasks).empty();
        return written;
    });
    return written ? writeControlFile(document) : QString();
}

QString filterProcessObject::writeToolRunFiles(const PlannedToolRun& run, const QString& imagepath)
{
    pugi::xml_document document;
    pugi::xml_node tasks = document.append_child("Tasks");
    filesToRemove = QStringList();
    QString error;
    for (qsizetype t = 0; t < run.tasks.size(); ++t) {
        if (run.tasks.at(t).skipped) {
            storeStartValues(*this, run.values(t));
            continue;
        }
        if (writePlannedTask(run, t, imagepath, &error, tasks).empty())
            return {};
    }
    return writeControlFile(document);
}

QString filterProcessObject::writeControlFile(pugi::xml_document& document)
{
    createGlobalSettings(document.document_element());
    const QString target = joinPath(outPath, QString::fromLatin1(kControlFileName));
    filesToRemove.append(target);
    if (!writeTaskFile(*this, target, serializeXml(document))) {
        printConsoleLine(QStringLiteral("HILFE!! - Could not create controlfile"));
        return {};
    }
    return target;
}

void filterProcessObject::storePlannedValues(const PlannedToolRun& run)
{
    for (qsizetype t = 0; t < run.tasks.size(); ++t)
        storeStartValues(*this, run.values(t));
}

QString filterProcessObject::createBatchFileNoFile()
{
    return createBatchFileWithFilepath(QString(), QString());
}

// ---- Run files --------------------------------------------------------------

pugi::xml_node filterProcessObject::createTaskSettingFor(
    qint64 index, const QString& imagepath, const QString& outfile, QString* error, pugi::xml_node tasks)
{
    PlannedToolRun run;
    run.naming = outputNaming(*this, outfile, false);
    planOrdinaryTask(run, index, outfile, std::nullopt);
    return writePlannedTask(run, 0, imagepath, error, tasks);
}

pugi::xml_node filterProcessObject::createTaskSettingMapsWithIndex(qint64 index, const QString& imagepath,
    const QString& outfile, qint64 mapindex, bool first, QString* error, pugi::xml_node tasks)
{
    PlannedToolRun run;
    run.naming = outputNaming(*this, outfile, true);
    planMapTask(run, index, outfile, mapindex, first, std::nullopt);
    return writePlannedTask(run, 0, imagepath, error, tasks);
}

pugi::xml_node filterProcessObject::copyAndChangeRunFileWithIndex(qint64 index, qint64 mapindex,
    const QString& imagepath, const QString& outfile, QString* error, pugi::xml_node tasks)
{
    PlannedToolRun run;
    run.naming = outputNaming(*this, outfile, true);
    planMapTask(run, index, outfile, mapindex, false, std::nullopt);
    return writePlannedTask(run, 0, imagepath, error, tasks);
}

pugi::xml_node filterProcessObject::writePlannedTask(
    const PlannedToolRun& run, qsizetype t, const QString& imagepath, QString* error, pugi::xml_node tasks)
{
    const PlannedTask& planned = run.tasks.at(t);
    const qint64 index = planned.index;
    pugi::xml_node task = beginTask(*this, tasks, imagepath);
    appendResultAndPreset(*this, task, run.resultPath(t));
    if (planned.carriesValues) {
        const ParameterValues values = planned.valuesKnown ? run.values(t) : ParameterValues();
        if (!writeDefinitionRunFile(*this, index, planned.mapKind(), planned.valuesKnown ? &values : nullptr, task, error)) {
            tasks.remove_child(task);
            return {};
        }
        if (planned.mapKind())
            lastRunURL = runFilePath(*this, index);
        return task;
    }
    const qint64 mapindex = planned.mapKind().value_or(0);

    const auto fail = [&] {
        tasks.remove_child(task);
        return pugi::xml_node();
    };
    QByteArray source;
    pugi::xml_document document;
    if (!loadXmlFile(document, lastRunURL, error, &source))
        return fail();
    const pugi::xml_node root = document.document_element();
    const pugi::xml_node preset = getPresetFromRootCopyWithRoot(root);
    const pugi::xml_node settingsNode = lastChildNamed(preset, "Settings");
    if (!settingsNode) {
        const QString reason = preset ? QStringLiteral("its preset has no Settings element")
                                      : QStringLiteral("it has no preset");
        reportUnusableDefinition(lastRunURL, reason);
        if (error)
            *error = reason;
        return fail();
    }
    rewriteAttribute(settingsNode, "map_type", QString::number(mapindex));
    setPresetWithPreset(preset, root);
    if (!writeRunFile(*this, document, index, task, expectedOutputSize(source), error))
        return fail();
    return task;
}

} // namespace quillon
