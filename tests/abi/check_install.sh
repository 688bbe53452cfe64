#!/bin/sh
# An installed library serves hosts that find it by its CMake package and by pkg-config: check_install.sh BUILD SOURCE
# [TOOLCHAIN], the last as seen from SOURCE.
set -eu
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
cmake --install "$1" --prefix "$root/prefix" >/dev/null
toolchain=${3:+$(cd "$2" && realpath "$3")}
pc=$(dirname "$(find "$root/prefix" -name tessarin.pc)")
PKG_CONFIG_PATH=$pc cmake -G Ninja -S "$2/tests/abi/consumer" -B "$root/build" -DCMAKE_PREFIX_PATH="$root/prefix" \
    ${toolchain:+-DCMAKE_TOOLCHAIN_FILE="$toolchain"} >/dev/null
cmake --build "$root/build" >/dev/null
"$root/build/by_package"
LD_LIBRARY_PATH=$(dirname "$pc") "$root/build/by_pkg_config"
