#include "app/CliOptions.h"
#include "app/CliRun.h"
#include "chain/ChainFile.h"
#include "library/DefinitionReader.h"

#include <QFileInfo>

#include <cstdio>

namespace quillon {

bool loadCliChain(const CliOptions& options, RecordList* chain, QString* error)
{
    RecordList loaded;
    if (!options.chainFile.isEmpty()) {
        ChainReadResult result = readChainFile(options.chainFile);
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
