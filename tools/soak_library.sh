#!/usr/bin/env bash
# usage: tools/soak_library.sh [WRITES] [KILLS]
#
# Two programs make WRITES (default 10000) random changes of favorites and edits in one folder at once,
# and programs that write are killed: a hundredth as often inside the library, and KILLS times (default
# 100) as kelvaro-cli. No change that was reported may be lost, and every file must be whole.

set -euo pipefail
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/lib.sh"

writes="${1:-10000}" kills="${2:-100}"
[[ "$writes" =~ ^[1-9][0-9]*$ && "$kills" =~ ^[1-9][0-9]*$ ]] || {
    print_usage "${BASH_SOURCE[0]}"
    exit 2
}
build="$KELVARO_ROOT/build/release"
cli="$build/src/cli/kelvaro-cli"
[[ -x "$build/tests/library/test_store" && -x "$cli" ]] || die "build first: ./test"

KELVARO_RANDOM_WRITES="$writes" "$build/tests/library/test_store" --gtest_filter='TwoPrograms*' |
    grep -E 'random writes|kills:|FAILED' || die "the programs lost something"

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
for number in $(seq -w "$kills"); do : >"$work/$number.jpg"; done
# A photo whose program ended well must be a favorite with an edit; one of a killed program may be.
done_well=()
set -m # a process group for each of them
for number in $(seq -w "$kills"); do
    (
        "$cli" favorite "$work/$number.jpg" && "$cli" recipe "$work/$number.jpg" --set exposure=1
    ) >/dev/null 2>&1 &
    group=$!
    sleep "0.$(printf '%03d' $((RANDOM % 900)))"
    kill -9 -- "-$group" 2>/dev/null || true
    if wait "$group" 2>/dev/null; then done_well+=("$number"); fi
done
set +m
favorites="$("$cli" list "$work" --scope favorites 2>/dev/null)" || die "the favorites can't be read any more"
edited="$("$cli" list "$work" --scope edited 2>/dev/null)" || die "the edits can't be read any more"
for number in ${done_well[@]+"${done_well[@]}"}; do
    grep -q "/$number.jpg$" <<<"$favorites" || die "favorite $number is lost"
    grep -q "/$number.jpg$" <<<"$edited" || die "edit $number is lost"
done
say "$kills programs, $((kills - ${#done_well[@]})) of them killed: every file is whole," \
    "$(grep -c . <<<"$favorites") favorites and $(grep -c . <<<"$edited") edits, none of ${#done_well[@]} lost"
