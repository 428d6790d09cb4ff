#!/usr/bin/env bash
# Sets up (packages, build) and runs the whole test suite through ctest.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

cd "$QUILLON_BUILD"
QT_QPA_PLATFORM=offscreen ctest --output-on-failure --parallel "$(nproc)" --timeout 300
