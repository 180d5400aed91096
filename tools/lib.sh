# shellcheck shell=bash
# What our scripts share: messages, the Debian packages, and building a preset. Sourced, never run.
# Sets KELVARO_ROOT to the folder that holds the source.

KELVARO_ROOT="$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd -P)"

say() { printf '== %s\n' "$*"; }

die() {
    printf 'error: %s\n' "$*" >&2
    exit 1
}

# The usage text of a script is the comment at its head.
print_usage() { sed -n '2,/^[^#]/{/^#/s/^# \{0,1\}//p}' "$1"; }

# leading_number NAME DEFAULT ARGUMENTS...: prints the calling script's first argument, a whole number,
# or the default where there is none.
leading_number() {
    local name="$1" number="${3:-$2}"
    if [[ "$number" == -* ]]; then
        print_usage "$0" >&2
        exit 2
    fi
    [[ "$number" =~ ^[1-9][0-9]*$ ]] || die "$name must be a whole number, not \"$number\""
    printf '%s\n' "$number"
}

listed_packages() { sed -e 's/#.*//' -e '/^[[:space:]]*$/d' "$KELVARO_ROOT/tools/packages.txt"; }

# Listed packages that are not installed.
missing_packages() {
    comm -23 <(listed_packages | sort) <(listed_packages |
        xargs dpkg-query -W -f '${Package} ${db:Status-Status}\n' 2>/dev/null |
        sed -n 's/ installed$//p' | sort -u)
}

require_debian() {
    local id="" like="" version=""
    if [[ -r /etc/os-release ]]; then
        id="$(. /etc/os-release && printf '%s' "${ID:-}")"
        like="$(. /etc/os-release && printf '%s' "${ID_LIKE:-}")"
        version="$(. /etc/os-release && printf '%s' "${VERSION_ID:-}")"
    fi
    if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
        printf 'This script installs Debian 12 packages, and this system (%s) has no apt-get.\n' \
            "${id:-unknown}" >&2
        printf 'Kelvaro needs what these packages bring:\n' >&2
        listed_packages | sed 's/^/    /' >&2
        printf 'With those in place, build with: cmake --preset release && cmake --build --preset release\n' >&2
        exit 1
    fi
    if [[ "$id" != debian || "$version" != 12 ]]; then
        say "Kelvaro is built and tested on Debian 12; this is ${id:-unknown} ${version:-}${like:+ (like $like)}. Going on."
    fi
}

as_root() {
    if [[ "$(id -u)" == 0 ]]; then
        env DEBIAN_FRONTEND=noninteractive "$@"
    elif command -v sudo >/dev/null; then
        sudo -- env DEBIAN_FRONTEND=noninteractive "$@"
    else
        die "installing packages needs root, and there is no sudo here. As root, run: apt-get install -y --no-install-recommends $(missing_packages | tr '\n' ' ')"
    fi
}

# Installs the listed packages that are missing. A stamp under build/ remembers that this list was
# found complete, as long as dpkg's own record has not changed since.
ensure_packages() {
    local stamp
    stamp="$KELVARO_ROOT/build/.packages-$(listed_packages | cksum | cut -d' ' -f1)"
    if [[ -e "$stamp" && "$stamp" -nt /var/lib/dpkg/status ]]; then
        return
    fi
    require_debian
    local -a missing
    mapfile -t missing < <(missing_packages)
    if ((${#missing[@]})); then
        say "Installing ${#missing[@]} Debian packages: ${missing[*]}"
        as_root apt-get update -q </dev/null || die "apt-get update failed; is there a network?"
        as_root apt-get install -y -q --no-install-recommends "${missing[@]}" </dev/null ||
            die "apt-get could not install the packages named above"
    fi
    mkdir -p "$KELVARO_ROOT/build"
    rm -f "$KELVARO_ROOT"/build/.packages-*
    touch "$stamp"
}

# One job per processor, but no more than memory allows: the largest kernel sources take up to 1.5 GiB.
build_jobs() {
    local processors available
    processors="$(nproc)"
    available="$(awk '/^MemAvailable:/ { print int($2 / 1572864) }' /proc/meminfo 2>/dev/null || true)"
    if [[ -n "$available" ]] && ((available < processors)); then
        processors=$((available > 0 ? available : 1))
    fi
    printf '%s' "$processors"
}

# build_preset PRESET [TARGET...]: configures once, then builds the targets (all when none is named).
build_preset() {
    local preset="$1" jobs
    shift
    jobs="$(build_jobs)"
    if [[ ! -e "$KELVARO_ROOT/build/$preset/build.ninja" ]]; then
        say "Configuring the $preset build"
        (cd -- "$KELVARO_ROOT" && cmake --preset "$preset" </dev/null)
    fi
    say "Building ${*:-everything} ($preset, $jobs at a time)"
    (cd -- "$KELVARO_ROOT" && ninja -C "build/$preset" -j "$jobs" "$@" </dev/null)
}
