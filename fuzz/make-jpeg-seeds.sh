#!/bin/sh
# Writes a small seed corpus for fuzz_jpeg into OUT_DIR (every coding and colour layout,
# a few hundred bytes each) by building and running JpegSeedWriter.cpp with libjpeg.
# Usage: fuzz/make-jpeg-seeds.sh OUT_DIR
set -eu
out=$1
mkdir -p "$out"
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
"${CXX:-c++}" -std=c++20 -O1 -o "$tmp/jpeg-seeds" "$(dirname "$0")/JpegSeedWriter.cpp" -ljpeg
"$tmp/jpeg-seeds" "$out"
