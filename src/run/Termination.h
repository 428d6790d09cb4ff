#pragma once

#include <atomic>

namespace quillon {

// Set by a termination signal (the command line's handler sets it directly:
// a lock-free atomic store is safe there). Long work that runs before the
// event loop could see the signal (planning a million outputs) checks it.
inline std::atomic<bool>& terminationRequested()
{
    static std::atomic<bool> requested { false };
    return requested;
}

} // namespace quillon
