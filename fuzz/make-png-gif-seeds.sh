#!/bin/sh
# Writes small seed corpora for fuzz_png and fuzz_gif, made with libpng and giflib by a
# little generator compiled on the spot.
# Usage: fuzz/make-png-gif-seeds.sh PNG_DIR GIF_DIR
set -eu
here=$(dirname "$0")
mkdir -p "$1" "$2"
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
${CXX:-c++} -std=c++20 -O1 -o "$tmp/seeds" "$here/PngGifSeeds.cpp" -lpng -lgif
"$tmp/seeds" "$1" "$2"
