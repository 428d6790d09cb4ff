#pragma once

#include "batch/BatchDisplay.h"
#include "run/RunSettings.h"
#include "run/SettingTable.h"

#include <QString>
#include <QStringList>

namespace quillon {

// What the quillon-cli command line asks for: where the chain comes from,
// the run settings it builds, and what to do after the run.
struct CliOptions {
    QString chainFile; // --chain
    QStringList filterFiles; // --filter, in the order given
    QString saveChainFile; // --save-chain
    RunSettings settings; // factory defaults overridden by the flags
    bool presetGiven = false;
    bool dryRun = false; // --dry-run: print the plan, write and run nothing
    bool quiet = false; // --quiet: only problems and the closing count
    bool verbose = false; // --verbose: also the plan, line by line
    QString reportFile; // --report: the run report as JSON
    bool json = false; // --json: the dry run's plan as JSON
    // --existing overwrite|skip|stop: planned final outputs that exist.
    ExistingOutputs existing = ExistingOutputs::Replace;
    bool makeOutputDirectory = false; // --mkdir
    // Cluster runs (Slurm): write a bundle instead of running; render one
    // element of a bundle; merge a bundle's parts.
    QString slurmBundle; // --slurm-bundle DIR
    QStringList slurmOptions; // --slurm-option, in the order given
    QString runPartBundle; // --run-part DIR K
    int runPartElement = -1;
    QString collectBundle; // --collect DIR
    // Keeping one output: the chain that makes output N (from 1) of a run
    // report again, written to --save-chain; nothing is run.
    QString fromReport; // --from-report FILE
    int outputIndex = 0; // --output-index N
    // After a run: every final output as a labelled tile in one PNG, and
    // the final frames of each input as an animation made with ffmpeg.
    QString contactSheet; // --contact-sheet FILE.png
    QString animation; // --animation FILE.{gif,webm,mp4}
    int framesPerSecond = 24; // --fps
    QString completionShell; // --completions SHELL (build time)
};

enum class CliParseResult { Run, Help, Version, Completions, UsageError };

// One option of quillon-cli, as the parser, --help and the shell completions
// all read it. The options of run settings come from the setting table.
struct CliOptionSpec {
    using Value = FlagValue;
    QStringList names; // long names; a single letter is a short one
    QString valueName; // empty for a switch without value
    QString help;
    Value value = Value::None;
    // Choice: the values offered; File: the file name extension, if any.
    QStringList choices;
};
const QList<CliOptionSpec>& cliOptionTable();

// The completion script of quillon-cli for bash, zsh or fish; empty for
// another shell.
QString cliCompletionScript(const QString& shell);

// Parses the arguments (the first one is the program). Definitions may be
// given as repeated --filter flags or listed after one --filter. A missing
// tool, output or chain is not a usage error: the run's checks report it.
// No arguments at all is a usage error with an empty *error.
CliParseResult parseCliArguments(const QStringList& arguments, CliOptions* options, QString* error);

// Settles the paths the run's checks look at: a tool named without a slash
// is looked up on PATH, and with --mkdir a missing output directory is
// created. False with *error when the tool is not on PATH or the directory
// cannot be made.
// The arguments as the parser takes them: the definitions after one
// --filter each get their own, a bare --wine an empty prefix.
QStringList normalizeCliArguments(const QStringList& arguments);
bool resolveCliPaths(CliOptions* options, QString* error);

// "usage: quillon-cli ..." on one line, for standard error.
QString cliUsageLine();
// The full --help text, ending with the exit codes.
QString cliHelpText();

} // namespace quillon
