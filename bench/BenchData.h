#pragma once

#include "run/RunSettings.h"
#include "library/Record.h"
#include "step/SilentStepParent.h"

#include <QString>
#include <QStringList>

namespace quillon::bench {

// Generated data, cached under the temporary folder between runs: each
// function writes its data once and returns the same path afterwards.

// The synthetic library: QUILLON_BENCH_LIBRARY definitions (10,000 unless
// set), nested folders, most 20-200 KB, one in 200 of 2-5 MB.
const QString& libraryDir();
// One definition of about `bytes` bytes with four presets.
QString definitionOfSize(qint64 bytes);
// A folder of `count` small input files (their content is never read).
QString inputsDir(int count);
// An empty output folder for `what`, emptied when it exists.
QString freshOutputDir(const QString& what);
// Removes the files of a folder (not the folder).
void emptyDir(const QString& dir);

// A chain record for the definition at `path`, as the add-filter sheet makes
// it, with `sweeping` parameters swept (every kind present, spread over the
// list) and the Variations row drawn at random.
RecordPtr chainRecordFor(const QString& path, int sweeping = 6);

// The settings of a run of `frames` frames with /bin/true as the tool.
RunSettings benchSettings(const QString& outputPath, int frames);

// The render tool that does nothing: takes its one argument and exits.
QString trueTool();

} // namespace quillon::bench
