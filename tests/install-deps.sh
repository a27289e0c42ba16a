#!/bin/sh
# Installs what building and testing vemcov needs on a fresh Debian machine.
# One package name per word below; append yours. Only what is missing is
# installed.
set -eu

PACKAGES="g++ cmake ninja-build libgtest-dev imagemagick chromium clang libclang-rt-14-dev llvm lcov libxml2-utils libsimdjson-dev zlib1g-dev"

missing=""
for package in $PACKAGES; do
    if ! dpkg -s "$package" >/dev/null 2>&1; then
        missing="$missing $package"
    fi
done

if [ -n "$missing" ]; then
    echo "installing:$missing"
    SUDO=""
    if [ "$(id -u)" != 0 ]; then
        SUDO=sudo
    fi
    $SUDO apt-get update
    # shellcheck disable=SC2086
    DEBIAN_FRONTEND=noninteractive $SUDO apt-get -o DPkg::Lock::Timeout=600 install -y --no-install-recommends $missing
fi

# Node and npm for the browser check: Debian's packages, unless a node with
# its npm is already there (some installs bundle npm with node).
if ! command -v node >/dev/null 2>&1 || ! command -v npm >/dev/null 2>&1; then
    echo "installing: nodejs npm"
    SUDO=""
    if [ "$(id -u)" != 0 ]; then
        SUDO=sudo
    fi
    $SUDO apt-get update
    DEBIAN_FRONTEND=noninteractive $SUDO apt-get -o DPkg::Lock::Timeout=600 install -y --no-install-recommends nodejs npm
fi
