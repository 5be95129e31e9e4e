#!/bin/sh
# Writes a small seed corpus for fuzz_dib into OUT_DIR: one packed bitmap of each kind the
# conversion and the transforms handle. The first byte of each seed picks the transform.
# Usage: fuzz/make-dib-seeds.sh OUT_DIR
set -eu
out=$1
mkdir -p "$out"

byte() { printf "\\$(printf '%03o' $(($1 & 255)))"; }
le16() { byte "$1"; byte $(($1 >> 8)); }
le32() { le16 $(($1 & 65535)); le16 $((($1 >> 16) & 65535)); }
zeros() { head -c "$1" /dev/zero; }
pattern() { head -c "$1" /dev/zero | tr '\000' '\125'; }
# info WIDTH HEIGHT BITS COMPRESSION COLOURS IMAGESIZE
info() { le32 40; le32 "$1"; le32 "$2"; le16 1; le16 "$3"; le32 "$4"; le32 "$6"; le32 2835; le32 2835; le32 "$5"; le32 0; }

{ byte 0; info 3 2 24 0 0 0; pattern 24; } >"$out/rgb24"
{ byte 1; info 4 2 8 0 16 0; pattern 64; pattern 8; } >"$out/pal8-16"
{ byte 2; info 9 3 1 0 2 0; pattern 8; pattern 12; } >"$out/mono-9"
{ byte 3; info 5 2 4 0 0 0; pattern 64; pattern 8; } >"$out/pal4"
{ byte 4; info 4 2 8 1 0 12; pattern 1024; byte 3; byte 1; byte 0; byte 3; byte 1; byte 2; byte 3; byte 0; byte 0; byte 2; byte 1; byte 1; } >"$out/rle8"
{ byte 0; info 8 1 4 2 0 8; pattern 64; byte 3; byte 18; byte 0; byte 4; byte 52; byte 86; byte 0; byte 1; } >"$out/rle4"
{ byte 1; info 3 2 16 3 0 0; le32 63488; le32 2016; le32 31; pattern 16; } >"$out/bitfields565"
{ byte 2; info 2 2 32 3 0 0; le32 1072693248; le32 1047552; le32 1023; pattern 16; } >"$out/bitfields101010"
{ byte 3; le32 12; le16 2; le16 2; le16 1; le16 8; pattern 768; pattern 8; } >"$out/core8"
{ byte 4; info 2 -2 24 0 0 0; pattern 16; } >"$out/topdown24"
