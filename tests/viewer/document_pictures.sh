#!/usr/bin/env bash
# Makes the pictures of docs/viewer.md from the screenshots of "user_interface.sh --whole" and of appearance.sh.
# usage: document_pictures.sh BUILD_FOLDER   (of the Windows build)
set -euo pipefail
shots=$(cd "$1" && pwd)/viewer-screenshots
cd "$(dirname "$0")/../../docs"

# picture NAME SCREENSHOT [CROP]: without the empty screen around the windows, in few colours.
picture() {
  convert "$shots/$2.png" ${3:+-crop "$3" +repage} -bordercolor black -border 1 -trim +repage -dither None -colors 128 \
    -define png:compression-level=9 "PNG8:viewer-$1.png"
}

picture page 42-pages
picture lens 30-lens-on-page
picture folder 40-thumbnails-of-the-folder
picture information 42-information-of-tags
picture preview 47-preview
picture batch 50-batch-done
picture sheet 37-preview-of-several 723x673+278+176
picture double 70-double-size-window
ls -l viewer-*.png
