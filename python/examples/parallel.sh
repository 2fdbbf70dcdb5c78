#!/bin/bash
# GNU parallel: a shard for each slot, on this machine or on several hosts that see the same files.
# usage: parallel.sh STEPS LIST OUT SHARDS [HOST,HOST,...]
steps=$1 list=$2 out=$3 shards=$4 hosts=${5:-}
# shellcheck disable=SC2086 # the option is left out without hosts
seq "$shards" | parallel ${hosts:+--sshlogin "$hosts"} --retries 3 --joblog "$out.jobs" --quote \
  "${VOREL:-vorel}" batch "$steps" --files-from "$list" --out "$out" --shard "{}/$shards" --jobs 1 --resume --json >"$out.json"
