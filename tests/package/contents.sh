#!/bin/bash
# Vantorel. MIT licence, see LICENSE.
# What a package with our own server says and holds, looked at without installing it: tests/package/contents.sh PACKAGE
# shellcheck disable=SC2016,SC2317  # the checks are called by name, one of them by a shell of its own
set -u
[ $# -eq 1 ] || { echo "usage: tests/package/contents.sh PACKAGE" >&2; exit 2; }
package=$(realpath "$1")
cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
id=app.vantorel.Vantorel
files=$(mktemp -d) || exit 1
trap 'rm -rf "$files"' EXIT
dpkg-deb -x "$package" "$files" || exit 1
bundle=$files/usr/lib/vantorel/Vantorel.app/Contents
entry=$files/usr/share/applications/$id.desktop
metainfo=$files/usr/share/metainfo/$id.metainfo.xml
programs=("$bundle/Linux/Vantorel" "$bundle/Linux/vantorel-guard")
failed=0

# check WHAT COMMAND...: one line, and what the command said when it failed.
check() {
    local what=$1 said
    shift
    if said=$("$@" 2>&1); then
        printf 'OK   %s\n' "$what"
    else
        printf 'FAIL %s\n' "$what"
        printf '     %s\n' "${said//$'\n'/$'\n'     }"
        failed=1
    fi
}

lintian_is_clean() {
    local said
    said=$(lintian --allow-root --tag-display-limit 0 --display-info --pedantic "$package") && [ -z "$said" ] && return
    echo "$said"
    return 1
}

# Mode, owner, path and link target of each file; sizes and times are other checks' business.
listing_is_as_written() {
    dpkg-deb -c "$package" | awk '{ printf "%s %s %s%s\n", $1, $2, $6, (NF > 6 ? " -> " $8 : "") }' |
        diff tests/package/contents.txt -
}

one_time_only() {
    local times
    times=$(dpkg-deb -c "$package" | awk '{ print $4, $5 }' | sort -u)
    [ "$times" = "$(date -u -d "@$(dpkg-parsechangelog -l packaging/linux/changelog -S Timestamp)" '+%Y-%m-%d %H:%M')" ] ||
        { echo "$times"; return 1; }
}

fields_are_filled() {
    local field
    for field in Maintainer Section Priority Homepage Installed-Size Description Recommends; do
        [ -n "$(dpkg-deb -f "$package" "$field")" ] || { echo "no $field"; return 1; }
    done
    [ "$(dpkg-deb -f "$package" Package)" = vantorel ]
}

# Each library that a program is linked with has to come with one of the packages that are depended on.
dependencies_bring_the_libraries() {
    local depends library owner folder
    folder=$(dpkg-architecture -q DEB_HOST_MULTIARCH)
    depends=", $(dpkg-deb -f "$package" Depends),"
    for library in $(readelf -d "${programs[@]}" "$bundle/Resources/default/vantor-srv" |
        sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | sort -u); do
        owner=$(dpkg-query -S "*/$folder/$library" | sed -n '1s/:.*//p')
        [[ $depends == *", $owner "* || $depends == *", $owner,"* ]] || { echo "$library of $owner: $depends"; return 1; }
    done
}

names_agree() {
    local found
    found=$(sed -n 's/.* kApplicationId = "\(.*\)";/\1/p' platform/linux/application.h
        sed -n 's/^Icon=//p; s/^StartupWMClass=//p' "$entry"
        sed -n 's|.*<id>\(.*\)</id>.*|\1|p; s|.*<icon type="stock">\(.*\)</icon>.*|\1|p' "$metainfo"
        sed -n 's|.*<launchable type="desktop-id">\(.*\)\.desktop</launchable>.*|\1|p' "$metainfo")
    [ "$(sort <<<"$found" | uniq -c | awk '{ print $1, $2 }')" = "6 $id" ] || { echo "$found"; return 1; }
    [ "$(sed -n 's/^Name=//p' "$entry")" = "$(sed -n 's|^  <name>\(.*\)</name>|\1|p' "$metainfo")" ]
}

icons_have_their_sizes() {
    local icon size count=0
    for icon in "$files"/usr/share/icons/hicolor/*x*/apps/"$id.png"; do
        size=${icon#"$files"/usr/share/icons/hicolor/}
        size=${size%%/*}
        [[ $(file -b "$icon") == "PNG image data, ${size/x/ x }, "* ]] || { file "$icon"; return 1; }
        count=$((count + 1))
    done
    [ "$count" -eq 9 ] && [[ $(file -b "$files/usr/share/icons/hicolor/scalable/apps/$id.svg") == SVG* ]]
}

launcher_leads_to_the_shell() { [ "$(realpath -m "$files/usr/bin/vantorel")" = "${programs[0]}" ]; }

shell_is_small() {
    local size
    size=$(stat -c %s "${programs[0]}")
    echo "$size bytes"
    [ "$size" -lt 400000 ]
}

# Without its look at the mark of control flow protection, which needs start-up objects that have it: those of Debian 12
# do not. Only the shell has calls that get fortified: see the overrides for Lintian in packaging/linux.
is_hardened() {
    local left_out=(--nocfprotection)
    [[ $1 == */Vantorel ]] || left_out+=(--nofortify)
    hardening-check "${left_out[@]}" "$1"
}
# Start-up objects have a few of their own.
has_landing_marks() { [ "$(uname -m)" != x86_64 ] || [ "$(objdump -d "$1" | grep -c endbr64)" -gt 10 ]; }

no_symbols() { ! readelf --section-headers --wide "$1" | grep -E ' \.(symtab|debug_[a-z]+) '; }
no_search_path() { ! readelf -d "$1" | grep -E 'RPATH|RUNPATH'; }
no_folder_of_the_builder() { ! grep -rlaF "$PWD" "$files"; }
# Exits with 1 when there are some, and prints nothing but a heading when there are none.
links_only_what_it_uses() { ldd -u "$1"; }

check "lintian" lintian_is_clean
check "desktop entry" desktop-file-validate "$entry"
check "AppStream metadata" appstreamcli validate --no-net "$metainfo"
check "manual page" env LC_ALL=C.UTF-8 sh -c 'zcat "$1" | man --warnings -l - 2>&1 >/dev/null | diff /dev/null -' \
    sh "$files/usr/share/man/man1/vantorel.1.gz"
check "files, their modes and owners" listing_is_as_written
check "one time for all files, the changelog's" one_time_only
check "control fields" fields_are_filled
check "dependencies bring the libraries" dependencies_bring_the_libraries
check "names agree: desktop entry, metadata, icon, application" names_agree
check "icons" icons_have_their_sizes
check "launcher" launcher_leads_to_the_shell
check "nothing of the builder's folder" no_folder_of_the_builder
check "the shell is below 400 KB" shell_is_small
for program in "${programs[@]}" "$bundle/Resources/default/vantor-srv"; do
    name=$(basename "$program")
    check "$name: hardened" is_hardened "$program"
    check "$name: control flow is guarded" has_landing_marks "$program"
    check "$name: stripped" no_symbols "$program"
    check "$name: no search path" no_search_path "$program"
    check "$name: links only what it uses" links_only_what_it_uses "$program"
done
exit $failed
