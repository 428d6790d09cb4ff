#!/usr/bin/env bash
# Builds the whole project with AddressSanitizer and UndefinedBehaviorSanitizer
# into build-asan (the "asan" CMake preset) and runs the whole test suite
# under them. Any sanitizer report fails the test that caused it.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${QUILLON_ASAN_BUILD:-$root/build-asan}"

if [ ! -f "$build/build.ninja" ]; then
  cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DQUILLON_SANITIZE=ON
fi
cmake --build "$build" --parallel "$(nproc)"

# Leak checking stays off: Qt keeps process-lifetime allocations (plugins,
# fonts, the type registry) that LeakSanitizer reports at exit.
export QT_QPA_PLATFORM=offscreen
export ASAN_OPTIONS="detect_leaks=0:abort_on_error=1:check_initialization_order=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
cd "$build"
ctest --output-on-failure --parallel "$(nproc)" --timeout 300
