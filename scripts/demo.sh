#!/usr/bin/env bash
# A demo batch without a window: the sample filters, the stand-in render tool.
set -euo pipefail
QUILLON_ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
QUILLON_BUILD="${QUILLON_BUILD:-$QUILLON_ROOT/build}"
OUT="${QUILLON_DEMO_OUTPUT:-${TMPDIR:-/tmp}/quillon-demo}"
mkdir -p "$OUT"
echo "Quillon demo: rendering into $OUT"
"$QUILLON_BUILD/src/quillon-cli" --version
