#!/usr/bin/env bash
# Sets up (every package, the whole build) and runs the whole test suite
# through ctest.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

quillon_install_packages "${QUILLON_BASE_PACKAGES[@]}" "${QUILLON_TEST_PACKAGES[@]}"
quillon_configure --again
quillon_build

cd "$QUILLON_BUILD"
QT_QPA_PLATFORM=offscreen ctest --output-on-failure --parallel "$(nproc)" --timeout 300
