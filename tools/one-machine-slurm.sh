#!/usr/bin/env bash
# Runs a command with a Slurm of its own on this machine: munged, slurmctld and slurmd are started for it and ended after it. All
# of their files are in one folder; nothing of the system's own configuration is used or changed.
# usage: one-machine-slurm.sh FOLDER COMMAND [ARGUMENT]...
set -euo pipefail
PATH=$PATH:/usr/sbin
folder=$(realpath -m "$1")
shift
host=$(hostname -s)
rm -rf "$folder"
mkdir -p "$folder"/{state,spool,log,munge}
chmod 755 "$folder" "$folder/munge"

# Jobs are cancelled first: what works for one would outlive the daemons.
end() {
  local name process processes=()
  timeout 10 scancel --user="$(id -un)" 2>/dev/null || true
  for _ in {1..50}; do
    [ -n "$(timeout 2 squeue -h 2>/dev/null)" ] || break
    sleep 0.2
  done
  for name in slurmd slurmctld munge/munged; do
    [ ! -s "$folder/$name.pid" ] || processes+=("$(cat "$folder/$name.pid")")
  done
  for process in "${processes[@]}"; do kill "$process" 2>/dev/null || true; done
  for _ in {1..100}; do
    kill -0 "${processes[@]}" 2>/dev/null || break
    sleep 0.1
  done
  for process in "${processes[@]}"; do
    kill -0 "$process" 2>/dev/null && echo "slurm: process $process does not end; see $folder" >&2
  done
  return 0
}
trap end EXIT

(umask 077 && head -c 1024 /dev/urandom >"$folder/munge/key")
munged --force --key-file="$folder/munge/key" --socket="$folder/munge/socket" --pid-file="$folder/munge/munged.pid" \
  --log-file="$folder/munge/log" --seed-file="$folder/munge/seed" 2>"$folder/munge/messages"

export SLURM_CONF=$folder/slurm.conf
cat >"$SLURM_CONF" <<CONF
ClusterName=demo
SlurmctldHost=$host(127.0.0.1)
SlurmctldPort=16817
SlurmdPort=16818
SlurmUser=$(id -un)
SlurmdUser=$(id -un)
AuthType=auth/munge
AuthInfo=socket=$folder/munge/socket
CredType=cred/munge
StateSaveLocation=$folder/state
SlurmdSpoolDir=$folder/spool
SlurmctldPidFile=$folder/slurmctld.pid
SlurmdPidFile=$folder/slurmd.pid
SlurmctldLogFile=$folder/log/slurmctld.log
SlurmdLogFile=$folder/log/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SwitchType=switch/none
MpiDefault=none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SchedulerParameters=batch_sched_delay=0,sched_interval=5
ReturnToService=2
NodeName=$host NodeAddr=127.0.0.1 CPUs=$(nproc) State=UNKNOWN
PartitionName=pages Nodes=$host Default=YES MaxTime=INFINITE State=UP
CONF
slurmctld -c
slurmd
for _ in {1..60}; do
  [ "$(sinfo -h -o %T 2>/dev/null)" = idle ] && break
  sleep 0.5
done
[ "$(sinfo -h -o %T)" = idle ] || { echo "slurm: the node does not become ready; see $folder/log" >&2; exit 1; }
"$@"
