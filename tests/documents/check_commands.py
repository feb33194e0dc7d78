#!/usr/bin/python3
# Vantorel. MIT licence, see LICENSE.
"""Runs the commands that the documents name: cheap ones as they stand, in a copy of the project; of dear ones it sees
that whoever gets them knows their words.

    check_commands.py --build FOLDER     exits with 1 and a line for each command that would not work
"""

import argparse
import pathlib
import re
import shlex
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))

from project import Project, Wrong  # noqa: E402
from programs import PROGRAMS  # noqa: E402

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENTS = sorted([*ROOT.glob("*.md"), *(ROOT / "docs").glob("*.md"), ROOT / "tests" / "e2e" / "README.md"])

# Commands that don't work, each in its own way: should one of them pass, this test would be worth nothing.
PLANTED = (
    "./dev tests",
    "./dev test -L unnit",
    "./dev test --lable unit",
    "./dev build relase",
    "./dev package --chek",
    "./dev lint now",
    "./dev fuzz long",
    "./dev fuzz 60 nothing",
    "./dev run -DVANTOREL_SERVR=/path/to/vantor-srv",
    "./dve test",
    "cmake --preset debgu",
    "cmake --preset debug --no-such-option",
    "cmake --build build-debug",
    "cpack -G DragNDrop",
    "(cd build-release && cpack -G DragAndDrop)",
    "tests/e2e/run.py menu::abuot",
    "tests/e2e/repeat.py 20 '^hotkey_s'",
    "tests/e2e/repeat.py 20 '^hotkeys' --jobbs 3",
    "sudo apt-get install ./build/vantorel_2.0.0_amd64.deb",
    "sudo apt-get remove vantor",
    "sudo install -D -m 644 .env /etc/vantorel/.env",
    "sudo install -d -m 644 .env /etc/vantorel/env --no-such-option",
    "codesign --entitlements packaging/macos/Vantor.entitlements build-release/Vantorel.app",
    "codesign --verify Vantorel.app",
    "xcrun stapler staple build-release/Vantorel.dmg",
    "vantorel --verbose",
    "no-such-program",
    "./dev test 'without an end",
)


def indented(text):
    """Code lines by indent, as (line number, text); continued lines are one. Fenced blocks are blanked out."""
    fence, found, before = False, [], ""
    for number, line in enumerate(text.splitlines(), 1):
        if line.lstrip().startswith("```"):
            fence = not fence
        elif not fence and re.match(r" {4,}\S", line):
            if found and found[-1][1].endswith("\\") and before:
                found[-1] = (found[-1][0], found[-1][1][:-1].rstrip() + " " + line.strip())
            else:
                found.append((number, line.strip()))
        before = line.strip()
    return found


def commands_of(text):
    """The commands of a document, as (line number, command), without the words that explain them."""
    for number, line in indented(text):
        line = re.split(r"\s+#\s|\s{2,}", line)[0]
        if re.match(r"[\w./(]", line):
            yield number, line
    for number, line in enumerate(text.splitlines(), 1):
        for span in re.findall(r"(?<!`)`([^`]+)`(?!`)", line):
            words = span.split()
            # A bare name speaks of a program; a path or a name with words is a command.
            if words[0] in PROGRAMS and (len(words) > 1 or "/" in span):
                yield number, span


def words_of(command):
    """A command's words, with && and | as words of their own."""
    reader = shlex.shlex(command, posix=True, punctuation_chars=True)
    reader.whitespace_split = True
    try:
        return list(reader)
    except ValueError as error:
        raise Wrong(str(error)) from error


def check(project, command):
    """Raises Wrong when the command, a list of commands or a pipe would not work."""
    words, folder = words_of(command), project.copy
    if words and words[0] == "(" and words[-1] == ")":
        words = words[1:-1]
    part = []
    for word in [*words, "&&"]:
        if word not in ("&&", "|"):
            part.append(word)
            continue
        if part[:1] == ["cd"]:
            folder = project.folder(part[1])
        else:
            if part[:1] == ["sudo"]:
                part = part[1:]
            if not part or part[0] not in PROGRAMS:
                raise Wrong(f"this test knows no program {part[:1]}: teach it in tests/documents/programs.py")
            PROGRAMS[part[0]](project, part[1:], folder)
        part = []


def main():
    parser = argparse.ArgumentParser(description="Runs the commands of the documents.")
    parser.add_argument("--build", required=True, help="a build folder with tests")
    options = parser.parse_args()
    findings, known = [], {}
    with tempfile.TemporaryDirectory(prefix="vt-documents-") as folder:
        project = Project(ROOT, pathlib.Path(folder), pathlib.Path(options.build).resolve())
        for path in DOCUMENTS:
            for number, command in commands_of(path.read_text(encoding="utf-8")):
                if command not in known:
                    known[command] = None
                    try:
                        check(project, command)
                    except Wrong as wrong:
                        known[command] = str(wrong)
                if known[command]:
                    findings.append(f"{path.relative_to(ROOT)}:{number}: {command}\n    {known[command]}")
        for command in PLANTED:
            try:
                check(project, command)
            except Wrong:
                continue
            findings.append(f"a planted mistake was not found: {command}")
    for finding in findings:
        print(finding)
    print(f"{len(DOCUMENTS)} documents, {len(known)} commands, {len(findings)} findings")
    return 1 if findings or len(known) < 20 else 0


if __name__ == "__main__":
    sys.exit(main())
