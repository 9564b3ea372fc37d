#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs what is missing, builds and runs the whole test suite. usage: ./test.sh [PRESET]   (default: release)
set -u -o pipefail
cd "$(dirname "$(readlink -f "$0")")" || exit 1
. tools/packages.sh

preset=${1:-release}
# shellcheck disable=SC2086
tz_install $tz_build_packages $tz_run_packages $tz_test_packages
tz_build "$preset"
tz_say "testing $preset"
ctest --preset "$preset" -j2 || tz_fail "tests failed"
tz_say "all tests of $preset passed"
