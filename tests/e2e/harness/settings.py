# Vantorel. MIT licence, see LICENSE.
# What a desktop tells its programs about looks: the settings service of X11, X resources, GTK's own file, locales.

import os
import shutil
import struct

from Xlib import X, Xatom


def publish(screen, **values):
    """Serves whole numbers under XSETTINGS names ("_" for "/"), as settings daemons do; lasts as long as the screen's
    connection."""
    content = struct.pack("<B3xII", 0, 1, len(values))
    for name, value in values.items():
        encoded = name.replace("_", "/").encode("ascii")
        content += struct.pack("<BxH", 0, len(encoded)) + encoded.ljust(-len(encoded) % 4 + len(encoded), b"\0")
        content += struct.pack("<Ii", 1, value)
    window = screen.root.create_window(-1, -1, 1, 1, 0, X.CopyFromParent)
    kind = screen.atom("_XSETTINGS_SETTINGS")
    window.change_property(kind, kind, 8, content)
    window.set_selection_owner(screen.atom("_XSETTINGS_S0"), X.CurrentTime)
    screen.display.sync()


def set_resources(screen, text):
    """Sets the X resources of the display ("Xft.dpi: 144"), as xrdb does."""
    screen.root.change_property(Xatom.RESOURCE_MANAGER, Xatom.STRING, 8, (text + "\n").encode("ascii"))
    screen.display.sync()


def write_gtk_settings(home, **values):
    """Writes the user's settings file of the toolkit ("_" for "-")."""
    folder = os.path.join(home.config, "gtk-4.0")
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, "settings.ini"), "w", encoding="ascii") as file:
        file.write("[Settings]\n" + "".join(f"{name.replace('_', '-')}={value}\n" for name, value in values.items()))


def locale(root, name):
    """Makes a locale ("he_IL") in a folder of the case; returns the variables that lead a program to it. Its rules are
    those of C.UTF-8: toolkits look at the language alone to find out where a line begins."""
    folder = os.path.join(root, "locales")
    shutil.copytree("/usr/lib/locale/C.utf8", os.path.join(folder, f"{name}.UTF-8"))
    return {"LOCPATH": folder, "LANG": f"{name}.UTF-8", "LC_ALL": f"{name}.UTF-8"}
