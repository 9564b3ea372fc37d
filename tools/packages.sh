# SPDX-License-Identifier: GPL-3.0-or-later
# shellcheck shell=bash disable=SC2034 # the lists are for the scripts that source this
# Sourced by the scripts of this project: installs the Debian packages that are missing, and nothing where all are there.

tz_say() { printf '== %s\n' "$*"; }
tz_fail() { printf 'error: %s\n' "$*" >&2; exit 1; }

tz_build_packages="g++ cmake ninja-build pkg-config qtbase5-dev libfmt-dev libspdlog-dev
libconcurrentqueue-dev zlib1g-dev libgtest-dev libgmock-dev librsvg2-bin icoutils python3-markdown weasyprint
fonts-open-sans fonts-dejavu-core"
tz_run_packages="xvfb xauth fonts-dejavu-core"
tz_test_packages="iproute2 xdotool imagemagick procps python3 python3-can python3-pypdf"
tz_fuzz_packages="clang libclang-rt-14-dev"

tz_install() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    local sudo=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || tz_fail "these packages are missing and sudo is not there: ${missing[*]}"
        sudo=(sudo)
    fi
    tz_say "installing ${missing[*]}"
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -qq || tz_fail "apt-get update failed"
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" \
        >/dev/null || tz_fail "could not install ${missing[*]}"
}

# Configures (once) and builds a preset: tz_build PRESET [TARGET...]
tz_build() {
    local preset=$1
    shift
    if [ ! -f "build/$preset/build.ninja" ]; then
        tz_say "configuring $preset"
        cmake --preset "$preset" >"build-$preset.log" 2>&1 || { cat "build-$preset.log"; tz_fail "cmake --preset $preset failed"; }
        rm -f "build-$preset.log"
    fi
    tz_say "building $preset"
    cmake --build --preset "$preset" ${1:+--target "$@"} -- --quiet || tz_fail "the $preset build failed"
}
