#!/usr/bin/env bash
# Runs a program of the Windows build under Wine, headless, in a Wine prefix of its own (made on first use):
#   tools/wine-run.sh build/windows/bin/vantel.exe types
#   tools/wine-run.sh --wait    # returns once Wine's server has ended, a few seconds after the last program
# The tests run through it (the windows preset names it as the emulator), and so do the programs they start.
set -euo pipefail

wine=${VANTEL_WINE:-/usr/lib/wine/wine64}
[ -x "$wine" ] || { echo "wine-run: no $wine; run VANTEL_WINDOWS=1 tools/install-deps.sh" >&2; exit 127; }
export WINEPREFIX=${VANTEL_WINEPREFIX:-${XDG_CACHE_HOME:-$HOME/.cache}/vantel/wine}
export WINEDEBUG=${WINEDEBUG:--all}
# Wine names the build machine's files in the locale's character set: without a UTF-8 one (CI starts with
# none), a file name that is not ASCII cannot be made.
export LC_ALL=C.UTF-8
# Console programs need no display, nor the .NET and HTML engines whose installers Wine would offer.
unset DISPLAY WAYLAND_DISPLAY
export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"

# The MinGW runtime libraries (libstdc++, libgcc, winpthread) are taken from where Debian installs them, as
# a Windows machine would take them from its path.
windows_folder() {
    local file
    file=$(x86_64-w64-mingw32-g++-posix -print-file-name="$1")
    file=$(realpath "$file")
    local folder=${file%/*}
    echo "Z:${folder//\//\\}"
}
export WINEPATH="$(windows_folder libstdc++-6.dll);$(windows_folder libwinpthread-1.dll)"

# Wine's server outlives the last program by a few seconds; whoever must know every process gone waits for it.
if [ "${1:-}" = --wait ]; then
    exec "${wine%/*}/wineserver" -w
fi

# The first of several programs started at once makes the prefix; the others wait for it.
mkdir -p "$WINEPREFIX"
(
    flock 9
    if [ ! -f "$WINEPREFIX/system.reg" ]; then
        "$wine" wineboot --init >/dev/null 2>&1 || true
        "${wine%/*}/wineserver" -w
    fi
) 9>"$WINEPREFIX.lock"
exec "$wine" "$@"
