#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds the workbench, starts the simulator with traffic and the workbench on it. Everything stays on loopback.
# Without a display the demo driver runs under a virtual one, saves screenshots and prints the counters.
# usage: ./run.sh            the workbench on simulated boxes
#        ./run.sh --real     the workbench on the boxes in the network 192.168.201.0/24
set -u -o pipefail
cd "$(dirname "$(readlink -f "$0")")" || exit 1
. tools/packages.sh

# shellcheck disable=SC2086
tz_install $tz_build_packages $tz_run_packages
tz_build release tzbench tzvci-sim tz_demo manual
bin=$PWD/build/release/bin

if [ "${1:-}" = --real ]; then
    tz_say "starting the workbench on the real network"
    exec "$bin/tzbench"
fi

export TZVCI_NETWORK=${TZVCI_NETWORK:-127.201.1}
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
    tz_say "no display: running the demo under a virtual one"
    mkdir -p screenshots
    xvfb-run -a -s "-screen 0 1600x1000x24" "$bin/tz_demo" --out "$PWD/screenshots" || tz_fail "the demo failed"
    tz_say "screenshots are in $PWD/screenshots"
    exit 0
fi

tz_say "starting two simulated boxes with traffic on $TZVCI_NETWORK"
"$bin/tzvci-sim" --boxes 2 --demo &
simulator=$!
trap 'kill "$simulator" 2>/dev/null; wait "$simulator" 2>/dev/null' EXIT
tz_say "starting the workbench"
"$bin/tzbench"
