#!/usr/bin/env python3
"""Checks what the compiler does not: includes against the table of docs/architecture.md, cycles between folders, the
width of lines and the length of functions. Prints every finding; exits with 1 when there is one."""

import collections
import re
import subprocess
import sys

WIDEST_LINE = 120
LONGEST_FUNCTION = 60

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"')
TABLE_ROW = re.compile(r"^\| `([^`|]+/)`")
FOLDER = re.compile(r"`([A-Za-z0-9_/]+(?:/|\.h))`")


def tracked(*patterns):
    listed = subprocess.run(["git", "ls-files", *patterns], check=True, stdout=subprocess.PIPE, text=True)
    return listed.stdout.splitlines()


def read_lines(path):
    with open(path, encoding="utf-8") as file:
        return file.read().splitlines()


def allowed_dependencies():
    """The folders that the files of a folder may include, from the first two columns of the table."""
    allowed = {}
    for line in read_lines("docs/architecture.md"):
        if TABLE_ROW.match(line):
            columns = line.split("|")
            for folder in FOLDER.findall(columns[1]):
                allowed[folder] = [""] if "everything" in columns[2] else FOLDER.findall(columns[2])
    return allowed


def folder_of(path):
    """The folder of a file; detail/ belongs to the folder it is in."""
    return re.sub(r"detail/$", "", path.rpartition("/")[0] + "/")


def node_of(path, folders):
    """What cycles are looked for between: folders, and the single files beside them."""
    folder = folder_of(path)
    has_folders = any(other != folder and other.startswith(folder) for other in folders)
    return path if has_folders else folder


def rule_for(folder, allowed):
    """The longest row of the table that the folder lies in."""
    return max((row for row in allowed if folder.startswith(row)), key=len, default=None)


def includes(sources):
    """(path, line number, included path) of every include of one of this project's files."""
    known = set(sources)
    for path in sources:
        for number, line in enumerate(read_lines(path), 1):
            match = INCLUDE.match(line)
            if match and match.group(1) in known:
                yield path, number, match.group(1)


def check_includes(sources):
    allowed = allowed_dependencies()
    folders = {folder_of(path) for path in sources}
    edges = collections.defaultdict(dict)
    for path, number, target in includes(sources):
        here, there = folder_of(path), folder_of(target)
        edges[node_of(path, folders)].setdefault(node_of(target, folders), f"{path}:{number} includes {target}")
        row = rule_for(here, allowed)
        if row is None:
            yield f"{path}: its folder is not in the table of docs/architecture.md"
        elif not there.startswith(row) and not any(target.startswith(folder) for folder in allowed[row]):
            yield f"{path}:{number}: {row} may not include {target}"
    yield from cycles(edges)


def cycles(edges):
    """One finding for each set of folders that reach each other (Tarjan)."""
    index, low, stack, found = {}, {}, [], []

    def visit(folder):
        index[folder] = low[folder] = len(index)
        stack.append(folder)
        for next_folder in edges.get(folder, {}):
            if next_folder not in index:
                visit(next_folder)
            if next_folder in stack:
                low[folder] = min(low[folder], low[next_folder])
        if low[folder] == index[folder]:
            members = stack[stack.index(folder):]
            del stack[stack.index(folder):]
            if len(members) > 1:
                found.append(members)  # one file that includes itself is the compiler's business

    for folder in list(edges):
        if folder not in index:
            visit(folder)
    for members in found:
        yield "folders that include each other: " + " ".join(sorted(members)) + "".join(
            "\n    " + edges[here][there] for here in members for there in members if there in edges.get(here, {}))


def check_widths():
    for path in tracked("*.h", "*.cpp", "*.py", "*.js", "*.css", "*.sh", "*.cmake", "*CMakeLists.txt", "Makefile",
                        "*.md"):
        shown = False  # output of programs, as it is
        for number, line in enumerate(read_lines(path), 1):
            if path.endswith(".md"):
                shown ^= line.startswith("```")
            as_it_is = path.endswith(".md") and (shown or line.startswith("|"))
            if len(line) > WIDEST_LINE and not as_it_is:
                yield f"{path}:{number}: {len(line)} columns, {WIDEST_LINE} is the limit"


def check_functions(sources):
    """Functions in clang-format's layout: braces alone on their lines, in one column."""
    for path in sources:
        lines = read_lines(path)
        for number, line in enumerate(lines):
            if line.strip() != "{" or number == 0:
                continue
            head = lines[number - 1].strip()
            if not re.search(r"\)( const| override| noexcept| final|\s*->.*)*$|^: .*[)}]$", head):
                continue
            if re.match(r"(if|for|while|switch|else|catch)\b", head):
                continue
            end = line[: line.index("{")] + "}"
            length = next((at - number for at in range(number + 1, len(lines)) if lines[at].startswith(end)), 0)
            if length + 1 > LONGEST_FUNCTION + 2:
                yield f"{path}:{number}: a function of {length - 1} lines, {LONGEST_FUNCTION} is the limit"


def main():
    sources = tracked("*.h", "*.cpp")
    findings = [*check_includes(sources), *check_widths(), *check_functions(sources)]
    for finding in findings:
        print(finding)
    print(f"tree: {len(findings)} findings" if findings else "tree: clean")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
