#include "app/CliOptions.h"

#include "app/AnimationMaker.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QThread>

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

namespace quillon {

namespace {

const QStringList kMapNames = { QStringLiteral("base"), QStringLiteral("alpha"), QStringLiteral("diffuse"),
    QStringLiteral("bump"), QStringLiteral("normal"), QStringLiteral("specstr"), QStringLiteral("specexp"),
    QStringLiteral("ao"), QStringLiteral("ro"), QStringLiteral("metallic") };
const QStringList kFormats = { QStringLiteral("JPEG"), QStringLiteral("PNG"), QStringLiteral("TIFF"),
    QStringLiteral("TGA"), QStringLiteral("BMP"), QStringLiteral("EXR"), QStringLiteral("PFM") };

struct SwitchFlag {
    const char* name;
    int RunSettings::*field;
};

const SwitchFlag kSwitches[] = {
    { "antialias", &RunSettings::antiAlias },
    { "multithread", &RunSettings::multithread },
    { "dither", &RunSettings::dither },
    { "progressive", &RunSettings::progressive },
    { "normal-flip", &RunSettings::normalmapFlip },
    { "jpeg-full-precision", &RunSettings::jpegFullPrecision },
    { "png-transparency", &RunSettings::pngIncludeTrans },
    { "tiff-transparency", &RunSettings::tiffIncludeTrans },
    { "tiff-float", &RunSettings::tiffFloatFormat },
    { "tga-transparency", &RunSettings::tgaIncludeTrans },
    { "tga-flip", &RunSettings::tgaFlipOrder },
};

struct ChoiceFlag {
    const char* name;
    void (*store)(RunSettings&, int code);
    QStringList choices; // the index is the stored code
};

template <int RunSettings::*Field> void storeCode(RunSettings& settings, int code)
{
    settings.*Field = code;
}

void storeFrameStyle(RunSettings& settings, int code)
{
    settings.nameStyle = static_cast<FrameStyle>(code);
}

const ChoiceFlag kChoices[] = {
    { "frame-style", storeFrameStyle,
        { QStringLiteral("plain"), QStringLiteral("four-digit"), QStringLiteral("letter") } },
    { "png-bitdepth", storeCode<&RunSettings::pngBitDepth>, { QStringLiteral("8"), QStringLiteral("16") } },
    { "png-compression", storeCode<&RunSettings::pngCompression>,
        { QStringLiteral("none"), QStringLiteral("fast"), QStringLiteral("best") } },
    { "tiff-bitdepth", storeCode<&RunSettings::tiffBitDepth>,
        { QStringLiteral("8"), QStringLiteral("16"), QStringLiteral("24") } },
    { "tiff-compression", storeCode<&RunSettings::tiffCompression>,
        { QStringLiteral("none"), QStringLiteral("lzw"), QStringLiteral("deflate") } },
    { "tga-bitdepth", storeCode<&RunSettings::tgaBitDepth>, { QStringLiteral("24"), QStringLiteral("32") } },
};

std::optional<qint64> wholeNumber(const QString& text)
{
    bool ok = false;
    const qint64 value = text.trimmed().toLongLong(&ok);
    return ok ? std::optional<qint64>(value) : std::nullopt;
}

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
        spec("tool", "PATH", "The render tool executable; a name without a slash is looked up on PATH.",
            Value::Command),
        spec("wine", "PREFIX",
            "Run the render tool, a Windows program (.exe), under Wine: --wine alone in the user's prefix "
            "($WINEPREFIX, else ~/.wine), --wine=PREFIX in that one. The tool gets every path in its Windows "
            "form.",
            Value::Directory),
        spec("wine-binary", "PATH", "With --wine: the wine launcher (default: wine on PATH).", Value::Command),
        spec("output", "DIR", "The output directory (also holds the task files and the log).", Value::Directory),
        flagSpec("mkdir", "Create the output directory (and its parents) when it is missing."),
        spec("input", "FILE", "Render one input image.", Value::File),
        spec("input-dir", "DIR",
            "Render every entry under DIR, files and subdirectories, at any depth, sorted by path; entries whose "
            "path inside DIR begins with \".\" are skipped.",
            Value::Directory),
        spec("frames", "N", "Frames per input (default 10)."),
        spec("width", "W", "Width without input (default 600)."),
        spec("height", "H", "Height without input (default 600)."),
        spec("prefix", "TEXT", "Output name prefix (default my-export)."),
        spec("frame-style", "STYLE", "Frame numbering: plain (default), four-digit or letter.", Value::Choice,
            kChoices[0].choices),
        spec("format", "FORMAT", "JPEG, PNG, TIFF, TGA, BMP, EXR or PFM (default JPEG).", Value::Choice, kFormats),
        spec("preset", "K", "Zero-based preset index for every step (default 0)."),
        spec("maps", "LIST",
            "Render maps (one-filter chains): base,alpha,diffuse,bump,normal,specstr,specexp,ao,ro,metallic.",
            Value::Choice, kMapNames),
        flagSpec("log", "Write the tool's output to qlrn_logfile.txt in the output directory."),
        spec("seed", "N", "Seed of the run's random values."),
    };
    for (const SwitchFlag& entry : kSwitches)
        table.append(spec(entry.name, "on|off", "Switch.", Value::Choice,
            { QStringLiteral("on"), QStringLiteral("off") }));
    table.append(spec("jpeg-quality", "Q", "JPEG quality (default 80)."));
    for (const ChoiceFlag& entry : kChoices) {
        if (QLatin1String(entry.name) != QLatin1String("frame-style"))
            table.append(spec(entry.name, "VALUE", qPrintable(entry.choices.join(QLatin1Char('|'))),
                Value::Choice, entry.choices));
    }
    table += {
        spec("jobs", "N",
            "Render tool processes at once (default 1): the inputs of a step are spread over N slots; 0 uses one "
            "per core."),
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

    settings.toolPath = value("tool");
    if (isSet("wine-binary") && !isSet("wine"))
        return usageError(error, QStringLiteral("--wine-binary needs --wine"));
    if (isSet("wine")) {
        if (!result.slurmBundle.isEmpty())
            return usageError(error, QStringLiteral("--wine cannot be combined with --slurm-bundle"));
        settings.toolWine = 1;
        settings.winePrefix = value("wine");
        settings.wineBinary = value("wine-binary");
    }
    settings.outputPath = value("output");
    result.makeOutputDirectory = isSet("mkdir");
    if (isSet("input") && isSet("input-dir"))
        return usageError(error, QStringLiteral("--input and --input-dir cannot be combined"));
    if (isSet("input")) {
        settings.inputMode = InputMode::File;
        settings.sourcePath = value("input");
    } else if (isSet("input-dir")) {
        settings.inputMode = InputMode::Directory;
        settings.sourcePath = value("input-dir");
    } else {
        settings.inputMode = InputMode::None;
    }

    for (const char* name : { "frames", "width", "height", "jpeg-quality" }) {
        if (isSet(name) && !wholeNumber(value(name)))
            return usageError(error, QStringLiteral("--%1 needs a whole number").arg(QLatin1String(name)));
    }
    if (isSet("frames"))
        settings.frameCountText = value("frames").trimmed();
    if (isSet("width"))
        settings.widthText = value("width").trimmed();
    if (isSet("height"))
        settings.heightText = value("height").trimmed();
    if (isSet("jpeg-quality"))
        settings.jpegQualityText = value("jpeg-quality").trimmed();
    if (isSet("prefix"))
        settings.outputPrefix = value("prefix");
    if (isSet("jobs")) {
        const auto jobs = wholeNumber(value("jobs"));
        if (!jobs || *jobs < 0 || *jobs > 1024)
            return usageError(error, QStringLiteral("--jobs needs a number of processes from 0 to 1024"));
        settings.toolJobs = *jobs == 0 ? std::max(1, QThread::idealThreadCount()) : static_cast<int>(*jobs);
    }
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

    if (isSet("format")) {
        const QString format = value("format").toUpper();
        if (!kFormats.contains(format))
            return usageError(error, QStringLiteral("Unknown format: ") + value("format"));
        settings.format = format;
    }
    if (isSet("preset")) {
        const auto preset = wholeNumber(value("preset"));
        if (!preset || *preset < 0 || *preset > std::numeric_limits<int>::max())
            return usageError(error, QStringLiteral("--preset needs a preset index from 0"));
        settings.presetIndex = static_cast<int>(*preset);
        result.presetGiven = true;
    }
    if (isSet("maps")) {
        settings.activateMaps = 1;
        settings.mapBoxes.fill(0);
        for (const QString& name : value("maps").split(QLatin1Char(','), Qt::SkipEmptyParts)) {
            const qsizetype index = kMapNames.indexOf(name.trimmed().toLower());
            if (index < 0)
                return usageError(error, QStringLiteral("Unknown map kind: ") + name);
            settings.mapBoxes[static_cast<size_t>(index)] = 1;
        }
        if (std::find(settings.mapBoxes.cbegin(), settings.mapBoxes.cend(), 1) == settings.mapBoxes.cend())
            return usageError(error, QStringLiteral("--maps needs at least one map kind"));
    }
    if (isSet("log"))
        settings.toolLog = 1;
    if (isSet("seed")) {
        bool ok = false;
        const quint64 seed = value("seed").trimmed().toULongLong(&ok);
        if (!ok)
            return usageError(error, QStringLiteral("--seed needs a non-negative whole number"));
        settings.seed = seed;
    }
    for (const SwitchFlag& entry : kSwitches) {
        if (!isSet(entry.name))
            continue;
        const QString state = value(entry.name).toLower();
        if (state != QLatin1String("on") && state != QLatin1String("off"))
            return usageError(error, QStringLiteral("--%1 takes on or off").arg(QLatin1String(entry.name)));
        settings.*entry.field = state == QLatin1String("on") ? 1 : 0;
    }
    for (const ChoiceFlag& entry : kChoices) {
        if (!isSet(entry.name))
            continue;
        const qsizetype code = entry.choices.indexOf(value(entry.name).toLower());
        if (code < 0) {
            return usageError(error,
                QStringLiteral("--%1 takes %2")
                    .arg(QLatin1String(entry.name), entry.choices.join(QLatin1Char('|'))));
        }
        entry.store(settings, static_cast<int>(code));
    }

    if (options)
        *options = std::move(result);
    return CliParseResult::Run;
}

} // namespace quillon
