# shellcheck shell=bash
# Vantorel. MIT licence, see LICENSE.
# Running the tests, plainly and under tools that watch them.

cmd_test() {
    ensure build run display tests
    configure debug
    build debug
    probe_sandbox
    if [ -n "${CI:-}" ]; then
        test_twice "$@"
    else
        # End-to-end tests wait more than they work: twice as many as there are processors.
        ctest --test-dir build --output-on-failure --parallel $(($(processors) * 2)) "$@"
    fi
}

# In CI a test with a real window gets a second try, and is named as unstable when it needed it: there, machines stall
# for seconds, and the engine's helpers are not always there when a page asks for them. Any other test has failed then.
test_twice() {
    local status=0
    ctest --test-dir build --output-on-failure --parallel $(($(processors) * 3)) --repeat until-pass:2 "$@" |
        awk -f tools/dev/unstable.awk || status=$?
    return $status
}

# The logic, its tests and nothing else, with every package of a toolkit hidden from the build.
cmd_fake() {
    ensure fake
    export PKG_CONFIG_LIBDIR=/nonexistent PKG_CONFIG_PATH=
    configure fake
    build fake
    ctest --test-dir build-fake --output-on-failure --parallel "$(processors)" "$@"
}

# run_sanitized PRESET [CTEST OPTION...]: the tests under a sanitizer. In CI, of those with the whole application only
# the launch: all of them take a quarter of an hour.
run_sanitized() {
    local preset=$1 folder status=0 whole='^e2e\.'
    # Limits of time and memory mean nothing under a sanitizer, hence not the tests that are about nothing else; it takes
    # a deadly signal for a finding of its own; and it has to be loaded before the library that sets the clock.
    local without='^(linux\.WebMessageTest|e2e\.responsive\..*|e2e\.clock\..*'
    without+='|e2e\.fault\.(server_prints_without_line_ends|killed_by_sigsegv))$'
    shift
    folder=$(build_folder "$preset")
    configure "$preset"
    build "$preset"
    [ -z "${CI:-}" ] || whole='^e2e\.launch\.'
    ctest --test-dir "$folder" --output-on-failure --parallel $(($(processors) * 2)) --exclude-regex "$without" \
        --label-exclude '^e2e$' --repeat until-pass:2 "$@" | awk -f tools/dev/unstable.awk || status=1
    [ $# -eq 0 ] || return $status
    ctest --test-dir "$folder" --output-on-failure --parallel $(($(processors) * 2)) --exclude-regex "$without" \
        --tests-regex "$whole" --repeat until-pass:2 | awk -f tools/dev/unstable.awk || status=1
    return $status
}

# sanitize_environment: what the sanitizers are told, for all that follows.
sanitize_environment() {
    local suppressions=$PWD/tests/sanitizers
    ensure build clang run display tests
    probe_sandbox
    export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:check_initialization_order=1
    export LSAN_OPTIONS=suppressions=$suppressions/lsan.supp:print_suppressions=0
    export UBSAN_OPTIONS=print_stacktrace=1:suppressions=$suppressions/ubsan.supp
    export TSAN_OPTIONS=suppressions=$suppressions/tsan.supp:second_deadlock_stack=1:ignore_noninstrumented_modules=1
    # With sanitizers GLib has to take memory from malloc, one block at a time, to be seen.
    export G_SLICE=always-malloc
}

cmd_sanitize_address() {
    sanitize_environment
    run_sanitized asan-ubsan "$@"
}

# The thread sanitizer does not start where addresses are spread wider than it expects.
cmd_sanitize_threads() {
    if [ -z "${VANTOREL_FIXED_ADDRESSES:-}" ] && has setarch && setarch "$(uname -m)" -R true 2>/dev/null; then
        exec setarch "$(uname -m)" -R env VANTOREL_FIXED_ADDRESSES=1 ./dev sanitize-threads "$@"
    fi
    sanitize_environment
    run_sanitized tsan "$@"
}

cmd_sanitize() {
    local status=0
    (cmd_sanitize_address "$@") || status=1
    (cmd_sanitize_threads "$@") || status=1
    return $status
}

cmd_valgrind() {
    ensure build valgrind
    configure debug
    build debug unit_tests
    say "unit tests under Valgrind"
    valgrind --quiet --error-exitcode=9 --leak-check=full --num-callers=30 \
        --show-leak-kinds=definite,indirect --errors-for-leak-kinds=definite,indirect \
        build/tests/unit_tests --gtest_brief=1 "$@"
}

# fuzz [SECONDS] [TARGET]: as many targets at a time as there are processors.
cmd_fuzz() {
    local seconds=${1:-600} only=${2:-} targets
    ensure_for_preset fuzz
    configure fuzz
    build fuzz fuzzers
    export LSAN_OPTIONS=suppressions=$PWD/tests/sanitizers/lsan.supp:print_suppressions=0 G_SLICE=always-malloc
    targets=$(find build-fuzz/fuzz -maxdepth 1 -name "${only:-*}_fuzz" -type f | sort)
    [ -n "$targets" ] || fail "there is no fuzz target ${only}"
    say "fuzzing, $seconds seconds each"
    # shellcheck disable=SC2086  # one word for each target
    printf '%s\n' $targets | xargs -P "$(processors)" -n 1 tools/fuzz_one "$seconds"
}

cmd_bench() {
    ensure build run display tests bench
    configure bench
    build bench
    probe_sandbox
    python3 tests/bench/bench.py --build build-bench "$@"
}

cmd_soak() {
    ensure build run display tests
    configure debug
    build debug bundle
    probe_sandbox
    /usr/bin/python3 tests/soak/soak.py "$@"
}
