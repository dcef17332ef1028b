#!/usr/bin/env bash
# Cross-builds the driver, the tools and the tests for 32-bit ARM (armhf) and passes the tests under qemu-arm.
#
# Debian's armhf packages are fetched and unpacked into a sysroot under build/armhf; of the machine's own packages only
# the cross compiler and qemu are installed, and the architecture is declared in a private copy of apt's state.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-dependencies.sh build test armhf
folder="$PWD/build/armhf"
sysroot="$folder/sysroot"
apt="$folder/apt"

fetch_packages() {
    local packages=(qtbase5-dev libasio-dev libcli11-dev libtomlplusplus-dev nlohmann-json3-dev libfmt-dev
        librapidcheck-dev libgtest-dev libc6-dev libstdc++-12-dev)
    mkdir -p "$apt/state/lists/partial" "$apt/cache/archives/partial" "$sysroot"
    touch "$apt/status"
    # With an empty list of installed packages, apt resolves every dependency anew, for armhf alone.
    local options=(-o APT::Architecture=armhf -o APT::Architectures=armhf -o Dir::State="$apt/state"
        -o Dir::State::status="$apt/status" -o Dir::Cache="$apt/cache" -o Debug::NoLocking=1
        -o APT::Install-Recommends=false -o APT::Sandbox::User=root)
    # One source of several may be out of order for a moment; the download tells when what is left is not enough.
    apt-get "${options[@]}" update -qq || true
    apt-get "${options[@]}" install -qq -y --download-only "${packages[@]}" >/dev/null
    local package
    for package in "$apt"/cache/archives/*.deb; do
        dpkg-deb --extract "$package" "$sysroot"
    done
    rm -rf "$apt"
}

# Links of packages point into the root folder; here they have to point into the sysroot.
make_links_relative() {
    find "$sysroot" -type l -lname '/*' -printf '%p %l\n' | while read -r link target; do
        ln -sfn --relative "$sysroot$target" "$link"
    done
}

if [ ! -e "$sysroot/complete" ]; then
    echo "fetching armhf packages into a sysroot"
    rm -rf "$sysroot"
    fetch_packages
    make_links_relative
    touch "$sysroot/complete"
fi

cmake --preset ci -B "$folder" -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/armhf.cmake" -DCMAKE_SYSROOT="$sysroot" >/dev/null
cmake --build "$folder"
ctest --test-dir "$folder" --output-on-failure --parallel "$(nproc)"
