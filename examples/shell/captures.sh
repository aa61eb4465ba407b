#!/bin/sh
# A folder of packed 12-bit mosaics becomes PNG files, on all cores; a second run does what is missing.
set -eu

# What a camera wrote: headerless frames of 640 x 480.
mkdir -p captures
for name in first second third; do
  korvex2 --quiet chart "captures/$name.raw" --to raw12 --tile grbg --width 640 --height 480
done

convert() {
  korvex2 convert captures 'pictures/{name}.png' --from raw12 --tile grbg --width 640 --height 480 \
    --to rgb8 --method hq_linear --resume
}
convert
rm pictures/second.png
convert
