# shellcheck shell=bash
# Vantorel. MIT licence, see LICENSE.
# What scripts that start the application and watch it share. They set `application` to its process and `log` to the file
# with its output.
# shellcheck disable=SC2034,SC2154  # set and read by those scripts
application=''

fail() {
    echo "error: $*" >&2
    exit 1
}

# end_application: asks it to end, unless it has, and waits for that. Its exit status is this one's.
end_application() {
    local process=$application
    [ -n "$process" ] || return 0
    application=''
    kill -TERM "$process" 2>/dev/null
    wait "$process"
}

# wait_for SECONDS WHAT COMMAND...: until the command succeeds; fails when it does not in time, or the application ends.
wait_for() {
    local end=$((SECONDS + $1)) what=$2
    shift 2
    until "$@"; do
        kill -0 "$application" 2>/dev/null || fail "the application ended before there was $what"
        [ $SECONDS -lt $end ] || fail "no $what in time"
        sleep 0.1
    done
}

logged() { grep -qF -- "$1" "$log"; }
page_loaded() { logged '✅ Page loaded successfully'; }

# has_active_window: sets `window` to the active window, if there is one.
has_active_window() {
    window=$(xprop -root _NET_ACTIVE_WINDOW 2>/dev/null | sed -n 's/.*# \(0x[0-9a-f]*\).*/\1/p')
    case $window in '' | 0x0) return 1 ;; esac
}
