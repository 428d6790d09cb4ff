#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>

namespace quillon::fuzz {

// The readers take paths, so each input is written to a file of a scratch
// directory of the fuzzing process: under TMPDIR when it is set, otherwise in
// /dev/shm when it exists (to keep the disk out of the loop).
QString scratchDirectory();

// Writes the input to `name` in the scratch directory and returns its path;
// aborts when the file cannot be written, since every later result would be
// meaningless.
QString writeScratchFile(const QString& name, const uint8_t* data, size_t size);

} // namespace quillon::fuzz
