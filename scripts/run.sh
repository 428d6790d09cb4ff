#!/usr/bin/env bash
# Sets up (packages, build) and starts Quillon. Arguments go to the app.
# With no display and no arguments it runs a demo batch on the command line.
# Installs and builds only what the programs need; test.sh does the rest.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

quillon_install_packages "${QUILLON_BASE_PACKAGES[@]}"
quillon_configure
# quillon brings the help PDF and the icons with it.
quillon_build quillon quillon-cli quillon-standin-render

if [ $# -eq 0 ] && [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  exec "$QUILLON_ROOT/scripts/demo.sh"
fi
if [ $# -eq 0 ]; then
  exec "$QUILLON_BUILD/src/quillon" --demo
fi
exec "$QUILLON_BUILD/src/quillon" "$@"
