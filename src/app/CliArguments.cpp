// The command line's arguments before they are parsed, and its paths after.

#include "app/CliOptions.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace quillon {

namespace {

// Lists bare words after a --filter as further --filter values, keeping the
// order of all definitions.
QStringList expandFilterLists(const QStringList& arguments)
{
    QStringList expanded;
    bool inFilterList = false;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments.at(i);
        if (i == 0) {
            expanded.append(argument);
            continue;
        }
        if (argument == QLatin1String("--filter") || argument == QLatin1String("-filter")) {
            expanded.append(argument);
            if (i + 1 < arguments.size())
                expanded.append(arguments.at(++i));
            inFilterList = true;
        } else if (argument.startsWith(QLatin1String("--filter="))) {
            expanded.append(argument);
            inFilterList = true;
        } else if (argument.startsWith(QLatin1Char('-'))) {
            expanded.append(argument);
            inFilterList = false;
        } else if (inFilterList) {
            expanded.append(QStringLiteral("--filter"));
            expanded.append(argument);
        } else {
            expanded.append(argument);
        }
    }
    return expanded;
}

// --wine takes its prefix only as --wine=PREFIX: alone it stands for the
// user's prefix, so it is given an empty value here.
QStringList expandBareWine(const QStringList& arguments)
{
    QStringList expanded = arguments;
    for (qsizetype i = 1; i < expanded.size(); ++i) {
        if (expanded.at(i) == QLatin1String("--"))
            break;
        if (expanded.at(i) == QLatin1String("--wine") || expanded.at(i) == QLatin1String("-wine"))
            expanded[i] += QLatin1Char('=');
    }
    return expanded;
}

} // namespace

QStringList normalizeCliArguments(const QStringList& arguments)
{
    return expandBareWine(expandFilterLists(arguments));
}

bool resolveCliPaths(CliOptions* options, QString* error)
{
    RunSettings& settings = options->settings;
    const QString tool = settings.toolPath;
    if (!tool.isEmpty() && !tool.contains(QLatin1Char('/'))) {
        settings.toolPath = QStandardPaths::findExecutable(tool);
        if (settings.toolPath.isEmpty()) {
            if (error)
                *error = QStringLiteral("%1: render tool not found on PATH").arg(tool);
            return false;
        }
    }
    const QString output = settings.outputPath;
    // A dry run only plans: the check counts the directory as made.
    if (options->makeOutputDirectory && !options->dryRun && !output.isEmpty() && !QFileInfo(output).isDir()
        && !QDir().mkpath(output)) {
        if (error)
            *error = QStringLiteral("%1: cannot create the output directory").arg(output);
        return false;
    }
    return true;
}

} // namespace quillon
