#pragma once

#include "library/Record.h"
#include "run/ToolLaunch.h"
#include "run/ToolRunOutcome.h"
#include "variations/ValueRule.h"

#include <QMutex>
#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

#include <pugixml.hpp>

namespace quillon {

class StepParent;
struct PlannedTask;
struct PlannedToolRun;
struct ParameterValue;
using ParameterValues = QList<ParameterValue>;
struct RunSettings;
class ToolRun;
class WineTool;

// One step of a batch run: one filter of the chain applied to all of the
// step's inputs. It writes the task files of each tool run (control file and
// run files), runs the render tool on them, follows the tool's output and
// hands the finished files to the controller for deletion.
//
// Created on the GUI thread by the launch queue, then used only on the run's
// worker thread, except abortAction(), which any thread may call.
class filterProcessObject final {
public:
    filterProcessObject(RecordPtr filterData, QStringList inFiles, QStringList outFiles, bool isFirst,
        bool isLast, qint64 chainid, StepParent* parent, QStringList filenames);
    ~filterProcessObject();
    filterProcessObject(const filterProcessObject&) = delete;
    filterProcessObject& operator=(const filterProcessObject&) = delete;

    // ---- Fields ----------------------------------------------------------
    RecordPtr filterData; // the chain entry's record itself, not a copy
    QStringList inFiles; // the step's inputs
    QStringList outFiles; // every output the tasks will write, in task order
    bool isFirst = false;
    bool isLast = false;
    StepParent* parent = nullptr; // not owned
    QString toolPath;
    QString outPath;
    QStringList filesToRemove; // task files of the current tool run
    QStringList unwrittenTaskFiles; // task files of the current tool run that could not be written
    // The run's plan for this step: its tool runs in plan order (one per
    // input, or one without input). The writers only ever write a planned
    // tool run.
    QList<const PlannedToolRun*> plannedRuns;
    qint64 chainid = 0;
    QStringList originalFileNames; // entry i names the outputs of input i
    QStringList realFileNames; // output names for the later steps
    // Whether planning records outFiles and realFileNames (a last step's
    // plan needs neither, and a million names cost memory).
    bool recordsNames = true;
    QString lastRunURL; // run file of the current frame's first map
    RandomDraw randomDraw; // the run's random source (0..999)

    // A tool run under Wine (shared by the run's steps); null for a native tool.
    const std::shared_ptr<WineTool>& wine() const { return m_wine; }
    void setWine(std::shared_ptr<WineTool> wine) { m_wine = std::move(wine); }
    // Whether writing a task leaves its values in the records (STARTVALUE);
    // steps that share records across threads leave that to their caller.
    bool advancesRecords() const { return m_advancesRecords; }
    void setAdvancesRecords(bool advances) { m_advancesRecords = advances; }

    // ---- Step runner (worker thread) ------------------------------------
    // Shows the filter, then makes the planned tool runs (runOnSources).
    void runSeries();
    void showSetupInfo();
    // The planned tool runs in order, each after reporting its source (the
    // input's name, or "<no source>"); none starts after an abort.
    void runOnSources();
    // One tool run: plannedRun's task files written, the tool run on them,
    // its files handed over.
    void runFilterOn(const QString& inputPath, const QString& outfile);
    ToolRunOutcome captureStandardOutputAndRouteToTextView(ToolRun& task);
    // Stops the step: the running tool is terminated, no further run starts.
    // Safe from any thread.
    void abortAction();

    void passOnFilterInfoWithData(const QStringList& nameAndAuthor);
    void passOnSourceInfoWithData(const QString& source);
    void passOnRenderInfoWithData(const QString& info);
    void taskIsDoneWithData(const QStringList& paths);

    // How the tool is started on a control file: the tool with the file's
    // path, or under Wine `wine TOOL WINPATH`.
    ToolLaunch toolLaunch(const QString& controlFile) const;
    // A path as the tool is given it: unchanged for a native tool, its
    // Windows form under Wine. Every path the task writers write goes
    // through here.
    QString pathForTool(const QString& path) const;

    // ---- Task writers (worker thread) -----------------------------------
    // Each writes controlfile.xml and the run files of one tool run into
    // outPath, replaces filesToRemove and returns the control file's path,
    // or an empty string on failure. The tool run written is plannedRun;
    // without one, the step plans it first (planToolRun).
    QString createBatchFileWithFilepath(const QString& filepath, const QString& out);
    QString createBatchFileNoFile();
    // Writes the task files of a planned tool run for `imagepath`.
    QString writeToolRunFiles(const PlannedToolRun& run, const QString& imagepath);
    // Ends a control file with GlobalSettings and writes it.
    QString writeControlFile(pugi::xml_document& document);
    // The tasks of one tool run, named and valued: the records advance,
    // outFiles and realFileNames grow. Nothing is written.
    PlannedToolRun planToolRun(const QString& filepath, const QString& out);
    // The tasks of one tool run in order (frames, and maps per frame), each
    // handed to `take` until it returns false. `withValues`: the value rule
    // runs now; otherwise when the task's run file is written.
    // Each task is appended to `run` (which gets the tool run's naming)
    // before `take` gets its position.
    void forEachTask(
        PlannedToolRun& run, const QString& out, bool withValues, const std::function<bool(qsizetype)>& take);
    // A task whose values are not known yet gets std::nullopt.
    void planOrdinaryTask(
        PlannedToolRun& run, qint64 index, const QString& outfile, const std::optional<ParameterValues>& values);
    void planMapTask(PlannedToolRun& run, qint64 index, const QString& outfile, qint64 mapindex, bool first,
        const std::optional<ParameterValues>& values);
    // Writes task `t` of `run` into the control file, and its run file.
    pugi::xml_node writePlannedTask(
        const PlannedToolRun& run, qsizetype t, const QString& imagepath, QString* error, pugi::xml_node tasks);
    // A tool run left out whole: its values still advance the records.
    void storePlannedValues(const PlannedToolRun& run);

    pugi::xml_node createGlobalSettings(pugi::xml_node parent) const;
    pugi::xml_node createRenderOptions(pugi::xml_node parent) const;
    pugi::xml_node createBitmapFormatOptions(pugi::xml_node parent) const;
    static QString stringFromCheckbox(int state);
    QString getSelectedFormatText() const;
    QString getSelectedFileExtension() const;

    // Append one Task to `tasks` and write its run file; on failure nothing
    // is appended, `error` is set and an empty node returned.
    pugi::xml_node createTaskSettingFor(
        qint64 index, const QString& imagepath, const QString& outfile, QString* error, pugi::xml_node tasks);
    pugi::xml_node createTaskSettingMapsWithIndex(qint64 index, const QString& imagepath,
        const QString& outfile, qint64 mapindex, bool first, QString* error, pugi::xml_node tasks);
    pugi::xml_node copyAndChangeRunFileWithIndex(qint64 index, qint64 mapindex, const QString& imagepath,
        const QString& outfile, QString* error, pugi::xml_node tasks);

    pugi::xml_node getPresetFromRootWithRoot(pugi::xml_node root) const;
    pugi::xml_node getPresetFromRootCopyWithRoot(pugi::xml_node root) const;
    static pugi::xml_node makeDefaultPresetFromPreset(pugi::xml_node preset);
    static void setPresetWithPreset(pugi::xml_node preset, pugi::xml_node root);

    QString getFileSuffixFor(qint64 index) const;
    static QString makeBaseNameFromPathWithPath(const QString& path);
    static QString getMapNameWithMapindex(qint64 mapindex);

    const RunSettings& settings() const;

private:
    std::shared_ptr<WineTool> m_wine;
    bool m_advancesRecords = true;
    // The current tool run: created, run and destroyed on the worker thread;
    // the mutex lets abortAction reach it from another thread.
    std::unique_ptr<ToolRun> toolTask;
    QMutex toolTaskMutex;
    QStringList runOutputs; // outputs the current tool run is to write
    const PlannedToolRun* plannedRun = nullptr; // the one of plannedRuns going now
    bool inputsHandedOver = false; // inFiles went to the deletion list
    std::atomic<bool> isAborted { false };
};

} // namespace quillon
