# shellcheck shell=bash
# Vantorel. MIT licence, see LICENSE.
# Configuring and building by preset.

build_folder() { if [ "$1" = debug ]; then echo build; else echo "build-$1"; fi; }

# configure PRESET [CMAKE OPTION...]: quiet unless it fails. CMake itself looks again when its files change.
configure() {
    local preset=$1 folder log
    shift
    folder=$(build_folder "$preset")
    if [ $# -eq 0 ] && [ -f "$folder/build.ninja" ]; then
        return
    fi
    say "configuring $folder"
    mkdir -p "$folder"
    log=$folder/configure.log
    cmake --preset "$preset" "$@" >"$log" 2>&1 || { cat "$log" >&2; fail "CMake could not configure $folder"; }
}

# build PRESET [TARGET...]
build() {
    local preset=$1 folder targets=()
    shift
    folder=$(build_folder "$preset")
    [ $# -eq 0 ] || targets=(--target "$@")
    say "building $folder"
    cmake --build "$folder" --parallel "$(processors)" ${targets[@]+"${targets[@]}"} || fail "$folder does not build"
}

# What a preset needs beyond the packages for building.
ensure_for_preset() {
    case $1 in
        clang | fuzz | lint | asan-ubsan | tsan) ensure build clang ;;
        bench) ensure build bench ;;
        fake) ensure fake ;;
        *) ensure build ;;
    esac
}

cmd_build() {
    local preset=${1:-debug}
    [ $# -eq 0 ] || shift
    ensure_for_preset "$preset"
    configure "$preset"
    build "$preset" "$@"
}
