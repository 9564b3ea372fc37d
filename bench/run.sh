#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds the benchmarks in Release and runs them. Prints one line for each figure, tab-separated:
#   name value unit target ok|short
# where the value is the median of the runs. Ends with 1 when a figure falls short, with 2 when a benchmark failed.
# usage: bench/run.sh [NAME...]   a NAME is a benchmark (models), a figure (idle_memory) or how some figures begin
# TZ_BENCH_RUNS: runs of each benchmark (default 3). TZ_BENCH_PREFIX: command put before each, such as "taskset -c 1".
set -u -o pipefail
cd "$(dirname "$(readlink -f "$0")")/.." || exit 2
. tools/packages.sh

runs=${TZ_BENCH_RUNS:-3}
read -r -a prefix <<<"${TZ_BENCH_PREFIX:-}"
case $runs in
'' | *[!0-9]* | 0) tz_fail "TZ_BENCH_RUNS is a number from 1 up, not '$runs'" ;;
esac

# Traffic stays on loopback, in a network of this run alone.
export TZVCI_NETWORK=127.$((RANDOM % 120 + 120)).$((RANDOM % 250 + 1))
export QT_QPA_PLATFORM=offscreen

# Prints the benchmark that a NAME means: its own name, or the one whose source reports a figure that begins so.
benchmark_of() {
    local benchmark source
    for benchmark in "${all[@]}"; do
        [ "$1" = "$benchmark" ] && { printf '%s' "$1"; return; }
    done
    source=$(grep -lF "\"$1" bench/*Bench.cpp | head -n 1)
    [ -n "$source" ] && sed -n "s/^tz_add_bench(bench_\([a-z_]*\) SOURCES .*\b${source##*/}\b.*/\1/p" bench/CMakeLists.txt
}

# Medians of the lines of all runs, in the order in which the figures first came; NAMEs let only their figures through.
summarise() {
    awk -F'\t' -v wanted="$*" '
        BEGIN { wantedCount = split(wanted, wantedNames, " ") }
        NF == 5 && ($5 == "ok" || $5 == "short") {
            if (!($1 in count)) order[++figures] = $1
            value[$1, ++count[$1]] = $2; unit[$1] = $3; target[$1] = $4
        }
        function isWanted(name,    i) {
            for (i = 1; i <= wantedCount; ++i)
                if (index(name, wantedNames[i]) == 1) return 1
            return wantedCount == 0
        }
        function median(name,    i, j, swap, n, sorted) {
            n = count[name]
            for (i = 1; i <= n; ++i) sorted[i] = value[name, i]
            for (i = 2; i <= n; ++i)
                for (j = i; j > 1 && sorted[j - 1] + 0 > sorted[j] + 0; --j) {
                    swap = sorted[j]; sorted[j] = sorted[j - 1]; sorted[j - 1] = swap
                }
            return sorted[int((n + 1) / 2)]
        }
        END {
            for (f = 1; f <= figures; ++f) {
                name = order[f]
                if (!isWanted(name)) continue
                middle = median(name)
                limit = substr(target[name], 3) + 0
                ok = index(target[name], ">=") == 1 ? middle + 0 >= limit : middle + 0 <= limit
                printf "%s\t%s\t%s\t%s\t%s\n", name, middle, unit[name], target[name], ok ? "ok" : "short"
                if (!ok) short = 1
            }
            exit short
        }'
}

build_log=$(mktemp)
lines=$(mktemp)
errors=$(mktemp)
trap 'rm -f "$build_log" "$lines" "$errors"' EXIT

if [ ! -f build/release/build.ninja ]; then
    cmake --preset release >"$build_log" 2>&1 || { cat "$build_log" >&2; tz_fail "cmake --preset release failed"; }
fi
mapfile -t all < <(ninja -C build/release -t targets all | sed -n 's#^bin/bench_\([a-z_]*\): .*#\1#p' | sort)
[ ${#all[@]} -gt 0 ] || tz_fail "there is no benchmark to build"

chosen=()                  # benchmarks, in the order of their naming
declare -A names           # of each: the figures wanted; empty for all of them
for name in "${@:-}"; do
    [ -n "$name" ] || { chosen=("${all[@]}"); break; }
    benchmark=$(benchmark_of "$name")
    [ -n "$benchmark" ] || tz_fail "nothing is called '$name'; the benchmarks are: ${all[*]}"
    [[ " ${chosen[*]} " == *" $benchmark "* ]] || { chosen+=("$benchmark"); names[$benchmark]=' '; }
    [ "$name" = "$benchmark" ] && names[$benchmark]=''
    [ -n "${names[$benchmark]}" ] && names[$benchmark]+="$name "
done

cmake --build --preset release --target "${chosen[@]/#/bench_}" -- --quiet >"$build_log" 2>&1 ||
    { cat "$build_log" >&2; tz_fail "the release build failed"; }

status=0
for benchmark in "${chosen[@]}"; do
    : >"$lines"
    for ((run = 1; run <= runs; ++run)); do
        printf '== %s, run %d of %d\n' "$benchmark" "$run" "$runs" >&2
        "${prefix[@]}" "build/release/bin/bench_$benchmark" >>"$lines" 2>"$errors"
        result=$?
        # 1 says that a figure falls short in this run; what counts is the median of all runs.
        if [ $result -gt 1 ] || ! grep -q $'\t' "$lines"; then
            cat "$errors" >&2
            printf 'error: %s failed with result %d\n' "$benchmark" "$result" >&2
            status=2
            break
        fi
    done
    summarise "${names[$benchmark]:-}" <"$lines" || [ $status -eq 2 ] || status=1
done
exit $status
