# shellcheck shell=bash
# Vantorel. MIT licence, see LICENSE.
# What all commands of ./dev share. Kept within Bash 3.2, the version that macOS brings.

# ccache can serve files that use precompiled headers only when it may ignore their time stamps.
export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
# What one build folder compiled serves the others: paths count from the project's root, not from the machine's.
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=true CCACHE_ABSSTDERR=true

say() { printf '%s\n' "==> $*"; }
warn() { printf '%s\n' "warning: $*" >&2; }
fail() { printf '%s\n' "error: $*" >&2; exit 1; }

is_macos() { [ "$(uname -s)" = Darwin ]; }
has() { command -v "$1" >/dev/null 2>&1; }
processors() { getconf _NPROCESSORS_ONLN 2>/dev/null || echo 2; }

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif has sudo; then
        sudo "$@"
    else
        fail "this needs root, and there is no sudo: $*"
    fi
}

# Prints the project's files with one of the given endings, one a line: what git tracks or would track.
project_files() {
    local ending patterns=()
    for ending in "$@"; do patterns+=("*.$ending"); done
    git ls-files --cached --others --exclude-standard -- "${patterns[@]}" | sort -u | while IFS= read -r file; do
        [ ! -f "$file" ] || printf '%s\n' "$file"
    done
}
