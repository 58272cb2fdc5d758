#!/usr/bin/env bash
# Holds the Windows build to the Linux one, given both built (build/windows and build/dev):
# - the bundled example run by each host writes a picture with the same pixels;
# - every example saved by one build loads in the other and saves to the same bytes, both ways.
set -euo pipefail
cd "$(dirname "$0")/.."

linux_host=build/dev/bin/vantel
windows_host=build/windows/bin/vantel.exe
work=$(mktemp -d "${TMPDIR:-/tmp}/vantel-windows-check.XXXXXX")
trap 'rm -rf "$work"' EXIT
# The Linux dev build has the sanitizers in; a leak or a fault fails the run.
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

fail() { echo "check-windows-outputs: $*"; exit 1; }
# Each run's output is shown only when it fails.
quietly() { "$@" >"$work/run.log" 2>&1 || { cat "$work/run.log"; fail "failed: $*"; }; }
linux() { quietly "$linux_host" "$@"; }
# Wine sees the build machine's root as drive Z:. A run is given five minutes: once (right after the test
# suites, on a loaded machine) the host sat blocked under Wine without using any processor time, and a
# second run went through; a host that hangs twice fails the check instead of the whole CI run.
windows() {
    local status=0
    timeout 300 tools/wine-run.sh "$windows_host" "$@" >"$work/run.log" 2>&1 || status=$?
    if [ "$status" = 124 ]; then
        echo "check-windows-outputs: the Windows host timed out, once more: $*"
        status=0
        timeout 300 tools/wine-run.sh "$windows_host" "$@" >"$work/run.log" 2>&1 || status=$?
    fi
    [ "$status" = 0 ] || { cat "$work/run.log"; fail "failed ($status): $*"; }
}

for build in linux windows; do
    cp -r examples/ImagePipeline "$work/$build"
    rm -f "$work/$build/output.png"
done
linux run "$work/linux/ImagePipeline.json" --frames 60
windows run "Z:$work/windows/ImagePipeline.json" --frames 60
python3 tools/png-pixels.py "$work/linux/output.png" "$work/windows/output.png" \
    || fail "the Windows host's picture differs from the Linux host's"

for example in examples/*/*.json; do
    name=$(basename "$example" .json)
    linux upgrade "$example" "$work/$name.linux.json"
    windows upgrade "Z:$PWD/$example" "Z:$work/$name.windows.json"
    cmp -s "$work/$name.linux.json" "$work/$name.windows.json" || fail "$name: the two builds save different bytes"
    linux upgrade "$work/$name.windows.json" "$work/$name.windows-then-linux.json"
    windows upgrade "Z:$work/$name.linux.json" "Z:$work/$name.linux-then-windows.json"
    cmp -s "$work/$name.windows.json" "$work/$name.windows-then-linux.json" \
        || fail "$name: saved by Windows, loaded and saved by Linux, gives other bytes"
    cmp -s "$work/$name.linux.json" "$work/$name.linux-then-windows.json" \
        || fail "$name: saved by Linux, loaded and saved by Windows, gives other bytes"
    echo "check-windows-outputs: $name: both builds save the same bytes and load each other's files to them"
done
echo "check-windows-outputs: the Windows host's picture has the Linux host's pixels"
