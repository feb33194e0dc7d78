#!/usr/bin/python3
# Vantorel. MIT licence, see LICENSE.
"""Makes the macOS icon from the one SVG: make_icns.py SVG ICNS. Needs rsvg-convert."""

import pathlib
import struct
import subprocess
import sys

# The format's four-letter names of PNG entries, by pixels: 16, 32 and the two-fold sizes of 16 to 512 points.
ENTRIES = (("icp4", 16), ("icp5", 32), ("ic11", 32), ("ic12", 64), ("ic07", 128), ("ic13", 256), ("ic08", 256),
           ("ic14", 512), ("ic09", 512), ("ic10", 1024))


def png(svg, pixels):
    command = ["rsvg-convert", "--width", str(pixels), "--height", str(pixels), "--format", "png", str(svg)]
    return subprocess.run(command, check=True, capture_output=True).stdout


def icns(svg):
    """The icon's bytes."""
    rendered = {pixels: png(svg, pixels) for pixels in {size for _name, size in ENTRIES}}
    body = b"".join(name.encode() + struct.pack(">I", 8 + len(rendered[size])) + rendered[size] for name, size in ENTRIES)
    return b"icns" + struct.pack(">I", 8 + len(body)) + body


if __name__ == "__main__":
    pathlib.Path(sys.argv[2]).write_bytes(icns(sys.argv[1]))
