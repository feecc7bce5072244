# Shared by ./run, ./test and .ci/run. Expects $root to be the project's folder.

# need_packages PROBE:PACKAGE...: installs each Debian package whose probe is not there. A probe is a command, or
# (starting with /) a file.
need_packages() {
    local missing=() item probe
    for item in "$@"; do
        probe=${item%%:*}
        if [[ $probe == /* ]]; then
            [[ -e $probe ]] || missing+=("${item#*:}")
        else
            command -v "$probe" >/dev/null 2>&1 || missing+=("${item#*:}")
        fi
    done
    [[ ${#missing[@]} -eq 0 ]] && return 0
    local sudo=()
    [[ $(id -u) -eq 0 ]] || sudo=(sudo)
    echo "Installing: ${missing[*]}" >&2
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -q >&2
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends \
        "${missing[@]}" >&2
}

# Runs a command quietly; shows what it printed only if it fails.
quietly() {
    local log
    log=$(mktemp)
    if ! "$@" >"$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        return 1
    fi
    rm -f "$log"
}

build_program() {
    (cd "$root" && quietly cmake --preset release && quietly cmake --build --preset release --target zelmar)
}
