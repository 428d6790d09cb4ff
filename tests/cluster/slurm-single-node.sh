#!/usr/bin/env bash
# Runs COMMAND... against a single-node Slurm cluster of its own: a generated
# munge key and slurm.conf in a temporary directory, munged, slurmctld and
# slurmd started directly (no systemd), and all three stopped by their PIDs
# when the command ends, also when it or the start fails (trap).
#
#   tests/cluster/slurm-single-node.sh COMMAND [ARG...]
#
# COMMAND runs with SLURM_CONF set (sbatch, squeue, scancel find the cluster)
# and QUILLON_SLURM_DIR naming the temporary directory. Exit status: the
# command's, or 77 (ctest's SKIP_RETURN_CODE) when the daemons cannot run
# here: not root, or the Debian packages slurmctld, slurmd, slurm-client and
# munge are not installed. A cluster that is installed but does not come up
# is a failure (1), not a skip.
set -euo pipefail

skip() {
  echo "SKIPPED: $*" >&2
  exit 77
}

if [ "$(id -u)" -ne 0 ]; then
  skip "the Slurm daemons of this test run as root (scripts/test.sh runs as root in CI)"
fi
for program in munged slurmctld slurmd sbatch squeue scontrol; do
  if ! PATH="$PATH:/usr/sbin:/sbin" command -v "$program" > /dev/null; then
    skip "$program is not installed (Debian packages slurmctld slurmd slurm-client munge; scripts/setup.sh lists them)"
  fi
done
export PATH="$PATH:/usr/sbin:/sbin"

work="$(mktemp -d /tmp/quillon-slurm.XXXXXX)"
chmod 755 "$work"
pids=()

stop_daemons() {
  local status=$?
  local pid i
  # slurmd, slurmctld, then munged: each stopped before what it needs.
  for ((i = ${#pids[@]} - 1; i >= 0; i--)); do
    pid="${pids[$i]}"
    kill "$pid" 2> /dev/null || true
    # Each daemon gets a few seconds to go; then it is killed.
    timeout 10 tail --pid="$pid" -f /dev/null || kill -9 "$pid" 2> /dev/null || true
  done
  if [ "$status" -ne 0 ] && [ "$status" -ne 77 ]; then
    for log in "$work"/*.log "$work"/*.out; do
      [ -f "$log" ] || continue
      echo "---- $log (last lines)" >&2
      tail -n 20 "$log" >&2
    done
  fi
  rm -rf "$work"
  exit "$status"
}
trap stop_daemons EXIT
trap 'exit 130' INT TERM HUP

# A TCP port nobody listens on (bash's /dev/tcp connects or fails at once).
free_port() {
  local port
  while :; do
    port=$((20000 + RANDOM % 20000))
    if ! (exec 3<> "/dev/tcp/127.0.0.1/$port") 2> /dev/null; then
      echo "$port"
      return
    fi
  done
}

# munge with a generated key and a socket of its own. Without --foreground,
# munged returns once it is ready (its socket there); the PID is in its file.
mkdir -p "$work/munge"
chmod 711 "$work/munge"
dd if=/dev/urandom of="$work/munge/munge.key" bs=1024 count=1 status=none
chmod 400 "$work/munge/munge.key"
munged --force \
  --key-file="$work/munge/munge.key" \
  --socket="$work/munge/munge.socket" \
  --pid-file="$work/munge/munged.pid" \
  --seed-file="$work/munge/munge.seed" \
  --log-file="$work/munged.log"
pids+=("$(cat "$work/munge/munged.pid")")

node="$(hostname -s)"
cpus="$(nproc)"
ctld_port="$(free_port)"
slurmd_port="$(free_port)"
while [ "$slurmd_port" = "$ctld_port" ]; do slurmd_port="$(free_port)"; done
mkdir -p "$work/state" "$work/spool"
cat > "$work/slurm.conf" << EOF
ClusterName=quillontest
SlurmctldHost=$node(127.0.0.1)
SlurmctldPort=$ctld_port
SlurmdPort=$slurmd_port
SlurmUser=root
SlurmdUser=root
AuthType=auth/munge
CredType=cred/munge
AuthInfo=socket=$work/munge/munge.socket
MpiDefault=none
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
ReturnToService=2
SchedulerType=sched/backfill
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
AccountingStorageType=accounting_storage/none
JobAcctGatherType=jobacct_gather/none
JobCompType=jobcomp/none
SlurmctldPidFile=$work/slurmctld.pid
SlurmdPidFile=$work/slurmd.pid
SlurmdSpoolDir=$work/spool
StateSaveLocation=$work/state
SlurmctldLogFile=$work/slurmctld.log
SlurmdLogFile=$work/slurmd.log
SlurmctldDebug=info
SlurmdDebug=info
MinJobAge=600
NodeName=$node NodeAddr=127.0.0.1 CPUs=$cpus State=UNKNOWN
PartitionName=quillon Nodes=$node Default=YES MaxTime=INFINITE State=UP
EOF
export SLURM_CONF="$work/slurm.conf"
export QUILLON_SLURM_DIR="$work"

slurmctld -D -i -f "$SLURM_CONF" > "$work/slurmctld.out" 2>&1 &
pids+=("$!")
slurmd -D -f "$SLURM_CONF" > "$work/slurmd.out" 2>&1 &
pids+=("$!")

# No wait for the daemons here: sbatch retries until slurmctld answers, and
# the jobs stay pending until slurmd has registered the node.
status=0
"$@" || status=$?
exit "$status"
