#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace quillon {

struct ScriptValues {
    QString bundle; // absolute
    QString cli; // absolute
    int elements = 1;
    QStringList sbatchOptions;
};

// "'text'" for a POSIX shell, single quotes inside escaped.
QString shellQuoted(const QString& text);

// submit.sh: one job array with an element per input (part.sh), then the
// collect job (collect.sh) once the array is over, whatever its outcome;
// prints both job ids. sbatch gets the words of $QUILLON_SBATCH_OPTIONS,
// then the bundle's options.
QByteArray submitScript(const ScriptValues& values);
// part.sh: quillon-cli --run-part BUNDLE $SLURM_ARRAY_TASK_ID.
QByteArray partScript(const ScriptValues& values);
// collect.sh: quillon-cli --collect BUNDLE.
QByteArray collectScript(const ScriptValues& values);

} // namespace quillon
