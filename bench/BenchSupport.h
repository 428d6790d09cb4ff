#pragma once

#include <QString>

#include <chrono>

namespace quillon::bench {

// Resident set size and its peak, in bytes, from /proc/self/status.
qint64 currentRss();
qint64 peakRss();
// Resets the peak to the current size (Linux clear_refs "5").
void resetPeakRss();

// A folder under the system's temporary location that survives between runs
// (generated data is reused), named after `what`.
QString benchDataDir(const QString& what);

// CPU time of the calling thread, in seconds: less disturbed than the wall
// clock when other programs compete for the processors.
double threadCpuSeconds();

// Seconds since `start`.
inline double secondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace quillon::bench
