#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds the soak run in Release and runs it for MINUTES: the workbench on 16 simulated boxes with all buses at 60 %
# load, a restless user and boxes that go wrong. Prints a table; ends with 1 and the reasons when something was wrong.
# usage: tests/soak/soak.sh MINUTES [--seed N]   the same seed gives the same actions and faults again
set -u -o pipefail
cd "$(dirname "$(readlink -f "$0")")/../.." || exit 2
. tools/packages.sh

usage() {
    printf 'usage: tests/soak/soak.sh MINUTES [--seed N]\n' >&2
    exit 2
}
minutes=${1:-}
case $minutes in
'' | *[!0-9]* | 0) usage ;;
esac
shift
seed=()
if [ $# -gt 0 ]; then
    [ $# -eq 2 ] && [ "$1" = --seed ] || usage
    case $2 in
    '' | *[!0-9]*) usage ;;
    esac
    seed=(--seed "$2")
fi

tz_build release tz_soak
# Traffic stays on loopback, in a network of this run alone.
export TZVCI_NETWORK=127.$((RANDOM % 120 + 120)).$((RANDOM % 250 + 1))
tz_say "soaking for $minutes min"
build/release/bin/tz_soak --seconds $((minutes * 60)) "${seed[@]}" || tz_fail "the soak run of $minutes min failed"
