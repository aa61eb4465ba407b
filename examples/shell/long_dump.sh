#!/bin/sh
# One long recording, every tenth frame of it, as a video that players understand.
set -eu

# What a recorder wrote: a header of 512 bytes, then 30 frames back to back.
head -c 512 /dev/zero >recording.bin
korvex2 --quiet chart frame.raw --to raw8 --tile rggb --width 640 --height 480
for _ in $(seq 30); do
  cat frame.raw >>recording.bin
done

korvex2 convert recording.bin recording.y4m --from raw8 --tile rggb --width 640 --height 480 \
  --header-bytes 512 --every 10 --to yuv444 --method edge
head -n 1 recording.y4m
