#!/bin/bash
# Vantorel. MIT licence, see LICENSE.
# A package's life on a fresh Debian: installed with nothing else, started from its desktop entry by an ordinary user,
# upgraded over an older version, removed. Needs root and the network: tests/package/clean_root.sh PACKAGE
# shellcheck disable=SC2016  # dollars in quotes are dpkg's and apt's own
set -eu
[ $# -eq 1 ] || { echo "usage: tests/package/clean_root.sh PACKAGE" >&2; exit 2; }
package=$(realpath "$1")
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
bundle=usr/lib/vantorel/Vantorel.app/Contents
user=tester
pictures=$(dirname "$package")/package-pictures
fresh=$(dirname "$package")/fresh-root
work=$(mktemp -d "${TMPDIR:-/tmp}/vantorel-package.XXXXXX")
root=$work/root
trap 'rm -rf --one-file-system "$work"' EXIT

stage() { printf '%4d s  %s\n' $SECONDS "$*"; }
fail() { echo "error: $*" >&2; exit 1; }
inside() { tests/package/in_root "$root" "$@"; }
quietly() { "$@" >"$work/output" 2>&1 || { cat "$work/output" >&2; fail "failed: $*"; }; }
start() { tools/with_display tests/package/start.sh "$root" $user "$work/log" "$pictures/$1.png"; }
has_line() { grep -qF -- "$1" "$work/log" || { cat "$work/log" >&2; fail "the log lacks: $1"; }; }
installed_version() { inside dpkg-query -W -f '${Version}' vantorel; }
install_package() { quietly inside sh -c "cd /var/tmp && apt-get install -y ./$1"; }
# All names but those of what package tools and programs keep for themselves.
names() {
    (cd "$root" && find . -xdev \( -path ./proc -o -path ./dev -o -path ./run -o -path ./tmp -o -path ./var/log \
        -o -path ./var/cache -o -path ./var/lib/apt -o -path ./var/tmp \) -prune -o -print) | LC_ALL=C sort
}

# This machine's own sources of Debian packages, without what else it installs from.
sources=$(apt-get indextargets --format 'deb $(SITE) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' 'Origin: Debian')
[ -n "$sources" ] || fail "this machine installs nothing from Debian"
codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
mkdir -p "$pictures"

# What a fresh machine has is kept for a week.
if [ -z "$(find "$fresh" -mtime -7 2>/dev/null)" ]; then
    quietly mmdebstrap --variant=minbase --dpkgopt=force-unsafe-io "$codename" "$fresh.tar" - < <(sort -u <<<"$sources")
    mv "$fresh.tar" "$fresh"
fi
mkdir "$root"
tar -C "$root" --numeric-owner -xpf "$fresh"
! inside dpkg-query -W -f '${db:Status-Status} ${Package}\n' | grep -E '^installed lib(gtk|webkit)' ||
    fail "the root is not clean"
quietly inside apt-get update
quietly inside useradd --create-home --uid 1000 $user
quietly inside install -d -m 700 -o $user -g $user /home/$user/run
cp "$package" "$root/var/tmp/new.deb"
stage "clean root of $codename: $(inside dpkg-query -W | wc -l) packages"

install_package new.deb
stage "installed $(installed_version): $(inside dpkg-query -W | wc -l) packages"
inside dpkg --verify vantorel || fail "what is installed is not what was packed"
start fresh
has_line "📁 Server path: /$bundle/Resources/vantor-srv"
has_line "⚠️ Warning: .env file not found at: /$bundle/Resources/.env"
stage "started from the desktop entry, page loaded, ended"

quietly inside apt-get remove -y vantorel
names >"$work/before"
left=$(grep -i vantorel "$work/before" | grep -v -E "^\./home/$user/(\.config|\.cache|\.local/share)/Vantorel" || true)
[ -z "$left" ] || fail "left behind: $left"
stage "removed: nothing is left but the user's own files"

# An older version with one file that has gone since, and another server.
quietly dpkg-deb -R "$package" "$work/older"
sed -i 's/^Version: .*/Version: 1.9.9/' "$work/older/DEBIAN/control"
touch "$work/older/$bundle/Resources/gone-since"
echo >>"$work/older/$bundle/Resources/default/vantor-srv"
quietly dpkg-deb --root-owner-group -b "$work/older" "$root/var/tmp/older.deb"
install_package older.deb
[ "$(installed_version) $(ls "$root/$bundle/Resources/gone-since")" = "1.9.9 $root/$bundle/Resources/gone-since" ] ||
    fail "there is no older version"

mkdir -p "$root/usr/local/lib/vantorel" "$root/etc/vantorel"
cat >"$root/usr/local/lib/vantorel/vantor-srv" <<END
#!/bin/sh
echo "own server in \$PWD with \$OWN_SETTING and \$(cat beside)"
exec /$bundle/Resources/default/vantor-srv
END
chmod 755 "$root/usr/local/lib/vantorel/vantor-srv"
echo "a file beside it" >"$root/usr/local/lib/vantorel/beside"
echo "OWN_SETTING=a setting of its own" >"$root/etc/vantorel/env"
own=(usr/local/lib/vantorel/vantor-srv usr/local/lib/vantorel/beside etc/vantorel/env)
(cd "$root" && sha256sum "${own[@]}") >"$work/own"

install_package new.deb
inside dpkg --verify vantorel || fail "what is installed is not what was packed"
[ ! -e "$root/$bundle/Resources/gone-since" ] || fail "a file of the older version is left"
(cd "$root" && quietly sha256sum --check "$work/own")
start upgraded
has_line "✅ .env file found"
has_line "own server in /usr/local/lib/vantorel with a setting of its own and a file beside it"
stage "upgraded from 1.9.9 to $(installed_version), started with the machine's own server and settings"

quietly inside apt-get purge -y vantorel
names >"$work/after"
printf './%s\n' etc/vantorel usr/local/lib/vantorel "${own[@]}" | LC_ALL=C sort >"$work/expected"
LC_ALL=C comm -13 "$work/before" "$work/after" | grep -v "^\./home/$user/" >"$work/left" || true
diff "$work/expected" "$work/left" || fail "what is left is not just the machine's own files"
(cd "$root" && quietly sha256sum --check "$work/own")
stage "removed: nothing is left but the machine's and the user's own files"
