# Vantorel. MIT licence, see LICENSE.
"""Reads what a 64-bit Mach-O executable says of itself: processor, minimum system, libraries, signature."""

import struct
from dataclasses import dataclass, field

MAGIC_64 = 0xFEEDFACF
CPU_ARM64 = 0x0100000C
TYPE_EXECUTE = 2
PLATFORM_MACOS = 1
FLAG_PIE = 0x200000
LC_LOAD_DYLIB = 0xC
LC_LOAD_WEAK_DYLIB = 0x80000018
LC_REEXPORT_DYLIB = 0x8000001F
LC_CODE_SIGNATURE = 0x1D
LC_BUILD_VERSION = 0x32
SUPERBLOB_MAGIC = 0xFADE0CC0
CODE_DIRECTORY_MAGIC = 0xFADE0C02
CODE_DIRECTORY_ADHOC = 0x2


@dataclass
class MachO:
    magic: int = 0
    cpu: int = 0
    file_type: int = 0
    flags: int = 0
    platform: int = 0
    minimum_system: str = ""
    libraries: list = field(default_factory=list)
    signature_flags: int | None = None


def _signature_flags(data, offset):
    magic, _length, count = struct.unpack_from(">III", data, offset)
    if magic != SUPERBLOB_MAGIC:
        return None
    for index in range(count):
        _kind, blob = struct.unpack_from(">II", data, offset + 12 + 8 * index)
        blob_magic, _length, _version, flags = struct.unpack_from(">IIII", data, offset + blob)
        if blob_magic == CODE_DIRECTORY_MAGIC:
            return flags
    return None


def read(data):
    """The header and the load commands in `data`, the bytes of a file."""
    found = MachO()
    found.magic, found.cpu, _subtype, found.file_type, count, _size, found.flags, _reserved = struct.unpack_from("<8I", data, 0)
    if found.magic != MAGIC_64:
        return found
    place = 32
    for _ in range(count):
        command, size = struct.unpack_from("<II", data, place)
        if command in (LC_LOAD_DYLIB, LC_LOAD_WEAK_DYLIB, LC_REEXPORT_DYLIB):
            name = place + struct.unpack_from("<I", data, place + 8)[0]
            found.libraries.append(data[name:place + size].split(b"\0")[0].decode())
        elif command == LC_BUILD_VERSION:
            found.platform, version = struct.unpack_from("<II", data, place + 8)
            found.minimum_system = f"{version >> 16}.{version >> 8 & 0xFF}"
        elif command == LC_CODE_SIGNATURE:
            found.signature_flags = _signature_flags(data, struct.unpack_from("<I", data, place + 8)[0])
        place += size
    return found
