#!/bin/sh
# Writes a small seed corpus for fuzz_webp into OUT_DIR (see make-webp-seeds.cpp).
# Usage: fuzz/make-webp-seeds.sh OUT_DIR
set -eu
out=$1
mkdir -p "$out"
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
# shellcheck disable=SC2046 # pkg-config prints several words on purpose
c++ -std=c++20 -O1 -o "$tmp/make-webp-seeds" "$(dirname "$0")/make-webp-seeds.cpp" \
    $(pkg-config --cflags --libs libwebp)
"$tmp/make-webp-seeds" "$out"
