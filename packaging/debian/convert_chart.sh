#!/bin/sh
# Converts the test chart with the tool that is named, in a directory of its own, and prints a digest of the pixels.
# The same for every build of the tool.
set -eu
directory=$(mktemp -d)
trap 'rm -r "$directory"' EXIT
cd "$directory"

convert() {
  "$@" >messages 2>&1 || { cat messages >&2; exit 1; }
}

size="--width 642 --height 362"
# shellcheck disable=SC2086
{
  convert "$@" chart mosaic.raw --to raw12 --tile grbg $size
  convert "$@" convert mosaic.raw colour.raw --from raw12 --tile grbg $size --to bgr --method hq_linear
  convert "$@" convert colour.raw colour.png --from bgr $size --to rgb8
  convert "$@" convert colour.png yuv.raw --to yuv411
}
cat mosaic.raw colour.raw yuv.raw | sha256sum
