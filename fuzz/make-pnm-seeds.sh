#!/bin/sh
# Writes a small seed corpus for fuzz_pnm into OUT_DIR: every kind of anymap, plain and raw,
# 8- and 16-bit samples, comments. The first byte of each seed is the fuzzer's own (page and
# thumbnail choice); 0 asks for a plain decode.
# Usage: fuzz/make-pnm-seeds.sh OUT_DIR
set -eu
out=$1
mkdir -p "$out"

seed() { # name, then printf format and arguments for the file itself
    name=$1
    shift
    { printf '\000'; printf "$@"; } >"$out/$name"
}

seed p1 'P1\n# plain bitmap\n5 3\n10101\n0 1 0 1 0\n11111\n'
seed p2 'P2\n4 2\n15\n0 5 10 15\n15 10 5 0\n'
seed p3 'P3 2 2 255\n255 0 0 0 255 0\n0 0 255 128 128 128\n'
seed p3-16 'P3 1 2 65535 65535 0 32768 0 1 2\n'
seed p4 'P4\n9 2\n\245\200\074\377'
seed p5 'P5 3 2 255\n\000\200\377\001\002\003'
seed p5-16 'P5 2 1 1000\n\003\350\001\364'
seed p6 'P6\n#c\n2 2\n255\n\377\000\000\000\377\000\000\000\377\200\200\200'
seed p6-16 'P6 1 1 65535\n\377\377\000\000\200\200'
