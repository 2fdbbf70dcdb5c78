#!/usr/bin/env bash
# Runs a Windows program under Wine, on a virtual screen, in a Wine prefix of this build tree. 64-bit programs have a prefix of their
# own, in which a 64-bit system runs; 32-bit programs run in a 32-bit system.
# usage: run-wine.sh [--session|--session64] PROGRAM [ARGUMENT...]
#   --session    PROGRAM is a Linux command whose own calls of run-wine.sh share one screen (faster than one screen for each call)
#   --session64  the same for calls with 64-bit programs
# environment:
#   VOREL_SCREEN_DEPTH  bits per pixel of the screen: 24 (default), or 8 for a palette display
#   VOREL_WINE_OUTPUT   a folder for the output as it is written (out, err); it is printed at the end in any case
#   VOREL_WINE_ROOT     where the prefixes are kept (default: build/wine beside this script's folder)
set -euo pipefail

root=${VOREL_WINE_ROOT:-$(cd "$(dirname "$0")/.." && pwd)/build/wine}
depth=${VOREL_SCREEN_DEPTH:-24}
screen_process=

fail() { printf 'run-wine: %s\n' "$*" >&2; exit 1; }

# Whether a file is a 64-bit Windows program: its PE header, whose offset is at 60, names the machine.
is_64_bit() {
  local offset
  [ -f "$1" ] || return 1
  offset=$(od -An -tu4 -j60 -N4 "$1")
  [ "$(od -An -tx2 -j$((offset + 4)) -N2 "$1" | tr -d ' ')" = 8664 ]
}

[ $# -gt 0 ] || fail "usage: run-wine.sh [--session|--session64] PROGRAM [ARGUMENT...]"
prefix=screen-$depth
export WINEARCH=win32
if [ "$1" = --session64 ] || is_64_bit "$1"; then
  prefix=screen64-$depth WINEARCH=win64
fi
export WINEPREFIX=$root/$prefix WINEDEBUG=-all
# No debugger: where nobody is, one that a crash starts waits for ever.
export WINEDLLOVERRIDES='mscoree,mshtml=;winedbg.exe=d'

# Wine's helper processes keep inherited pipes open, and readers of such a pipe wait for them. So output goes through files.
run_program() {
  local output=${VOREL_WINE_OUTPUT:-} status=0 temporary=
  if [ -n "$output" ]; then mkdir -p "$output"; else output=$(mktemp -d) temporary=$output; fi
  wine "$@" >"$output/out" 2>"$output/err" </dev/null &
  wait $! || status=$?
  cat "$output/out"
  cat "$output/err" >&2
  [ -z "$temporary" ] || rm -rf "$temporary"
  return "$status"
}

start_screen() {
  local number
  number=$(mktemp)
  Xvfb -displayfd 3 -screen 0 "1280x1024x$depth" -nolisten tcp 3>"$number" >/dev/null 2>&1 &
  screen_process=$!
  for _ in $(seq 100); do
    [ -s "$number" ] && break
    kill -0 "$screen_process" 2>/dev/null || fail "the virtual screen did not start; is xvfb installed (tools/setup.sh)?"
    sleep 0.1
  done
  DISPLAY=:$(cat "$number")
  export DISPLAY
  rm -f "$number"
}

end_session() {
  trap - EXIT
  wineserver -k 2>/dev/null || true
  wineserver -w 2>/dev/null || true
  [ -z "$screen_process" ] || kill "$screen_process" 2>/dev/null || true
  [ -z "$screen_process" ] || wait "$screen_process" 2>/dev/null || true
}

start_session() {
  command -v wine >/dev/null || fail "wine is not installed; tools/setup.sh installs it"
  mkdir -p "$root"
  exec 9>"$root/$prefix.lock"  # one session at a time in a prefix
  flock 9
  trap end_session EXIT
  trap 'exit 143' TERM INT HUP
  wineserver -k 2>/dev/null && wineserver -w || true  # left over from a session that was killed
  start_screen
  # Where 64-bit Wine is installed too, older versions of this script made 64-bit prefixes.
  grep -qs '^#arch=' "$WINEPREFIX/system.reg" && ! grep -qs "^#arch=$WINEARCH" "$WINEPREFIX/system.reg" && rm -rf "$WINEPREFIX"
  if [ ! -e "$WINEPREFIX/system.reg" ]; then
    printf 'run-wine: setting Wine up in %s (once, 10 to 20 seconds)\n' "$WINEPREFIX" >&2
    wine wineboot -i >/dev/null 2>&1 9>&- </dev/null || fail "wineboot failed; remove $WINEPREFIX and try again"
  fi
  # There is no window manager. Wine then draws window frames itself and does not wait two seconds for one at each closed window.
  grep -qs '"Managed"="N"' "$WINEPREFIX/user.reg" ||
    wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1 9>&- </dev/null || fail "the registry cannot be written"
  export VOREL_WINE_SESSION=$WINEPREFIX
}

if [[ $1 == --session* ]]; then
  shift
  start_session
  "$@" 9>&-
elif [ "${VOREL_WINE_SESSION:-}" = "$WINEPREFIX" ]; then
  run_program "$@"
else
  start_session
  run_program "$@" 9>&-
fi
