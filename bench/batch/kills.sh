#!/usr/bin/env bash
# Kills "vorel batch" at random moments, with SIGKILL and SIGTERM in turn, continues with --resume each time, and compares the
# outputs with those of an undisturbed run. Prints the number of kills.
# usage: kills.sh VOREL FOLDER_OF_PICTURES [KILLS [MOST_MILLISECONDS]]
set -euo pipefail
vorel=$1 pictures=$2 kills=${3:-100} most=${4:-400}
steps='rotate 90 | clean 60'
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
batch() { "$vorel" batch "$steps" "$pictures" --recursive "$@"; }

batch --out "$work/undisturbed" 2>/dev/null
hits=0 tries=0
while [ "$hits" -lt "$kills" ]; do
  rm -rf "$work/out"
  resume=
  for ((;;)); do
    # shellcheck disable=SC2086
    "$vorel" batch "$steps" "$pictures" --recursive --out "$work/out" $resume 2>"$work/errors" &
    run=$!
    [ $((++tries % 3)) = 0 ] && signal=TERM || signal=KILL
    sleep "$(printf '0.%03d' $((RANDOM % most)))"
    kill -$signal $run 2>/dev/null || true
    code=0; wait $run 2>/dev/null || code=$?
    case $code in
      0) break ;;
      137) hits=$((hits + 1)) ;;
      143)
        hits=$((hits + 1))
        [ -z "$(find "$work/out" -name 'vorel-*.tmp*' 2>/dev/null)" ] || { echo "FAILED: SIGTERM leaves unfinished files"; exit 1; }
        ;;
      *) echo "FAILED: exit code $code"; cat "$work/errors"; exit 1 ;;
    esac
    resume=; [ -d "$work/out/.vorel-batch" ] && resume=--resume
  done
  diff -r --exclude=.vorel-batch "$work/undisturbed" "$work/out" || { echo "FAILED: other outputs after $hits kills"; exit 1; }
  [ -z "$(find "$work/out" -name 'vorel-*.tmp*')" ] || { echo "FAILED: unfinished files stay"; exit 1; }
done
echo "$hits kills, each followed by --resume: the outputs are those of an undisturbed run"
