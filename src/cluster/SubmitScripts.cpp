#include "cluster/SubmitScripts.h"

namespace quillon {

QString shellQuoted(const QString& text)
{
    QString quoted = text;
    quoted.replace(QLatin1Char('\''), QStringLiteral("'\\''"));
    return QLatin1Char('\'') + quoted + QLatin1Char('\'');
}

QByteArray submitScript(const ScriptValues& values)
{
    QStringList options;
    for (const QString& option : values.sbatchOptions)
        options.append(shellQuoted(option));
    const QString text = QStringLiteral(R"(#!/bin/sh
# Submits this Quillon bundle to Slurm: a job array with one element per
# input (part.sh), then a job that collects the parts once every element is
# over, whatever became of them (collect.sh). Prints the two job ids.
# sbatch gets the words of $QUILLON_SBATCH_OPTIONS (split at white space),
# then the options the bundle was written with (--slurm-option).
set -eu
bundle=%1
set -- %2
array=$(sbatch --parsable --job-name=quillon-part --array=0-%3 --chdir="$bundle" \
  --output="$bundle/logs/part-%a.out" ${QUILLON_SBATCH_OPTIONS:-} "$@" "$bundle/part.sh")
array=${array%%;*}
echo "job array $array"
collect=$(sbatch --parsable --job-name=quillon-collect --dependency="afterany:$array" --chdir="$bundle" \
  --output="$bundle/logs/collect.out" ${QUILLON_SBATCH_OPTIONS:-} "$@" "$bundle/collect.sh")
collect=${collect%%;*}
echo "collect job $collect"
)")
                             .arg(shellQuoted(values.bundle), options.join(QLatin1Char(' ')),
                                 QString::number(values.elements - 1));
    return text.toUtf8();
}

QByteArray partScript(const ScriptValues& values)
{
    return QStringLiteral(R"(#!/bin/sh
# One element of the job array: input $SLURM_ARRAY_TASK_ID through every step.
exec %1 --run-part %2 "${SLURM_ARRAY_TASK_ID:?not a job array element; run submit.sh}"
)")
        .arg(shellQuoted(values.cli), shellQuoted(values.bundle))
        .toUtf8();
}

QByteArray collectScript(const ScriptValues& values)
{
    return QStringLiteral(R"(#!/bin/sh
# After the job array: the run report, the leftovers of failed elements.
exec %1 --collect %2
)")
        .arg(shellQuoted(values.cli), shellQuoted(values.bundle))
        .toUtf8();
}

} // namespace quillon
