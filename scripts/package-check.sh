#!/usr/bin/env bash
# What a packager checks: the desktop entry, the AppStream metainfo and the
# MIME type validate, and an install into a staging directory (DESTDIR, prefix
# /usr) holds the programs, the manual pages, the icons and the rest in their
# places, and runs. Then the Debian package: built with CPack, its contents
# and lintian checked, installed with apt-get into a clean Debian 12 root
# (debootstrap, cached in build/package-root), used and purged without a
# trace. Uses the build in build/ (test.sh's), building what is missing.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

quillon_install_packages "${QUILLON_BASE_PACKAGES[@]}" "${QUILLON_TEST_PACKAGES[@]}"
quillon_configure
quillon_build

desktop="$QUILLON_ROOT/data/desktop"
failures=0
fail() {
  echo "package-check: $*" >&2
  failures=$((failures + 1))
}

desktop-file-validate "$desktop/org.quillon.Quillon.desktop" || fail "desktop entry does not validate"
appstreamcli validate --no-net "$desktop/org.quillon.Quillon.metainfo.xml" || fail "metainfo does not validate"
xmllint --noout "$desktop/quillon-chain.xml" || fail "MIME type file is not well-formed"

stage="$(mktemp -d "${TMPDIR:-/tmp}/quillon-package.XXXXXX")"
trap 'rm -rf "$stage"' EXIT
DESTDIR="$stage" cmake --install "$QUILLON_BUILD" --prefix /usr > "$stage.log" || {
  cat "$stage.log"
  fail "cmake --install failed"
}
rm -f "$stage.log"
usr="$stage/usr"
appstreamcli validate-tree --no-net "$stage" > /dev/null || fail "the installed tree does not validate as AppStream"

for file in \
  bin/quillon bin/quillon-cli libexec/quillon/quillon-standin-render \
  share/man/man1/quillon.1.gz share/man/man1/quillon-cli.1.gz \
  share/bash-completion/completions/quillon-cli share/zsh/vendor-completions/_quillon-cli \
  share/fish/vendor_completions.d/quillon-cli.fish \
  share/quillon/schemas/plan.schema.json share/quillon/schemas/report.schema.json \
  share/doc/quillon/copyright share/doc/quillon/changelog.Debian.gz \
  share/icons/hicolor/scalable/apps/quillon.svg \
  share/applications/org.quillon.Quillon.desktop \
  share/metainfo/org.quillon.Quillon.metainfo.xml \
  share/mime/packages/quillon-chain.xml \
  share/quillon/Help.pdf share/quillon/filters/Blur/Blur.ffxml \
  share/doc/quillon/LICENSE; do
  [ -s "$usr/$file" ] || fail "not installed: /usr/$file"
done
extra="$(find "$usr/bin" -mindepth 1 ! -name quillon ! -name quillon-cli)"
[ -z "$extra" ] || fail "more than the two programs in /usr/bin: $extra"

# The PNG icons at the sizes the icon theme asks for: the width and height
# are the first two fields of the PNG header.
for size in 48 128 256; do
  png="$usr/share/icons/hicolor/${size}x${size}/apps/quillon.png"
  if [ ! -s "$png" ]; then
    fail "not installed: ${png#"$stage"}"
    continue
  fi
  read -r width height < <(od -An -j16 -N8 -tu1 "$png" |
    awk '{ print $1 * 16777216 + $2 * 65536 + $3 * 256 + $4, $5 * 16777216 + $6 * 65536 + $7 * 256 + $8 }')
  [ "$width" = "$size" ] && [ "$height" = "$size" ] || fail "$png is ${width}x${height}, not ${size}x${size}"
done

# The manual pages format without a warning, break no word at a hyphen at
# any width, and name every option of --help.
for page in quillon quillon-cli; do
  warnings="$(zcat "$usr/share/man/man1/$page.1.gz" | groff -man -Tutf8 -ww -z 2>&1)"
  [ -z "$warnings" ] || fail "$page.1: $warnings"
  for width in 50 60 70 80 100; do
    broken="$(zcat "$usr/share/man/man1/$page.1.gz" | groff -man -Tutf8 -rLL="${width}n" 2>/dev/null |
      sed 's/\x1b\[[0-9;]*m//g; s/.\x08//g' | grep -E -- '[[:alnum:]][-‐]$' || true)"
    [ -z "$broken" ] || fail "$page.1 at $width columns breaks a word at a hyphen: $broken"
  done
done
for option in $("$usr/bin/quillon-cli" --help | grep -o -- '--[a-z][a-z-]*' | sort -u); do
  grep -qF -- "*$option*" "$QUILLON_ROOT/docs/man/quillon-cli.1.scd" || fail "quillon-cli.1 does not describe $option"
done

# The release in the metainfo is the version the programs report.
version="$("$usr/bin/quillon-cli" --version | awk '{ print $2 }')"
grep -q "<release version=\"$version\"" "$desktop/org.quillon.Quillon.metainfo.xml" ||
  fail "metainfo has no release $version"

# The installed command line runs a sample filter through the installed stand-in tool.
if ! "$usr/bin/quillon-cli" --filter "$usr/share/quillon/filters/Blur/Blur.ffxml" \
  --tool "$usr/libexec/quillon/quillon-standin-render" --output "$stage/out/new" --mkdir \
  --frames 2 --format PNG --prefix check > "$stage/cli.log" 2>&1; then
  cat "$stage/cli.log"
  fail "the installed quillon-cli could not run a sample filter"
fi
[ "$(ls "$stage/out/new" 2>/dev/null | tr '\n' ' ')" = "NX_check-1.png NX_check-2.png " ] ||
  fail "the installed run left $(ls "$stage/out/new" 2>/dev/null | tr '\n' ' ') instead of NX_check-1.png NX_check-2.png"

# A plain install (no DESTDIR) leaves the system's MIME and desktop caches alone.
plain="$stage/plain"
cmake --install "$QUILLON_BUILD" --prefix "$plain" > /dev/null || fail "cmake --install --prefix failed"
for cache in share/mime/mime.cache share/applications/mimeinfo.cache; do
  [ ! -e "$plain/$cache" ] || fail "cmake --install wrote $cache"
done

# The completions offer the options, from the installed files.
bash_completes="$(bash -c 'source /usr/share/bash-completion/bash_completion
  source "$1"; COMP_WORDS=(quillon-cli --for); COMP_CWORD=1; COMP_LINE="quillon-cli --for"
  COMP_POINT=${#COMP_LINE}; _quillon_cli quillon-cli --for quillon-cli; echo "${COMPREPLY[*]}"' \
  _ "$usr/share/bash-completion/completions/quillon-cli")"
[ "$bash_completes" = "--format" ] || fail "bash completes --for as '$bash_completes'"
zsh -n "$usr/share/zsh/vendor-completions/_quillon-cli" || fail "the zsh completions do not parse"
fish -n "$usr/share/fish/vendor_completions.d/quillon-cli.fish" || fail "the fish completions do not parse"

"$QUILLON_ROOT/scripts/package-deb.sh" || fail "the Debian package check failed"

if [ "$failures" -ne 0 ]; then
  echo "package-check: $failures problem(s)" >&2
  exit 1
fi
echo "package-check: desktop entry, metainfo, MIME type, install layout, icons, manual pages, completions, Debian package: all good"
