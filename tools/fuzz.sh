#!/usr/bin/env bash
# usage: tools/fuzz.sh [SECONDS] [NAME...]
#
# Builds the fuzz preset and runs each fuzz target for SECONDS (default 60), or only the named ones.
# Inputs that reached something new are kept in build/fuzz-corpus/NAME and are the start of the next
# run; an input that broke a target is left in build/fuzz-findings/.

set -euo pipefail
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/lib.sh"

seconds="$(leading_number SECONDS 60 "$@")"
(($# == 0)) || shift

ensure_packages
build_preset fuzz
mapfile -t targets < <(find "$KELVARO_ROOT/build/fuzz/fuzz" -type f -executable -name 'fuzz_*' | sort)
((${#targets[@]})) || die "the fuzz preset built no target"

findings="$KELVARO_ROOT/build/fuzz-findings"
mkdir -p "$findings"
ran=0
broken=()
for target in "${targets[@]}"; do
    name="${target##*/}"
    if (($#)) && [[ " $* " != *" $name "* && " $* " != *" ${name#fuzz_} "* ]]; then
        continue
    fi
    corpus="$KELVARO_ROOT/build/fuzz-corpus/$name"
    mkdir -p "$corpus"
    seeds=()
    [[ ! -d "$KELVARO_ROOT/fuzz/seeds/$name" ]] || seeds=("$KELVARO_ROOT/fuzz/seeds/$name")
    say "$name for $seconds s"
    ran=$((ran + 1))
    "$target" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=4096 -print_final_stats=1 \
        -artifact_prefix="$findings/$name-" "$corpus" ${seeds[@]+"${seeds[@]}"} </dev/null ||
        broken+=("$name")
done
((ran > 0)) || die "there is no fuzz target named $*"
if ((${#broken[@]})); then
    die "$ran targets ran; broken: ${broken[*]}. The inputs are in $findings"
fi
say "$ran targets ran, none was broken"
