#!/usr/bin/env bash
# Makes everything that is handed out, from the last commit, into dist/: for 32-bit and 64-bit Windows a zip and an installer, packages
# for Debian, the source, and SHA256SUMS. Builds in a folder of its own, so that nothing else gets in.
# usage: release.sh [--twice]
#   --twice  makes all of it in two folders and compares the sums
# environment:
#   VOREL_SIGN_WITH      PKCS#12 file; Windows programs, DLLs and installers are signed with its key. Then --twice finds differences
#   VOREL_SIGN_PASSWORD  its password
set -euo pipefail
sign_with=${VOREL_SIGN_WITH:+$(realpath -- "$VOREL_SIGN_WITH")}
cd "$(dirname "$0")/.."
root=$PWD
fail() { printf 'release: %s\n' "$*" >&2; exit 1; }
say() { printf 'release: %s\n' "$*"; }

times=1
case ${1:-} in
  '') ;;
  --twice) times=2 ;;
  *) sed -n '2,/^set /{/^set /d;s/^# \{0,1\}//;p}' "$0"; exit 2 ;;
esac

./tools/setup.sh --release
while read -r name _ codec_version; do
  grep -qF "| $codec_version |" SECURITY.md || fail "SECURITY.md does not name $name $codec_version"
done <build/codecs-i686/versions.txt
version=$(sed -nE 's/^project\(vorel32 VERSION ([0-9.]+) .*/\1/p' CMakeLists.txt)
commit=$(git rev-parse HEAD)
number=$(git rev-list --count "$commit")
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct "$commit")
export SOURCE_DATE_EPOCH TZ=UTC
umask 022

# in_source LOG COMMAND...: runs a command in the source of this release.
in_source() {
  local log=$1
  shift
  (cd "$source" && "$@") >>"$log" 2>&1 || { tail -n 30 "$log" >&2; fail "$* (log: $log)"; }
}

# build PRESET OPTION...
build() {
  local preset=$1
  shift
  say "$preset (log: $source/$preset.log)"
  in_source "$source/$preset.log" cmake --preset "$preset" -DVOREL_TESTS=OFF -DVOREL_BENCH=OFF -DVOREL_BUILD="$number" \
    -DVOREL_MANUAL="$source/build/native/manual" -DVOREL_SIGN_WITH="$sign_with" "$@"
  in_source "$source/$preset.log" cmake --build "build/$preset" -j2
}

# The manual shows pictures of both systems, so it comes after both builds.
make_manual() {
  say "manual (log: $source/manual.log)"
  in_source "$source/manual.log" cmake --build build/win32 -j2 --target manual_pictures
  in_source "$source/manual.log" env VOREL_WINE_ROOT="$root/build/wine" cmake --build build/native -j2 --target manual
}

# make_all FOLDER: everything, in FOLDER/dist.
make_all() {
  local preset
  source=$1/vorel32-$version
  mkdir -p "$1/dist" "$source"
  git archive --format=tar --prefix="vorel32-$version/" "$commit" | gzip -9n >"$1/dist/vorel32-$version.tar.gz"
  tar -xzf "$1/dist/vorel32-$version.tar.gz" -C "$1"
  mkdir -p "$source/build"
  cp -a build/codecs-* "$source/build/"
  build win32
  build win64
  build native -DVOREL_DEBIAN=ON -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_INSTALL_LIBDIR="lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)"
  make_manual
  for preset in win32 win64 native; do
    in_source "$source/$preset.log" cpack --config "build/$preset/CPackConfig.cmake"
  done
  find "$source"/build/*/packages -maxdepth 1 \( -name '*.zip' -o -name '*.exe' -o -name '*.deb' \) -exec cp -t "$1/dist" {} +
  (cd "$1/dist" && LC_ALL=C sha256sum -- * >SHA256SUMS)
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
make_all "$work/first folder"
if [ "$times" = 2 ]; then
  make_all "$work/second"
  diff "$work/first folder/dist/SHA256SUMS" "$work/second/dist/SHA256SUMS" || fail "the sums differ between two folders"
  say "the same sums from two folders"
fi
rm -rf "$root/dist"
cp -r "$work/first folder/dist" "$root/dist"
say "made, in dist/:"
cat "$root/dist/SHA256SUMS"
