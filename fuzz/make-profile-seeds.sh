#!/bin/sh
# Writes a small seed corpus for fuzz_profile into OUT_DIR. The first byte of each seed
# picks the stage: 0 a whole profile, 1 a decoded text, 2 one padded block.
# Usage: fuzz/make-profile-seeds.sh PATH/TO/lanmira-profile-writer OUT_DIR
set -eu
writer=$1
out=$2
key=$(dirname "$0")/../tools/default-profile-key.pem
mkdir -p "$out"
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

n=0
for xml in \
    '<lanmira><oem company="Vornalt" app="Lanmira" orbicam="a" orbinam="b"/></lanmira>' \
    '<lanmira vnupdate="v"><oem url="u" display="d"/><OEM company="c"/><oem app=""/></lanmira>' \
    '<?xml version="1.0"?><!DOCTYPE lanmira><Lanmira><!-- x --></Lanmira>' \
    '<lanmira><oem company="&amp;&#x1F52C;"></lanmira>'; do
    n=$((n + 1))
    printf '%s' "$xml" >"$tmp/in.xml"
    "$writer" --key "$key" "$tmp/in.xml" "$tmp/out.exml"
    { printf '\000'; cat "$tmp/out.exml"; } >"$out/profile-$n"
    { printf '\001\377\376'; printf '%s' "$xml" | iconv -f UTF-8 -t UTF-16LE; } >"$out/text-$n"
done
{ printf '\002\000\001'; head -c 8 /dev/zero | tr '\000' '\377'; printf '\000'; head -c 117 /dev/zero | tr '\000' 'x'; } >"$out/block-1"
