# shellcheck shell=bash
# Vantorel. MIT licence, see LICENSE.
# Checks that read the sources: layout, clang-tidy, source rules, scripts.

# Without Objective-C++: clang-format 14 pulls blocks and selectors apart. Those files keep to the form by hand.
cxx_files() { project_files h cpp c | grep -vE '^(platform|tests)/macos/'; }

shell_files() {
    git ls-files --cached --others --exclude-standard | while IFS= read -r file; do
        case $file in
            *.sh) echo "$file" ;;
            *) [ -f "$file" ] && head -c 64 "$file" | head -n 1 | grep -aqE '^#!.*\b(bash|sh)$' && echo "$file" ;;
        esac
    done
    true
}

cmd_fmt() {
    ensure layout
    cxx_files | xargs clang-format -i --style=file
    say "laid out $(cxx_files | wc -l | tr -d ' ') files"
}

# report NAME COMMAND...: one line, and what the command said when it failed.
report() {
    local name=$1 log status=0 start=$SECONDS
    shift
    log=$(mktemp)
    "$@" >"$log" 2>&1 || status=$?
    if [ $status -eq 0 ]; then
        printf 'OK   %s (%d s)\n' "$name" $((SECONDS - start))
    else
        printf 'FAIL %s (%d s)\n' "$name" $((SECONDS - start))
        sed 's/^/     /' "$log"
    fi
    rm -f "$log"
    return $status
}

check_layout() { cxx_files | xargs clang-format --dry-run -Werror --style=file; }
check_shell() { shell_files | xargs shellcheck --external-sources; }
check_python() {
    project_files py | xargs python3 -c '
import sys
for path in sys.argv[1:]:
    with open(path, encoding="utf-8") as file:
        compile(file.read(), path, "exec", dont_inherit=True)
'
}
check_rules() { python3 tools/check_sources.py; }
check_tidy() { python3 tools/tidy.py --build build-lint --jobs "$(processors)" "$@"; }

cmd_lint() {
    local status=0
    if [ $# -eq 0 ]; then
        ensure_for_preset lint
        ensure lint
        configure lint
    fi
    report layout check_layout || status=1
    report "source rules" check_rules || status=1
    report "shell scripts" check_shell || status=1
    report "Python scripts" check_python || status=1
    report clang-tidy check_tidy || status=1
    return $status
}

cmd_check_macos() {
    ensure macos
    python3 tools/check_macos.py "$@"
}
