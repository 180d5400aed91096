#!/usr/bin/env bash
# usage: tools/fresh_machine.sh [--photos FOLDER] CLONE_FROM [ROOT]
#
# Tries Kelvaro on a machine that has never seen it: makes a minimal Debian 12 in the folder ROOT
# (default: build/fresh) or takes the one that is there, clones CLONE_FROM into it, then runs ./run
# twice and ./test inside, without a display and with a closed standard input, and notes the times.
# Must run as root. The package mirror and proxy are this machine's own.
#
#   --photos FOLDER   real photos for the tests, copied in and handed to them as KELVARO_PHOTOS

set -euo pipefail
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/lib.sh"

photos=""
if [[ "${1:-}" == --photos ]]; then
    photos="$(readlink -e -- "${2:-}")" || die "--photos needs a folder that exists"
    shift 2
fi
if [[ $# -lt 1 || $# -gt 2 || "$1" == -* ]]; then
    print_usage "${BASH_SOURCE[0]}" >&2
    exit 2
fi
source_repository="$1"
root="$(readlink -m -- "${2:-$KELVARO_ROOT/build/fresh}")"
# The blanks are deliberate: scripts and build must survive them.
place="/srv/photo programs/kelvaro"
log="$root.times"

[[ "$(id -u)" == 0 ]] || die "fresh_machine.sh must run as root"
command -v debootstrap >/dev/null || as_root apt-get install -y -q --no-install-recommends debootstrap

# The first Debian archive that apt uses here.
mirror() {
    apt-get indextargets --format '$(REPO_URI) $(RELEASE)' 'Created-By: Packages' 2>/dev/null |
        awk '$2 == "bookworm" { print $1; exit }'
}

copy_apt_settings() {
    local archive
    archive="$(mirror)"
    printf 'deb %s bookworm main\ndeb %s bookworm-updates main\n' "$archive" "$archive" \
        >"$root/etc/apt/sources.list"
    apt-get indextargets --format '$(REPO_URI) $(RELEASE)' 'Created-By: Packages' 2>/dev/null |
        awk '$2 == "bookworm-security" { print "deb " $1 " " $2 " main"; exit }' \
            >>"$root/etc/apt/sources.list"
    apt-config dump | grep -iE '^Acquire::(.*proxy|Check-)' >"$root/etc/apt/apt.conf.d/90host" || true
    cp -L /etc/resolv.conf /etc/hosts "$root/etc/"
}

# Runs a command in the new machine with a clean environment and a closed standard input.
inside() {
    local -a proxies=()
    local name
    for name in http_proxy https_proxy no_proxy; do
        [[ -z "${!name:-}" ]] || proxies+=("$name=${!name}")
    done
    chroot "$root" /usr/bin/env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin TERM=dumb \
        ${proxies[@]+"${proxies[@]}"} ${photos:+KELVARO_PHOTOS=/srv/photos} "$@" <&-
}

# timed LABEL COMMAND...: notes how long it took; ends the script when it fails.
timed() {
    local label="$1" begin=$SECONDS rc=0
    shift
    "$@" || rc=$?
    printf '%s: %d s, exit %d\n' "$label" $((SECONDS - begin)) "$rc" | tee -a "$log"
    ((rc == 0)) || die "$label failed"
}

unmount_all() {
    local point
    for point in dev/shm sys proc; do
        if mountpoint -q "$root/$point"; then umount "$root/$point" || umount -l "$root/$point"; fi
    done
}

rm -f "$log"
if [[ ! -e "$root/etc/debian_version" ]]; then
    [[ -n "$(mirror)" ]] || die "apt knows no Debian 12 archive here; run apt-get update first"
    mkdir -p "$root"
    timed "debootstrap" debootstrap --variant=minbase bookworm "$root" "$(mirror)"
fi
copy_apt_settings
trap unmount_all EXIT
mkdir -p "$root/dev/shm"
mount -t proc proc "$root/proc"
mount -t sysfs -o ro sysfs "$root/sys" # libraries read the processors there
mount -t tmpfs tmpfs "$root/dev/shm"

rm -rf "$root$place" "$root/srv/photos"
mkdir -p "$root$(dirname -- "$place")"
timed "clone" git clone -q -- "$source_repository" "$root$place"
[[ -z "$photos" ]] || cp -r -- "$photos" "$root/srv/photos"

timed "first ./run" inside "$place/run"
timed "second ./run" inside "$place/run"
timed "./test" inside "$place/test"
say "The times are in $log"
