#!/usr/bin/env bash
# Installs the missing packages that building, testing and the demo need on Debian 12, then builds the codecs of the Windows builds
# (get-codecs.sh). Prints what it installs before it does, asks no questions, and can be run again at any time.
# usage: setup.sh [--cluster|--checks|--release|--manual]   (with what demo-cluster.sh, tools/check/, release.sh or the target manual
#        needs besides)
set -euo pipefail

NATIVE=(build-essential cmake ninja-build ccache pkg-config
        libfmt-dev libcli11-dev nlohmann-json3-dev googletest libbenchmark-dev
        libtiff-dev libpng-dev libjpeg62-turbo-dev libgif-dev zlib1g-dev)
CROSS=(g++-mingw-w64-i686-posix binutils-mingw-w64-i686 g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 llvm lld clang dpkg-dev nasm)
SCREEN=(xvfb xauth x11-apps xdotool imagemagick fonts-dejavu-core)
PICTURES=(libtiff-tools netpbm python3-pil giflib-tools libwmf-bin emf2svg libuemf-dev)  # they make and read pictures for the tests
PAPER=(ghostscript)  # makes pictures of what was printed
PYTHON=(python3-dev python3-pip python3-venv python3-setuptools python3-wheel pybind11-dev python3-numpy python3-pytest)
WINE=(wine wine32:i386 wine64)
CLUSTER=(python3-distributed slurm-wlm munge parallel bc)
CHECKS=(g++-multilib gcovr)  # 32-bit builds and coverage
MANUAL=(python3-sphinx python3-myst-parser furo python3-sphinx-copybutton weasyprint python3-bs4 python3-lxml)
RELEASE=("${MANUAL[@]}" nsis osslsigncode lintian debootstrap openssl zip unzip
         fp-compiler fp-units-rtl mono-mcs mono-runtime)  # other languages' compilers

case ${1:-} in
  '') EXTRA=() ;;
  --cluster) EXTRA=("${CLUSTER[@]}") ;;
  --checks) EXTRA=("${CHECKS[@]}") ;;
  --release) EXTRA=("${RELEASE[@]}") ;;
  --manual) EXTRA=("${MANUAL[@]}") ;;
  *) sed -n '2,/^set /{/^set /d;s/^# \{0,1\}//;p}' "$0"; exit 2 ;;
esac

say() { printf 'setup: %s\n' "$*"; }

as_root() {
  if [ "$(id -u)" = 0 ]; then "$@"
  elif command -v sudo >/dev/null; then sudo "$@"
  else say "installing packages needs root: run this script as root, or install sudo"; exit 1
  fi
}

apt_get() { as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq -o Dpkg::Use-Pty=0 -o DPkg::Lock::Timeout=600 "$@"; }

apt_install() { apt_get install -y --no-remove --no-install-recommends "$@"; }

installed() { dpkg-query -W -f '${db:Status-Status}\n' "$1" 2>/dev/null | grep -qx installed; }

# Prints those of its arguments that are not installed.
missing() {
  local package
  for package in "$@"; do installed "$package" || printf '%s\n' "$package"; done
}

refresh_lists() { apt_get update || say "the package lists could not be refreshed completely; using the lists at hand"; }

# The lists of amd64 are fetched first: those of i386 may fail, and in one request neither would arrive.
prepare_lists() {
  refresh_lists
  if ! dpkg --print-foreign-architectures | grep -qx i386; then
    as_root dpkg --add-architecture i386
    refresh_lists
  fi
}

# 32-bit Wine needs i386 libraries in exactly the versions that amd64 has installed, and -dev packages need exact versions too. A
# mirror's i386 security index can be out of date; then both architectures take the release's versions of shared packages. One
# request installs all packages, so that their versions fit together.
install_packages() {
  if apt_install "$@" 2>/dev/null; then
    say "installed"
    return 0
  fi
  say "the usual installation fails, because the security updates for i386 are out of date; taking the release's versions of the"
  say "packages and of the libraries that amd64 and i386 share (a later apt-get upgrade brings them up to date)"
  local preferences codename
  codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
  preferences=$(mktemp)
  chmod 644 "$preferences"
  printf 'Package: *\nPin: release n=%s, l=Debian\nPin-Priority: 1001\n' "$codename" >"$preferences"
  apt_install -o Dir::Etc::Preferences="$preferences" --allow-downgrades "$@"
  rm -f "$preferences"
  say "installed in the release's versions"
}

main() {
  local wanted
  mapfile -t wanted < <(missing "${NATIVE[@]}" "${CROSS[@]}" "${SCREEN[@]}" "${PICTURES[@]}" "${PAPER[@]}" "${PYTHON[@]}" "${EXTRA[@]}" \
    "${WINE[@]}")
  if [ "${#wanted[@]}" -gt 0 ]; then
    say "installing ${wanted[*]}"
    [ -z "$(missing "${WINE[@]}")" ] || say "with Wine, which runs the Windows builds, that is about 900 MB"
    prepare_lists
    install_packages "${wanted[@]}"
  fi
  "$(dirname "$0")/get-codecs.sh"
  say "everything needed is installed"
}

main "$@"
