# shellcheck shell=bash
# Vantorel. MIT licence, see LICENSE.
# Which packages each task needs (names of Debian and Ubuntu), and how they get here.

# packages_for GROUP: the packages of a group; "a|b" is met by either, "command:a" by a command of that name as well,
# which may have come from somewhere else (Node's own packages bring npm, and conflict with Debian's).
packages_for() {
    case $1 in
        fake) echo build-essential cmake ninja-build ccache lld libgtest-dev libgmock-dev python3 ;;
        build)
            packages_for fake
            echo pkg-config libgtk-4-dev libwebkitgtk-6.0-dev libsoup-3.0-dev libx11-dev libxi-dev libxtst-dev \
                libxkbcommon-dev
            ;;
        run) echo bubblewrap xdg-dbus-proxy fonts-dejavu-core fonts-noto-color-emoji ;; # for the engine and its pages
        display) echo xvfb xfwm4 dbus at-spi2-core x11-utils imagemagick ;;
        tests)
            echo python3 python3-xlib python3-pil python3-gi at-spi2-core openbox xfconf x11-xkb-utils xdotool \
                x11-xserver-utils xauth dbus-x11 weston xwayland faketime
            ;;
        debug) echo gdb ;;
        layout) echo git clang-format ;;
        lint) echo git python3 clang clang-format clang-tidy shellcheck ;;
        clang) echo clang "libclang-rt-14-dev|libclang-rt-dev" ;;
        valgrind) echo valgrind ;;
        bench) echo libbenchmark-dev valgrind ;;
        macos)
            echo build-essential python3 npm:npm librsvg2-bin libgtest-dev libgmock-dev clang libgnustep-base-dev \
                libblocksruntime-dev
            ;;
        package) echo dpkg-dev file gzip librsvg2-bin ;;
        package-check) echo appstream desktop-file-utils devscripts lintian man-db mmdebstrap python3 ;;
        *) fail "no such group of packages: $1" ;;
    esac
}

is_debian() { has apt-get && has dpkg-query; }

# Prints those packages of the given groups that are not installed.
missing_packages() {
    local group wanted choice installed
    installed=" $(dpkg-query -W -f='${Package}=${db:Status-Status} ' 2>/dev/null) "
    for group in "$@"; do
        for wanted in $(packages_for "$group"); do
            case $wanted in *:*) ! has "${wanted%%:*}" || continue ;; esac
            wanted=${wanted#*:}
            for choice in ${wanted//|/ }; do
                case $installed in *" $choice=installed "*) continue 2 ;; esac
            done
            echo "$wanted"
        done
    done | sort -u
}

# Of "a|b", prints the first that the package lists know.
known_choice() {
    local choice
    for choice in ${1//|/ }; do
        if apt-cache show "$choice" >/dev/null 2>&1; then
            echo "$choice"
            return
        fi
    done
    echo "${1%%|*}"
}

# ensure GROUP...: sees to it that the packages of these groups are installed. Asks the network only when one is missing.
ensure() {
    local missing wanted names=()
    if is_macos; then
        ensure_on_macos
        return
    fi
    is_debian || return 0
    missing=$(missing_packages "$@")
    [ -n "$missing" ] || return 0
    # shellcheck disable=SC2086  # one line of words
    say "installing" $missing
    as_root apt-get -o DPkg::Lock::Timeout=300 update -qq || fail "the package lists can't be read"
    for wanted in $missing; do names+=("$(known_choice "$wanted")"); done
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=300 -o Dpkg::Use-Pty=0 \
        install -y -qq --no-install-recommends "${names[@]}" >/dev/null || fail "packages can't be installed: ${names[*]}"
}

ensure_on_macos() {
    local tool
    for tool in cmake ninja clang++; do
        has "$tool" || fail "$tool is missing; the command line tools (xcode-select --install), CMake and Ninja are needed"
    done
}

# One line for each group of tasks, and what stands in the way of running the engine.
cmd_doctor() {
    local group missing status=0
    if is_debian; then
        for group in build run display tests debug lint clang valgrind bench macos package package-check; do
            missing=$(missing_packages "$group" | tr '\n' ' ')
            if [ -z "$missing" ]; then
                printf 'OK    packages for %s\n' "$group"
            else
                printf 'LACKS packages for %s: %s(installed when first needed)\n' "$group" "${missing//|/ or }"
            fi
        done
    else
        for group in cmake ninja pkg-config c++ clang-format clang-tidy; do
            if has "$group"; then printf 'OK    %s\n' "$group"; else printf 'LACKS %s\n' "$group"; status=1; fi
        done
    fi
    is_macos && return $status
    if ! has bwrap; then
        printf 'NONE  without bubblewrap (packages for run) nothing is known of user namespaces\n'
    elif sandbox_works; then
        printf 'OK    user namespaces for the engine'"'"'s sandbox\n'
    else
        printf 'LACKS user namespaces: the application itself will not start here; run and test switch the sandbox off\n'
    fi
    if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
        printf 'OK    display %s\n' "${DISPLAY:-$WAYLAND_DISPLAY}"
    else
        printf 'NONE  no display: ./dev run brings a virtual one\n'
    fi
    return $status
}
