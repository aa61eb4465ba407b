#!/bin/sh
# A file of which nothing is known: find out what it is, then convert it.
set -eu

korvex2 --quiet chart mystery.bin --to raw12 --tile rggb --width 1280 --height 720

korvex2 guess mystery.bin --best 3 --sheet sheet.png
korvex2 convert mystery.bin picture.png --from raw12 --tile rggb --width 1280 --height 720 \
  --to rgb8 --method directional
