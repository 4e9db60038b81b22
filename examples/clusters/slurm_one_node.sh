#!/bin/bash
# Runs slurm_array.sh on a cluster of one node, this machine, and compares what comes out with a batch
# without a cluster. The cluster lives in a temporary folder and is gone at the end.
#   sudo examples/clusters/slurm_one_node.sh build/wavechain
# Needs root, and on Debian the packages slurm-wlm and munge.
set -euo pipefail

program=$(realpath "${1:?name the program, as in build/wavechain}")
examples=$(dirname "$(realpath "${BASH_SOURCE[0]}")")
[[ $(id -u) == 0 ]] || { echo "slurm_one_node: must be run as root" >&2; exit 1; }
for tool in munged slurmctld slurmd sbatch; do
  PATH=$PATH:/usr/sbin command -v "$tool" >/dev/null ||
    { echo "slurm_one_node: $tool is missing; apt-get install slurm-wlm munge" >&2; exit 1; }
done
PATH=${program%/*}:$PATH:/usr/sbin

place=$(mktemp -d)
daemons=()
finish() {
  for daemon in "${daemons[@]}"; do kill "$daemon" 2>/dev/null || true; done
  wait
  rm -rf "$place"
}
trap finish EXIT
chmod 755 "$place"

# Who asks whom is proved by munge, with a key of this cluster's own.
mkdir -m 755 "$place/munge" "$place/spool" "$place/state"
(umask 077; head -c 1024 /dev/urandom >"$place/munge/key")
munged --foreground --key-file="$place/munge/key" --socket="$place/munge/socket" \
  --pid-file="$place/munge/pid" --log-file="$place/munge/log" --seed-file="$place/munge/seed" \
  >"$place/munged.txt" 2>&1 &
daemons+=($!)

node=$(hostname -s)
cat >"$place/slurm.conf" <<END
ClusterName=one
SlurmctldHost=$node(127.0.0.1)
SlurmUser=root
AuthType=auth/munge
AuthInfo=socket=$place/munge/socket
CryptoType=crypto/munge
SlurmctldPort=16817
SlurmdPort=16818
SlurmctldPidFile=$place/slurmctld.pid
SlurmdPidFile=$place/slurmd.pid
StateSaveLocation=$place/state
SlurmdSpoolDir=$place/spool
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SchedulerParameters=sched_interval=1
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
NodeName=$node NodeAddr=127.0.0.1 CPUs=$(nproc) State=UNKNOWN
PartitionName=all Nodes=$node Default=YES State=UP
END
printf 'CgroupAutomount=no\nIgnoreSystemd=yes\n' >"$place/cgroup.conf"
export SLURM_CONF=$place/slurm.conf
slurmctld -D >"$place/slurmctld.txt" 2>&1 &
daemons+=($!)
slurmd -D >"$place/slurmd.txt" 2>&1 &
daemons+=($!)

# A folder as the examples expect it.
mkdir -p "$place/lab/recordings"
cd "$place/lab"
cp "$examples/slurm_array.sh" .
cp "$examples/smooth.toml" .
for i in {1..12}; do
  wavechain run -q --silence "0.$i" --rate 16000 -f "SineFilter $((100 * i)) 0.5" "recordings/take$i.wav"
done

tell() {
  tail -n 20 "$place"/*.txt "$place"/lab/slurm-*.txt >&2 2>/dev/null || true
  echo "slurm_one_node: $1" >&2
  exit 1
}
for _ in {1..60}; do
  [[ $(sinfo -h -o %T 2>/dev/null) == idle ]] && break
  sleep 1
done
[[ $(sinfo -h -o %T) == idle ]] || tell "the node does not come up"
timeout 300 sbatch --wait slurm_array.sh || tell "the array failed"

wavechain batch --chain smooth.toml --out alone -q recordings/*.wav >/dev/null
diff -r alone out || tell "the outputs are not those of a batch without a cluster"
[[ $(cat batch.*.jsonl | grep -c '"status":"done"') == 12 ]] || tell "not every file was done once"
echo "slurm_one_node: four tasks made 12 files, the same as one batch does"
