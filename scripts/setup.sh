#!/usr/bin/env bash
# Shared set-up of run.sh, test.sh and package-check.sh (sourced): the Debian
# packages in two sets, and the steps that install what is missing, configure
# build/ and build.
#
#   QUILLON_BASE_PACKAGES  building and running quillon and quillon-cli
#   QUILLON_TEST_PACKAGES  the tests, benchmarks, fuzzers, screenshot and
#                          packaging checks on top of those
set -euo pipefail

QUILLON_ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
QUILLON_BUILD="${QUILLON_BUILD:-$QUILLON_ROOT/build}"

QUILLON_BASE_PACKAGES=(
  cmake g++ ninja-build pkg-config ccache scdoc
  qt6-base-dev qt6-svg-dev qt6-image-formats-plugins libpugixml-dev libplist-dev
  qt6-tools-dev qt6-l10n-tools qt6-translations-l10n
  fonts-dejavu-core
)
QUILLON_TEST_PACKAGES=(
  libgtest-dev libgmock-dev libbenchmark-dev
  xvfb xauth
  clang libclang-rt-14-dev
  desktop-file-utils appstream libxml2-utils groff-base
  slurmctld slurmd slurm-client munge
  wine wine64 g++-mingw-w64-x86-64
  ffmpeg
  python3-jsonschema bash-completion zsh fish debootstrap dpkg-dev lintian
)

# quillon_install_packages PACKAGE...: installs those not installed yet.
quillon_install_packages() {
  local missing=()
  local pkg
  for pkg in "$@"; do
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

# quillon_configure [--again]: configures build/ once; --again runs CMake over
# an existing build/ too, so that the tests appear once GoogleTest is there.
quillon_configure() {
  local build_type="${QUILLON_BUILD_TYPE:-RelWithDebInfo}"
  if [ ! -f "$QUILLON_BUILD/build.ninja" ]; then
    cmake -S "$QUILLON_ROOT" -B "$QUILLON_BUILD" -G Ninja -DCMAKE_BUILD_TYPE="$build_type"
  elif [ "${1:-}" = "--again" ]; then
    cmake -S "$QUILLON_ROOT" -B "$QUILLON_BUILD" > /dev/null
  fi
}

# quillon_build [TARGET...]: the given targets, or everything.
quillon_build() {
  local targets=()
  if [ $# -gt 0 ]; then
    targets=(--target "$@")
  fi
  cmake --build "$QUILLON_BUILD" --parallel "$(nproc)" "${targets[@]}"
}
