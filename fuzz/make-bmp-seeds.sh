#!/bin/sh
# Writes a small seed corpus for fuzz_bmp into OUT_DIR with ImageMagick: one small picture
# in each kind of BMP (the first byte of each seed is the fuzz target's request byte).
# Usage: fuzz/make-bmp-seeds.sh OUT_DIR
set -eu
out=$1
mkdir -p "$out"
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
convert rose: -resize 16x11 "$tmp/base.png"
seed() {
    name=$1
    kind=$2
    shift 2
    convert "$tmp/base.png" "$@" "$kind$tmp/seed.bmp"
    { printf '\000'; cat "$tmp/seed.bmp"; } >"$out/$name"
}
seed rgb24 bmp3:
seed rgb24-v5 bmp:
seed pal4 bmp3: -type palette -colors 16
seed pal8 bmp3: -type palette -colors 200
seed rle8 bmp3: -compress rle -type palette -colors 200
seed rgb565 bmp: -define bmp:subtype=RGB565
seed argb bmp: -alpha set
seed mono bmp3: -monochrome
