// The library reader on arbitrary bytes: it must return a record (empty when
// the bytes are not a definition) and never crash, hang or leak.

#include "FuzzFiles.h"

#include "library/DefinitionReader.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace quillon;
    const QString path = fuzz::writeScratchFile(QStringLiteral("library.ffxml"), data, size);
    const RecordPtr info = getFilterInfoWithPath(path);
    if (!info)
        std::abort();
    // Only the three keys of a library record are ever set.
    for (const QString& name : info->keys()) {
        if (name != key::name && name != key::author && name != key::filtertype)
            std::abort();
    }
    // Reading is a pure function of the bytes.
    if (getFilterInfoWithPath(path)->values() != info->values())
        std::abort();
    return 0;
}
