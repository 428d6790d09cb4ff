#!/usr/bin/env bash
# The Debian package: built with CPack from build/, its contents, Depends and
# lintian checked; then installed with apt-get into a clean Debian 12 root
# made by debootstrap (cached in build/package-root, so later runs are fast),
# used from /usr on a sample filter and purged, with a check that nothing of
# it is left. The clean root needs root (chroot) and a reachable Debian
# mirror ($QUILLON_DEBIAN_MIRROR, deb.debian.org by default); without them
# that part is skipped with a message. Called by package-check.sh.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

failures=0
fail() {
  echo "package-deb: $*" >&2
  failures=$((failures + 1))
}

quillon_configure
quillon_build
rm -f "$QUILLON_BUILD"/quillon_*.deb
if ! (cd "$QUILLON_BUILD" && cpack -G DEB > cpack.log 2>&1); then
  cat "$QUILLON_BUILD/cpack.log" >&2
  echo "package-deb: cpack could not build the package" >&2
  exit 1
fi
deb="$(echo "$QUILLON_BUILD"/quillon_*_"$(dpkg --print-architecture)".deb)"
[ -f "$deb" ] || { echo "package-deb: no package in $QUILLON_BUILD" >&2; exit 1; }
echo "package-deb: built $(basename "$deb")"

# What is in it: the programs, the data, nothing that belongs to the system.
contents="$(dpkg-deb -c "$deb" | awk '{ print $6 }')"
for file in usr/bin/quillon usr/bin/quillon-cli usr/libexec/quillon/quillon-standin-render \
  usr/share/man/man1/quillon-cli.1.gz usr/share/bash-completion/completions/quillon-cli \
  usr/share/quillon/schemas/report.schema.json usr/share/mime/packages/quillon-chain.xml \
  usr/share/applications/org.quillon.Quillon.desktop usr/share/doc/quillon/copyright; do
  grep -qx "./$file" <<< "$contents" || fail "/$file is not in the package"
done
unwanted="$(grep -E 'mime\.cache$|mimeinfo\.cache$|^\./usr/local/|^\./(etc|home|opt|var)/' <<< "$contents" || true)"
[ -z "$unwanted" ] || fail "the package holds files that are not its own: $unwanted"
depends="$(dpkg-deb -f "$deb" Depends)"
for library in libc6 libqt6core6 libqt6gui6 libqt6widgets6 libpugixml1v5 libplist3; do
  grep -q "$library" <<< "$depends" || fail "Depends lacks $library: $depends"
done

# No path of the build tree in a shipped file (the programs look for their
# files relative to themselves).
unpacked="$(mktemp -d "${TMPDIR:-/tmp}/quillon-deb.XXXXXX")"
work="$QUILLON_BUILD/package-root.work"
trap 'rm -rf "$unpacked" "$work"' EXIT
dpkg-deb -x "$deb" "$unpacked"
leaks="$(grep -rlaF -e "$QUILLON_ROOT" "$unpacked" || true)"
[ -z "$leaks" ] || fail "files name the build tree $QUILLON_ROOT: ${leaks//$unpacked/}"

if command -v lintian > /dev/null; then
  errors="$(lintian --tag-display-limit 0 "$deb" 2> /dev/null | grep '^E:' || true)"
  [ -z "$errors" ] || fail "lintian: $errors"
else
  fail "lintian is not installed"
fi

# The clean root: install, use, purge, nothing left.
clean_root_check() {
  local cache="$QUILLON_BUILD/package-root"
  local mirror="${QUILLON_DEBIAN_MIRROR:-http://deb.debian.org/debian}"
  if [ "$(id -u)" -ne 0 ] || ! command -v debootstrap > /dev/null; then
    echo "package-deb: SKIPPED the install into a clean root: it needs root and debootstrap"
    return 0
  fi
  if [ ! -x "$cache/usr/bin/apt-get" ]; then
    rm -rf "$cache" "$cache.tmp"
    echo "package-deb: making a clean Debian 12 root with debootstrap (once; kept in $cache)"
    if ! debootstrap --variant=minbase bookworm "$cache.tmp" "$mirror" > "$QUILLON_BUILD/debootstrap.log" 2>&1; then
      rm -rf "$cache.tmp"
      echo "package-deb: SKIPPED the install into a clean root: debootstrap could not reach $mirror" \
        "(see $QUILLON_BUILD/debootstrap.log)"
      return 0
    fi
    mv "$cache.tmp" "$cache"
  fi
  rm -rf "$work"
  cp -a "$cache" "$work"
  cp /etc/resolv.conf "$work/etc/resolv.conf" 2> /dev/null || true
  cp "$deb" "$work/tmp/"
  # Every path of the root but the state apt, dpkg and the kernel keep.
  local skipped="/proc /sys /dev /run /tmp /root /var/cache /var/log /var/lib/apt /var/lib/dpkg"
  local listing="find / -xdev \\( -path ${skipped// / -o -path } \\) -prune -o -print | sort"
  chroot "$work" sh -c "$listing" > "$work.before"
  if ! chroot "$work" apt-get update -q > "$QUILLON_BUILD/package-root.log" 2>&1; then
    echo "package-deb: SKIPPED the install into a clean root: apt-get update could not reach the mirror"
    rm -f "$work.before"
    return 0
  fi
  if ! chroot "$work" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends \
    "/tmp/$(basename "$deb")" >> "$QUILLON_BUILD/package-root.log" 2>&1; then
    fail "apt-get install of the package failed (see $QUILLON_BUILD/package-root.log)"
    return 0
  fi
  if ! chroot "$work" quillon-cli --filter /usr/share/quillon/filters/Blur/Blur.ffxml \
    --tool /usr/libexec/quillon/quillon-standin-render --output /tmp/out --mkdir --frames 2 --format PNG \
    --prefix check > "$QUILLON_BUILD/package-root-run.log" 2>&1; then
    cat "$QUILLON_BUILD/package-root-run.log" >&2
    fail "the packaged quillon-cli could not run a sample filter in the clean root"
  fi
  [ "$(ls "$work/tmp/out" 2> /dev/null | tr '\n' ' ')" = "NX_check-1.png NX_check-2.png " ] ||
    fail "the packaged run left $(ls "$work/tmp/out" 2> /dev/null | tr '\n' ' ') in the clean root"
  chroot "$work" quillon --version > /dev/null || fail "the packaged quillon --version failed without a display"
  if ! chroot "$work" env DEBIAN_FRONTEND=noninteractive apt-get purge -y -q --autoremove quillon \
    >> "$QUILLON_BUILD/package-root.log" 2>&1; then
    fail "apt-get purge quillon failed (see $QUILLON_BUILD/package-root.log)"
    return 0
  fi
  chroot "$work" sh -c "$listing" > "$work.after"
  local left
  left="$(diff "$work.before" "$work.after" || true)"
  [ -z "$left" ] || fail "the purge left the root changed: $left"
  rm -f "$work.before" "$work.after"
  echo "package-deb: installed with apt-get into a clean root, ran quillon-cli from /usr, purged: nothing left"
}
clean_root_check

if [ "$failures" -ne 0 ]; then
  echo "package-deb: $failures problem(s)" >&2
  exit 1
fi
echo "package-deb: $(basename "$deb"): contents, Depends, no build-tree paths, lintian: all good"
