"""Prints a C++ header with its plain comments as Doxygen reads them.

usage: header_filter.py HEADER

The first comment is the file's. In a comment, indented lines are a list if they
begin with "*" or a number, and otherwise stay as they are.
"""

import itertools
import pathlib
import re
import sys

ITEM = re.compile(r" *(?:(\*)|\d+\.) +")


def escaped(text):
    return re.sub(r'[\\@&$#<>%"]', r"\\\g<0>", text)


def as_list(lines):
    for line in lines:
        item = ITEM.match(line)
        if item:
            yield ("- " if item[1] else "-# ") + escaped(line[item.end():])
        else:
            yield "  " + escaped(line.strip())
    yield ""


def marked_up(comment):
    """The lines of a comment, without their slashes."""
    for indented, lines in itertools.groupby(comment, lambda line: line.startswith("  ")):
        lines = list(lines)
        if not indented:
            yield from map(escaped, lines)
        elif ITEM.match(lines[0]):
            yield from as_list(lines)
        else:
            yield from ["@verbatim", *lines, "@endverbatim"]


def converted(lines):
    is_first = True
    for indent, group in itertools.groupby(
            lines, lambda line: (re.match(r"( *)//(?: |$)", line) or [None, None])[1]):
        group = list(group)
        if indent is None:
            yield from group
            continue
        comment = [line[len(indent) + 2:].removeprefix(" ") for line in group]
        if is_first:
            comment = itertools.dropwhile(lambda line: line, comment)
        yield from ["/** @file" if is_first else "/**", *marked_up(comment), "*/"]
        is_first = False


if __name__ == "__main__":
    print("\n".join(converted(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8").splitlines())))
