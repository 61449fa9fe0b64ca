"""Checks the format library as it is installed.

    check_package.py install BUILD PREFIX     installs the library from a build tree
    check_package.py headers PREFIX CXX       compiles installed headers alone, without exceptions and RTTI
    check_package.py cmake PREFIX CXX         builds and runs the consumer by way of find_package
    check_package.py pkg-config PREFIX CXX    the same by way of pkg-config, without exceptions and RTTI
    check_package.py c PREFIX CC CXX          compiles and runs examples/play.c, and checks the C library
    check_package.py alone SOURCE             configures the library without anything else
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import typing

HERE = os.path.dirname(os.path.abspath(__file__))
BARE = ["-fno-exceptions", "-fno-rtti"]
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Werror", "-Wno-unused", "-Wno-unused-parameter"]  # as examples do
C_WARNINGS = ["-pedantic", "-Wall", "-Wextra", "-Werror"]


C_HEADER = "tev2_playback/tev2_playback.h"


class Program(typing.NamedTuple):
    """A program that uses the package, and the examples that it runs."""
    source: str
    library: str             # of pkg-config
    target: str              # of CMake
    namespace: str
    arguments: dict          # that examples know: {name: type}
    headers: list            # whose comments hold code: four spaces further in than text
    documents: dict          # {page: file that its code is written to}; none: an example like those of headers


FORMAT = Program(
    "main.cpp", "tev2", "tev2::tev2", "TEV2_LOADER",
    {"scene": "TEV2_LOADER::TEV2&", "track": "const TEV2_LOADER::TEV2_ANIMATABLE&"},
    ["tev2_loader/" + name for name in (
        "status.h", "tev2.h", "file.h", "names.h", "io/whole_file.h", "math/vectors.h", "tracks/keyed_track.h",
        "tracks/visit_keys.h", "archive/boxed.h", "records/kept_body.h")],
    {"README.md": None, "docs/engine.md": "engine.inc"})

PLAYBACK = Program(
    "playback.cpp", "tev2_playback_async", "tev2::playback_async", "TEV2_PLAYBACK",
    {"scene": "TEV2_LOADER::TEV2&", "clip": "TEV2_PLAYBACK::Clip&", "player": "TEV2_PLAYBACK::Player&",
     "walk": "TEV2_PLAYBACK::Player&", "run": "TEV2_PLAYBACK::Player&", "hips": "std::size_t", "spine": "std::size_t",
     "footstep": "TEV2_PLAYBACK::Property<std::int32_t>", "matrices": "std::vector<TEV2_LOADER::TEV2_MATRIX_3X4>&"},
    ["tev2_playback/" + name for name in (
        "clip.h", "player.h", "playhead.h", "property.h", "events.h", "camera.h", "pose.h", "root_motion.h", "skin.h",
        "clip_file.h", "load_async.h")],
    {"docs/playback.md": "playback.inc"})


def run(*command, cwd=None, env=None):
    done = subprocess.run(command, cwd=cwd, env=env, capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"{' '.join(command)}\n{done.stdout}{done.stderr}")
    return done.stdout


def headers(prefix):
    folder = os.path.join(prefix, "include")
    return sorted(os.path.relpath(os.path.join(place, name), folder)
                  for place, _, names in os.walk(folder) for name in names)


def text_of(name):
    with open(os.path.join(HERE, "..", "..", name), encoding="utf-8") as file:
        return file.read()


def page(name, language="cpp"):
    return re.findall(rf"```{language}\n(.*?)```", text_of(name), re.DOTALL)


def examples(program, prefix):
    """(header, code) of each example."""
    found = []
    for header in program.headers:
        with open(os.path.join(prefix, "include", header), encoding="utf-8") as file:
            text = file.read()
        for block in re.findall(r"(?:^//[/]?(?:     .*)?\n)+", text, re.MULTILINE):
            lines = [re.sub(r"^///?(     )?", "", line) for line in block.splitlines()]
            if any(re.search(r";( *//.*)?$", line) for line in lines):  # otherwise a formula
                found.append((header, "\n".join(lines).strip("\n") + "\n"))
        if not found or found[-1][0] != header:
            sys.exit(f"{header} has no example")
    return found + [(program.headers[0], code) for name, file in program.documents.items() if not file
                    for code in page(name)]


def write_examples(program, prefix, folder):
    """examples.inc: a function for each example, and RunExamples. Other files: the code of a page as it is."""
    for name, target in program.documents.items():
        if target:
            with open(os.path.join(folder, target), "w", encoding="utf-8") as file:
                file.write("\n".join(page(name)))
    parameters = ", ".join(f"[[maybe_unused]] {kind} {name}" for name, kind in program.arguments.items())
    includes, functions, calls = [], [], []
    for number, (header, code) in enumerate(examples(program, prefix)):
        includes += [f'#include "{header}"'] + re.findall(r"^#include .*$", code, re.MULTILINE)
        body = re.sub(r"^(#include .*|\.\.\.)\n", "", code, flags=re.MULTILINE)
        functions.append(f"// {header}\nstatic int Example{number}({parameters})\n{{\n"
                         f"using namespace {program.namespace};\n{{\n{body}}}\nreturn 0;\n}}\n")
        calls.append(f"if (Example{number}({', '.join(program.arguments)}) != 0) return 1;")
    with open(os.path.join(folder, "examples.inc"), "w", encoding="utf-8") as file:
        file.write("\n".join(["#include <cstdio>", *includes, *functions, f"static int RunExamples({parameters})", "{",
                              *calls, "return 0;", "}", ""]))


def install(build, prefix):
    shutil.rmtree(prefix, ignore_errors=True)
    run("cmake", "--install", build, "--prefix", prefix, "--component", "library")
    hidden = [header for header in headers(prefix) if "/detail/" in header]
    if hidden or not headers(prefix):
        sys.exit(f"installed, but not for users: {hidden}")


def check_headers(prefix, compiler):
    include = "-I" + os.path.join(prefix, "include")
    with tempfile.TemporaryDirectory() as folder:
        source = os.path.join(folder, "alone.cpp")
        for header in headers(prefix):
            with open(source, "w", encoding="utf-8") as file:
                file.write(f'#include "{header}"\n')
            # A header whose source file exists is the first that it includes.
            if not os.path.exists(os.path.join(HERE, "..", "..", header[:-2] + ".cpp")):
                run(compiler, "-std=c++20", "-fsyntax-only", *BARE, *WARNINGS, include, source)
            old = subprocess.run([compiler, "-std=c++17", "-E", include, source], capture_output=True, text=True)
            if header != C_HEADER and (old.returncode == 0 or "needs C++20" not in old.stderr):
                sys.exit(f"{header} does not say that it needs C++20")


def flags_of(prefix, library):
    """What pkg-config says of an installed library."""
    places = [place for place, _, names in os.walk(prefix) if library + ".pc" in names]
    return run("pkg-config", "--cflags", "--libs", library,
               env={**os.environ, "PKG_CONFIG_PATH": os.pathsep.join(places)}).split()


def check_cmake(prefix, compiler):
    for program in (FORMAT, PLAYBACK):
        with tempfile.TemporaryDirectory() as folder:
            write_examples(program, prefix, folder)
            run("cmake", "-S", HERE, "-B", folder, f"-DCMAKE_CXX_COMPILER={compiler}", f"-DCMAKE_PREFIX_PATH={prefix}",
                f"-DEXAMPLES_DIR={folder}", f"-DSOURCE={program.source}", f"-DLIBRARY={program.target}")
            run("cmake", "--build", folder)
            run(os.path.join(folder, "consumer"), cwd=folder)


def check_pkg_config(prefix, compiler):
    for program in (FORMAT, PLAYBACK):
        with tempfile.TemporaryDirectory() as folder:
            write_examples(program, prefix, folder)
            run(compiler, *BARE, *WARNINGS, f"-I{folder}", os.path.join(HERE, program.source),
                *flags_of(prefix, program.library), "-o", "consumer", cwd=folder)
            run(os.path.join(folder, "consumer"), cwd=folder)


def check_c(prefix, cc, cxx):
    """The C header as C99, play.c by way of pkg-config, the code of docs/playback.md, and what the library shows."""
    include = "-I" + os.path.join(prefix, "include")
    program = "examples/play.c"
    library = os.path.join(flags_of(prefix, "tev2_playback_c")[1][2:], "libtev2_playback_c.so")
    with tempfile.TemporaryDirectory() as folder:
        write_examples(PLAYBACK, prefix, folder)
        run(cxx, *BARE, f"-I{folder}", os.path.join(HERE, PLAYBACK.source), *flags_of(prefix, PLAYBACK.library),
            "-o", "consumer", cwd=folder)
        run(os.path.join(folder, "consumer"), cwd=folder)  # leaves walk.tv2
        with open(os.path.join(folder, "header.c"), "w", encoding="utf-8") as file:
            file.write(f'#include "{C_HEADER}"\n')
        run(cc, "-std=c99", "-fsyntax-only", *C_WARNINGS, include, "header.c", cwd=folder)
        run(cc, "-std=c99", *C_WARNINGS, os.path.join(HERE, "..", "..", program),
            *flags_of(prefix, "tev2_playback_c"), f"-Wl,-rpath,{os.path.dirname(library)}", "-o", "play", cwd=folder)
        printed = run(os.path.join(folder, "play"), "walk.tv2", "hand", cwd=folder)
        # Halfway the root is at (1, 0, 2) and the hand 1 m above it and half a metre ahead.
        if "0.50 s: 1 1 2.5 m\n" not in printed or "foot on ground at 0.50 s: 1, was 0" not in printed:
            sys.exit(f"{program} printed\n{printed}")
        for code in page("docs/playback.md", "c"):
            if code not in text_of(program):
                sys.exit(f"docs/playback.md shows code that is not in {program}:\n{code}")
        python = "import ctypes, sys\n" + "".join(page("docs/playback.md", "python"))
        printed = run(sys.executable, "-c", python.replace('"libtev2_playback_c.so"', repr(library)), cwd=folder)
        if printed != "1.0 1.0 2.5\n":
            sys.exit(f"docs/playback.md's Python printed\n{printed}")
    shown = [line.split()[-1] for line in run("nm", "-D", "--defined-only", library).splitlines()]
    declared = set(re.findall(r"\b(tev2_\w+)\(", re.sub(r"//.*", "", text_of(C_HEADER))))
    if set(shown) != declared:
        sys.exit(f"shown but not declared, or the other way round: {sorted(set(shown) ^ declared)}")


def check_alone(source):
    with tempfile.TemporaryDirectory() as folder:
        run("cmake", "-S", source, "-B", folder, "-DTV2_LIBRARY_ONLY=ON", "-DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON")
        targets = run("cmake", "--build", folder, "--target", "help")
        if "tev2" not in targets or "exporter" in targets or "tests" in targets:
            sys.exit(f"not the library alone:\n{targets}")


if __name__ == "__main__":
    {"install": install, "headers": check_headers, "cmake": check_cmake, "pkg-config": check_pkg_config, "c": check_c,
     "alone": check_alone}[sys.argv[1]](*sys.argv[2:])
