#!/usr/bin/env bash
# A demo batch without a window: two of the sample filters as a chain, the
# stand-in render tool, no input image, 3 frames, PNG.
set -euo pipefail
QUILLON_ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
QUILLON_BUILD="${QUILLON_BUILD:-$QUILLON_ROOT/build}"
OUT="${QUILLON_DEMO_OUTPUT:-${TMPDIR:-/tmp}/quillon-demo}"
CLI="$QUILLON_BUILD/src/quillon-cli"
TOOL="$QUILLON_BUILD/tools/quillon-standin-render"

for binary in "$CLI" "$TOOL"; do
    if [[ ! -x "$binary" ]]; then
        echo "Missing $binary: build first (./scripts/test.sh or cmake --build $QUILLON_BUILD)" >&2
        exit 1
    fi
done

mapfile -t FILTERS < <(find "$QUILLON_ROOT/data/filters" -name '*.ffxml' | sort | head -n 2)
if (( ${#FILTERS[@]} == 0 )); then
    echo "No sample filters in $QUILLON_ROOT/data/filters" >&2
    exit 1
fi

mkdir -p "$OUT"
echo "Quillon demo: ${#FILTERS[@]} filter(s) into $OUT"
"$CLI" --filter "${FILTERS[@]}" --tool "$TOOL" --output "$OUT" --frames 3 --format PNG --prefix demo
echo "Outputs are in $OUT:"
ls -1 "$OUT"
