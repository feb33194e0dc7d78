# shellcheck shell=bash
# Vantorel. MIT licence, see LICENSE.
# Packages to install from.

cmd_package() {
    ensure build package
    configure release
    build release
    say "packing"
    (cd build-release && cpack "$@") || fail "the package can't be made"
}
