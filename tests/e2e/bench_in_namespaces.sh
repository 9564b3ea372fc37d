#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# The program itself against simulated boxes at the real addresses: two network namespaces joined by a veth pair, so that
# nothing reaches a real interface. Judged from the outside alone: log file, saved settings, the simulator's own counters
# and a picture. usage: bench_in_namespaces.sh FOLDER_OF_PROGRAMS [FOLDER_FOR_RESULTS]
# Exit code 77 says that namespaces are not permitted here.
set -u -o pipefail
bin=$(readlink -f "$1")
here=$(dirname "$(readlink -f "$0")")
out=${2:-$(mktemp -d)}
mkdir -p "$out" && out=$(readlink -f "$out")
rm -rf "$out/work" "$out/display" "$out/stats.json" "$out/stderr.txt" "$out"/*.png # of an earlier run
mkdir -p "$out/work"
host_ns=tze2e-host-$$
box_ns=tze2e-box-$$
pids=()
unset TZVCI_NETWORK

cleanup() {
    local pid
    for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null; done
    for pid in "${pids[@]}"; do wait "$pid" 2>/dev/null; done
    ip netns del "$host_ns" 2>/dev/null
    ip netns del "$box_ns" 2>/dev/null
}
trap cleanup EXIT

fail() {
    echo "FAILED: $*"
    [ -n "${DISPLAY:-}" ] && import -window root "$out/failed.png" 2>/dev/null
    echo "--- log"; tail -n 40 "$out/work/logs/TZBench.log" 2>/dev/null
    echo "--- results are in $out"
    exit 1
}

# wait_for SECONDS WHAT COMMAND...: until the command succeeds
wait_for() {
    local limit=$1 what=$2 end
    shift 2
    end=$((SECONDS + limit))
    until "$@" >/dev/null 2>&1; do
        [ $SECONDS -ge $end ] && fail "$what did not come about within $limit s"
        sleep 0.1
    done
    echo "ok: $what"
}

logged() { grep -qF -- "$1" "$out/work/logs/TZBench.log"; }
checked() { python3 "$here/check_results.py" "$out" "$@"; }

# ---- two hosts on one wire
if ! ip netns add "$host_ns" 2>/dev/null || ! ip netns add "$box_ns" 2>/dev/null; then
    echo "SKIPPED: network namespaces are not permitted here"
    exit 77
fi
if ! ip netns exec "$host_ns" true 2>/dev/null; then
    echo "SKIPPED: programs cannot be started in network namespaces here"
    exit 77
fi
ip link add tzh$$ netns "$host_ns" type veth peer name tzb$$ netns "$box_ns" || { echo "SKIPPED: veth pairs are not permitted here"; exit 77; }
ip -n "$host_ns" addr add 192.168.201.199/24 dev tzh$$
for octet in 130 131; do ip -n "$box_ns" addr add 192.168.201.$octet/24 dev tzb$$; done
for ns in "$host_ns" "$box_ns"; do ip -n "$ns" link set lo up; done
ip -n "$host_ns" link set tzh$$ up
ip -n "$box_ns" link set tzb$$ up

# ---- boxes, display, program
ip netns exec "$box_ns" "$bin/tzvci-sim" --boxes 2 --can 4 --lin 2 --demo --quiet --stats-file "$out/stats.json" &
sim=$!
pids+=("$sim")
wait_for 10 "the simulator runs" test -s "$out/stats.json"


# Xvfb writes the display number that it found free.
Xvfb -displayfd 3 -screen 0 1600x1000x24 -nolisten tcp 3>"$out/display" >/dev/null 2>&1 &
pids+=($!)
wait_for 20 "the display runs" test -s "$out/display"
DISPLAY=:$(tr -d '[:space:]' <"$out/display")
export DISPLAY

cd "$out/work" || exit 1
QT_QPA_PLATFORM=xcb QT_SCALE_FACTOR=1 ip netns exec "$host_ns" "$bin/tzbench" 2>"$out/stderr.txt" &
bench=$!
pids+=("$bench")
wait_for 30 "the start-up scan found device 0" logged "Scan to device 0"
wait_for 10 "the start-up scan found device 1" logged "Scan to device 1"

# ---- the settings dialog, worked with the mouse
wait_for 30 "the settings dialog shows" xdotool search --onlyvisible --name '^Device Settings$'
dialog=$(xdotool search --onlyvisible --name '^Device Settings$' | head -n 1)
click() { xdotool mousemove --window "$dialog" "$1" "$2" click 1; }
click 60 86
click 285 51
wait_for 10 "device 0 opened" logged "Opened Device 0"
click 290 157
wait_for 10 "CAN1 opened" logged "Opened device 0 channel 1: id 1."
click 290 185
wait_for 10 "CAN2 opened" logged "Opened device 0 channel 2: id 1."
click 290 473
wait_for 10 "LIN1 opened" logged "Opened device 0 channel 1: id 5."
import -window root "$out/settings.png"
xdotool windowfocus "$dialog" key Escape
wait_for 10 "the settings are saved" checked saved

# ---- traffic, then the end
wait_for 20 "frames flow" checked flowing
import -window root "$out/views.png"
wait_for 5 "the views show rows" checked picture
kill -TERM "$bench"
wait "$bench" || fail "the program ended with code $?"
echo "ok: the program ended by itself"
wait_for 10 "the channels are closed" checked closed
checked order || fail "the requests did not come in their order"
for line in "Closed device 0 channel 1: id 1" "Closed device 0 channel 2: id 1" "Closed device 0 channel 1: id 5" "Closed Device 0"; do
    logged "$line" || fail "the log lacks \"$line\""
done
grep -qE '\[(error)\]' logs/TZBench.log && fail "the log holds errors"
echo "1 passed, 0 failed"
