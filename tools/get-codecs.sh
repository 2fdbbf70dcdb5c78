#!/usr/bin/env bash
# Builds the image codecs of the Windows builds: zlib, libpng, libjpeg-turbo, libtiff and giflib as static libraries, from
# Debian's own patched sources in the versions of the -dev packages that the native build uses: all builds read files alike.
# The result is the link build/codecs-MACHINE to a folder with include/, lib/ and licences/ in a cache that all checkouts share;
# when the cache has it, nothing is fetched. Its versions.txt says what was built.
# usage: get-codecs.sh [i686|x86_64]...   (default: both)
# environment:
#   XDG_CACHE_HOME  where the cache is kept (default: ~/.cache)
set -euo pipefail
cd "$(dirname "$0")/.."

CODECS=(zlib libpng libjpeg libtiff giflib)  # a library comes after those that it uses
declare -A PACKAGE=([zlib]=zlib1g-dev [libpng]=libpng-dev [libjpeg]=libjpeg62-turbo-dev [libtiff]=libtiff-dev
                    [giflib]=libgif-dev)
RELEASE_FLAGS="-O2 -D_FORTIFY_SOURCE=2 -fstack-protector-strong -ffunction-sections -fdata-sections"

cache=${XDG_CACHE_HOME:-$HOME/.cache}/vorel32

say() { printf 'codecs: %s\n' "$*"; }

fail() {
  [ ! -s "$log" ] || tail -n 40 "$log" >&2
  say "$* (whole log: $log)" >&2
  exit 1
}

logged() { "$@" >>"$log" 2>&1; }

# One line for each codec: its name here, the name of its Debian source and the version that is installed.
installed_sources() {
  local codec
  for codec in "${CODECS[@]}"; do
    dpkg-query -W -f "$codec \${source:Package} \${source:Version}\n" "${PACKAGE[$codec]}" 2>/dev/null |
      head -n 1 | grep '[^ ]$' ||
      fail "${PACKAGE[$codec]} is not installed; tools/setup.sh installs it"
  done
}

# Moves the lines, or with the argument "" the paragraphs, that name a security archive to the end: such an archive can list
# files that only the main one has, and apt-get asks the first that lists them.
security_last() {
  awk -v RS="$1" -v ORS="${1:-\n\n}" '/security/ { late = late $0 ORS; next } { print } END { printf "%s", late }'
}

# The system's package sources, in either format, asked for source code; with lists and settings of our own, as the system's
# are only read. The settings come after the system's, so they have the last word.
prepare_apt() {
  local list parts file
  eval "$(apt-config shell list Dir::Etc::sourcelist/f parts Dir::Etc::sourceparts/d)"
  mkdir -p "$work"/apt/{sources,state/lists/partial,cache/archives/partial}
  for file in "$list" "$parts"/*.list; do
    [ ! -f "$file" ] || sed -nE 's/^[[:space:]]*deb(-src)?[[:space:]]/deb-src /p' "$file"
  done | awk '!seen[$0]++' | security_last $'\n' >"$work/apt/sources/all.list"
  for file in "$parts"/*.sources; do
    [ ! -f "$file" ] || { sed -E 's/^Types:.*/Types: deb-src/I' "$file"; echo; }
  done | security_last "" >"$work/apt/sources/all.sources"
  cat >"$work/apt/apt.conf" <<END
Dir::Etc::sourcelist "/dev/null";
Dir::Etc::sourceparts "$work/apt/sources";
Dir::State "$work/apt/state";
Dir::Cache "$work/apt/cache";
APT::Sandbox::User "root";
#clear APT::Update;
END
  logged apt-get -c "$work/apt/apt.conf" update || say "some package sources offer no source code; going on with the others"
}

# Prints the versions of a source package that the package sources list, newest first.
listed_versions() {
  apt-cache -c "$work/apt/apt.conf" showsrc --only-source "$1" 2>>"$log" | sed -n 's/^Version: //p' | sort -urV
}

# Puts the source of a codec into a folder of its name, and notes its version. An archive can list files that it does not
# have yet, or have dropped those of the installed version; then the newest version comes whose files are there.
# apt-get checks every file against the archive's signature, so dpkg-source need not.
fetch() {
  local codec=$1 source=$2 installed=$3 version download=$work/downloads/$1
  for version in "$installed" $(listed_versions "$source" | grep -vxF "$installed"); do
    rm -rf "$download"
    mkdir -p "$download"
    if (cd "$download" && logged apt-get -q -c "$work/apt/apt.conf" source --download-only "$source=$version"); then
      logged dpkg-source --no-check -x "$download"/*.dsc "$work/$codec" || fail "$source $version cannot be unpacked"
      printf '%s %s %s\n' "$codec" "$source" "$version" >>"$work/prefix/versions.txt"
      return
    fi
    say "$source $version cannot be fetched; trying the next version"
  done
  fail "no source of $source can be fetched"
}

# The project's own flags, which the codecs need for the same reasons, and libraries from the new folder alone.
write_toolchain() {
  cat >"$work/toolchain.cmake" <<END
include("$PWD/cmake/$machine-w64-mingw32.cmake")
unset(CMAKE_CROSSCOMPILING_EMULATOR)
set(CMAKE_FIND_ROOT_PATH "$work/prefix")
END
}

# The release flags stay out of CMake's trial programs, which do not link the library that the stack protector needs.
build() {
  local codec=$1 launcher
  shift
  launcher=$(command -v ccache || true)
  logged cmake -S "$work/$codec" -B "$work/$codec-build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$work/toolchain.cmake" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_C_COMPILER_LAUNCHER="$launcher" -DCMAKE_INSTALL_PREFIX="$work/prefix" \
    -DCMAKE_C_FLAGS_RELEASE="$RELEASE_FLAGS -ffile-prefix-map=$work=." -DBUILD_SHARED_LIBS=OFF "$@" &&
    logged cmake --build "$work/$codec-build" --target install
}

# Gives a codec without usable build files its own. usage: describe CODEC LIBRARY "SOURCES" "HEADERS" [COMPILER OPTION...]
describe() {
  cat >"$work/$1/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.25)
project($1 LANGUAGES C)
file(GLOB sources $3)
add_library($2 STATIC \${sources})
target_compile_options($2 PRIVATE ${*:5})
install(TARGETS $2 ARCHIVE DESTINATION lib)
install(FILES $4 DESTINATION include)
END
}

build_zlib() {
  describe zlib z "*.c" "zlib.h zconf.h"
  build zlib
}

build_libpng() { build libpng -DPNG_SHARED=OFF -DPNG_TESTS=OFF -DPNG_EXECUTABLES=OFF; }

build_libjpeg() { build libjpeg -DENABLE_SHARED=OFF -DWITH_TURBOJPEG=OFF -DREQUIRE_SIMD=ON; }

build_libtiff() {
  build libtiff -Dtiff-tools=OFF -Dtiff-tests=OFF -Dtiff-contrib=OFF -Dtiff-docs=OFF -Dcxx=OFF \
    -DCMAKE_REQUIRE_FIND_PACKAGE_ZLIB=ON -DCMAKE_REQUIRE_FIND_PACKAGE_JPEG=ON \
    -Djbig=OFF -Dlzma=OFF -Dzstd=OFF -Dwebp=OFF -Dlerc=OFF -Dlibdeflate=OFF
}

# giflib multiplies sizes that a file chooses in a signed type, which has 32 bits here: they wrap instead of being undefined.
build_giflib() {
  local sources="dgif_lib.c egif_lib.c gifalloc.c gif_err.c gif_hash.c quantize.c openbsd-reallocarray.c"
  describe giflib gif "$sources" gif_lib.h -fwrapv
  build giflib
}

# The folder gets its name last, so that one with that name is whole. Its files are newer than whatever a build has made with
# another folder, so that the build takes notice.
build_all() {
  local codec source version started
  : >"$log"
  say "building the codecs of the Windows build for $machine (once, about a minute; log: $log)"
  rm -rf "$work"
  trap 'rm -rf "$work"' EXIT
  trap 'exit 143' TERM INT HUP
  mkdir -p "$work/prefix"
  prepare_apt
  write_toolchain
  while read -r codec source version <&3; do
    started=$SECONDS
    fetch "$codec" "$source" "$version"
    "build_$codec" || fail "$codec does not build"
    install -Dm644 "$work/$codec/debian/copyright" "$work/prefix/licences/$codec.txt" || fail "$codec has no licence text"
    say "$(tail -n 1 "$work/prefix/versions.txt"): $((SECONDS - started)) s"
  done 3<<<"$sources"
  rm -rf "$work"/prefix/{bin,share} "$work"/prefix/lib/{pkgconfig,cmake,libpng}
  find "$work/prefix" -type f -exec touch {} +
  rm -rf "$prefix"
  mv -T "$work/prefix" "$prefix"
  say "built in $SECONDS s: $prefix"
}

# The cache keeps what could be had when it was filled.
report_other_versions() {
  local line
  while read -r line; do
    say "the Windows build has $line, the native build another version; remove $prefix to try again"
  done < <(grep -vxFf <(printf '%s\n' "$sources") "$prefix/versions.txt")
}

# In a process of its own, whose end lets go of the lock and removes what is unfinished.
provide() (
  machine=$1
  work=$cache/codecs-$machine-unfinished
  log=$PWD/build/codecs-$machine.log
  prefix=$cache/codecs-$machine-$(cat <(printf '%s' "$sources") tools/get-codecs.sh "cmake/$machine-w64-mingw32.cmake" cmake/mingw-w64.cmake |
    cksum | cut -d ' ' -f 1)
  if [ ! -e "$prefix/versions.txt" ]; then
    exec 9>"$cache/codecs-$machine.lock"  # one build at a time; whoever waited for it finds the work done
    flock -n 9 || { say "waiting for another run that builds them"; flock 9; }
    [ -e "$prefix/versions.txt" ] || build_all
  fi
  [ "$(readlink "build/codecs-$machine")" = "$prefix" ] || ln -sfnT "$prefix" "build/codecs-$machine"
  report_other_versions
)

mkdir -p build "$cache"
sources=$(installed_sources)
machines=("$@")
[ $# -gt 0 ] || machines=(i686 x86_64)
for machine in "${machines[@]}"; do provide "$machine"; done
