#!/bin/sh
# Writes a small seed corpus for fuzz_tiff into OUT_DIR, made with libtiff itself.
# Usage: fuzz/make-tiff-seeds.sh OUT_DIR
set -eu
out=$1
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
c++ -std=c++20 -O1 -o "$tmp/make-tiff-seeds" "$(dirname "$0")/TiffSeeds.cpp" \
    $(pkg-config --cflags --libs libtiff-4)
"$tmp/make-tiff-seeds" "$out"
