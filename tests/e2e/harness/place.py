# Vantorel. MIT licence, see LICENSE.
# The private places of a case: home and XDG folders, the defaults file, and a copy of the application bundle.

import os
import shutil
import stat


class Home:
    """A home folder of its own, with the environment that leads programs there."""

    def __init__(self, root):
        self.root = root
        self.folder = os.path.join(root, "home")
        self.config = os.path.join(self.folder, ".config")
        self.data = os.path.join(self.folder, ".local", "share")
        self.cache = os.path.join(self.folder, ".cache")
        self.runtime = os.path.join(root, "run")
        for folder in (self.config, self.data, self.cache, self.runtime):
            os.makedirs(folder, exist_ok=True)
        os.chmod(self.runtime, 0o700)
        self.defaults = os.path.join(self.config, "Vantorel", "defaults.ini")

    def environment(self):
        """A small environment: nothing of the developer's own session gets in."""
        environment = {
            "PATH": "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin",
            "HOME": self.folder, "USER": "tester", "LOGNAME": "tester", "SHELL": "/bin/sh",
            "XDG_CONFIG_HOME": self.config, "XDG_DATA_HOME": self.data, "XDG_CACHE_HOME": self.cache,
            "XDG_STATE_HOME": os.path.join(self.folder, ".local", "state"), "XDG_RUNTIME_DIR": self.runtime,
            "XDG_DATA_DIRS": "/usr/local/share:/usr/share", "XDG_CONFIG_DIRS": "/etc/xdg",
            "LANG": "C.UTF-8", "LC_ALL": "C.UTF-8", "TMPDIR": self.root, "GSETTINGS_BACKEND": "memory",
            "GIO_USE_VFS": "local", "NO_AT_BRIDGE": "0", "PYTHONDONTWRITEBYTECODE": "1",
        }
        for name, value in os.environ.items():
            if name.endswith("SAN_OPTIONS") or name in ("WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS",
                                                        "LLVM_PROFILE_FILE"):
                environment[name] = value
        return environment

    def read_defaults(self):
        """The defaults store as a dictionary of raw texts; empty when there is no file."""
        try:
            with open(self.defaults, encoding="utf-8") as file:
                text = file.read()
        except FileNotFoundError:
            return {}
        values, inside = {}, False
        for line in text.splitlines():
            if line.startswith("["):
                inside = line.strip() == "[defaults]"
            elif inside and "=" in line and not line.startswith("#"):
                key, _, value = line.partition("=")
                values[key.strip()] = value.strip()
        return values

    def write_defaults(self, **values):
        """Writes a defaults store with just these values (texts as they stand, Booleans as true and false)."""
        lines = ["[defaults]"]
        for key, value in values.items():
            lines.append(f"{key}={str(value).lower() if isinstance(value, bool) else value}")
        self.write_defaults_bytes(("\n".join(lines) + "\n").encode("utf-8"))

    def write_defaults_bytes(self, content):
        """Writes the defaults file byte by byte, damaged ones among them."""
        os.makedirs(os.path.dirname(self.defaults), exist_ok=True)
        with open(self.defaults, "wb") as file:
            file.write(content)

    def saved_size(self):
        """(width, height) of the stored window frame, or None."""
        text = self.read_defaults().get("windowFrame")
        if text is None:
            return None
        numbers = [float(part) for part in text.replace("{", " ").replace("}", " ").replace(",", " ").split()]
        assert len(numbers) == 4, f"stored frame has the wrong form: {text!r}"
        return numbers[2], numbers[3]


class Bundle:
    """A private copy of the application bundle, whose server each case chooses."""

    def __init__(self, root, application):
        self.folder = os.path.join(root, "Vantorel.app")
        self.resources = os.path.join(self.folder, "Contents", "Resources")
        self.program = os.path.join(self.folder, "Contents", "Linux", "Vantorel")
        self.server = os.path.join(self.resources, "vantor-srv")
        self.env_file = os.path.join(self.resources, ".env")
        self._application = application
        # The bundle is found from the path of the running program: that must be a real file here, not a link elsewhere.
        shutil.copytree(os.path.join(application, "Contents"), os.path.join(self.folder, "Contents"),
                        copy_function=_link_or_copy, ignore=shutil.ignore_patterns("vantor-srv", ".env"))
        os.makedirs(self.resources, exist_ok=True)

    def use_development_server(self):
        """Puts the server that the build bundles in its place."""
        if os.path.lexists(self.server):
            os.unlink(self.server)
        _link_or_copy(os.path.join(self._application, "Contents", "Resources", "vantor-srv"), self.server)

    def use_server(self, content, mode=0o755):
        """Makes the text or bytes the server executable."""
        if os.path.lexists(self.server):
            os.unlink(self.server)
        with open(self.server, "wb") as file:
            file.write(content.encode("utf-8") if isinstance(content, str) else content)
        os.chmod(self.server, mode)

    def use_program(self, source, interpreter=None):
        """Makes a copy of a file the server executable, with another first line where an interpreter is given."""
        with open(source, "rb") as file:
            content = file.read()
        if interpreter:
            content = f"#!{interpreter}\n".encode() + content.partition(b"\n")[2]
        self.use_server(content)

    def write_env(self, content):
        """Writes the `.env` file next to the server."""
        with open(self.env_file, "wb") as file:
            file.write(content.encode("utf-8") if isinstance(content, str) else content)

    def server_mode(self):
        """Permission bits of the server file."""
        return stat.S_IMODE(os.stat(self.server).st_mode)


class Elsewhere:
    """A folder for a server that belongs to no bundle."""

    def __init__(self, root, name):
        self.resources = os.path.join(root, name)
        self.server = os.path.join(self.resources, "server")
        os.makedirs(self.resources)

    def use_program(self, source, interpreter):
        """Makes a copy of a script the server, run by another interpreter."""
        Bundle.use_program(self, source, interpreter)

    use_server = Bundle.use_server


def _link_or_copy(source, target, **_):
    try:
        os.link(source, target)
    except OSError:
        shutil.copy2(source, target)
    return target
