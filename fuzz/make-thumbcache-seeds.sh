#!/bin/sh
# Writes a small seed corpus for fuzz_thumbcache into OUT_DIR: whole cache files (path field,
# two thumbnail headers and their rows) and a few mount tables.
# Usage: fuzz/make-thumbcache-seeds.sh OUT_DIR
set -eu
out=$1
mkdir -p "$out"

byte() { printf "\\$(printf '%03o' $(($1 & 255)))"; }
le16() { byte "$1"; byte $(($1 >> 8)); }
le32() { le16 $(($1 & 65535)); le16 $((($1 >> 16) & 65535)); }
zeros() { head -c "$1" /dev/zero; }
pattern() { head -c "$1" /dev/zero | tr '\000' '\125'; }
# pathfield TEXT [LAST]: TEXT as UTF-16LE, padded with zeros to 520 bytes; LAST is byte 519
pathfield() {
    printf '%s' "$1" | iconv -f UTF-8 -t UTF-16LE
    n=$(printf '%s' "$1" | iconv -f UTF-8 -t UTF-16LE | wc -c)
    zeros $((519 - n))
    byte "${2:-0}"
}
# header WIDTH HEIGHT FULLWIDTH FULLHEIGHT BITS
header() { le32 40; le32 "$1"; le32 "$2"; le16 1; le16 24; le32 0; le32 0; le32 "$3"; le32 "$4"; le32 "$5"; le32 0; }
stride() { echo $(((($1 * 24 + 31) / 32) * 4)); }
# thumb WIDTH HEIGHT FULLWIDTH FULLHEIGHT BITS
thumb() { header "$@"; pattern $(($(stride "$1") * $2)); }

{ pathfield /home/me/a.jpg; thumb 96 72 4000 3000 24; thumb 32 24 4000 3000 24; } >"$out/photo"
{ pathfield /home/me/wide.png 1; thumb 96 32 300 100 8; thumb 32 10 300 100 8; } >"$out/wide-upper"
{ pathfield '/data/Zelle µ.tif'; thumb 3 1 3 1 48; thumb 3 1 3 1 48; } >"$out/odd-stride"
{ pathfield /x.bmp; thumb 1 1 1 1 1; thumb 1 1 1 1 1; pattern 9; } >"$out/trailing-bytes"
{ pathfield /x.bmp; header -2 5 1 1 24; pattern 64; } >"$out/negative-width"
{ pathfield /x.bmp; header 96 96 1 1 24; pattern 100; } >"$out/truncated-rows"
# 260 units and no terminator: not a path this program ever writes.
{ i=0; while [ $i -lt 260 ]; do printf 'a\000'; i=$((i + 1)); done; thumb 1 1 1 1 24; thumb 1 1 1 1 24; } >"$out/unterminated-path"
printf '%s\n' \
    '22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw' \
    '23 22 0:45 /@home /home rw,relatime shared:2 - btrfs /dev/nvme0n1p2 rw,subvol=/@home' \
    '24 23 0:46 / /home/me/a\040b rw - fuse.sshfs me@host: rw' >"$out/mountinfo"
printf '%s\n' '1 0 0:1 / / rw - overlay overlay rw' '2 1 8:2 / /home rw - - -' >"$out/mountinfo-short"
