#!/bin/bash
# A job array over a list of files: each task takes one shard of it.
#   find /data/scans -name '*.tif' | sort > list.txt
#   sbatch --array=1-4 slurm-array.sh 'clean 60 | scale 50%' list.txt /data/out
# `vorel` is in PATH on every node or named by VOREL; list and folders are on a file system that all nodes see.
#SBATCH --job-name=vorel
#SBATCH --cpus-per-task=1
#SBATCH --requeue
#SBATCH --open-mode=append
#SBATCH --output=vorel-%A-%a.log

steps=$1 list=$2 out=$3
mkdir -p "$out/reports"
# A task that is started again goes on where its shard stopped: files that its journal says are done are left out.
"${VOREL:-vorel}" batch "$steps" --files-from "$list" --out "$out" --shard "$SLURM_ARRAY_TASK_ID/$SLURM_ARRAY_TASK_COUNT" \
  --jobs "$SLURM_CPUS_PER_TASK" --resume --json >>"$out/reports/shard-$SLURM_ARRAY_TASK_ID.json"
status=$?
# 1: some files failed, and are named in the report. More than 128: killed, for want of memory for instance; worth two more tries.
if [ $status -gt 128 ] && [ "${SLURM_RESTART_COUNT:-0}" -lt 2 ]; then
  scontrol requeue "${SLURM_ARRAY_JOB_ID}_$SLURM_ARRAY_TASK_ID"
fi
exit $status
