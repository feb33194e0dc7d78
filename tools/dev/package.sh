# shellcheck shell=bash
# Vantorel. MIT licence, see LICENSE.
# Packages to install from.

# The time of the newest entry in the package's changelog: all files in the package carry it.
package_time() { dpkg-parsechangelog -l packaging/linux/changelog -S Timestamp; }

# pack FOLDER: makes the package of a build folder and prints its path.
pack() {
    local log=$1/package.log
    (cd "$1" && cpack) >"$log" 2>&1 || { cat "$log" >&2; fail "the package can't be made"; }
    sed -n 's/^CPack: - package: \(.*\) generated\.$/\1/p' "$log"
}

# package [--check] [CMAKE OPTION...], for example -DVANTOREL_SERVER=/path/to/vantor-srv
cmd_package() {
    local check='' package
    if [ "${1:-}" = --check ]; then
        check=yes
        shift
        case $* in *VANTOREL_SERVER=?*) fail "the check knows the package with the development server only" ;; esac
    fi
    ensure build package
    is_macos || export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(package_time)}
    configure release -DVANTOREL_SERVER= "$@"
    build release bundle installed_files
    say "packing"
    package=$(pack build-release) || exit 1
    say "made ${package#"$PWD/"}, $(stat -c %s "$package" 2>/dev/null || stat -f %z "$package") bytes"
    [ -z "$check" ] || check_package "$package" "$@"
}

# All that has to hold of a package: what it says and holds, that it can be made again, and its life on a clean root.
check_package() {
    local package=$1 status=0
    shift
    is_macos && fail "the package of Linux can be checked on Linux only"
    ensure run display package-check
    report "what is in the package" tests/package/contents.sh "$package" || status=1
    report "the same bytes again" check_package_again "$package" "$@" || status=1
    report "on a clean root" as_root tests/package/clean_root.sh "$package" || status=1
    return $status
}

# Builds once more in another folder, under another mask, with nothing of the compiler cache, and compares.
check_package_again() (
    package=$1
    shift
    umask 077
    again=$(mktemp -d "$PWD/build-again.XXXXXX")
    trap 'rm -rf "$again"' EXIT
    cmake --preset release -B "$again" "$@" || exit 1
    CCACHE_DISABLE=1 cmake --build "$again" --parallel "$(processors)" --target bundle installed_files || exit 1
    other=$(pack "$again") || exit 1
    sha256sum "$package" "$other"
    cmp "$package" "$other"
)
