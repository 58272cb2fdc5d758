#!/usr/bin/env bash
# Installs the Debian packages the build needs, and only those that are missing.
set -euo pipefail

packages=(
    build-essential cmake ninja-build git pkg-config clang-format python3
    nlohmann-json3-dev libyaml-cpp-dev libglm-dev libstb-dev libabsl-dev
    libgtest-dev libgmock-dev libbenchmark-dev libcpp-httplib-dev
    chromium fonts-dejavu-core
)
# The editor page is built with Node and npm; a Node installed some other way (with its own npm) is kept.
if ! command -v node >/dev/null 2>&1 || ! command -v npm >/dev/null 2>&1; then
    packages+=(nodejs npm)
fi
if [ "${VANTEL_FUZZ:-0}" = 1 ]; then
    packages+=(clang libclang-rt-14-dev)
fi
# The Windows build: the MinGW-w64 compilers, Wine to run what they build, and what fetching and unpacking
# Debian's source packages takes (tools/build-mingw-deps.sh builds the compiled dependencies from them).
if [ "${VANTEL_WINDOWS:-0}" = 1 ]; then
    packages+=(g++-mingw-w64-x86-64-posix wine64 dpkg-dev xz-utils)
fi

if ! command -v dpkg >/dev/null 2>&1 || ! command -v apt-get >/dev/null 2>&1; then
    echo "install-deps: this system has no apt; install these packages (or their equivalents) by hand:"
    printf '  %s\n' "${packages[@]}"
    exit 1
fi

# The Windows build's compiled dependencies, built from Debian's sources into a cache outside the checkout.
install_windows_dependencies() {
    if [ "${VANTEL_WINDOWS:-0}" = 1 ]; then
        bash "$(dirname "$0")/build-mingw-deps.sh"
    fi
}

missing=()
for package in "${packages[@]}"; do
    if ! dpkg -s "$package" >/dev/null 2>&1 \
        || ! dpkg -s "$package" 2>/dev/null | grep -q '^Status: install ok installed'; then
        missing+=("$package")
    fi
done
if [ ${#missing[@]} -eq 0 ]; then
    install_windows_dependencies
    exit 0
fi

echo "install-deps: installing ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null 2>&1 || { echo "install-deps: not root and no sudo; install: ${missing[*]}"; exit 1; }
    sudo=sudo
fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
# npm fetches the editor page's packages over HTTPS and is told to trust the system's certificate bundle: bring
# that bundle up to date with the authorities an administrator added (/usr/local/share/ca-certificates).
if command -v update-ca-certificates >/dev/null 2>&1; then
    $sudo update-ca-certificates >/dev/null
fi
install_windows_dependencies
