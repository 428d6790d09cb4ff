#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace quillon {

// What the collect made of a bundle's report parts.
struct CollectOutcome {
    qsizetype written = 0;
    qsizetype missing = 0;
    qsizetype notRun = 0;
    qsizetype failedToolRuns = 0;
    qsizetype unfinishedElements = 0; // not run, refused or aborted
    qint64 elapsedMs = 0; // from the first element's start to the last one's end
    QString outputPath;
    QStringList deleted; // leftovers of elements that did not end cleanly
    QStringList problems; // one line per element that did not end well
    QByteArray report; // the run report (docs/run-plan.md)

    // Every element ended, every planned output that was not skipped was
    // written and no tool run failed.
    bool complete() const { return missing == 0 && failedToolRuns == 0 && unfinishedElements == 0; }
    // "N written, M missing, K not run in 1:23 -> OUTPUT DIR"
    QString line() const;
};

// Merges the report parts of the bundle into the run report, removes what
// elements that were killed left in the output directory (only files they
// created, only while unchanged), and writes the report to report.json in
// the bundle (and to the --report file the bundle was written with). False
// with *error when the bundle cannot be read or the report not written.
bool collectClusterParts(const QString& bundleDirectory, CollectOutcome* outcome, QString* error);

} // namespace quillon
