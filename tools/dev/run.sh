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

has_display() { is_macos || [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; }

shell_program() {
    local folder=Linux
    ! is_macos || folder=MacOS
    echo "build/Vantorel.app/Contents/$folder/Vantorel"
}

# ready_to_run [CMAKE OPTION...]: the debug build, and what it needs to run here.
ready_to_run() {
    local option
    for option in "$@"; do
        case $option in -D?*=*) ;; *) fail "this is no option of CMake's like -DNAME=VALUE: $option" ;; esac
    done
    if is_macos; then ensure; elif has_display; then ensure build run; else ensure build run display; fi
    configure debug "$@"
    build debug bundle
    probe_sandbox
    choose_port
}

cmd_run() {
    local program
    program=$(shell_program)
    ready_to_run "$@"
    if has_display; then
        say "starting; close the window or press Ctrl-C to end"
        exec "$program"
    fi
    say "no display: starting on a virtual one"
    exec tools/with_display tools/picture "$program" build/vantorel.png
}

# debug [PID]: the application in a debugger, started anew, or the one that runs already.
cmd_debug() {
    local program start
    program=$(shell_program)
    case $*,$# in ,0 | [1-9]*,1) ;; *) fail "debug takes nothing, or the number of one process" ;; esac
    if is_macos; then
        [ $# -eq 0 ] || exec lldb -p "$1"
        ready_to_run
        exec lldb -o run "$program"
    fi
    ensure debug
    if [ $# -gt 0 ]; then
        # Where only parents may trace, it takes root.
        case $(cat /proc/sys/kernel/yama/ptrace_scope 2>/dev/null) in '' | 0) exec gdb -q -p "$1" ;; esac
        as_root gdb -q -p "$1"
        return
    fi
    ready_to_run
    # The application ignores SIGPIPE, but a debugger would stop at it.
    start=(gdb -q -ex "handle SIGPIPE nostop noprint pass" -ex "set print thread-events off" -ex run --args "$program")
    if has_display; then exec "${start[@]}"; fi
    say "no display: starting on a virtual one"
    # What runs there in the background gets no input, unless it is handed over.
    # shellcheck disable=SC2016  # the inner shell's own arguments
    exec tools/with_display bash -c 'exec "$@" <&9 9<&-' debug "${start[@]}" 9<&0
}
