#!/usr/bin/env python3
"""Makes the manual page tv2(5) of docs/format.md, the Markdown that it is written in.

    format_page.py FORMAT.md VERSION OUTPUT

Headings, paragraphs, lists, tables, code and links. The date of the page is SOURCE_DATE_EPOCH where that is set."""

import datetime
import os
import pathlib
import re
import sys

ESCAPES = {"\\": r"\(rs", "'": r"\(aq", "`": r"\(ga", "^": r"\(ha", "~": r"\(ti"}
JOINT = re.compile(r"(?<=\w)[_/.,<](?=\w)")
ITEM = re.compile(r" *([-*]|\d+\.) ")
PAGE_COLUMNS = 70
SPAN = re.compile(r"`([^`]+)`|\*\*([^*]+)\*\*|\*([^*\s][^*]*)\*|\[([^\]]+)\]\([^)]*\)|\\(.)")


def escaped(text, narrow=False):
    """Text as roff shows it unchanged; in a narrow place long words may be broken after their joints."""
    roff = "".join(ESCAPES.get(c, c) if ord(c) < 128 else f"\\[u{ord(c):04X}]" for c in text)
    return re.sub(r"\S{13,}", lambda word: JOINT.sub(r"\g<0>\\:", word[0]), roff) if narrow else roff


def literal(code, narrow):
    """Code: with the hyphens of ASCII, and never hyphenated."""
    return re.sub(r"\S+", r"\\%\g<0>", escaped(code, narrow).replace("-", r"\-"))


def inline(text, narrow=False):
    """A text with its spans."""
    roff, end = "", 0
    for span in SPAN.finditer(text):
        roff += escaped(text[end:span.start()], narrow)
        code, strong, emphasis, link, single = span.groups()
        if code is not None:
            roff += f"\\fB{literal(code, narrow)}\\fR"
        elif link is not None:
            roff += inline(link, narrow)
        elif single is not None:
            roff += escaped(single)
        else:
            roff += f"\\fI{inline(strong or emphasis, narrow)}\\fR"
        end = span.end()
    return roff + escaped(text[end:], narrow)


def guarded(line):
    """A line of text that is no request."""
    return "\\&" + line if line.startswith(".") else line


def cells(line):
    return [cell.strip().replace(r"\|", "|") for cell in re.split(r"(?<!\\)\|", line.strip()[1:-1])]


def layout(rows):
    """The format of each column for tbl(1): as wide as its text, or filled where the text of all is too wide."""
    columns = [[re.sub(r"\]\([^)]*\)|[`*\[]", "", cell) for cell in column] for column in zip(*rows)]
    widths = [max(map(len, column)) for column in columns]
    least = [max(len(part) for cell in column for part in re.split(r" |(?<=\w[_/.,<-])(?=\w)", cell))
             for column in columns]
    room = PAGE_COLUMNS - 3 * (len(widths) - 1)
    filled = []
    while sum(widths) > room and len(filled) < len(widths):
        filled.append(max((i for i in range(len(widths)) if i not in filled), key=lambda i: widths[i]))
        rest = room - sum(width for i, width in enumerate(widths) if i not in filled)
        for others, i in zip(range(len(filled), 0, -1), sorted(filled, key=lambda i: -least[i])):
            widths[i] = min(widths[i], max(rest // others, least[i]))
            rest -= widths[i]
    if len(filled) == 1:
        return ["x" if i in filled else "" for i in range(len(widths))]
    return [f"w({widths[i]}n)" if i in filled else "" for i in range(len(widths))]


def table(lines):
    """The rows of a table for tbl(1)."""
    rows = [cells(line) for line in lines]
    del rows[1]  # the dashes
    formats = layout(rows)
    yield from (".TS", "tab(|) nokeep;", " ".join("lb" + form for form in formats),
                " ".join("l" + form for form in formats) + ".")
    for row in rows:
        shown = [guarded(inline(cell, narrow=True).replace("|", r"\(ba")) for cell in row]
        yield "|".join(f"T{{\n.nh\n{cell}\nT}}" if form and cell else cell for cell, form in zip(shown, formats))
    yield ".TE"


def blocks(markdown):
    """(kind, lines) of each block."""
    lines = markdown.splitlines()
    at = 0
    while at < len(lines):
        line = lines[at]
        start = at
        if line.startswith("```"):
            at = lines.index("```", at + 1) + 1
            yield "code", lines[start + 1:at - 1]
        elif line.startswith("|"):
            while at < len(lines) and lines[at].startswith("|"):
                at += 1
            yield "table", lines[start:at]
        elif line.startswith("#"):
            at += 1
            yield "heading", [line]
        elif ITEM.match(line):
            at += 1
            while at < len(lines) and lines[at].startswith("  ") and not ITEM.match(lines[at]):
                at += 1
            yield "item", lines[start:at]
        elif line.strip():
            while at < len(lines) and lines[at].strip() and not re.match(r"```|\||#", lines[at]):
                at += 1
            yield "text", lines[start:at]
        else:
            at += 1


def page(markdown, version, date):
    yield "'\\\" t"
    yield f'.TH TV2 5 "{date}" "tv2 {version}" "File Formats"'
    yield from (".ad l", ".SH NAME", r"tv2 \- scene files of the TEV2 format", ".SH DESCRIPTION")
    for kind, lines in blocks(markdown):
        text = inline(" ".join(line.strip() for line in lines))
        if kind == "code":
            yield from (".PP", ".EX", *(guarded(escaped(line).replace('-', r'\-')) for line in lines), ".EE")
        elif kind == "table":
            yield from (".PP", *table(lines))
        elif kind == "heading" and lines[0].startswith("# "):
            continue  # the name of the page
        elif kind == "heading":
            level, _, title = lines[0].partition(" ")
            yield f'.{"SH" if level == "##" else "SS"} "{inline(title.upper() if level == "##" else title)}"'
        elif kind == "item" and re.match(r"\d+\. \[", lines[0]):
            continue  # the list of contents
        elif kind == "item":
            mark, _, rest = " ".join(line.strip() for line in lines).partition(" ")
            yield from (f'.IP {escaped(mark) if mark not in "-*" else chr(92) + "(bu"} 4', guarded(inline(rest)))
        else:
            yield from (".PP", guarded(text))
    yield from ('.SH "SEE ALSO"', r".BR tv2 (1),", r".BR tv2\-dump (1),", r".BR tv2\-check (1)")


def main():
    source, version, output = sys.argv[1:]
    epoch = os.environ.get("SOURCE_DATE_EPOCH")
    date = datetime.datetime.fromtimestamp(int(epoch), datetime.timezone.utc).date() if epoch else ""
    markdown = pathlib.Path(source).read_text(encoding="utf-8")
    target = pathlib.Path(output)
    target.parent.mkdir(parents=True, exist_ok=True)
    lines = list(page(markdown, version, date))
    lines = [line for last, line in zip(["", *lines], lines) if not (line == ".PP" and re.match(r"\.S[HS]", last))]
    target.write_text("\n".join(lines) + "\n", encoding="ascii")


if __name__ == "__main__":
    main()
