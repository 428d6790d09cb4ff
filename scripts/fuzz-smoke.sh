#!/usr/bin/env bash
# Builds the libFuzzer targets with clang into build-fuzz and runs each one
# briefly on its seed corpus (fuzz/corpus/<target>). Exits non-zero when a
# target crashes, leaks, times out or fails to build.
#
#   scripts/fuzz-smoke.sh            # every target, 30 s each
#   FUZZ_SECONDS=600 scripts/fuzz-smoke.sh fuzz_chain_file
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${QUILLON_FUZZ_BUILD:-$root/build-fuzz}"
seconds="${FUZZ_SECONDS:-30}"
targets=("$@")
if [ "${#targets[@]}" -eq 0 ]; then
  targets=(fuzz_library_reader fuzz_detail_reader fuzz_run_file fuzz_chain_file)
fi

if [ ! -f "$build/build.ninja" ]; then
  cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_CXX_COMPILER=clang++ -DQUILLON_FUZZ=ON -DQUILLON_BUILD_TESTS=OFF
fi
cmake --build "$build" --parallel "$(nproc)" --target "${targets[@]}"

# New inputs go to a scratch corpus; the committed seeds stay as they are.
work="$(mktemp -d "${TMPDIR:-/tmp}/quillon-fuzz-smoke.XXXXXX")"
trap 'rm -rf "$work"' EXIT

status=0
for target in "${targets[@]}"; do
  name="${target#fuzz_}"
  mkdir -p "$work/$name"
  echo "== $target: ${seconds} s on fuzz/corpus/$name"
  # The targets' scratch files go into the work directory as well.
  # -timeout: one input taking longer than 10 s counts as a hang.
  if ! TMPDIR="$work" "$build/fuzz/$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
      -print_final_stats=1 -artifact_prefix="$work/$name-" \
      "$work/$name" "$root/fuzz/corpus/$name" > "$work/$name.log" 2>&1; then
    status=1
    echo "!! $target failed; the end of its log:"
    tail -n 60 "$work/$name.log"
    for artifact in "$work/$name"-*; do
      [ -e "$artifact" ] || continue
      echo "!! input that failed ($artifact), base64:"
      base64 "$artifact" | head -c 20000
      echo
    done
  else
    grep -E "DONE|stat::number_of_executed_units" "$work/$name.log" || true
  fi
done
exit "$status"
