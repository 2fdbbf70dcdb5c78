#!/usr/bin/env bash
# Drives the viewer with real keys and a real mouse on a virtual screen and checks what it shows.
# usage: user_interface.sh [--whole] BUILD_FOLDER   (of the Windows build)
#   --whole  also every way to show a picture, dialogs, pages, printing and the clipboard, with a contact sheet
# environment:
#   VOREL_SHOTS  where screenshots are kept (default: of --whole viewer-screenshots in the build folder, else nowhere; after a
#                failure they are in the build folder)
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
cd "$here/../.."
session=--session
[ ! -e "${!#}/bin/VOREL64.DLL" ] || session=--session64
if [ -z "${VOREL_WINE_SESSION:-}" ]; then exec ./tools/run-wine.sh $session "$here/user_interface.sh" "$@"; fi

form=short
if [ "${1:-}" = --whole ]; then form=whole; shift; fi
build=$1
work=$(mktemp -d)
pictures=$work/pictures shots=${VOREL_SHOTS:-$work/shots}
if [ $form = whole ]; then shots=${VOREL_SHOTS:-$build/viewer-screenshots}; fi
mkdir -p "$pictures" "$shots"
for part in drive basics whole habits printing; do
  # shellcheck source=/dev/null
  . "$here/$part.sh"
done

make_pictures
view_and_zoom
band
lens
process
save
if [ $form = whole ]; then
  sizes_and_wheel
  dialogs_and_operations
  press r
  files_and_pages
  windows_beside
  page_work
  preview_of_an_operation
  batch_over_a_folder
  deletion
  slide_show
  reading_backwards
  rewritten_file
  stopped_loading
  names_and_errors
  printing
  clipboard
  quit answer_question
  montage -font DejaVu-Sans -pointsize 11 -label '%t' "$shots"/*.png -tile 5x -geometry 400x320+6+6 -background '#f4f4f0' "$shots/sheet.png"
else
  quit
fi
printf 'the viewer passed; screenshots: %s\n' "$shots"
