#!/usr/bin/env bash
# What a cluster bundle's element costs beyond its rendering, on the
# single-node Slurm cluster of the cluster test:
#
#   tests/cluster/slurm-single-node.sh bench/slurm-overhead.sh [BUILD] [ELEMENTS]
#
# 1. the floor: `sbatch --array` of ELEMENTS runs of /bin/true, from
#    submission to the end of the last;
# 2. the same inputs rendered locally by quillon-cli, one tool run after the
#    other (what rendering costs without a cluster);
# 3. a bundle of ELEMENTS inputs (one frame each, one sample filter, the
#    stand-in tool) submitted by its submit.sh, until its array has ended
#    (then its collect is waited for, and every output checked).
# Prints the three times and the overhead per element:
#   (bundle - floor - local) / ELEMENTS.
# BUILD defaults to build/, ELEMENTS to 200.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="$(cd "${1:-$root/build}" && pwd)"
elements="${2:-200}"
cli="$build/src/quillon-cli"
tool="$build/tools/quillon-standin-render"
filter="$(find "$root/data/filters" -name '*.ffxml' | sort | head -n 1)"
work="$(mktemp -d /tmp/quillon-slurm-bench.XXXXXX)"
trap 'rm -rf "$work"' EXIT
# The jobs run as root on this node and write into the folders below.
chmod 755 "$work"

now() { date +%s.%N; }
elapsed() { awk -v a="$1" -v b="$2" 'BEGIN { print b - a }'; }

# Slurm takes a moment to register the node: one job first, not measured.
sbatch --quiet --wait --output=/dev/null --wrap /bin/true

# Until no job of the array is left in the queue (polled every 50 ms, for
# the floor and the bundle alike).
wait_for_array() {
    while [ -n "$(squeue -h -j "$1" 2> /dev/null)" ]; do sleep 0.05; done
}

# 1. The floor. The collect job is left out of both: its start waits for
# the scheduler's next pass over dependencies, which takes anything from 1 to
# 30 seconds, whatever ran before.
start="$(now)"
array="$(sbatch --parsable --array="0-$((elements - 1))" --output=/dev/null --wrap /bin/true)"
wait_for_array "$array"
floor="$(elapsed "$start" "$(now)")"

mkdir -p "$work/in" "$work/local" "$work/out"
# Inputs: the filter rendered without input, one image per frame.
"$cli" --filter "$filter" --tool "$tool" --output "$work/in" --frames "$elements" --format PNG \
    --width 64 --height 64 --prefix in > /dev/null
# 2. Rendering alone.
start="$(now)"
"$cli" --filter "$filter" --tool "$tool" --output "$work/local" --input-dir "$work/in" --frames 1 \
    --format PNG > /dev/null
local_time="$(elapsed "$start" "$(now)")"

# 3. The bundle.
"$cli" --filter "$filter" --tool "$tool" --output "$work/out" --input-dir "$work/in" --frames 1 \
    --format PNG --slurm-bundle "$work/bundle" > /dev/null
start="$(now)"
submitted="$("$work/bundle/submit.sh")"
array="$(sed -n 's/.*job array \([0-9]*\).*/\1/p' <<< "$submitted")"
wait_for_array "$array"
bundle="$(elapsed "$start" "$(now)")"
# collect.status is written last.
until [ -e "$work/bundle/collect.status" ]; do sleep 0.05; done
outputs="$(find "$work/out" -maxdepth 1 -name '*.png' | wc -l)"

printf 'elements: %d (outputs written: %d)\n' "$elements" "$outputs"
printf 'sbatch --array of /bin/true: %.2f s\n' "$floor"
printf 'rendering locally (quillon-cli, one after the other): %.2f s\n' "$local_time"
printf 'bundle (submit.sh until its array ended): %.2f s\n' "$bundle"
awk -v b="$bundle" -v f="$floor" -v l="$local_time" -v n="$elements" \
    'BEGIN { printf "overhead per element: %.1f ms\n", (b - f - l) * 1000 / n }'
[ "$outputs" -eq "$elements" ]
