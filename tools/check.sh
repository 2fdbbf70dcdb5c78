#!/usr/bin/env bash
# Checks how far the library can be trusted: runs goals, prints a table, and ends with 1 if one falls short.
# usage: check.sh [--quick|--release] [GOAL...]   (default: --quick, all goals)
#   --quick    counts scaled down: about 10 minutes for all goals on two cores
#   --release  full counts: hours
#   --list     prints the names of the goals
# environment:
#   VOREL_CHECK_PART  N cuts the counts of --release to one Nth, but not below those of --quick
# Goals, in the order in which they run (docs/reliability.md explains them):
#   abi modules sizes nothing-left threads allocation-failures io-failures same-bytes public-files sanitizers coverage fuzzing
# Each goal is a script, tools/check/GOAL.sh quick|release. It builds only what it needs, its output is in build/check/GOAL.log, its last
# line is "asked: ... | reached: ...", and it ends with 0 if it reached what was asked, else with 1.
# The table is also in build/check/table.md.
set -uo pipefail
cd "$(dirname "$0")/.."

# Fast goals first, so that a fault shows early.
goals=(abi modules sizes nothing-left threads allocation-failures io-failures same-bytes public-files sanitizers coverage fuzzing)

usage() { sed -n '2,/^set /{/^set /d;s/^# \{0,1\}//;p}' "$0"; }

mode=quick
chosen=()
for argument in "$@"; do
  case $argument in
    --quick | --release) mode=${argument#--} ;;
    --list) printf '%s\n' "${goals[@]}"; exit 0 ;;
    -h | --help) usage; exit 0 ;;
    -*) usage >&2; exit 2 ;;
    *)
      [[ " ${goals[*]} " == *" $argument "* ]] || { printf 'check: no goal %s; there are: %s\n' "$argument" "${goals[*]}" >&2; exit 2; }
      chosen+=("$argument")
      ;;
  esac
done
[ "${#chosen[@]}" -gt 0 ] || chosen=("${goals[@]}")

./tools/setup.sh || exit 2
mkdir -p build/check
table=build/check/table.md kind=$mode
[ "$mode" = quick ] || kind+=${VOREL_CHECK_PART:+, cut to 1/$VOREL_CHECK_PART}
printf '| goal (%s) | asked | reached | time | log |\n|---|---|---|---|---|\n' "$kind" >"$table"
short=()

# Prints "asked<TAB>reached" of the last line of a log.
figures_of() {
  local line
  line=$(grep -v '^[[:space:]]*$' "$1" | tail -n 1)
  if [[ $line =~ ^asked:\ (.*)\ \|\ reached:\ (.*)$ ]]; then
    printf '%s\t%s' "${BASH_REMATCH[1]}" "${BASH_REMATCH[2]}"
  else
    return 1
  fi
}

run_goal() {
  local goal=$1 log=build/check/$1.log status=0 figures='' asked reached
  SECONDS=0
  printf '== %s (log: %s)\n' "$goal" "$log"
  if [ -x "tools/check/$goal.sh" ]; then
    "tools/check/$goal.sh" "$mode" >"$log" 2>"$log.err" || status=$?
    figures=$(figures_of "$log") || { status=1; figures=$'?\tno figures: the goal ended early'; }
    if [ -s "$log.err" ]; then
      { printf -- '-- standard error\n'; cat "$log.err"; } >>"$log"
    fi
    rm -f "$log.err"
  else
    status=1 figures=$'?\tthe goal has no script'
    : >"$log"
  fi
  asked=${figures%%$'\t'*} reached=${figures#*$'\t'}
  if [ "$status" != 0 ]; then
    short+=("$goal")
    reached="**short:** $reached"
  fi
  printf '   asked: %s\n   reached: %s (%d s)\n' "$asked" "$reached" "$SECONDS"
  printf '| %s | %s | %s | %d s | %s |\n' "$goal" "$asked" "$reached" "$SECONDS" "$log" >>"$table"
}

for goal in "${goals[@]}"; do
  [[ " ${chosen[*]} " == *" $goal "* ]] && run_goal "$goal"
done

printf '\n'
cat "$table"
[ "${#short[@]}" = 0 ] || { printf '\nshort: %s\n' "${short[*]}"; exit 1; }
