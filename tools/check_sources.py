#!/usr/bin/env python3
# Vantorel. MIT licence, see LICENSE.
# The house's rules that no compiler knows: file heads, who may include whom, where an #ifdef may stand, file length.
"""Prints one line for each breach, and ends with 1 when there is one. The C programs stand by themselves."""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
HEAD = "Vantorel. MIT licence, see LICENSE."
CODE = {".h", ".cpp", ".c", ".mm"}
HEADED = CODE | {".py", ".sh", ".cmake", ".awk", ".js", ".css"}
# Files that may be longer, each with its reason.
LONG_FILES: dict[str, str] = {
    # It is copied into bundles as the server, alone.
    "tests/servers/scripted_server.py": "one self-contained file",
}
MAX_LINES = 500

FEATURES = ("app", "server", "web", "ui", "hotkeys")
PRODUCT = (*FEATURES, "platform", "guard")
BACKENDS = ("linux", "macos")
OS_MACROS = re.compile(
    r"^\s*#\s*(?:if|ifdef|ifndef|elif)\b.*\b(?:__APPLE__|__linux__|__linux|__unix__|_WIN32|__MACH__|TARGET_OS_\w+)")
SANDBOX = re.compile(r"DISABLE_SANDBOX|sandbox_enabled")
INCLUDE = re.compile(r'^\s*#\s*(?:include|import)\s+"([^"]+)"')


def project_files() -> list[str]:
    listed = subprocess.run(
        ["git", "ls-files", "--cached", "--others", "--exclude-standard"],
        cwd=ROOT, capture_output=True, text=True, check=True)
    return sorted({path for path in listed.stdout.splitlines() if (ROOT / path).is_file()})


def allowed_includes(path: str) -> tuple[str, ...] | None:
    """Beginnings of the project headers that the file may include; None: any."""
    parts = path.split("/")
    if parts[0] in FEATURES:
        return ("app/", f"{parts[0]}/", "platform/")
    if parts[0] == "platform":
        return ("platform/",)
    if parts[0] == "guard":
        return ("guard/", "platform/portable/")
    if parts[0] == "devserver":
        return ("devserver/", "platform/portable/")
    if path.startswith("tests/unit/fake/fake_"):
        return ("tests/unit/fake/", "platform/")
    return None


def forbidden_backend(path: str, included: str) -> bool:
    """Whether a file reaches into a backend that is not its own."""
    for backend in BACKENDS:
        folder = f"platform/{backend}/"
        tests = (f"tests/{backend}/", f"tests/contract/{backend}_", f"tests/fuzz/{backend}/", "tests/bench/")
        if included.startswith(folder) and not path.startswith((folder, *tests)):
            return True
    return False


def check_code(path: str, lines: list[str]) -> list[str]:
    breaches = []
    allowed = allowed_includes(path)
    in_backend = any(path.startswith(f"platform/{backend}/") for backend in BACKENDS)
    for number, line in enumerate(lines, 1):
        where = f"{path}:{number}:"
        if not in_backend and OS_MACROS.match(line):
            breaches.append(f"{where} an #if for an operating system outside platform/<os>/")
        if path.split("/")[0] in PRODUCT and SANDBOX.search(line):
            breaches.append(f"{where} the engine's sandbox stays on, whatever the surroundings")
        match = INCLUDE.match(line)
        if not match:
            continue
        included = match.group(1)
        if not (ROOT / included).is_file() and "/" in included and allowed is not None:
            breaches.append(f"{where} {included} is not a path from the project's root")
        elif "/" not in included and not path.endswith(".c") and (ROOT / path).parent.joinpath(included).is_file():
            breaches.append(f"{where} \"{included}\" has to be included by its path from the project's root")
        if allowed is not None and "/" in included and not included.startswith(allowed):
            breaches.append(f"{where} {path.split('/')[0]}/ must not include {included}")
        if forbidden_backend(path, included):
            breaches.append(f"{where} only a backend itself includes {included}")
    if path.endswith(".h") and "#pragma once" not in lines:
        breaches.append(f"{path}:1: no #pragma once")
    return breaches


def check(path: str) -> list[str]:
    suffix = pathlib.PurePath(path).suffix
    if suffix not in HEADED and pathlib.PurePath(path).name != "CMakeLists.txt":
        return []
    lines = (ROOT / path).read_text(encoding="utf-8").splitlines()
    breaches = []
    first = [line for line in lines[:3] if not line.startswith(("#!", "# shellcheck"))]
    if not first or HEAD not in first[0]:
        breaches.append(f"{path}:1: the first line has to be \"{HEAD}\", as a comment")
    elif len(first) < 2 or not first[1].lstrip().startswith(("//", "#", "*", "/*", '"""')):
        if not first[0].lstrip().startswith("/*"):
            breaches.append(f"{path}:2: the second line has to say what lives in the file, as a comment")
    if suffix in CODE | {".py"} and len(lines) > MAX_LINES and path not in LONG_FILES:
        breaches.append(f"{path}:{len(lines)}: longer than {MAX_LINES} lines")
    if suffix in CODE:
        breaches += check_code(path, lines)
    return breaches


def main() -> int:
    breaches = [breach for path in project_files() for breach in check(path)]
    print("\n".join(breaches))
    return 1 if breaches else 0


if __name__ == "__main__":
    sys.exit(main())
