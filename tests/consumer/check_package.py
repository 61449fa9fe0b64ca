"""Checks the format library as it is installed.

    check_package.py install BUILD PREFIX     installs the library from a build tree
    check_package.py headers PREFIX CXX       compiles installed headers alone, without exceptions and RTTI
    check_package.py cmake PREFIX CXX         builds and runs the consumer by way of find_package
    check_package.py pkg-config PREFIX CXX    the same by way of pkg-config, without exceptions and RTTI
    check_package.py alone SOURCE             configures the library without anything else
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
BARE = ["-fno-exceptions", "-fno-rtti"]
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Werror", "-Wno-unused", "-Wno-unused-parameter"]  # as examples do


# Where comments hold code: four spaces further in than text.
WITH_EXAMPLES = ["status.h", "tev2.h", "file.h", "names.h", "io/whole_file.h", "math/vectors.h", "tracks/keyed_track.h",
                 "tracks/visit_keys.h", "archive/boxed.h", "records/kept_body.h"]


def run(*command, cwd=None, env=None):
    done = subprocess.run(command, cwd=cwd, env=env, capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"{' '.join(command)}\n{done.stdout}{done.stderr}")
    return done.stdout


def headers(prefix):
    folder = os.path.join(prefix, "include")
    return sorted(os.path.relpath(os.path.join(place, name), folder)
                  for place, _, names in os.walk(folder) for name in names)


def examples(prefix):
    """(header, code) of each example, those of the README included."""
    found = []
    for header in ["tev2_loader/" + name for name in WITH_EXAMPLES]:
        with open(os.path.join(prefix, "include", header), encoding="utf-8") as file:
            text = file.read()
        for block in re.findall(r"(?:^//[/]?(?:     .*)?\n)+", text, re.MULTILINE):
            lines = [re.sub(r"^///?(     )?", "", line) for line in block.splitlines()]
            if any(lines):
                found.append((header, "\n".join(lines).strip("\n") + "\n"))
        if not found or found[-1][0] != header:
            sys.exit(f"{header} has no example")
    with open(os.path.join(HERE, "..", "..", "README.md"), encoding="utf-8") as file:
        found += [("tev2_loader/file.h", code) for code in re.findall(r"```cpp\n(.*?)```", file.read(), re.DOTALL)]
    return found


def write_examples(prefix, folder):
    """examples.inc: a function for each example, and RunExamples. engine.inc: the code of docs/engine.md as it is."""
    with open(os.path.join(HERE, "..", "..", "docs", "engine.md"), encoding="utf-8") as file:
        blocks = re.findall(r"```cpp\n(.*?)```", file.read(), re.DOTALL)
    with open(os.path.join(folder, "engine.inc"), "w", encoding="utf-8") as file:
        file.write("\n".join(blocks))
    includes, functions, calls = [], [], []
    for number, (header, code) in enumerate(examples(prefix)):
        includes += [f'#include "{header}"'] + re.findall(r"^#include .*$", code, re.MULTILINE)
        body = re.sub(r"^#include .*\n", "", code, flags=re.MULTILINE)
        functions.append(f"// {header}\nstatic int Example{number}([[maybe_unused]] TEV2_LOADER::TEV2& scene, "
                         "[[maybe_unused]] const TEV2_LOADER::TEV2_ANIMATABLE& track)\n{\n"
                         f"using namespace TEV2_LOADER;\n{{\n{body}}}\nreturn 0;\n}}\n")
        calls.append(f"if (Example{number}(scene, track) != 0) return 1;")
    with open(os.path.join(folder, "examples.inc"), "w", encoding="utf-8") as file:
        file.write("\n".join(["#include <cstdio>", *includes, *functions,
                              "static int RunExamples(TEV2_LOADER::TEV2& scene, const TEV2_LOADER::TEV2_ANIMATABLE& "
                              "track)", "{", *calls, "return 0;", "}", ""]))


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
            if old.returncode == 0 or "needs C++20" not in old.stderr:
                sys.exit(f"{header} does not say that it needs C++20")


def check_cmake(prefix, compiler):
    with tempfile.TemporaryDirectory() as folder:
        write_examples(prefix, folder)
        run("cmake", "-S", HERE, "-B", folder, f"-DCMAKE_CXX_COMPILER={compiler}", f"-DCMAKE_PREFIX_PATH={prefix}",
            f"-DEXAMPLES_DIR={folder}")
        run("cmake", "--build", folder)
        run(os.path.join(folder, "consumer"), cwd=folder)


def check_pkg_config(prefix, compiler):
    with tempfile.TemporaryDirectory() as folder:
        write_examples(prefix, folder)
        places = [place for place, _, names in os.walk(prefix) if "tev2.pc" in names]
        flags = run("pkg-config", "--cflags", "--libs", "tev2",
                    env={**os.environ, "PKG_CONFIG_PATH": os.pathsep.join(places)}).split()
        run(compiler, *BARE, *WARNINGS, f"-I{folder}", os.path.join(HERE, "main.cpp"), *flags, "-o", "consumer",
            cwd=folder)
        run(os.path.join(folder, "consumer"), cwd=folder)


def check_alone(source):
    with tempfile.TemporaryDirectory() as folder:
        run("cmake", "-S", source, "-B", folder, "-DTV2_LIBRARY_ONLY=ON", "-DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON")
        targets = run("cmake", "--build", folder, "--target", "help")
        if "tev2" not in targets or "exporter" in targets or "tests" in targets:
            sys.exit(f"not the library alone:\n{targets}")


if __name__ == "__main__":
    {"install": install, "headers": check_headers, "cmake": check_cmake, "pkg-config": check_pkg_config,
     "alone": check_alone}[sys.argv[1]](*sys.argv[2:])
