#pragma once

#include <QString>

#include <cstdint>

namespace quillon::bench {

// Writes one synthetic filter definition of roughly `targetBytes` bytes:
// Information, a Components block with every control kind and a bulk of
// other components (as real definitions carry their node graphs), and
// `presets` presets with Settings and Controls. Returns the bytes written.
qint64 writeSyntheticDefinition(
    const QString& path, const QString& name, qint64 targetBytes, int presets, std::uint64_t seed);

// A library like a real user's: `count` definitions spread over nested
// folders, most 20-200 KB, about one in 200 of 2-5 MB. Returns the total
// bytes written. Deterministic for a seed.
qint64 writeSyntheticLibrary(const QString& dir, int count, std::uint64_t seed);

} // namespace quillon::bench
