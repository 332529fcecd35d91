# What scripts/run and scripts/test share: the calling user, packages, builds. Source it from bash.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

say() {
    printf '%s\n' "$*" >&2
}

fail() {
    say "$*"
    exit 1
}

# Called through sudo, only steps that need root run as root: files in the clone stay the caller's, and so do the
# settings and statistics. as_caller runs a command as the user who called.
as_caller=()
if [ "$EUID" -eq 0 ] && [ "${SUDO_UID:-0}" -ne 0 ]; then
    IFS=: read -r caller _ uid gid _ home _ < <(getent passwd "$SUDO_UID" || echo :::::) || true
    if [ -n "$caller" ]; then
        as_caller=(setpriv "--reuid=$uid" "--regid=$gid" --init-groups
            env "HOME=$home" "USER=$caller" "LOGNAME=$caller")
        "${as_caller[@]}" test -w "$root" || as_caller=()
    fi
fi

may_become_root() {
    [ "$EUID" -eq 0 ] || command -v sudo >/dev/null
}

# Whether a question can be asked and answered here. Known before any output goes to a log.
at_terminal=
if [ -t 0 ] && [ -t 2 ]; then
    at_terminal=yes
fi

# Without a terminal a password can't be asked for.
as_root() {
    if [ "$EUID" -eq 0 ]; then
        "$@"
    elif [ -n "$at_terminal" ]; then
        sudo -- "$@"
    else
        sudo -n -- "$@"
    fi
}

# Asks for the password, where one is needed: what follows may write to a log.
become_root() {
    [ "$EUID" -eq 0 ] || sudo -n true 2>/dev/null || { [ -n "$at_terminal" ] && sudo -v; }
}

# by_hand COMMAND: how a user types a command that needs root.
by_hand() {
    if [ "$EUID" -eq 0 ]; then
        printf '%s' "$1"
    elif command -v sudo >/dev/null; then
        printf 'sudo %s' "$1"
    else
        printf "su -c '%s'" "$1"
    fi
}

# answer_help ARGUMENT...: prints the script's own head. --help is answered before anything is installed or built.
answer_help() {
    case ${1:-} in
    -h | --help)
        sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$0"
        exit 0
        ;;
    esac
}

# For output that is shown only when something fails. It goes when the script ends, also by Ctrl-C; `exec` needs a call.
scratch=$(mktemp -d)
remove_scratch() {
    rm -rf "$scratch"
}
trap remove_scratch EXIT

# copy_committed FOLDER: the sources as committed. What is made of them bears the commit's time, whenever that is.
copy_committed() {
    SOURCE_DATE_EPOCH=$(git -C "$root" log -1 --format=%ct)
    export SOURCE_DATE_EPOCH
    mkdir -p "$1"
    git -C "$root" archive HEAD | tar -x -C "$1"
}

# packages SECTION...: the names in these sections of the list, one a line.
packages() {
    local section wanted=" $* " line
    while read -r line; do
        line=${line%%#*}
        line=${line//[[:space:]]/}
        case $line in
        '') ;;
        '['*']') section=${line//[\[\]]/} ;;
        *) [[ $wanted != *" $section "* ]] || printf '%s\n' "$line" ;;
        esac
    done <"$root/scripts/packages.txt"
}

# Those of the packages named that are not installed.
missing_packages() {
    dpkg-query -W -f='${binary:Package} ${db:Status-Status}\n' "$@" 2>/dev/null \
        | awk '$2 == "installed" { sub(/:.*/, "", $1); print $1 }' \
        | sort -u | comm -13 - <(printf '%s\n' "$@" | sort -u)
}

# install_packages SECTION...: installs what is missing; without a call of apt when nothing is.
install_packages() {
    local wanted missing log
    command -v dpkg-query >/dev/null || fail "This script installs packages on Debian; see scripts/packages.txt for what else to have."
    mapfile -t wanted < <(packages "$@")
    mapfile -t missing < <(missing_packages "${wanted[@]}")
    [ ${#missing[@]} -gt 0 ] || return 0
    say "Installing: ${missing[*]}"
    if ! may_become_root || ! become_root; then
        fail "Installing needs root. By hand: $(by_hand "apt-get install --no-install-recommends ${missing[*]}")"
    fi
    log="$scratch/packages"
    if ! { as_root apt-get -o DPkg::Lock::Timeout=300 update \
        && as_root env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=300 install -y \
            --no-install-recommends "${missing[@]}"; } </dev/null >"$log" 2>&1; then
        tail -n 40 "$log" >&2
        fail "The packages could not be installed. By hand: $(by_hand "apt-get install --no-install-recommends ${missing[*]}")"
    fi
}

# Whether the desktop program is to be built too: ON or OFF. It needs the packages of the section [desktop].
desktop=OFF

# False also when the clone was copied or the presets have changed since: CMake's cache is out of date then.
is_configured() {
    local folder=$1
    [ -f "$folder/build.ninja" ] \
        && { [ "$desktop" = OFF ] || grep -qxF TARNWICK_DESKTOP:BOOL=ON "$folder/CMakeCache.txt"; } \
        && [ ! "$root/CMakePresets.json" -nt "$folder/CMakeCache.txt" ] \
        && grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$folder/CMakeCache.txt"
}

# quietly COMMAND...: output only when it fails, or, in a terminal, as it comes.
quietly() {
    local log status=0
    if [ -t 2 ]; then
        "$@" >&2
        return
    fi
    log="$scratch/output"
    "$@" </dev/null >"$log" 2>&1 || status=$?
    [ "$status" -eq 0 ] || cat "$log" >&2
    return "$status"
}

# configure PRESET: only where needed.
configure() {
    local preset=$1 folder="$root/build/$1"
    if ! is_configured "$folder"; then
        (cd "$root" && quietly "${as_caller[@]}" cmake --fresh --preset "$preset" -D "TARNWICK_DESKTOP=$desktop") \
            || fail "Configuring $preset failed."
    fi
}

# build PRESET [TARGET]...: configures where needed, then builds what is out of date. One at a time per clone.
build() {
    local preset=$1 folder="$root/build/$1" targets=()
    shift
    [ $# -eq 0 ] || targets=(--target "$@")
    "${as_caller[@]}" mkdir -p "$folder" && "${as_caller[@]}" test -w "$folder" \
        || fail "$folder cannot be written by this user: remove it, or give it back to its owner."
    (
        flock 9
        cd "$root"
        configure "$preset"
        if ! "${as_caller[@]}" ninja -C "$folder" -n "${targets[@]:1}" 2>/dev/null | grep -q 'no work to do'; then
            say "Building $preset"
            quietly "${as_caller[@]}" cmake --build --preset "$preset" --parallel "$(nproc)" "${targets[@]}" \
                || fail "Building $preset failed."
        fi
    ) 9<"$folder"
}
