#!/usr/bin/env bash
# usage: tools/compile_neon.sh
#
# Compiles every vector text of the pipeline for 64-bit ARM (NEON) with clang, on any machine. Needs
# the packages libstdc++-12-dev-arm64-cross and libc6-dev-arm64-cross.

set -euo pipefail
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/lib.sh"

cross=/usr/aarch64-linux-gnu/include
[[ -e "$cross/c++/12" ]] ||
    die "libstdc++-12-dev-arm64-cross and libc6-dev-arm64-cross are not installed"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
ln -s /usr/include/hwy "$work/hwy" # alone, or the headers beside it would be this machine's
disabled='HWY_SVE|HWY_SVE2|HWY_SVE_256|HWY_SVE2_128'
cd "$KELVARO_ROOT"
for source in src/develop/kernels/*.cpp src/platform/imaging/RowOperations.cpp \
    src/platform/imaging/kernels/*.cpp; do
    clang++-14 --target=aarch64-linux-gnu -std=c++20 -O1 -ffp-contract=off -Wall -Wextra -Werror \
        -Isrc -isystem "$work" -idirafter "$cross" "-DHWY_DISABLED_TARGETS=($disabled)" \
        -S -o "$work/out.s" "$source"
    grep -q '\.4s' "$work/out.s" || die "$source has no vector code"
    say "$source"
done
