#pragma once

#include "batch/BatchDisplay.h"
#include "run/RunSettings.h"

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
};

enum class CliParseResult { Run, Help, Version, UsageError };

// Parses the arguments (the first one is the program). Definitions may be
// given as repeated --filter flags or listed after one --filter. A missing
// tool, output or chain is not a usage error: the run's checks report it.
CliParseResult parseCliArguments(const QStringList& arguments, CliOptions* options, QString* error);

// "Usage: quillon-cli ..." on one line.
QString cliUsageLine();
// The full --help text.
QString cliHelpText();

} // namespace quillon
