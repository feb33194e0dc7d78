# Vantorel. MIT licence, see LICENSE.
# The private desktop of a case: virtual X server, message bus and window manager, each with settings of its own.

import glob
import os
import random
import subprocess

from harness import wait

# What the session bus may start: accessibility for reading texts, and the settings of the window manager.
SERVICES = {
    "org.a11y.Bus": "/usr/libexec/at-spi-bus-launcher",
    "org.xfce.Xfconf": "/usr/lib/*/xfce4/xfconf/xfconfd",
}

BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <keep_umask/>
  <listen>unix:path={runtime}/bus</listen>
  <auth>EXTERNAL</auth>
  <servicedir>{services}</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


def start_display(children, size):
    """Starts a virtual X server on a free number; returns (process, display name)."""
    for _ in range(20):
        number = random.randint(200, 30000)
        if os.path.exists(f"/tmp/.X{number}-lock") or os.path.exists(f"/tmp/.X11-unix/X{number}"):
            continue
        read_end, write_end = os.pipe()
        server = children.start(
            ["Xvfb", f":{number}", "-screen", "0", f"{size[0]}x{size[1]}x24", "-nolisten", "tcp", "-noreset",
             "-displayfd", str(write_end)], name="xvfb", pass_fds=(write_end,))
        os.close(write_end)
        with os.fdopen(read_end, "rb") as ready:
            if ready.readline().strip():
                return server, f":{number}"
        children.stop(server)
    raise AssertionError("no virtual display starts")


def start_bus(children, home):
    """Starts a session bus that can activate only what the suite needs; returns (process, address)."""
    services = os.path.join(home.root, "services")
    os.makedirs(services, exist_ok=True)
    for name, pattern in SERVICES.items():
        program = (glob.glob(pattern) or [pattern])[0]
        with open(os.path.join(services, f"{name}.service"), "w", encoding="ascii") as file:
            file.write(f"[D-BUS Service]\nName={name}\nExec={program}\n")
    configuration = os.path.join(home.root, "bus.conf")
    with open(configuration, "w", encoding="utf-8") as file:
        file.write(BUS_CONFIGURATION.format(runtime=home.runtime, services=services))
    bus = children.start(["dbus-daemon", "--nofork", "--print-address=1", f"--config-file={configuration}"],
                         name="bus", env=home.environment(), stdout=subprocess.PIPE)
    address = bus.stdout.readline().decode("ascii").strip()
    assert address, "the session bus does not start"
    return bus, address


def start_window_manager(children, name, environment, screen):
    """Starts a window manager and waits until it has announced itself on the root window of `screen`."""
    argv = {"xfwm4": ["xfwm4", "--compositor=off", "--vblank=off"], "openbox": ["openbox", "--sm-disable"]}[name]
    process = children.start(argv, env=environment)
    wait.until(screen.has_window_manager, 15, f"{name} manages the windows")
    return process
