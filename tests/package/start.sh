#!/bin/bash
# Vantorel. MIT licence, see LICENSE.
# Starts the installed application by its desktop entry, as an ordinary user of another root folder, waits for the page,
# looks at the window and ends the application: tools/with_display tests/package/start.sh ROOT USER LOG PICTURE
set -u
[ $# -eq 4 ] || { echo "usage: tests/package/start.sh ROOT USER LOG PICTURE" >&2; exit 2; }
root=$1 user=$2 log=$3 picture=$4
here=$(dirname "${BASH_SOURCE[0]}")
# shellcheck source=tools/started_application.sh
source "$here/../../tools/started_application.sh"
id=app.vantorel.Vantorel
entry=$root/usr/share/applications/$id.desktop
pid_file=$root/home/$user/run/pid # the application's own; $application may be the session around it
: >"$log"
rm -f "$pid_file"

fail() {
    echo "error: $*" >&2
    sed 's/^/    /' "$log" >&2
    exit 1
}
# Politely first: a session that is killed leaves its bus and the application behind.
# shellcheck disable=SC2317  # called by the trap
clean_up() {
    [ -n "$application" ] || return
    local pid end=$((SECONDS + 15))
    pid=$(cat "$pid_file" 2>/dev/null)
    kill -TERM "${pid:-$application}" 2>/dev/null
    while kill -0 "$application" 2>/dev/null && [ $SECONDS -lt $end ]; do sleep 0.1; done
    # shellcheck disable=SC2086  # one word or none
    ! kill -0 "$application" 2>/dev/null || kill -KILL $pid "$application"
    wait "$application"
}
trap clean_up EXIT

# shellcheck disable=SC2317  # called by name
window_found() {
    local candidate
    for candidate in $(xprop -root _NET_CLIENT_LIST 2>/dev/null | grep -o '0x[0-9a-f]*'); do
        if xprop -id "$candidate" _GTK_APPLICATION_ID 2>/dev/null | grep -qF "\"$id\""; then
            window=$candidate
            return
        fi
    done
    return 1
}
# The server's page has many colours below the strip; a page that is not drawn yet has one.
# shellcheck disable=SC2317  # called by name
page_drawn() {
    [ "$(import -window "$window" png:- | convert - -gravity south -crop '100%x80%+0+0' -format %k info:)" -gt 16 ]
}
port_taken() { (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null || (exec 3<>"/dev/tcp/::1/$1") 2>/dev/null; }

port=$((20000 + RANDOM % 10000))
while port_taken $port; do port=$((port + 1)); done
command=$(sed -n 's/^Exec=//p' "$entry")
[ -n "$command" ] || fail "the desktop entry starts nothing"
bus=''
[ ! -x "$root/usr/bin/dbus-run-session" ] || bus='dbus-run-session --'

# Each exec keeps the process: the one that is started here becomes the application, or the session around it.
"$here/in_root" "$root" setpriv --reuid="$user" --regid="$user" --init-groups env -i \
    HOME="/home/$user" USER="$user" PATH=/usr/local/bin:/usr/bin:/bin LANG=C.UTF-8 \
    DISPLAY="$DISPLAY" WEBSOCKET_PORT=$port XDG_RUNTIME_DIR="/home/$user/run" \
    sh -c "exec $bus sh -c 'echo \$\$ >~/run/pid; exec $command'" >"$log" 2>&1 &
application=$!
wait_for 240 "loaded page" page_loaded
window=''
wait_for 30 "window with the application's id" window_found
class=$(xprop -id "$window" WM_CLASS)
[ "$class" = "WM_CLASS(STRING) = \"$id\", \"$id\"" ] || fail "the window's class is not the desktop entry's: $class"
wait_for 60 "drawn page" page_drawn
import -window root "$picture" || fail "no picture of the window"

kill -TERM "$(cat "$pid_file")" || fail "the application can't be told to end"
status=0
wait "$application" || status=$?
application=''
[ $status -eq 0 ] || fail "the application ended with $status"
