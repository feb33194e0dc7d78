# shellcheck shell=bash
# Vantorel. MIT licence, see LICENSE.
# Starting the application from its build folder.

# The engine's own test: without user namespaces it ends the whole process at the first page.
sandbox_works() { has bwrap && bwrap --unshare-all --ro-bind / / true >/dev/null 2>&1; }

# For development runs and tests only; the application itself never switches the sandbox off.
probe_sandbox() {
    is_macos && return
    sandbox_works && return
    say "no user namespaces here: the engine runs without its sandbox, for this run only"
    export WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS=1
}

port_taken() { (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null || (exec 3<>"/dev/tcp/::1/$1") 2>/dev/null; }

# The development server would not get a port that another program has; the page would be that program's.
choose_port() {
    [ -z "${WEBSOCKET_PORT:-}" ] || return 0
    port_taken 8080 || return 0
    local port=8081
    while port_taken $port; do port=$((port + 1)); done
    say "port 8080 is taken by another program; using $port (WEBSOCKET_PORT chooses another)"
    export WEBSOCKET_PORT=$port
}

cmd_run() {
    local program display=${DISPLAY:-}${WAYLAND_DISPLAY:-}
    if is_macos; then
        ensure
        program=build/Vantorel.app/Contents/MacOS/Vantorel
    else
        program=build/Vantorel.app/Contents/Linux/Vantorel
        if [ -n "$display" ]; then ensure build run; else ensure build run display; fi
    fi
    configure debug
    build debug bundle
    probe_sandbox
    choose_port
    if is_macos || [ -n "$display" ]; then
        say "starting; close the window or press Ctrl-C to end"
        exec "$program" "$@"
    fi
    say "no display: starting on a virtual one"
    exec tools/with_display tools/picture "$program" build/vantorel.png
}
