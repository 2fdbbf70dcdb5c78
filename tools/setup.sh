#!/usr/bin/env bash
# Installs what building, testing and the demo need on Debian 12, and nothing that is there already.
# Says what it installs before it does; asks for nothing; can be run again at any time.
set -euo pipefail

NATIVE=(build-essential cmake ninja-build ccache pkg-config
        libfmt-dev libcli11-dev nlohmann-json3-dev googletest libbenchmark-dev)
CROSS=(g++-mingw-w64-i686-posix binutils-mingw-w64-i686 llvm lld clang)
SCREEN=(xvfb xauth x11-apps imagemagick fonts-dejavu-core)
WINE=(wine wine32:i386)

say() { printf 'setup: %s\n' "$*"; }

as_root() {
  if [ "$(id -u)" = 0 ]; then "$@"
  elif command -v sudo >/dev/null; then sudo "$@"
  else say "installing packages needs root: run this script as root, or install sudo"; exit 1
  fi
}

apt_get() { as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq -o Dpkg::Use-Pty=0 "$@"; }

installed() { dpkg-query -W -f '${db:Status-Status}\n' "$1" 2>/dev/null | grep -qx installed; }

# Prints those of its arguments that are not installed.
missing() {
  local package
  for package in "$@"; do installed "$package" || printf '%s\n' "$package"; done
}

# 32-bit Wine needs i386 packages, whose libraries must have the very versions that amd64 has installed. An archive mirror can
# offer an i386 security index that is out of step; then both architectures take the release's own versions of what they share.
install_wine() {
  [ -n "$(missing "${WINE[@]}")" ] || return 0
  say "installing ${WINE[*]} (32-bit Wine, which runs the Windows build; about 600 MB)"
  dpkg --print-foreign-architectures | grep -qx i386 || as_root dpkg --add-architecture i386
  apt_get update || say "the package lists could not be refreshed whole; going on with what is there"
  if apt_get install -y --no-install-recommends "${WINE[@]}" 2>/dev/null; then
    say "Wine installed the plain way"
    return 0
  fi
  say "the plain way is blocked, because the security updates for i386 are out of step; taking the release's versions of the"
  say "libraries that amd64 and i386 share (a later apt-get upgrade brings them up to date)"
  local preferences codename
  codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
  preferences=$(mktemp)
  chmod 644 "$preferences"
  printf 'Package: *\nPin: release n=%s, l=Debian\nPin-Priority: 1001\n' "$codename" >"$preferences"
  apt_get install -y -o Dir::Etc::Preferences="$preferences" --allow-downgrades --no-install-recommends "${WINE[@]}"
  rm -f "$preferences"
  say "Wine installed in the release's versions"
}

main() {
  local wanted
  mapfile -t wanted < <(missing "${NATIVE[@]}" "${CROSS[@]}" "${SCREEN[@]}")
  if [ "${#wanted[@]}" -gt 0 ]; then
    say "installing ${wanted[*]}"
    apt_get update
    apt_get install -y --no-install-recommends "${wanted[@]}"
  fi
  install_wine
  say "everything needed is installed"
}

main "$@"
