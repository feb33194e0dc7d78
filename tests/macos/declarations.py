# Vantorel. MIT licence, see LICENSE.
"""Reads our framework headers: what do they claim that Apple's SDK declares?

The headers are our own and keep to a plain form, so a small reader of that form is enough; a line that it does not
understand is an error, never skipped.
"""

import re
from dataclasses import dataclass, field


@dataclass
class Method:
    selector: str
    is_class_method: bool
    optional: bool = False


@dataclass
class Property:
    name: str
    readonly: bool
    is_class_property: bool


@dataclass
class Interface:
    kind: str  # "class", "category" or "protocol"
    name: str
    superclass: str | None = None
    protocols: list = field(default_factory=list)
    methods: list = field(default_factory=list)
    properties: list = field(default_factory=list)


@dataclass
class Declarations:
    interfaces: list = field(default_factory=list)
    enums: dict = field(default_factory=dict)  # enumeration's name, "" for none -> {constant: value}
    functions: dict = field(default_factory=dict)  # name -> count of arguments
    constants: list = field(default_factory=list)


class Unreadable(Exception):
    """A declaration of a form that the reader does not know."""


def _without_noise(text):
    text = re.sub(r"//[^\n]*", "", text)
    text = re.sub(r"^[ \t]*#(?:[^\\\n]|\\\n?)*$", "", text, flags=re.M)
    text = re.sub(r"__attribute__\s*\(\((?:[^()]|\((?:[^()]|\([^()]*\))*\))*\)\)", "", text)
    for word in ("NS_ASSUME_NONNULL_BEGIN", "NS_ASSUME_NONNULL_END", "__covariant", "_Nullable", "_Nonnull",
                 "__unsafe_unretained"):
        text = text.replace(word, "")
    return text


def selector_of(declaration):
    """'- (void)a:(int)x b:(int)y' -> 'a:b:'."""
    text = re.sub(r"^\s*[-+]\s*", "", declaration)
    # Types stand in parentheses, block types with parentheses of their own inside.
    while True:
        shorter = re.sub(r"\([^()]*\)", " ", text)
        if shorter == text:
            break
        text = shorter
    pieces = re.findall(r"(\w+)\s*:", text)
    if pieces:
        return "".join(piece + ":" for piece in pieces)
    names = re.findall(r"\w+", text)
    if len(names) != 1:
        raise Unreadable(declaration)
    return names[0]


def _property_of(declaration):
    match = re.match(r"@property\s*(?:\(([^)]*)\))?\s*(.*)$", declaration, re.S)
    attributes = [a.strip() for a in (match.group(1) or "").split(",")]
    block = re.search(r"\(\^\s*(\w+)\)", match.group(2))
    name = block.group(1) if block else re.findall(r"\w+", match.group(2))[-1]
    return Property(name, "readonly" in attributes, "class" in attributes)


def _read_interface(head, body):
    kind, rest = re.match(r"@(interface|protocol)\s+(.*)$", head.strip(), re.S).groups()
    rest = rest.strip()
    if kind == "protocol":
        match = re.match(r"(\w+)\s*(?:<([^>]*)>)?$", rest)
        found = Interface("protocol", match.group(1))
    elif "(" in rest:
        found = Interface("category", re.match(r"(\w+)", rest).group(1))
    else:
        match = re.match(r"(\w+)\s*(?:<[^>]*>)?\s*(?::\s*(\w+)\s*(?:<([^>]*)>)?\s*(?:<([^>]*)>)?)?$", rest)
        if match is None:
            raise Unreadable(head)
        found = Interface("class", match.group(1), match.group(2))
    optional = False
    for part in re.split(r"(;|@optional|@required)", body):
        part = " ".join(part.split())
        if part in ("", ";"):
            continue
        if part in ("@optional", "@required"):
            optional = part == "@optional"
        elif part.startswith("@property"):
            found.properties.append(_property_of(part))
        elif part[0] in "+-":
            found.methods.append(Method(selector_of(part), part[0] == "+", optional))
        else:
            raise Unreadable(part)
    return found


def _value(text):
    return int(eval(re.sub(r"(?i)(?<=\d)u?l+\b", "", text), {"__builtins__": {}}))  # pylint: disable=eval-used


def _read_enums(text, into):
    pattern = r"(?:typedef\s+NS_(?:ENUM|OPTIONS)\([^,]*,\s*(\w+)\)|enum\s*:\s*\w+)\s*\{([^}]*)\}\s*;"
    for match in re.finditer(pattern, text):
        constants = into.setdefault(match.group(1) or "", {})
        for entry in filter(None, (e.strip() for e in match.group(2).split(","))):
            name, value = (part.strip() for part in entry.split("="))
            constants[name] = _value(value)
    return re.sub(pattern, "", text)


def _read_plain(text, found):
    """What is left: functions, constants, and types that only name other types."""
    text = re.sub(r"typedef\s+(?:const\s+)?struct\b[^;{]*\{[^}]*\}[^;]*;", "", text)
    text = re.sub(r"static\s+inline[^{]*\{.*?\n\}", "", text, flags=re.S)
    text = re.sub(r'extern\s+"C"\s*\{', "", text).replace("}", "")
    for statement in (" ".join(s.split()) for s in text.split(";")):
        if not statement or statement.startswith(("typedef", "@class")) or re.match(r"@protocol \w+$", statement):
            continue
        # A block as an argument counts as one, whatever it takes itself.
        plain = re.sub(r"\w+ \(\^(\w+)\)\([^()]*\)", r"Block \1", statement)
        function = re.match(r"[\w\s*]+?[\s*](\w+)\s*\(([^()]*)\)$", plain)
        if function:
            arguments = function.group(2).strip()
            found.functions[function.group(1)] = 0 if arguments in ("", "void") else arguments.count(",") + 1
            continue
        constant = re.match(r"extern [\w\s*]+?[\s*](\w+)$", statement)
        if constant is None:
            raise Unreadable(statement)
        found.constants.append(constant.group(1))


def read(texts):
    """The declarations in all of `texts` (contents of headers)."""
    found = Declarations()
    for text in texts:
        text = _without_noise(text)
        pattern = r"(@(?:interface|protocol)\s+\w+[^;{}@+-]*?)(?=\n\s*(?:[-+@]))(.*?)@end"
        for match in re.finditer(pattern, text, re.S):
            found.interfaces.append(_read_interface(match.group(1), match.group(2)))
        text = re.sub(pattern, "", text, flags=re.S)
        text = _read_enums(text, found.enums)
        _read_plain(text, found)
    return found
