#!/usr/bin/env bash
# Runs inside one-machine-slurm.sh: an array of four shards, of which one is killed at work and queued again, compared with one run.
# usage: demo-slurm.sh STEPS FOLDER_OF_PAGES FOLDER
set -euo pipefail
root=$(realpath "$(dirname "$0")/..")
steps=$1 pages=$2 folder=$3
export VOREL=$root/build/native/bin/vorel
rm -rf "$folder"
mkdir -p "$folder"
folder=$(realpath "$folder")
find "$(realpath "$pages")" -name '*.tif' | sort >"$folder/list.txt"
cd "$folder"
"$VOREL" batch "$steps" --files-from list.txt --out alone --jobs 1 --json >alone.json

start=$EPOCHREALTIME
array=$(sbatch --parsable --array=1-4 "$root/python/examples/slurm-array.sh" "$steps" "$folder/list.txt" out)
echo "   job array $array with four shards"

# The process of the third shard, once it has written something.
for _ in {1..2000}; do
  victim=$(pgrep -f "vorel batch .*$folder/list.txt .*--shard 3/4" || true)
  [ -n "$victim" ] && [ -s out/reports/shard-3.json ] && break
  sleep 0.01
done
[ -n "$victim" ] || { echo "shard 3 has ended or never began; use more pages" >&2; exit 1; }
kill -9 "$victim"
echo "   process $victim of shard 3 killed after $(wc -l <out/reports/shard-3.json) files"

# A requeued task waits for two minutes unless it is told not to.
again=no
while [ -n "$(squeue -h)" ]; do
  for task in $(squeue -h -t PD -o %i -r); do
    [ "$(scontrol show job "$task" | grep -o 'Restarts=[0-9]*')" = Restarts=1 ] || continue
    [ $again = no ] || continue
    again=yes
    echo "   task $task was requeued"
    sleep 2  # slurmd refuses a task that begins in the second in which it was ended
    scontrol update jobid="$task" StartTime=now
  done
  sleep 0.2
done
printf '   all tasks done after %.1f s\n' "$(bc <<<"$EPOCHREALTIME - $start")"
[ $again = yes ] || { echo "no task was requeued" >&2; exit 1; }
cat vorel-*.log

# The journal belongs to the run, and the reports to the shards.
names=$(cd alone && find . -type f -name '*.tif' | sort)
[ "$names" = "$(cd out && find . -type f -name '*.tif' | sort)" ] || { echo "the names of the outputs differ" >&2; exit 1; }
for name in $names; do cmp "alone/$name" "out/$name"; done
echo "   outputs: $(wc -l <<<"$names") equal byte for byte, none missing, none more than there should be"
