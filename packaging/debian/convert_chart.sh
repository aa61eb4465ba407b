#!/bin/sh
# Converts the test chart with the tool that is named, in a directory of its own, and prints a digest of the pixels.
# The same for every build of the tool.
set -eu
directory=$(mktemp -d)
trap 'rm -r "$directory"' EXIT
chart() { echo "--from $1 --width 641 --height 363"; }

cd "$directory"
"$@" chart mosaic.raw --to raw12 --tile grbg --width 641 --height 363
# shellcheck disable=SC2046
{
  "$@" convert mosaic.raw colour.raw $(chart raw12) --tile grbg --to bgr --method hq_linear
  "$@" convert colour.raw colour.png $(chart bgr) --to rgb8
  "$@" convert colour.png yuv.raw --to yuv411
} >messages 2>&1 || { cat messages >&2; exit 1; }
cat mosaic.raw colour.raw yuv.raw | sha256sum
