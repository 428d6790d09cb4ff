#!/usr/bin/env bash
# Installs the Debian packages Quillon needs (only those missing), then
# configures and builds into build/. Sourced by run.sh and test.sh.
set -euo pipefail

QUILLON_ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
QUILLON_BUILD="${QUILLON_BUILD:-$QUILLON_ROOT/build}"

QUILLON_PACKAGES=(
  cmake g++ ninja-build pkg-config ccache
  qt6-base-dev libpugixml-dev libplist-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  fonts-dejavu-core xvfb xauth
  clang libclang-rt-14-dev
)

quillon_install_packages() {
  local missing=()
  local pkg
  for pkg in "${QUILLON_PACKAGES[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed"; then
      missing+=("$pkg")
    fi
  done
  if [ "${#missing[@]}" -eq 0 ]; then
    return 0
  fi
  echo "Installing Debian packages: ${missing[*]}"
  local sudo=""
  if [ "$(id -u)" -ne 0 ]; then
    sudo="sudo"
  fi
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -q
  $sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
}

quillon_build() {
  local build_type="${QUILLON_BUILD_TYPE:-RelWithDebInfo}"
  if [ ! -f "$QUILLON_BUILD/build.ninja" ]; then
    cmake -S "$QUILLON_ROOT" -B "$QUILLON_BUILD" -G Ninja -DCMAKE_BUILD_TYPE="$build_type" "$@"
  fi
  cmake --build "$QUILLON_BUILD" --parallel "$(nproc)"
}

quillon_install_packages
quillon_build
