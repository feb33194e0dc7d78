#!/usr/bin/python3
# Vantorel. MIT licence, see LICENSE.
"""Checks what the documents say against the project: test names, ./dev commands, files and log lines.

    check_documents.py          exits with 1 and a line for each statement that is not true
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENTS = sorted([*ROOT.glob("*.md"), *(ROOT / "docs").glob("*.md"), ROOT / "tests" / "e2e" / "README.md"])


def end_to_end_names():
    names = set()
    for path in (ROOT / "tests" / "e2e" / "cases").glob("test_*.py"):
        for case in re.findall(r"^def test_(\w+)\(", path.read_text(encoding="utf-8"), re.M):
            names.add(f"e2e.{path.stem.removeprefix('test_')}.{case}")
    return names


def dev_commands():
    usage = (ROOT / "dev").read_text(encoding="utf-8").split("usage()", 1)[1].split("\n}", 1)[0]
    return set(re.findall(r"^  ([a-z-]+) ", usage, re.M))


def log_texts():
    """The string literals of the logic that begin a log entry: those that have a sign of their kind or an indent."""
    literals = set()
    for folder in ("app", "server", "web", "ui", "hotkeys"):
        for path in (ROOT / folder).glob("*.cpp"):
            literals |= set(re.findall(r'"((?:[^\x00-\x7f]+ |   )\S[^"\\]*)"', path.read_text(encoding="utf-8")))
    # The window's title looks like an entry and is none; what has a "+" in it lies between two literals.
    return {literal for literal in literals if literal != "🤖 Vantor" and "+" not in literal.strip()[:1] + literal[-3:]}


def untrue(path, text):
    names, commands = end_to_end_names(), dev_commands()
    for name in re.findall(r"`(e2e\.\w+\.\w+)`", text):
        if name not in names:
            yield f"no test {name}"
    for command in re.findall(r"\./dev ([a-z][a-z-]+)", text):
        if command not in commands:
            yield f"no command ./dev {command}"
    for target in re.findall(r"\]\(([^)#]+?)\)", text):
        if "://" not in target and not (path.parent / target).exists():
            yield f"no file {target}"
    for name in re.findall(r"`((?:app|server|web|ui|hotkeys|platform|guard|devserver|tools|tests|packaging)/[\w./-]+)`", text):
        if not (ROOT / name).exists():
            yield f"no file {name}"


def untrue_log_lines(text):
    """docs/log.md names every entry that the logic can write, and none that it can't."""
    known = log_texts()
    rows = [row for row in text.splitlines() if row.startswith("| `")]
    named = [line for row in rows for line in re.findall(r"`([^`]+)`", row.split(" | ")[0]) if not line.isascii()]
    for line in named:
        start = line.split("…")[0]
        if not any(start.startswith(literal) or literal.startswith(start) for literal in known):
            yield f"the shell never writes {line!r}"
    for literal in known:
        if not any(line.startswith(literal.rstrip()) or literal.startswith(line.split("…")[0]) for line in named):
            yield f"not explained: {literal!r}"


def main():
    findings = []
    for path in DOCUMENTS:
        text = path.read_text(encoding="utf-8")
        findings += [f"{path.relative_to(ROOT)}: {finding}" for finding in untrue(path, text)]
    log = ROOT / "docs" / "log.md"
    findings += [f"docs/log.md: {finding}" for finding in untrue_log_lines(log.read_text(encoding="utf-8"))]
    for finding in findings:
        print(finding)
    print(f"{len(DOCUMENTS)} documents, {len(findings)} statements that are not true")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
