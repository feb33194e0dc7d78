# Vantorel. MIT licence, see LICENSE.
"""How each program that a document names is tried: run where that is cheap, else its words are looked at."""

import re
import subprocess

from project import Wrong, require


def dev(project, words, _folder):
    """./dev: its own help says what each command takes."""
    if not words:
        project.run("./dev")
        return
    command, parameters = words[0], words[1:]
    require(command in project.usage, f"./dev has no command {command}")
    project.run("bash", "-c", 'for part in tools/dev/*.sh; do . "$part"; done; [ "$1" = help ] || declare -F "cmd_$1"',
                "dev", command.replace("-", "_"))
    if command in ("help", "doctor"):
        project.run("./dev", command)
    expected = list(project.usage[command])
    if expected == ["CTEST OPTION"] and parameters:
        project.select_tests(parameters)
        return
    for word in parameters:
        while expected and not fits(project, word, expected[0]):
            expected.pop(0)
        require(expected, f"./dev {command} does not take {word}")
        if not expected[0].startswith("-D"):
            expected.pop(0)


def fits(project, word, parameter):
    """Whether a word is what the help of ./dev names so."""
    if parameter.startswith("--"):
        return word == parameter
    if parameter.startswith("-D"):
        return word.startswith("-D") and project.definition(word)
    if parameter == "PRESET":
        return word in project.presets
    if parameter in ("SECONDS", "MINUTES", "PID"):
        return word.isdigit() or word == parameter or word == "$(pidof Vantorel)"
    if parameter == "T":
        return any(project.root.glob(f"tests/fuzz/**/{word}_fuzz.cpp"))
    raise Wrong(f"./dev's help has a parameter that this test does not know: {parameter}")


def cmake(project, words, _folder):
    """Configures in the copy; a build is Ninja's dry run there."""
    if words[0] == "--preset":
        options = [project.definition(word) if word.startswith("-D") else word for word in words[2:]]
        project.configure(words[1], *options)
        return
    require(words[0] == "--build" and len(words) == 2, f"this test does not know cmake {words[0]}")
    preset = next((name for name, folder in project.presets.items() if folder == words[1]), None)
    require(preset, f"no preset builds in {words[1]}")
    if not (project.copy / words[1] / "build.ninja").exists():
        project.configure(preset)
    project.run("cmake", *words, "--", "-n")


def ctest(project, words, _folder):
    project.select_tests([word for word in words if word != "-N"])


def cpack(project, words, folder):
    require(folder != project.copy, "cpack runs in a build folder")
    generators = re.findall(r"set\(CPACK_GENERATOR (\w+)\)", project.text("cmake/Install.cmake")
                            + project.text("cmake/Package.cmake"))
    require(words[0] == "-G" and words[1] in generators and len(words) == 2, f"{words}: generators are {generators}")


def python(project, words, folder):
    require(words[:1] and words[0] in PROGRAMS, f"this test does not know {words[:1]}")
    PROGRAMS[words[0]](project, words[1:], folder)


def known_options(project, script, words):
    """Each option of the words has to be in the script's own help."""
    told = project.run("/usr/bin/python3", script, "--help")
    for word in words:
        match = re.match(r"--[\w-]+|-\w", word)
        require(not match or re.search(rf"(?<![\w-]){re.escape(match[0])}(?![\w-])", told),
                f"{script} has no option {word}")


def one_case(project, words, _folder):
    known_options(project, "tests/e2e/run.py", words)
    topic, _, name = words[0].partition("::")
    topics = {case.partition("::")[0] for case in project.cases}
    require(words[0] in project.cases or topic in topics | {"FILE"} and name in ("NAME", "test_NAME"),
            f"there is no case {words[0]}")


def many_cases(project, words, _folder):
    known_options(project, "tests/e2e/repeat.py", words)
    require(words[0].isdigit(), f"how often is {words[0]}?")
    require(any(re.search(words[1], case.replace("::", ".")) for case in project.cases), f"no case matches {words[1]}")


def apt_get(project, words, _folder):
    name = re.search(r"CPACK_PACKAGE_NAME (\S+)\)", project.text("cmake/Package.cmake"))[1]
    if words[0] == "install":
        package = rf"\./build-release/{name}_{re.escape(project.version)}_[a-z0-9]+\.deb"
        require(len(words) == 2 and re.fullmatch(package, words[1]), f"./dev package makes {package}")
    else:
        require(words in (["remove", name], ["purge", name]), f"the package is {name}")


def install(project, words, _folder):
    """Run for real, with files of the same names, into a folder that stands for the system's root."""
    target = words[-1]
    require(target.startswith("/"), f"{target} is no place in the system")
    places = project.text("packaging/linux/vantor-srv") + project.text("cmake/Install.cmake")
    require(re.search(rf"[ =]{re.escape(target)}[ )\n]", places) or
            re.search(rf"^own={re.escape(target.rpartition('/')[0])}$", places, re.M)
            and f'"$own/{target.rpartition("/")[2]}"' in places, f"the package looks for nothing at {target}")
    (project.elsewhere / words[-2]).touch()
    project.run("install", *words[:-1], f"{project.elsewhere}{target}", folder=project.elsewhere)
    require((project.elsewhere / target[1:]).is_file(), f"{target} was not made")


def elsewhere(project, words, _folder):
    """Programs of a Mac or of a desktop: the files that they are given have to be ours."""
    ours = (r"build-release/Vantorel\.app(/Contents/(MacOS/(Vantorel|vantorel-guard)|Resources/vantor-srv))?",
            rf"build-release/Vantorel-{re.escape(project.version)}-Darwin\.dmg")
    for word in words:
        if re.search(r"/|\.(app|dmg|plist|entitlements)$", word):
            require((project.root / word).exists() or any(re.fullmatch(name, word) for name in ours),
                    f"there is no {word}")
        elif word.startswith("app."):
            require(f"<string>{word}</string>" in project.text("packaging/macos/Info.plist"), f"nothing is called {word}")


def alone(_project, words, _folder):
    require(not words, f"takes no words: {words}")


def filter_of_output(_project, words, _folder):
    """tee and the like: nothing that could go wrong but the program's own options."""
    require(not any(word.startswith("-") for word in words), f"this test does not know {words}")


def journal(_project, words, _folder):
    try:
        told = subprocess.run(["journalctl", "--help"], text=True, capture_output=True, check=False).stdout
    except FileNotFoundError:
        told = "--user --since="
    for word in words:
        require(not word.startswith("--") or word in told, f"journalctl has no option {word}")


def executable(name):
    def check(project, words, _folder):
        path = project.root / name
        require(not words and path.is_file() and path.stat().st_mode & 0o111, f"{name} can't be run so")
    return check


PROGRAMS = {
    "./dev": dev,
    ".ci/run": executable(".ci/run"),
    "cmake": cmake,
    "ctest": ctest,
    "cpack": cpack,
    "/usr/bin/python3": python,
    "python3": python,
    "tests/e2e/run.py": one_case,
    "tests/e2e/repeat.py": many_cases,
    "apt-get": apt_get,
    "sudo": lambda *_: None,
    "install": install,
    "codesign": elsewhere,
    "spctl": elsewhere,
    "tccutil": elsewhere,
    "xcrun": elsewhere,
    "journalctl": journal,
    "tee": filter_of_output,
    "vantorel": alone,
    "Vantorel.app/Contents/Linux/Vantorel": alone,
}
