#include "app/CliOptions.h"

#include "app/AnimationMaker.h"

#include <QCommandLineOption>
#include <QCommandLineParser>

#include <utility>

namespace quillon {

namespace {

CliOptionSpec spec(const char* name, const char* valueName, const char* help,
    CliOptionSpec::Value value = CliOptionSpec::Value::Text, QStringList choices = {})
{
    return { { QString::fromLatin1(name) }, QString::fromLatin1(valueName), QString::fromLatin1(help), value,
        std::move(choices) };
}

CliOptionSpec flagSpec(const char* name, const char* help)
{
    return spec(name, "", help, CliOptionSpec::Value::None);
}

QList<CliOptionSpec> makeOptionTable()
{
    using Value = CliOptionSpec::Value;
    QList<CliOptionSpec> table {
        spec("chain", "FILE", "Run the chain file FILE (.qlch); - reads it from standard input.", Value::File,
            { QStringLiteral("qlch") }),
        spec("filter", "DEFINITION", "Run these filter definitions (.ffxml), in the order given.", Value::File,
            { QStringLiteral("ffxml") }),
    };
    for (const SettingDefinition& row : settingTable()) {
        if (row.flag.isEmpty())
            continue;
        table.append({ { row.flag }, row.flagValueName, row.flagHelp, row.flagValue, row.choices });
        // Said where the output directory is.
        if (row.flag == QLatin1String("output"))
            table.append(flagSpec("mkdir", "Create the output directory (and its parents) when it is missing."));
    }
    table += {
        flagSpec("quiet", "Print only problems and the closing count of outputs."),
        flagSpec("verbose", "Also print the plan of the run, one line per output."),
        spec("report", "FILE",
            "Write the run report (every output with its status and values) as JSON; - writes it to standard "
            "output.",
            Value::File),
        flagSpec("dry-run", "Print the plan (every output and its values) and stop: nothing is written or run."),
        flagSpec("json", "With --dry-run: print the plan as JSON."),
        spec("existing", "POLICY",
            "Planned outputs that exist already: overwrite (default, counted at the end), skip their tasks, or "
            "stop before the run.",
            Value::Choice, { QStringLiteral("overwrite"), QStringLiteral("skip"), QStringLiteral("stop") }),
        spec("save-chain", "FILE", "Write the chain (with its advanced values) to FILE after the run.", Value::File,
            { QStringLiteral("qlch") }),
        spec("slurm-bundle", "DIR",
            "Plan the run (same flags and checks) and write it to the new or empty directory DIR as a bundle for "
            "Slurm, without running anything: the plan, the chain, the settings and submit.sh, which submits "
            "a job array with one element per input and a job that collects them.",
            Value::Directory),
        spec("slurm-option", "OPTION",
            "With --slurm-bundle: an option submit.sh passes to both sbatch calls, after the words of "
            "$QUILLON_SBATCH_OPTIONS (repeatable)."),
        spec("run-part", "DIR",
            "--run-part DIR K: render element K of the bundle DIR (its input through every step) and write its "
            "report part into the bundle.",
            Value::Directory),
        spec("collect", "DIR",
            "Merge the report parts of the bundle DIR into its run report (DIR/report.json), remove what failed "
            "elements left, and exit like a run.",
            Value::Directory),
        spec("from-report", "FILE",
            "With --output-index N and --save-chain: write the chain that makes output N of the run report FILE "
            "again (each parameter that varied held at that output's value), without running anything; the "
            "chain is --chain or --filter, or else the definitions the report names.",
            Value::File),
        spec("output-index", "N", "With --from-report: the final output, counted from 1 in plan order."),
        spec("contact-sheet", "FILE",
            "After the run, write every final output as a tile labelled with its name and varying values into "
            "one PNG image.",
            Value::File),
        spec("animation", "FILE",
            "After the run, assemble each input's final frames in frame order into FILE (.gif, .webm or .mp4) "
            "with ffmpeg; with several inputs one file each, named FILE-INPUT.",
            Value::File),
        spec("fps", "N", "With --animation: frames per second (default 24)."),
        { { QStringLiteral("h"), QStringLiteral("help") }, {}, QStringLiteral("Show this help."), Value::None, {} },
        { { QStringLiteral("v"), QStringLiteral("V"), QStringLiteral("version") }, {},
            QStringLiteral("Show the version."), Value::None, {} },
    };
    return table;
}

void addOptions(QCommandLineParser& parser)
{
    for (const CliOptionSpec& option : cliOptionTable())
        parser.addOption(QCommandLineOption(option.names, option.help, option.valueName));
    // Writes the shell completions at build time; not for users.
    QCommandLineOption completions(
        QStringLiteral("completions"), QStringLiteral("Print the completions for SHELL."), QStringLiteral("SHELL"));
    completions.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOption(completions);
}

QString synopsis()
{
    return QStringLiteral("quillon-cli (--chain FILE | --filter DEFINITION...) --tool PATH --output DIR "
                          "[--input FILE | --input-dir DIR] [options]");
}

// A flag that would have no effect next to (or without) another one is
// refused rather than dropped: the message names both.
QString ignoredCombination(const QCommandLineParser& parser)
{
    struct Rule {
        const char* flag;
        const char* other;
        bool needsOther; // true: flag needs other; false: flag cannot go with other
    };
    static const Rule kRules[] = {
        { "json", "dry-run", true },
        { "report", "dry-run", false },
        { "save-chain", "dry-run", false },
        { "slurm-option", "slurm-bundle", true },
        { "fps", "animation", true },
    };
    // An element of a bundle or its collect reads everything from the bundle.
    for (const char* mode : { "run-part", "collect" }) {
        if (!parser.isSet(QString::fromLatin1(mode)))
            continue;
        for (const CliOptionSpec& option : cliOptionTable()) {
            const QString name = option.names.last();
            if (parser.isSet(name) && name != QLatin1String(mode) && name != QLatin1String("quiet")
                && name != QLatin1String("verbose"))
                return QStringLiteral("--%1 cannot be combined with --%2").arg(name, QLatin1String(mode));
        }
    }
    for (const Rule& rule : kRules) {
        const QString flag = QString::fromLatin1(rule.flag);
        const QString other = QString::fromLatin1(rule.other);
        if (!parser.isSet(flag) || parser.isSet(other) == rule.needsOther)
            continue;
        return rule.needsOther ? QStringLiteral("--%1 needs --%2").arg(flag, other)
                               : QStringLiteral("--%1 cannot be combined with --%2").arg(flag, other);
    }
    return {};
}

CliParseResult usageError(QString* error, const QString& message)
{
    if (error)
        *error = message;
    return CliParseResult::UsageError;
}

} // namespace

const QList<CliOptionSpec>& cliOptionTable()
{
    static const QList<CliOptionSpec> table = makeOptionTable();
    return table;
}

QString cliUsageLine()
{
    return QStringLiteral("usage: ") + synopsis() + QStringLiteral("; see --help");
}

QString cliHelpText()
{
    QCommandLineParser parser;
    addOptions(parser);
    parser.setApplicationDescription(
        QStringLiteral("Renders a filter chain in a batch through a render tool."));
    return QStringLiteral("Usage: ") + synopsis()
        + QStringLiteral("\n       quillon-cli ... --slurm-bundle DIR [--slurm-option OPTION...]"
                         "\n       quillon-cli --run-part DIR K"
                         "\n       quillon-cli --collect DIR"
                         "\n       quillon-cli --from-report FILE --output-index N --save-chain FILE\n")
        + parser.helpText().section(QLatin1Char('\n'), 1)
        + QStringLiteral("\nExit status:\n"
                         "  0    every planned output was written\n"
                         "  2    refused: a bad or conflicting flag, an unreadable chain or a failed check\n"
                         "  3    the run ended with missing outputs or a failed tool run\n"
                         "  130  aborted by a termination signal (SIGINT, SIGTERM, SIGHUP, SIGQUIT); the run cleaned up");
}

CliParseResult parseCliArguments(const QStringList& arguments, CliOptions* options, QString* error)
{
    if (arguments.size() <= 1)
        return usageError(error, QString());
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    addOptions(parser);
    if (!parser.parse(normalizeCliArguments(arguments)))
        return usageError(error, parser.errorText());
    if (parser.isSet(QStringLiteral("help")))
        return CliParseResult::Help;
    if (parser.isSet(QStringLiteral("version")))
        return CliParseResult::Version;
    if (parser.isSet(QStringLiteral("completions"))) {
        if (options)
            options->completionShell = parser.value(QStringLiteral("completions"));
        return CliParseResult::Completions;
    }
    QStringList positional = parser.positionalArguments();
    CliOptions result;
    if (parser.isSet(QStringLiteral("run-part"))) {
        bool ok = false;
        result.runPartElement = positional.isEmpty() ? -1 : positional.takeFirst().toInt(&ok);
        if (!ok || result.runPartElement < 0)
            return usageError(
                error, QStringLiteral("--run-part needs a bundle directory and an element number"));
        result.runPartBundle = parser.value(QStringLiteral("run-part"));
    }
    if (!positional.isEmpty())
        return usageError(error, QStringLiteral("Unexpected argument: ") + positional.first());
    const int clusterModes = (parser.isSet(QStringLiteral("slurm-bundle")) ? 1 : 0)
        + (parser.isSet(QStringLiteral("run-part")) ? 1 : 0)
        + (parser.isSet(QStringLiteral("collect")) ? 1 : 0)
        + (parser.isSet(QStringLiteral("dry-run")) ? 1 : 0);
    if (clusterModes > 1)
        return usageError(
            error, QStringLiteral("--slurm-bundle, --run-part, --collect and --dry-run cannot be combined"));
    result.slurmBundle = parser.value(QStringLiteral("slurm-bundle"));
    result.slurmOptions = parser.values(QStringLiteral("slurm-option"));
    result.collectBundle = parser.value(QStringLiteral("collect"));
    if (!result.slurmBundle.isEmpty() && parser.isSet(QStringLiteral("save-chain")))
        return usageError(error, QStringLiteral("--save-chain cannot be combined with --slurm-bundle"));
    if (const QString conflict = ignoredCombination(parser); !conflict.isEmpty())
        return usageError(error, conflict);
    if (parser.isSet(QStringLiteral("from-report"))) {
        bool ok = false;
        result.fromReport = parser.value(QStringLiteral("from-report"));
        result.outputIndex = parser.value(QStringLiteral("output-index")).toInt(&ok);
        if (!ok || result.outputIndex < 1)
            return usageError(error, QStringLiteral("--from-report needs --output-index N, counted from 1"));
        if (!parser.isSet(QStringLiteral("save-chain")))
            return usageError(error, QStringLiteral("--from-report needs --save-chain FILE"));
        if (clusterModes > 0)
            return usageError(error,
                QStringLiteral(
                    "--from-report cannot be combined with --slurm-bundle, --run-part, --collect or "
                    "--dry-run"));
    } else if (parser.isSet(QStringLiteral("output-index"))) {
        return usageError(error, QStringLiteral("--output-index needs --from-report"));
    }

    result.contactSheet = parser.value(QStringLiteral("contact-sheet"));
    result.animation = parser.value(QStringLiteral("animation"));
    if (!result.animation.isEmpty() && !AnimationMaker::isAnimationName(result.animation))
        return usageError(error, QStringLiteral("--animation needs a name ending in .gif, .webm or .mp4"));
    if (parser.isSet(QStringLiteral("fps"))) {
        bool ok = false;
        result.framesPerSecond = parser.value(QStringLiteral("fps")).toInt(&ok);
        if (!ok || result.framesPerSecond < 1 || result.framesPerSecond > 240)
            return usageError(
                error, QStringLiteral("--fps needs a number of frames per second from 1 to 240"));
    }
    if ((!result.contactSheet.isEmpty() || !result.animation.isEmpty()) && clusterModes > 0)
        return usageError(error,
            QStringLiteral("--contact-sheet and --animation follow a run: they cannot be combined with "
                           "--slurm-bundle, --run-part, --collect or --dry-run"));

    // The collect job of a bundle has no standard output anyone reads.
    if (!result.slurmBundle.isEmpty() && parser.value(QStringLiteral("report")) == QLatin1String("-"))
        return usageError(error, QStringLiteral("--report - cannot be combined with --slurm-bundle"));

    RunSettings& settings = result.settings;
    const auto value = [&parser](const char* name) { return parser.value(QString::fromLatin1(name)); };
    const auto isSet = [&parser](const char* name) { return parser.isSet(QString::fromLatin1(name)); };

    result.chainFile = value("chain");
    result.filterFiles = parser.values(QStringLiteral("filter"));
    if (isSet("chain") && isSet("filter"))
        return usageError(error, QStringLiteral("--chain and --filter cannot be combined"));
    result.saveChainFile = value("save-chain");

    if (isSet("wine-binary") && !isSet("wine"))
        return usageError(error, QStringLiteral("--wine-binary needs --wine"));
    if (isSet("wine") && !result.slurmBundle.isEmpty())
        return usageError(error, QStringLiteral("--wine cannot be combined with --slurm-bundle"));
    result.makeOutputDirectory = isSet("mkdir");
    if (isSet("input") && isSet("input-dir"))
        return usageError(error, QStringLiteral("--input and --input-dir cannot be combined"));
    // Without --input or --input-dir the run renders at a size.
    settings.inputMode = InputMode::None;
    for (const SettingDefinition& row : settingTable()) {
        if (row.flag.isEmpty() || !parser.isSet(row.flag))
            continue;
        QString message;
        if (!row.applyFlag(settings, parser.value(row.flag), &message))
            return usageError(error, message);
    }
    result.presetGiven = isSet("preset");
    result.dryRun = isSet("dry-run");
    result.quiet = isSet("quiet");
    result.verbose = isSet("verbose");
    result.reportFile = value("report");
    if (result.quiet && result.verbose)
        return usageError(error, QStringLiteral("--quiet and --verbose cannot be combined"));
    result.json = isSet("json");
    if (isSet("existing")) {
        const QString policy = value("existing").toLower();
        if (policy == QLatin1String("skip"))
            result.existing = ExistingOutputs::Skip;
        else if (policy == QLatin1String("stop"))
            result.existing = ExistingOutputs::Cancel;
        else if (policy != QLatin1String("overwrite"))
            return usageError(error, QStringLiteral("--existing takes overwrite, skip or stop"));
    }

    if (options)
        *options = std::move(result);
    return CliParseResult::Run;
}

} // namespace quillon
