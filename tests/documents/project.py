# Vantorel. MIT licence, see LICENSE.
"""What the commands of the documents are measured by: facts of the project, and a copy of it to run commands in."""

import functools
import json
import os
import re
import shutil
import subprocess


class Wrong(Exception):
    """A command would not work; the text tells why."""


def require(condition, why):
    if not condition:
        raise Wrong(why)


class Project:
    """root: the project; copy: a copy of its files in a folder of its own; build: a build folder of the project."""

    def __init__(self, root, work, build):
        self.root, self.build = root, build
        self.copy = work / "copy"
        self.elsewhere = work / "elsewhere"
        self.elsewhere.mkdir()
        shutil.copytree(root, self.copy, ignore=self._left_out, symlinks=True)
        # For commands that name a server; placeholders are filled in with it.
        self.server = self.elsewhere / "vantor-srv"
        self.server.write_text("#!/bin/sh\n", encoding="utf-8")
        self.server.chmod(0o755)

    def _left_out(self, folder, names):
        at_root = os.path.samefile(folder, self.root)
        return {name for name in names if name in (".git", "node_modules", "__pycache__") or
                at_root and (name.startswith("build") or name.startswith("."))}

    def run(self, *words, folder=None):
        """Runs a command in the copy and returns its output; Wrong when it fails."""
        environment = {name: value for name, value in os.environ.items() if not name.startswith("VANTOREL_")}
        result = subprocess.run([str(word) for word in words], cwd=folder or self.copy, env=environment, text=True,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        require(result.returncode == 0, f"exit status {result.returncode}: {result.stdout.strip()[-400:]}")
        return result.stdout

    def text(self, name):
        return (self.root / name).read_text(encoding="utf-8")

    @functools.cached_property
    def usage(self):
        """What ./dev says of itself: for each command its parameters."""
        found = re.findall(r"^  ([a-z][a-z-]*)((?: \[[^\]]+\])*)(?:  |$)", self.run("./dev", "help"), re.M)
        return {name: re.findall(r"\[([^\]]+)\]", parameters) for name, parameters in found}

    @functools.cached_property
    def presets(self):
        """The folder of each configure preset."""
        presets = json.loads(self.text("CMakePresets.json"))["configurePresets"]
        names = [preset["name"] for preset in presets if not preset.get("hidden")]
        return {name: "build" if name == "debug" else f"build-{name}" for name in names}

    @functools.cached_property
    def options(self):
        return set(re.findall(r"^(?:set|option)\((VANTOREL_\w+) ", self.text("CMakeLists.txt"), re.M))

    @functools.cached_property
    def version(self):
        return re.search(r"^project\(Vantorel VERSION ([\d.]+)", self.text("CMakeLists.txt"), re.M)[1]

    @functools.cached_property
    def ctest_help(self):
        return self.run("ctest", "--help")

    @functools.cached_property
    def cases(self):
        """The end-to-end cases as TOPIC::NAME."""
        return {f"{path.stem[5:]}::{name}" for path in (self.root / "tests/e2e/cases").glob("test_*.py")
                for name in re.findall(r"^def test_(\w+)\(", path.read_text(encoding="utf-8"), re.M)}

    def folder(self, name):
        require(name in self.presets.values(), f"no preset builds in {name}")
        return name

    def definition(self, word):
        """Checks -DNAME=VALUE and fills in a placeholder."""
        match = re.fullmatch(r"-D(\w+)=(.*)", word)
        require(match, f"{word}: that is not -DNAME=VALUE")
        require(match[1] in self.options, f"CMakeLists.txt has no option {match[1]}")
        return f"-D{match[1]}={self.server}" if match[2].startswith("/path/to/") else word

    def configure(self, preset, *options):
        require(preset in self.presets, f"there is no preset {preset}")
        return self.run("cmake", "--preset", preset, *options)

    def select_tests(self, options):
        """CTest has to know the options (it says nothing of those that it does not know), and to find tests by them."""
        for option in re.findall(r"(?:^| )(--?[a-zA-Z][\w-]*)", " ".join(options)):
            require(re.search(rf"(^|[ ,]){re.escape(option)}[ ,=\n]", self.ctest_help), f"CTest has no option {option}")
        if options[0] == "-L" and f" LABEL {options[1]} " in self.text("tests/CMakeLists.txt"):
            return  # perhaps a label of another platform
        options = ["." if option == "NAME" else option for option in options]
        listed = self.run("ctest", "--test-dir", self.build, "-N", *options)
        require(re.search(r"^Total Tests: [1-9]", listed, re.M), f"no test is selected by {' '.join(options)}")
