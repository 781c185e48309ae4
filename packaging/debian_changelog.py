#!/usr/bin/env python3
"""Writes CHANGELOG.md as the changelog of the Debian packages, to standard output.

usage: packaging/debian_changelog.py

An unreleased entry has the date of SOURCE_DATE_EPOCH, in seconds. Exit status: 0
if all is well, 2 for a bad argument, and for an entry that has no date or is not
that of the version of CMakeLists.txt.
"""

import datetime
import email.utils
import os
import pathlib
import re
import sys
import textwrap

PACKAGING = pathlib.Path(__file__).resolve().parent
SOURCE = PACKAGING.parent


class ChangelogError(Exception):
    """CHANGELOG.md cannot be written as a Debian changelog; the text says why."""


def project_version():
    return re.search(r"^  VERSION (\S+)$", (SOURCE / "CMakeLists.txt").read_text(), re.MULTILINE)[1]


def maintainer():
    return re.search(r"^Maintainer: (.+)$", (PACKAGING / "debian/control").read_text(),
                     re.MULTILINE)[1]


def date(text):
    """The date of a heading of CHANGELOG.md as Debian writes it."""
    if text != "unreleased":
        time = datetime.datetime.fromisoformat(f"{text}T00:00+00:00")
    elif "SOURCE_DATE_EPOCH" in os.environ:
        seconds = int(os.environ["SOURCE_DATE_EPOCH"])
        time = datetime.datetime.fromtimestamp(seconds, datetime.timezone.utc)
    else:
        raise ChangelogError("an unreleased entry needs SOURCE_DATE_EPOCH")
    return email.utils.format_datetime(time)


def items(text):
    """The paragraphs and list items of an entry, each as a Debian item without links."""
    text = re.sub(r"\[([^]]+)\]\([^)]+\)", r"\1", text)
    for block in re.split(r"\n\n|\n(?=- )", text.strip()):
        yield textwrap.fill(" ".join(block.removeprefix("- ").split()), width=79,
                            initial_indent="  * ", subsequent_indent="    ",
                            break_long_words=False, break_on_hyphens=False)


def debian_changelog(text):
    entries = re.findall(r"^## (\S+) \((\S+)\)\n(.+?)(?=^## |\Z)", text, re.MULTILINE | re.DOTALL)
    if not entries or entries[0][0] != project_version():
        raise ChangelogError(f"CHANGELOG.md does not begin with version {project_version()}")
    return "\n".join(f"vok-rulecheck ({version}) unstable; urgency=medium\n\n"
                     + "\n".join(items(changes))
                     + f"\n\n -- {maintainer()}  {date(day)}\n"
                     for version, day, changes in entries)


def main():
    if sys.argv[1:] in (["--help"], ["-h"]):
        print(__doc__.strip())
        return 0
    if sys.argv[1:]:
        print(f"debian_changelog.py: unknown argument {sys.argv[1]} (see --help)", file=sys.stderr)
        return 2
    try:
        print(debian_changelog((SOURCE / "CHANGELOG.md").read_text(encoding="utf-8")), end="")
    except ChangelogError as error:
        print(f"debian_changelog.py: {error}", file=sys.stderr)
        return 2
    return 0


if __name__ == "__main__":
    sys.exit(main())
