#!/usr/bin/env bash
# The README's pictures, taken under Xvfb from a built tree: the window with
# a two-filter sample chain (docs/screenshot.png) and the results window after
# a demo run of that chain (docs/results.png), and a contact sheet made by
# quillon-cli (docs/contact-sheet.png). The programs run from an
# installation into /tmp/quillon and the demo writes into /tmp/quillon-demo,
# so the pictures name no folder of this machine; the preferences come from a
# throw-away profile.
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${QUILLON_BUILD:-$ROOT/build}"
DEMO=/tmp/quillon-demo
SCRATCH="$(mktemp -d)"
STAGE=/tmp/quillon
if [[ -e "$STAGE" ]]; then
    echo "$STAGE exists: the pictures are taken from an installation there; move it away first" >&2
    exit 1
fi
trap 'rm -rf "$SCRATCH" "$STAGE"' EXIT
cmake --install "$BUILD" --prefix "$STAGE" >/dev/null

CHAIN="$SCRATCH/sample.qlch"
FILTERS="$STAGE/share/quillon/filters"
"$STAGE/bin/quillon-cli" --quiet --filter "$FILTERS/Textures/StoneWall.ffxml" \
    "$FILTERS/Light/Vignette.ffxml" --tool "$STAGE/libexec/quillon/quillon-standin-render" \
    --output "$SCRATCH" --frames 1 --format PNG --save-chain "$CHAIN"

# The user guide's contact sheet: a nine-frame sweep of one sample filter.
mkdir "$SCRATCH/sweep"
"$STAGE/bin/quillon-cli" --quiet --filter "$FILTERS/Textures/StoneWall.ffxml" \
    --tool "$STAGE/libexec/quillon/quillon-standin-render" --output "$SCRATCH/sweep" --frames 9 --seed 7 \
    --format PNG --prefix sweep --contact-sheet "$ROOT/docs/contact-sheet.png"

# The demo output folder must hold no outputs of an earlier run (the window
# would ask whether to replace them).
if [[ -e "$DEMO" ]] && [[ -n "$(ls -A "$DEMO")" ]]; then
    echo "$DEMO is not empty: move its files away first" >&2
    exit 1
fi
mkdir -p "$DEMO"
export XDG_CONFIG_HOME="$SCRATCH/config" QUILLON_DEMO_OUTPUT="$DEMO"
xvfb-run -a -s "-screen 0 1280x800x24" "$STAGE/bin/quillon" --demo --screenshot "$ROOT/docs/screenshot.png" "$CHAIN"
xvfb-run -a -s "-screen 0 1280x800x24" "$STAGE/bin/quillon" --demo --screenshot-results "$ROOT/docs/results.png" "$CHAIN"
echo "docs/screenshot.png, docs/results.png and docs/contact-sheet.png updated; the demo outputs are in $DEMO"
