#!/usr/bin/python3
# Vantorel. MIT licence, see LICENSE.
"""Checks our framework headers, and the delegates that implement protocols, against the SDK's own declarations.

    api_check.py TYPES_FOLDER [--plant]

With --plant it checks copies of the headers into which mistakes were put, one at a time, and fails unless it finds each.
"""

import pathlib
import re
import sys

import declarations
import planted
import sdk as sdk_reader

ROOT = pathlib.Path(__file__).resolve().parents[2]
HEADERS = ROOT / "tests" / "macos" / "frameworks"
BACKEND = ROOT / "platform" / "macos"


def _method_errors(owner, types, method):
    name, count = sdk_reader.spelling(method.selector)
    # Class methods without arguments and class properties look alike to callers.
    for found in types:
        for known, known_count, static, _optional in found.methods:
            if known == name and known_count == count and static == method.is_class_method:
                return []
    sign = "+" if method.is_class_method else "-"
    return [f"{owner}: the SDK has no method {sign}{method.selector}"]


def _property_errors(owner, types, prop):
    for found in types:
        readonly = found.properties.get((prop.name, prop.is_class_property))
        if readonly is None:
            continue
        if readonly == prop.readonly:
            return []
        return [f"{owner}.{prop.name}: {'readonly' if readonly else 'not readonly'} in the SDK"]
    return [f"{owner}: the SDK has no {'class ' if prop.is_class_property else ''}property {prop.name}"]


def _interface_errors(found, sdk):
    known = sdk.protocols if found.kind == "protocol" else sdk.classes
    if found.name not in known:
        return [f"{found.name}: the SDK has no such {'protocol' if found.kind == 'protocol' else 'class'}"]
    errors = []
    if found.kind == "class" and known[found.name].superclass != found.superclass:
        errors.append(f"{found.name}: its superclass is {known[found.name].superclass}, not {found.superclass}")
    types = [known[found.name]] if found.kind == "protocol" else sdk.lineage(found.name)
    for method in found.methods:
        errors += _method_errors(found.name, types, method)
    if found.kind == "protocol":
        optional = {(name, count): is_optional for name, count, _static, is_optional in types[0].methods}
        for method in found.methods:
            if optional.get(sdk_reader.spelling(method.selector), method.optional) != method.optional:
                errors.append(f"{found.name}: {method.selector} is {'required' if method.optional else 'optional'} in the SDK")
    for prop in found.properties:
        errors += _property_errors(found.name, types, prop)
    return errors


def _enum_errors(name, constants, sdk):
    errors = []
    for constant, value in constants.items():
        if name == "":
            if constant not in sdk.constants:
                errors.append(f"{constant}: the SDK has no such constant")
            continue
        known = sdk.enums.get(name)
        if known is None:
            return [f"{name}: the SDK has no such enumeration"]
        matching = [key for key in known if constant.endswith(key) and constant[: -len(key)] != ""]
        if not matching:
            errors.append(f"{name}: the SDK has no constant {constant}")
        elif known[max(matching, key=len)] != value:
            errors.append(f"{constant}: its value is {known[max(matching, key=len)]}, not {value}")
    return errors


def header_errors(texts, sdk):
    """What `texts` (contents of headers) claim and the SDK does not have in that form."""
    found = declarations.read(texts)
    errors = []
    for interface in found.interfaces:
        errors += _interface_errors(interface, sdk)
    for name, constants in found.enums.items():
        errors += _enum_errors(name, constants, sdk)
    for name, count in found.functions.items():
        if name not in sdk.functions:
            # Class identifiers of CoreFoundation are missing from the generated declarations of some functions.
            errors.append(f"{name}: the SDK has no such function")
        elif sdk.functions[name] != count:
            errors.append(f"{name}: takes {sdk.functions[name]} arguments, not {count}")
    for name in found.constants:
        if name not in sdk.constants:
            errors.append(f"{name}: the SDK has no such constant")
    return errors


def delegate_methods(source):
    """(class, protocols, [selectors]) of each class in an Objective-C++ source or its header that conforms to a protocol."""
    conforming = re.findall(r"@interface (\w+) : NSObject <([\w, ]+)>", source)
    for name, protocols in conforming:
        body = re.search(rf"@implementation {name}\b(.*?)\n@end", source, re.S)
        heads = re.findall(r"^[-+] \([^{;]*?(?=\s*\{)", body.group(1), re.M | re.S) if body else []
        yield name, [p.strip() for p in protocols.split(",")], [
            declarations.selector_of(re.sub(r"__unused", "", " ".join(head.split()))) for head in heads]


def delegate_errors(source, sdk, own_selectors):
    """Methods of our proxies that no protocol of theirs has: they would never be called, and nobody would say so."""
    errors = []
    for name, protocols, selectors in delegate_methods(source):
        known = {(method[0], method[1]) for protocol in protocols
                 for found in sdk.lineage(protocol) for method in found.methods}
        if not selectors:
            errors.append(f"{name}: implements nothing of {protocols}")
        for selector in selectors:
            if selector.startswith("init") or selector in own_selectors:
                continue
            if sdk_reader.spelling(selector) not in known:
                errors.append(f"{name}: no protocol among {protocols} has {selector}")
    return errors


def menu_selectors():
    """Actions of the menu table that the application's delegate has to answer to."""
    table = (ROOT / "ui" / "menu_table.h").read_text(encoding="utf-8")
    constants = dict(re.findall(r'constexpr const char\* (\w+) = "(\w+)"', table))
    actions = re.findall(r'\{"[^"]+", "[^"]*", (?:"([\w:]+)"|(\w+))\}', table)
    return [quoted or constants[name] for quoted, name in actions]


def menu_errors(source):
    """Menu actions without a colon are the delegate's own; each must be a method there."""
    own = [selector for _name, _protocols, selectors in delegate_methods(source) for selector in selectors]
    return [f"menu action {action}: the application's delegate does not respond to it"
            for action in menu_selectors() if not action.endswith(":") and action not in own]


def all_errors(headers, backend, sdk):
    """Errors of headers, delegates and menu together; both arguments are lists of (name, text)."""
    source = "\n".join(text for _name, text in backend)
    own_selectors = set(menu_selectors()) | {"forward:"}
    return (header_errors([text for _name, text in headers], sdk) + delegate_errors(source, sdk, own_selectors)
            + menu_errors(source))


def texts_of(paths):
    return [(path.relative_to(ROOT).as_posix(), path.read_text(encoding="utf-8")) for path in sorted(paths)]


def main():
    sdk = sdk_reader.read(pathlib.Path(sys.argv[1]))
    headers = texts_of(HEADERS.rglob("*.h"))
    backend = texts_of(list(BACKEND.glob("*.h")) + list(BACKEND.glob("*.mm")))
    if "--plant" in sys.argv:
        return planted.run(headers, backend, lambda h, b: all_errors(h, b, sdk))
    errors = all_errors(headers, backend, sdk)
    for error in errors:
        print(error)
    found = declarations.read([text for _name, text in headers])
    print(f"{len(found.interfaces)} classes and protocols, {sum(len(i.methods) for i in found.interfaces)} methods, "
          f"{sum(len(i.properties) for i in found.interfaces)} properties, "
          f"{sum(len(e) for e in found.enums.values())} enumeration constants, {len(found.functions)} functions, "
          f"{len(found.constants)} constants: {len(errors)} not as in the SDK")
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main())
