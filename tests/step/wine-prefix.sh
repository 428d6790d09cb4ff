#!/usr/bin/env bash
# Runs COMMAND... with a Wine prefix of its own: made once in a temporary
# directory with `wineboot -i` (the first start of a prefix takes a while),
# exported as WINEPREFIX and QUILLON_WINE_PREFIX, and removed with everything
# Wine runs in it when the command ends, also when it or the start fails.
#
#   tests/step/wine-prefix.sh COMMAND [ARG...]
#
# Exit status: the command's, or 77 (ctest's SKIP_RETURN_CODE) when Wine
# cannot start here: wine, wineboot or wineserver is missing (Debian packages
# wine and wine64), or the prefix cannot be made.
set -euo pipefail

skip() {
  echo "SKIPPED: $*" >&2
  exit 77
}

for program in wine wineboot wineserver; do
  if ! command -v "$program" > /dev/null; then
    skip "$program is not installed (Debian packages wine and wine64; scripts/setup.sh lists them)"
  fi
done

work="$(mktemp -d /tmp/quillon-wine.XXXXXX)"
export WINEPREFIX="$work/prefix"
export WINEDEBUG=-all
# No menu entries or file associations of the test prefix in the user's desktop.
export WINEDLLOVERRIDES="winemenubuilder.exe=d"

cleanup() {
  local status=$?
  # Everything still running in the test's own prefix, then the prefix.
  wineserver -k 2> /dev/null || true
  timeout 30 wineserver -w 2> /dev/null || true
  rm -rf "$work"
  exit "$status"
}
trap cleanup EXIT
trap 'exit 130' INT TERM HUP

if ! timeout 600 wineboot -i > "$work/wineboot.log" 2>&1; then
  tail -n 20 "$work/wineboot.log" >&2
  skip "Wine cannot start here: wineboot -i failed for $WINEPREFIX"
fi
# The tests begin with no wineserver for the prefix: their runs bring it up.
timeout 60 wineserver -w || true
export QUILLON_WINE_PREFIX="$WINEPREFIX"
"$@"
