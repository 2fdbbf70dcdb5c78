#!/usr/bin/env bash
# Goal: a module of a codec's name in the current folder, in the search path or beside the document is never loaded while the genuine one
# is there; a missing one gives the stated message and result; the command line never shows a box, which would wait for a person.
source "$(dirname "$0")/common.sh"
in_session "$@"
build native checks planted vorel codec_modules
build win32 checks planted vorel codec_modules
area=$root/build/check/modules

# format's code, file, module that loads, module that saves
formats=('1 a.tif MERV32 MERV' '12 a.cal MERV32 MERV' '2 a.pcx ODAL32 ODAL' '3 a.dcx ODAL32 ODAL' '4 a.gif SUNE32 SUNE' '5 a.tga BRIX32 BRIX'
         '13 a.jpg KALO32 KALO' '14 a.png WERT32 -')
modules='MERV32 MERV ODAL32 ODAL SUNE32 SUNE BRIX32 BRIX KALO32 KALO WERT32'

# run PROGRAM ARGUMENT...: an installed program, in the current folder that may have planted modules; at most 60 seconds.
run() {
  local program=$1
  shift
  if [ "$preset" = win32 ]; then
    (cd "$area/current" && WINEPATH="Z:${area//\//\\}\\path" timeout 60 "$root/tools/run-wine.sh" "$area/installed/$program.exe" "$@")
  else
    (cd "$area/current" && PATH=$area/path:$PATH LD_LIBRARY_PATH=$area/path timeout 60 "$area/installed/$program" "$@")
  fi
}

install() {
  rm -rf "$area"
  mkdir -p "$area"/{installed,current,path,documents}
  if [ "$preset" = win32 ]; then
    cp build/win32/bin/{vorel,checks}.exe build/win32/bin/*.DLL "$area/installed/" && ending=DLL
  else
    cp -a build/native/bin/{vorel,checks} build/native/bin/libvorel32.so* build/native/bin/*.so "$area/installed/" && ending=so
  fi
  rm -f "$area/installed/RECORDER.$ending"
  for format in "${formats[@]}"; do
    read -r code file _ saver <<<"$format"
    if [ "$saver" = - ]; then
      run vorel convert ../documents/a.pcx "../documents/$file"
    else
      run checks save "../documents/$file" "$code"
    fi || fault "$preset: no document $file"
  done
}

# use MODULE: loads or saves a picture with it, by the command line and by the library. Leaves the statuses in tool and library.
use() {
  local module=$1 code file loader saver
  tool=0 library=0
  rm -f "$area"/documents/made*
  for format in "${formats[@]}"; do
    read -r code file loader saver <<<"$format"
    if [ "$module" = "$loader" ]; then
      run vorel convert "../documents/$file" ../documents/made.bmp >"$area/tool.txt" 2>&1 || tool=$?
      run checks load "../documents/$file" >"$area/library.txt" 2>&1 || library=$?
      return
    elif [ "$module" = "$saver" ] && [ "$code" != 3 ]; then
      local source=../documents/a.pcx
      [ "$code" != 12 ] || source=../documents/a.cal
      run vorel convert "$source" "../documents/made.${file#a.}" >"$area/tool.txt" 2>&1 || tool=$?
      run checks save "../documents/made2.${file#a.}" "$code" >"$area/library.txt" 2>&1 || library=$?
      return
    fi
  done
  fault "nothing uses $module"
}

# A planted module in the genuine one's place is loaded and tells: otherwise the silence of the others means nothing.
check_planted() {
  mv "$area/installed/ODAL32.$ending" "$area/kept"
  cp "build/$preset/bin/planted.module" "$area/installed/ODAL32.$ending"
  use ODAL32
  [ -e "$area/loaded.txt" ] || fault "$preset: a planted module that is loaded does not tell"
  mv "$area/kept" "$area/installed/ODAL32.$ending"
}

for preset in native win32; do
  install
  export PLANTED=$area/loaded.txt
  [ "$preset" = native ] || PLANTED=Z:${PLANTED//\//\\}
  check_planted
  for module in $modules; do
    # All three places at once: a module that is loaded from any of them tells.
    for place in current path documents; do cp "build/$preset/bin/planted.module" "$area/$place/$module.$ending"; done
    rm -f "$area/loaded.txt"
    use "$module"
    calls=$((calls + 3))
    [ ! -e "$area/loaded.txt" ] || fault "$preset: a planted $module was loaded"
    [ "$tool$library" = 00 ] || fault "$preset: $module beside planted ones: statuses $tool and $library: $(cat "$area/tool.txt" "$area/library.txt")"
    rm -f "$area"/{current,path,documents}/"$module.$ending"

    # Missing: the command line tells and fails, the library shows its message and gives zero. No made file is left.
    mv "$area/installed/$module.$ending" "$area/kept"
    use "$module"
    missing=$((${missing:-0} + 1))
    [ "$tool" = 7 ] && grep -q "$module" "$area/tool.txt" ||
      fault "$preset: missing $module: the command line ends with $tool: $(cat "$area/tool.txt")"
    [ "$library" = 1 ] && grep -q "VOREL DLL: '$module.$ending' module has not found" "$area/library.txt" ||
      fault "$preset: missing $module: the library gives $library: $(cat "$area/library.txt")"
    made=$(ls "$area"/documents/made* 2>/dev/null)
    [ -z "$made" ] || fault "$preset: missing $module: left $made"
    mv "$area/kept" "$area/installed/$module.$ending"
  done
done
unset PLANTED
conclude "0 of 66 planted modules loaded (11 modules x current folder, search path, beside the document x 2 builds); $missing missing ones: message and result as stated, no box" \
  "$calls planted and $missing missing modules, $faults faults"
