#!/usr/bin/env bash
# Sets up (packages, build) and starts Quillon. Arguments go to the app.
# With no display and no arguments it runs a demo batch on the command line.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

if [ $# -eq 0 ] && [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  exec "$QUILLON_ROOT/scripts/demo.sh"
fi
if [ $# -eq 0 ]; then
  exec "$QUILLON_BUILD/src/quillon" --demo
fi
exec "$QUILLON_BUILD/src/quillon" "$@"
