#include "app/CliOptions.h"
#include "app/CliRun.h"
#include "chain/ChainFile.h"
#include "library/DefinitionReader.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <cstdio>

namespace quillon {

namespace {

// `--chain -`: standard input copied into a file, so it is read and checked
// like any chain file (size limit included).
QString copyStandardInput(const QTemporaryDir& directory, QString* error)
{
    QFile in;
    QFile copy(directory.filePath(QStringLiteral("standard-input.qlch")));
    if (!directory.isValid() || !in.open(stdin, QIODevice::ReadOnly) || !copy.open(QIODevice::WriteOnly)) {
        if (error)
            *error = QStringLiteral("Cannot read the chain from standard input");
        return {};
    }
    qint64 total = 0;
    char piece[64 * 1024];
    qint64 got = 0;
    while (total <= kMaxChainFileBytes && (got = in.read(piece, sizeof piece)) > 0) {
        total += got;
        if (copy.write(piece, got) != got)
            break;
    }
    if (got < 0 || copy.error() != QFileDevice::NoError) {
        if (error)
            *error = QStringLiteral("Cannot read the chain from standard input");
        return {};
    }
    return copy.fileName();
}

} // namespace

bool loadCliChain(const CliOptions& options, RecordList* chain, QString* error)
{
    RecordList loaded;
    if (!options.chainFile.isEmpty()) {
        QTemporaryDir copyDir;
        QString path = options.chainFile;
        if (path == QLatin1String("-")) {
            path = copyStandardInput(copyDir, error);
            if (path.isEmpty())
                return false;
        }
        ChainReadResult result = readChainFile(path);
        // The window's answer to an unknown parameter kind: the line on
        // standard output and a beep (the terminal bell on standard error).
        // The command line then refuses the shortened chain rather than
        // running part of it.
        if (result.status == ChainReadResult::UnknownCode) {
            reportUnknownChainCode();
            std::fputc('\a', stderr);
            std::fflush(stderr);
        }
        if (result.status != ChainReadResult::Ok) {
            if (error) {
                *error = QStringLiteral("Cannot read the chain file %1: %2")
                             .arg(options.chainFile,
                                 result.error.isEmpty() ? QStringLiteral("unknown parameter kind")
                                                        : result.error);
            }
            return false;
        }
        loaded = std::move(result.chain);
    }
    for (const QString& path : options.filterFiles) {
        // Like a library entry added to the chain: the library record with
        // its path, then the details read into it.
        const QString absolute = QFileInfo(path).absoluteFilePath();
        RecordPtr record = getFilterInfoWithPath(absolute);
        const QString problem = definitionProblem(absolute);
        if (!record || !record->contains(key::name) || !problem.isEmpty()) {
            if (error)
                *error = QStringLiteral("Not a usable filter definition: %1 (%2)")
                             .arg(path, problem.isEmpty() ? QStringLiteral("it has no name") : problem);
            return false;
        }
        record->setString(key::path, absolute);
        if (!loadXMLInfoWithFilterdata(record)) {
            if (error)
                *error = QStringLiteral("Cannot read the filter definition: ") + path;
            return false;
        }
        loaded.push_back(record);
    }
    if (chain)
        *chain = std::move(loaded);
    return true;
}

bool saveCliChain(const QString& path, const RecordList& chain, QString* error)
{
    return saveChainAndReport(path, chain, error);
}

} // namespace quillon
