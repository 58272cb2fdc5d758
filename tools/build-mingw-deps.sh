#!/usr/bin/env bash
# Builds the compiled dependencies of the Windows cross build (yaml-cpp, the parts of Abseil in use, GoogleTest
# with GoogleMock) for MinGW-w64 from Debian's source packages, the same versions the Linux build links; and
# takes cpp-httplib's header from its source package, since Debian's -dev package holds only declarations
# (its definitions are in a Linux library) while the original header is whole.
# They go into a cache outside the checkout, one folder per set of versions, and "current" points at the one in
# use: a second run with the same versions does nothing. Called by install-deps.sh when VANTEL_WINDOWS=1.
set -euo pipefail

repo=$(cd "$(dirname "$0")/.." && pwd)
cache=${VANTEL_MINGW_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/vantel/mingw-deps}
jobs=2  # CI has two cores

source_version() {
    dpkg-query -W -f '${source:Version}' "$1"
}

yaml_version=$(source_version libyaml-cpp-dev)
absl_version=$(source_version libabsl-dev)
gtest_version=$(source_version libgtest-dev)
httplib_version=$(source_version libcpp-httplib-dev)
compiler_version=$(x86_64-w64-mingw32-g++-posix -dumpfullversion)
key="yaml-cpp_${yaml_version}-abseil_${absl_version}-googletest_${gtest_version}-cpp-httplib_${httplib_version}-gcc_${compiler_version}"
prefix="$cache/$key"
if [ -f "$prefix/.complete" ]; then
    ln -sfn "$key" "$cache/current"
    exit 0
fi

# apt-get source needs a deb-src entry; the script adds one beside each Debian archive it finds.
ensure_source_entries() {
    if apt-get indextargets --format '$(CREATED_BY)' 2>/dev/null | grep -q '^Sources$'; then
        return
    fi
    local sudo=""
    [ "$(id -u)" -ne 0 ] && sudo=sudo
    local list=/etc/apt/sources.list.d/vantel-deb-src
    if [ -f /etc/apt/sources.list.d/debian.sources ]; then
        sed 's/^Types: deb$/Types: deb-src/' /etc/apt/sources.list.d/debian.sources | $sudo tee "$list.sources" >/dev/null
    elif [ -f /etc/apt/sources.list ]; then
        sed -n 's/^deb /deb-src /p' /etc/apt/sources.list | $sudo tee "$list.list" >/dev/null
    else
        echo "build-mingw-deps: no Debian archive is configured; cannot fetch source packages"
        exit 1
    fi
    echo "build-mingw-deps: added deb-src entries in $list.*"
    $sudo apt-get update -qq
}

work=$(mktemp -d "${TMPDIR:-/tmp}/vantel-mingw-deps.XXXXXX")
trap 'rm -rf "$work"' EXIT
rm -rf "$prefix"
mkdir -p "$prefix"

ensure_source_entries
echo "build-mingw-deps: building $key into $cache"
cd "$work"
apt-get source -qq "yaml-cpp=$yaml_version" "abseil=$absl_version" "googletest=$gtest_version" \
    "cpp-httplib=$httplib_version" >/dev/null 2>&1 \
    || { echo "build-mingw-deps: apt-get source failed"; exit 1; }

configure_and_build() {  # source folder, build folder, options...
    local source=$1 build=$2
    shift 2
    cmake -S "$source" -B "$build" -G Ninja -Wno-dev \
        -DCMAKE_TOOLCHAIN_FILE="$repo/cmake/MinGW64Toolchain.cmake" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_CXX_STANDARD=20 "$@" >/dev/null
    cmake --build "$build" -j "$jobs" -- -k 0 >"$build.log" 2>&1 || { tail -40 "$build.log"; exit 1; }
}

configure_and_build yaml-cpp-* yaml-build -DYAML_CPP_BUILD_TESTS=OFF -DYAML_CPP_BUILD_TOOLS=OFF \
    -DYAML_CPP_BUILD_CONTRIB=OFF -DYAML_BUILD_SHARED_LIBS=OFF
cmake --install yaml-build >/dev/null

configure_and_build googletest-* gtest-build -DBUILD_GMOCK=ON -DINSTALL_GTEST=ON
cmake --install gtest-build >/dev/null

# Abseil: only what a program linking the targets in use needs is built, through a probe program in a wrapper
# project; the libraries it built and all headers are installed with a package file of our own.
mkdir absl-wrapper
abseil_source=$(cd abseil-* && pwd)
cat >absl-wrapper/CMakeLists.txt <<CMAKE
cmake_minimum_required(VERSION 3.25)
project(AbseilInUse CXX)
set(ABSL_PROPAGATE_CXX_STD ON)
set(ABSL_BUILD_TESTING OFF)
add_subdirectory($abseil_source absl EXCLUDE_FROM_ALL)
add_executable(probe probe.cpp)
target_link_libraries(probe absl::flat_hash_map absl::hash)
CMAKE
cat >absl-wrapper/probe.cpp <<'CPP'
#include <absl/container/flat_hash_map.h>
#include <absl/hash/hash.h>
int main() {
    absl::flat_hash_map<int, int> map{{1, 2}};
    return static_cast<int>(absl::Hash<int>{}(map.at(1)) == 0);
}
CPP
configure_and_build absl-wrapper absl-build
mkdir -p "$prefix/include" "$prefix/lib/cmake/absl"
(cd "$abseil_source" && find absl \( -name '*.h' -o -name '*.inc' \) | tar -cf - --files-from=-) |
    tar -xf - -C "$prefix/include"
find absl-build -name 'libabsl_*.a' -exec cp {} "$prefix/lib/" \;
cp "$repo/cmake/AbseilInUseConfig.cmake" "$prefix/lib/cmake/absl/abslConfig.cmake"

mkdir -p "$prefix/include/httplib"
cp cpp-httplib-*/httplib.h "$prefix/include/httplib/"

touch "$prefix/.complete"
ln -sfn "$key" "$cache/current"
# Builds for versions no longer installed are of no use.
find "$cache" -mindepth 1 -maxdepth 1 -type d ! -name "$key" -exec rm -rf {} +
echo "build-mingw-deps: done"
