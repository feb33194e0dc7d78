# Vantorel. MIT licence, see LICENSE.
"""Reads the type declarations that were generated from Apple's SDK: what is really there?

A method 'a:b:' is spelt aB(x, y) there, an enumeration is an object without the prefix of its constants.
"""

import re
from dataclasses import dataclass, field

FRAMEWORKS = ("Foundation", "AppKit", "WebKit", "AVFoundation", "CoreGraphics", "CoreFoundation",
              "ApplicationServices", "QuartzCore", "Runtime")


@dataclass
class Type:
    parents: list = field(default_factory=list)
    methods: set = field(default_factory=set)  # (name, count of arguments, is_static, optional)
    properties: dict = field(default_factory=dict)  # (name, is_static) -> readonly


@dataclass
class Sdk:
    classes: dict = field(default_factory=dict)
    protocols: dict = field(default_factory=dict)
    enums: dict = field(default_factory=dict)
    functions: dict = field(default_factory=dict)
    constants: set = field(default_factory=set)

    def lineage(self, name):
        """The class, its superclasses and the protocols of all of them."""
        seen, waiting = [], [name]
        while waiting:
            current = waiting.pop(0)
            for kind in (self.classes, self.protocols):
                found = kind.get(current)
                if found is not None and found not in seen:
                    seen.append(found)
                    waiting += found.parents
        return seen


def spelling(selector):
    """'initWithA:b:' -> ('initWithAB', 2)."""
    pieces = [piece for piece in selector.split(":") if piece]
    name = pieces[0] + "".join(piece[0].upper() + piece[1:] for piece in pieces[1:])
    return name, selector.count(":")


def _argument_count(text):
    depth, count, empty = 0, 1, True
    for before, char in zip(" " + text, text):
        empty = empty and char.isspace()
        if char in "(<{[":
            depth += 1
        elif char in ")}]" or (char == ">" and before != "="):
            depth -= 1
        elif char == "," and depth == 0:
            count += 1
    if empty:
        return 0
    # "this: This" is the form's own way to type a class method; nobody passes it.
    return count - (1 if re.match(r"\s*this\s*:", text) else 0)


def _closing(text, opening, closing):
    """Where the bracket that begins `text` is closed; the arrow "=>" closes nothing."""
    depth = 0
    for place, char in enumerate(text):
        if char == opening:
            depth += 1
        elif char == closing and text[place - 1] != "=":
            depth -= 1
            if depth == 0:
                return place
    return len(text)


def _member(line, into):
    static = line.startswith("static ")
    rest = line[len("static "):] if static else line
    readonly = rest.startswith("readonly ")
    rest = rest[len("readonly "):] if readonly else rest
    accessor = re.match(r"(get|set) (\w+)\(", rest)
    if accessor:
        kind, name = accessor.groups()
        into.properties[(name, static)] = kind == "get" and into.properties.get((name, static), True)
        return
    head = re.match(r"(\w+)(\??)(?=[<(])", rest)
    if head:
        arguments = rest[head.end():]
        if arguments.startswith("<"):
            arguments = arguments[_closing(arguments, "<", ">") + 1:]
        into.methods.add((head.group(1), _argument_count(arguments[1:_closing(arguments, "(", ")")]), static,
                          head.group(2) == "?"))
        return
    attribute = re.match(r"(\w+)\??\s*:", rest)
    if attribute:
        into.properties[(attribute.group(1), static)] = readonly


def _names(text):
    return re.findall(r"\b[A-Z]\w*", re.sub(r"<[^<>]*>", "", re.sub(r"<[^<>]*>", "", text or "")))


def read(folder):
    """The SDK as the files of `folder` describe it."""
    sdk = Sdk()
    for framework in FRAMEWORKS:
        path = folder / f"{framework}.d.ts"
        if not path.exists():
            continue
        current = None
        for line in path.read_text(encoding="utf-8").splitlines():
            if current is not None and line == "}":
                current = None
            elif current is not None and line.startswith("  "):
                if isinstance(current, dict):
                    entry = re.match(r"\s+(\w+): (-?\d+)", line)
                    if entry:
                        current[entry.group(1)] = int(entry.group(2))
                else:
                    _member(line.strip(), current)
            elif head := re.match(r"declare class (\w+)(?:<.*?>)? extends (\w+)(.*)\{", line):
                # Each protocol has a class of its own name beside it, which stands for objects that conform to it.
                if head.group(2) != "NativeObject" or head.group(1) == "NSObject":
                    current = sdk.classes.setdefault(head.group(1), Type())
                    current.superclass = head.group(2)
                    current.parents += [head.group(2)] + _names(head.group(3).replace("implements", ""))
            elif head := re.match(r"declare interface (\w+)(?:<.*?>)?(?: extends (.*?))?\s*\{", line):
                current = sdk.protocols.setdefault(head.group(1), Type())
                current.parents += _names(head.group(2))
            elif head := re.match(r"declare const (\w+): \{", line):
                current = sdk.enums.setdefault(head.group(1), {})
            elif head := re.match(r"declare const (\w+):", line):
                sdk.constants.add(head.group(1))
            elif head := re.match(r"declare function (\w+)\((.*)\): [^()]*;", line):
                sdk.functions[head.group(1)] = _argument_count(head.group(2))
            if line.endswith("{ }") or line.endswith("{}"):
                current = None
    return sdk
