// The chain-file reader on arbitrary bytes (XML or binary property lists).
// Whatever it accepts must be storable again: a chain it read is written
// back, and a chain file it wrote itself must read back to the same number
// of filters with the same keys.

#include "FuzzFiles.h"

#include "chain/ChainFile.h"

#include <cstdio>
#include <cstdlib>

namespace {

using namespace quillon;

[[noreturn]] void fail(const char* what, const QString& detail)
{
    std::fprintf(stderr, "%s: %s\n", what, qPrintable(detail));
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString path = fuzz::writeScratchFile(QStringLiteral("chain.qlch"), data, size);
    const ChainReadResult read = readChainFile(path);
    switch (read.status) {
    case ChainReadResult::Refused:
        if (read.error.isEmpty() || !read.chain.empty())
            fail("a refusal must give a reason and no chain", read.error);
        return 0;
    case ChainReadResult::UnknownCode:
        if (read.error.isEmpty())
            fail("a stopped read must say why", path);
        break;
    case ChainReadResult::Ok:
        break;
    }
    for (const RecordPtr& filter : read.chain) {
        if (!filter || !filter->list(key::Components))
            fail("a read filter has no parameter list", path);
        for (const RecordPtr& parameter : *filter->list(key::Components)) {
            if (!parameter || !parameter->type() || parameter->contains(key::CONTROL_PROXY))
                fail("a read parameter has no kind", path);
        }
    }

    const QString copy = fuzz::scratchDirectory() + QStringLiteral("/copy.qlch");
    QString error;
    if (!writeChainFile(copy, read.chain, &error))
        return 0; // a value a property list cannot hold (a NaN, say) is refused, not written
    const ChainReadResult again = readChainFile(copy);
    if (again.status != ChainReadResult::Ok)
        fail("a chain file written here does not read back", again.error);
    if (again.chain.size() != read.chain.size())
        fail("a chain file written here reads back with another length", copy);
    for (std::size_t i = 0; i < read.chain.size(); ++i) {
        if (again.chain[i]->keys() != read.chain[i]->keys())
            fail("a chain file written here reads back with other keys", copy);
    }
    return 0;
}
