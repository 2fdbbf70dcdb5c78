# What the goals' scripts share; they source it. $mode is quick or release, $root the project's folder.
set -uo pipefail
mode=${1:?quick or release}
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
cd "$root" || exit 1
mkdir -p build/check
export VOREL_WINE_ROOT=${VOREL_WINE_ROOT:-$root/build/wine}
calls=0 faults=0

# by_mode QUICK RELEASE: the count for this mode. VOREL_CHECK_PART=N cuts a release to one Nth, but not below quick.
by_mode() {
  local count=$(($2 / ${VOREL_CHECK_PART:-1}))
  [ "$mode" = release ] && [ "$count" -gt "$1" ] || count=$1
  printf '%d' "$count"
}
longest=$(by_mode 900 14400)  # seconds until a driver is stopped

# conclude ASKED REACHED: the last line; ends the script with 1 if there are faults.
conclude() {
  printf 'asked: %s | reached: %s\n' "$1" "$2"
  [ "$faults" = 0 ]
  exit
}

# build PRESET TARGET...: builds targets, or ends the goal.
build() {
  local preset=$1
  { cmake --preset "$preset" && cmake --build --preset "$preset" --target "${@:2}"; } >"build/check/build-$preset.log" 2>&1 || {
    tail -30 "build/check/build-$preset.log"
    faults=1
    conclude 'a build' "$preset does not build"
  }
}

# count_faults: adds up the lines "calls=N faults=M" of standard input, which is passed on. Each run of a driver ends with "status=N", and
# no run may end with another status than 0 unless its faults are counted.
count_faults() {
  local line counted='' ended=''
  while IFS= read -r line; do
    line=${line%$'\r'}
    printf '%s\n' "$line"
    if [[ $line =~ ^calls=([0-9]+)\ faults=([0-9]+)$ ]]; then
      calls=$((calls + BASH_REMATCH[1])) faults=$((faults + BASH_REMATCH[2])) counted=${BASH_REMATCH[2]}
    elif [[ $line =~ ^status=([0-9]+)$ ]]; then
      [ -n "$counted" ] || fault 'the driver ended without a result'
      [ "$counted" != 0 ] || [ "${BASH_REMATCH[1]}" = 0 ] || fault 'the driver failed after its result'
      counted='' ended=1
    fi
  done
  [ -n "$ended" ] || fault 'no driver ran'
}

# watched COMMAND...: output, then its status in a line; 124 if it did not end in time.
watched() {
  timeout -k 30 "$longest" "$@" 2>&1
  printf '\nstatus=%d\n' $?
}
# run_native DRIVER [ARGUMENT...], run_windows DRIVER [ARGUMENT...]: run a driver; native and windows count too.
# The Windows output appears when the driver ends; until then it grows in build/check/windows.
run_native() { watched build/native/bin/checks "$@"; }
run_windows() { (cd build/win32/printed && VOREL_WINE_OUTPUT=$root/build/check/windows watched ../../../tools/run-wine.sh ../bin/checks.exe "$@"); }
native() {
  printf -- '-- native: %s\n' "$*"
  count_faults < <(run_native "$@")
}
windows() {
  printf -- '-- Windows: %s\n' "$*"
  count_faults < <(run_windows "$@")
}
fault() {
  printf 'FAULT %s\n' "$*"
  faults=$((faults + 1))
}

# The goals' Windows parts run in one session, with a printer: in_session SCRIPT MODE runs the script again within one.
in_session() {
  [ -z "${VOREL_WINE_SESSION:-}" ] || return 0
  exec ./tools/run-wine.sh --session "$0" "$mode"
}
make_printer() {
  mkdir -p build/win32/printed
  ./tools/run-wine.sh build/win32/bin/make_printer.exe 'Vorel test 150' "$root/build/win32/printed/150.ps" 150
}
