#!/usr/bin/env bash
# usage: tools/soak.sh [MINUTES] [PHOTO...]
#
# Develops photos (default: the samples that ./run draws) over and over for MINUTES (default 10), each
# time with another recipe, and holds the results against those of the first round: the same photo
# and recipe must give the same bytes every time, no run may fail, and originals must not change.

set -euo pipefail
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/lib.sh"

minutes="$(leading_number MINUTES 10 "$@")"
(($# == 0)) || shift

cli="$KELVARO_ROOT/build/release/src/cli/kelvaro-cli"
[[ -x "$cli" ]] || die "build first: ./run --build-only"
photos=("$@")
((${#photos[@]})) || photos=("$KELVARO_ROOT"/samples/*)
[[ -e "${photos[0]}" ]] || die "there are no photos; ./run draws samples"

recipes=("" "--set exposure=0.7 --set contrast=25" "--set highlights=-60 --set shadows=45"
    "--set clarity=40 --set dehaze=30 --set vibrance=20" "--set grain=35 --set vignette=-40")
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
sha256sum -- "${photos[@]}" >"$work/originals"

end=$((SECONDS + minutes * 60))
rounds=0 count=0
while ((SECONDS < end)); do
    for at in "${!photos[@]}"; do
        for number in "${!recipes[@]}"; do
            read -ra settings <<<"${recipes[number]}"
            result="$work/$at-$number.png"
            "$cli" develop "${photos[at]}" -o "$result" --no-sidecar --long-edge 1200 \
                ${settings[@]+"${settings[@]}"} </dev/null ||
                die "developing ${photos[at]} with \"${recipes[number]}\" failed"
            sum="$(sha256sum <"$result")"
            rm -f "$result"
            first="$work/$at-$number.sum"
            [[ -e "$first" ]] || printf '%s\n' "$sum" >"$first"
            [[ "$(<"$first")" == "$sum" ]] ||
                die "${photos[at]} with \"${recipes[number]}\" came out differently in round $rounds"
            count=$((count + 1))
        done
    done
    sha256sum --quiet -c "$work/originals" || die "an original changed"
    rounds=$((rounds + 1))
    say "round $rounds, $count photos developed"
done
say "$count photos in $rounds rounds, all equal to the first round"
