# Vantorel. MIT licence, see LICENSE.
# What cases stage around the shell: small disks, taken ports, missing extensions, killed helpers.

import contextlib
import os
import signal
import subprocess

from harness import children, place, wait
from harness.server import ScriptedServer

DENY_RECORD = """
#define _GNU_SOURCE
#include <dlfcn.h>
#include <string.h>
int XQueryExtension(void *display, const char *name, int *opcode, int *event, int *error) {
    int (*real)(void *, const char *, int *, int *, int *) = dlsym(RTLD_NEXT, "XQueryExtension");
    return strcmp(name, "RECORD") == 0 ? 0 : real(display, name, opcode, event, error);
}
int XRecordQueryVersion(void *display, int *major, int *minor) { return 0; }
"""


# Another /dev for the program alone: the real one, and in it the file by which a graphics processor is known.
WITH_DEVICE = """
mount -t tmpfs tmpfs "$1" && mkdir "$1/upper" "$1/work" &&
mount -t overlay overlay -o "lowerdir=/dev,upperdir=$1/upper,workdir=$1/work" /dev &&
mkdir -p /dev/dri && : > /dev/dri/renderD128 && shift && exec "$@"
"""


class Skipped(Exception):
    """The case can't be staged on this machine."""


class Staging:
    """The part of a world that sets such things up."""

    def empty_folder(self, name):
        """A new folder of the case."""
        folder = os.path.join(self.root, name)
        os.makedirs(folder, mode=0o700)
        return folder

    @contextlib.contextmanager
    def mounted(self, folder, options, read_only=False, fill=False, files=()):
        """A small disk of its own in place of a folder, with files of (name, content, mode); taken away again at the
        end, shells with it."""
        try:
            subprocess.run(["mount", "-t", "tmpfs", "-o", options, "tmpfs", folder], check=True, capture_output=True)
        except (OSError, subprocess.CalledProcessError) as problem:
            raise Skipped(f"no file system can be mounted here: {problem}") from None
        try:
            for name, content, mode in files:
                with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
                    file.write(content)
                os.chmod(os.path.join(folder, name), mode)
            if fill:
                with open(os.path.join(folder, "filler"), "wb", buffering=0) as filler:
                    with contextlib.suppress(OSError):
                        while filler.write(b"x" * 512):
                            pass
            if read_only:
                subprocess.run(["mount", "-o", "remount,ro", folder], check=True)
            yield
        finally:
            for shell in self.shells:
                if shell.running():
                    shell.kill()
            subprocess.run(["umount", "-l", folder], check=True)

    def without_record(self):
        """An environment in which a program finds no RECORD extension: a library put before the others denies it. The
        virtual display itself can only leave out RECORD and the extension that presses the keys together."""
        source, library = os.path.join(self.root, "deny.c"), os.path.join(self.root, "deny.so")
        with open(source, "w", encoding="ascii") as file:
            file.write(DENY_RECORD)
        try:
            subprocess.run(["cc", "-shared", "-fPIC", "-o", library, source, "-ldl"], check=True, capture_output=True)
        except (OSError, subprocess.CalledProcessError) as problem:
            raise Skipped(f"no C compiler here: {problem}") from None
        return {"LD_PRELOAD": library,
                "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0"}

    def with_graphics_processor(self):
        """Options of a launch after which the shell takes the machine for one that has such a processor. What is then
        drawn by OpenGL is computed in software here."""
        command = ["unshare", "--mount", "sh", "-c", WITH_DEVICE, "sh", self.empty_folder("device")]
        if subprocess.run([*command, "true"], capture_output=True, check=False).returncode != 0:
            raise Skipped("no file system of its own can be given to a program here")
        return {"program": "/usr/bin/unshare", "arguments": [*command[1:], self.bundle.program]}

    def program_pid(self):
        """The number of the process that runs the bundle's program, or None."""
        for pid in children.descendants(os.getpid()):
            with contextlib.suppress(OSError):
                if os.readlink(f"/proc/{pid}/exe") == self.bundle.program:
                    return pid
        return None

    def stored_files(self):
        """Files that the engine keeps for the shell under its data folder."""
        return [os.path.join(folder, name) for folder, _, names in os.walk(os.path.join(self.home.data, "Vantorel"))
                for name in names]

    def take_port(self):
        """Another program listens on the port and answers each request with an empty page."""
        other = ScriptedServer(place.Elsewhere(self.root, "other"))
        return other.start(self.children, self.port, self.home.environment())

    def kill_helper(self, shell, name, number=signal.SIGKILL):
        """Kills the engine's helper processes of that name."""
        pids = wait.until(lambda: shell.helpers(name), 5, f"{name} runs")
        for pid in pids:
            os.kill(pid, number)
        return pids
