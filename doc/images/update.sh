#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Makes all pictures of the documents anew: the demo driver works the real windows on simulated boxes, on a virtual
# display of double density. Everything stays on loopback. usage: doc/images/update.sh
set -u -o pipefail
images=$(dirname "$(readlink -f "$0")")
cd "$images/../.." || exit 1
. tools/packages.sh

# shellcheck disable=SC2086
tz_install $tz_build_packages $tz_run_packages $tz_test_packages
tz_build release tz_demo

raw=$(mktemp -d)
trap 'rm -rf "$raw"' EXIT
tz_say "working the windows"
xvfb-run -a -s "-screen 0 3600x2200x24" \
    env TZVCI_NETWORK=127.201.3 QT_SCALE_FACTOR=2 LC_ALL=C.UTF-8 \
    "$PWD/build/release/bin/tz_demo" --out "$raw" --size 1280x800 || tz_fail "the demo failed"

# What the documents show, and nothing else. The density tells the manual at which size to print a picture.
wanted=$(grep -oh 'images/[a-z0-9-]*\.png' README.md doc/*.md doc/*/*.md | sort -u)
for image in $wanted; do
    name=${image#images/}
    [ -f "$raw/$name" ] || tz_fail "the demo driver makes no $name"
    convert "$raw/$name" +dither -colors 256 -units PixelsPerInch -density 192 -define png:compression-level=9 \
        -define png:exclude-chunks=date,time,tEXt "PNG8:$images/$name" || tz_fail "could not convert $name"
done
for file in "$images"/*.png; do
    grep -q "images/${file##*/}\$" <<<"$wanted" || { tz_say "removing ${file##*/}, which no document shows"; rm "$file"; }
done
tz_say "$(wc -w <<<"$wanted") pictures are up to date"
