// The detail reader on arbitrary bytes: a record it fills must be usable by
// everything that reads chain records (a parameter list ending in the
// Variations row, a preset count, preset 0 chosen), and a record it cannot
// fill must come back unchanged.

#include "FuzzFiles.h"

#include "library/DefinitionReader.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace quillon;
    const QString path = fuzz::writeScratchFile(QStringLiteral("detail.ffxml"), data, size);

    Record filter;
    filter.setString(key::path, path);
    filter.setInteger(key::ChoosenPreset, 3);
    const QMap<QString, QVariant> before = filter.values();
    if (!loadXMLInfoWithFilterdata(filter)) {
        if (filter.values() != before)
            std::abort();
        return 0;
    }
    if (filter.integer(key::ChoosenPreset, -1) != 0)
        std::abort();
    if (filter.contains(key::Presets) && presetCount(filter) < 0)
        std::abort();
    if (filter.contains(key::Components)) {
        const RecordListPtr components = filter.list(key::Components);
        if (!components || components->empty())
            std::abort();
        const RecordPtr& last = components->back();
        if (last->string(key::CONTROL_ID) != kVariationsId || last->type() != controlType::kTypeVariations)
            std::abort();
        for (const RecordPtr& parameter : *components) {
            if (!parameter || !parameter->type() || parameter->string(key::CONTROL_ID).isEmpty())
                std::abort();
        }
    }
    return 0;
}
