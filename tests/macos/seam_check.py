#!/usr/bin/python3
# Vantorel. MIT licence, see LICENSE.
"""Compares the seam's pure virtual functions with the overrides of the two native backends.

The macOS backend is not linked against anything that would notice a missing one on Linux, and a class that nobody makes is
not noticed by a compiler at all.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
# What the controller implements, not the backends.
ROLES = {"ApplicationDelegate", "NavigationDelegate", "UiDelegate", "ScriptMessageHandler"}


def code(path):
    return re.sub(r"//[^\n]*", "", path.read_text(encoding="utf-8"))


def seam():
    """[(class, function)] of every pure virtual function, overloads as often as they occur."""
    functions = []
    for path in sorted((ROOT / "platform").glob("*.h")):
        for name, body in re.findall(r"^class (\w+)(?: : public \w+)? \{(.*?)^\};", code(path), re.M | re.S):
            if name not in ROLES:
                functions += [(name, function) for function in
                              re.findall(r"virtual [^;{}]*?(\w+)\([^;{}]*?\)(?: const)? = 0;", body, re.S)]
    return functions


def overrides(folder):
    """{class of the seam: functions that some class of the backend in `folder` overrides for it}."""
    text = "\n".join(code(path) for path in sorted(folder.iterdir()) if path.suffix in (".h", ".mm", ".cpp"))
    found = {}
    for bases, body in re.findall(r"^class \w+(?: final)?\s*:([^;{]*)\{\n(.*?)^\};", text, re.M | re.S):
        names = re.findall(r"(\w+)\([^;{}]*?\)\s*(?:const\s*)?(?:noexcept\s*)?override", body, re.S)
        for base in re.findall(r"\w+", bases):
            found.setdefault(base, set()).update(names)
    # Views share what View declares through one template, whose base is its parameter.
    found.setdefault("View", set()).update(found.get("Interface", ()))
    return found


def main():
    functions = seam()
    missing = set()
    for backend in ("linux", "macos"):
        have = overrides(ROOT / "platform" / backend)
        missing |= {f"{backend}: {name}::{function}" for name, function in functions if function not in have.get(name, ())}
    for line in sorted(missing):
        print(line)
    print(f"{len(functions)} functions of the seam, {len(missing)} missing")
    return 1 if missing or len(functions) < 100 else 0


if __name__ == "__main__":
    sys.exit(main())
