#!/usr/bin/env bash
# usage: tools/export_kill.sh [COUNT] [PHOTO...]
#
# Exports COUNT photos (default 200, copies of the PHOTOs or of samples drawn for it), two of them damaged,
# kills the export in the middle with SIGKILL, and exports again. The killed run may leave whole files
# and hidden temporary ones; the second one must sweep those, write the rest, name the two that
# failed, and leave every original as it was. Prints what it counted.

set -euo pipefail
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/lib.sh"

case "${1:-}" in -*)
    print_usage "${BASH_SOURCE[0]}"
    exit 2
    ;;
esac
count="${1:-200}"
[[ "$count" =~ ^[1-9][0-9]*$ ]] && ((count >= 10)) || die "COUNT must be a whole number from 10"
(($# == 0)) || shift

build="${KELVARO_BUILD:-$KELVARO_ROOT/build/release}"
cli="$build/src/cli/kelvaro-cli"
[[ -x "$cli" ]] || die "build first: ./run --build-only"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
photos=("$@")
if ((${#photos[@]} == 0)); then
    "$build/tools/make_samples" "$work/samples" --count 10 >/dev/null
    photos=("$work"/samples/*)
fi

mkdir "$work/in"
for ((i = 0; i < count; i++)); do
    from="${photos[i % ${#photos[@]}]}"
    cp -- "$from" "$work/in/$(printf '%04d' "$i").${from##*.}"
done
"$cli" recipe "$work/in/0001."* --set exposure=0.5 >/dev/null
bad1="$work/in/$(printf '%04d' $((count / 2))).jpg" bad2="$work/in/$(printf '%04d' $((count / 2 + 1))).dng"
rm -f "${bad1%.*}".* "${bad2%.*}".*
head -c 40000 /dev/urandom >"$bad1"
head -c 40000 /dev/urandom >"$bad2"
find "$work/in" -type f -exec sha256sum {} + >"$work/originals"

export_all=("$cli" export "$work/in" --to "$work/out" --long-edge 1200 --replace --json)
whole_files() { find "$work/out" -maxdepth 1 -type f -not -name '.*' 2>/dev/null; }
hidden_files() { find "$work/out" -mindepth 1 -name '.*' 2>/dev/null; }
number_of() { "$1" | wc -l; }

"${export_all[@]}" >"$work/first" 2>/dev/null &
pid=$!
until (($(number_of whole_files) * 3 >= count)); do
    kill -0 "$pid" 2>/dev/null || die "the export ended before it could be killed"
    sleep 0.1
done
# In the middle of writing a file: it is held still until one is seen being written.
for ((i = 0; i < 1000; i++)); do
    kill -STOP "$pid"
    (($(number_of hidden_files) == 0)) || break
    kill -CONT "$pid"
    sleep 0.01
done
kill -9 "$pid"
wait "$pid" 2>/dev/null || true
survivors=$(number_of whole_files)
say "killed with $survivors of $count files written and $(number_of hidden_files) temporary ones left"
whole_files | sort | tr '\n' '\0' | xargs -0 sha256sum >"$work/survivors"

status=0
"${export_all[@]}" >"$work/second" 2>"$work/messages" || status=$?
say "again: $(grep -c '"exported"' "$work/second") exported, $(grep -c '"failed"' "$work/second") failed, exit code $status"
sed 's/^/   /' "$work/messages"
say "now $(number_of whole_files) files and $(number_of hidden_files) temporary ones"

((status == 1)) || die "an export with damaged photos must end with 1"
(($(number_of whole_files) == count - 2)) || die "there must be $((count - 2)) files"
(($(number_of hidden_files) == 0)) || die "temporary files stayed"
# The same photo and recipe give the same bytes, so that a half file would differ.
sha256sum --quiet -c "$work/survivors" || die "a file of the killed export was not whole"
sha256sum --quiet -c "$work/originals" || die "an original changed"
say "the $survivors files of the killed export were whole; all $(wc -l <"$work/originals") originals are unchanged"
