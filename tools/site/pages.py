# SPDX-License-Identifier: Apache-2.0

"""Collects the pages of the site: the Markdown of the repository, and the sources that it links to.

usage: pages.py ROOT FOLDER SITE

Writes FOLDER/pages, where the reference of the protocol already is, and FOLDER/mkdocs.yml, with
which MkDocs writes SITE.
"""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys

LANGUAGES = {".cpp": "cpp", ".h": "cpp", ".proto": "protobuf", ".sh": "sh", "": "sh"}
CONVERTER = "rendering/Converter.h"
REFERENCE = "reference/protocol.md"
PAGES_OF_FOLDERS = {"rendering": CONVERTER + ".md",
                    "swig/shared/common/services/rulecheck/protocol": REFERENCE}
NOT_SOURCES = {"build", "out", "node_modules"}


def markdown_files(root):
    for folder, folders, names in os.walk(root):
        folders[:] = sorted(name for name in folders if name not in NOT_SOURCES and name[0] != ".")
        yield from (os.path.relpath(os.path.join(folder, name), root)
                    for name in sorted(names) if name.endswith(".md"))


def chart(diagram):
    """A sequence diagram of Mermaid's language in that of mscgen."""
    names = re.findall(r"participant (\w+) as (.+)", diagram)
    steps = re.sub(r"^ *participant .*\n", "", diagram, flags=re.MULTILINE).replace("-->>", ">>")
    steps = re.sub(r"(\w+)->>\1\b", r"\1 box \1", steps).replace("->>", "=>")
    steps = re.sub(r"Note over (\w+),(\w+)", r"\1 note \2", steps)
    steps = re.sub(r"^ *(.+?): (.+)$", r'\1 [label="\2"];', steps, flags=re.MULTILINE)
    return "msc { hscale=\"1.6\"; " + ", ".join(f'{key} [label="{name}"]' for key, name in names) + f";\n{steps}}}"


class Pages:
    def __init__(self, root, folder):
        self._root, self._folder = root, folder
        self._files = set(markdown_files(root))

    def write(self, page, text):
        path = self._folder / page
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def write_all(self):
        for page in self._files:
            text = (self._root / page).read_text(encoding="utf-8")
            parts = re.split(r"^(```.*?^```)$", text, flags=re.DOTALL | re.MULTILINE)
            parts[::2] = (self._prose(page, part) for part in parts[::2])
            parts[1::2] = (self._code(page, part) for part in parts[1::2])
            self.write(page, "".join(parts))
        self._write_source(CONVERTER)

    def _prose(self, page, text):
        """The text with links within the site; lists in lists are indented as Python-Markdown wants it."""
        text = re.sub(r"^ {2,3}(?=\S)", "    ", text, flags=re.MULTILINE)
        return re.sub(r"\[([^][]+)\]\(([^)#\s:]+)(#[^)\s]*)?\)",
                      lambda link: self._link(page, *link.groups(default="")), text)

    def _link(self, page, text, target, anchor):
        """The link with the page of what it leads to; MkDocs reports it if there is none."""
        target = os.path.normpath(os.path.join(os.path.dirname(page), target))
        if (self._root / target).is_dir():
            target = PAGES_OF_FOLDERS.get(target, os.path.join(target, "README.md"))
            if target not in (*self._files, *PAGES_OF_FOLDERS.values()):
                return text
        elif (self._root / target).is_file() and target not in self._files:
            target = self._write_source(target)
        return f"[{text}]({os.path.relpath(target, os.path.dirname(page))}{anchor})"

    def _code(self, page, block):
        """The block, or an image where a code host draws a diagram with a script."""
        diagram = re.fullmatch(r"```mermaid\nsequenceDiagram\n(.+)```", block, re.DOTALL)
        if not diagram:
            return block
        image = self._folder / f"{page}.svg"
        image.parent.mkdir(parents=True, exist_ok=True)
        subprocess.run(["mscgen", "-T", "svg", "-i", "-", "-o", image], input=chart(diagram[1]),
                       text=True, check=True)
        return f"![Sequence diagram]({image.name})"

    def _write_source(self, path):
        text = (self._root / path).read_text(encoding="utf-8")
        language = LANGUAGES.get(pathlib.Path(path).suffix, "text")
        self.write(path + ".md", f"# {path}\n\n~~~~ {language}\n{text}~~~~\n")
        return path + ".md"

    def navigation(self):
        groups = {"Guides": [],
                  "Reference": [{"Messages and service": REFERENCE}, {"Converter": CONVERTER + ".md"}],
                  "Programs": [], "Development": []}
        for page in sorted(self._files - {"README.md"}):
            folder = page.partition("/")[0]
            groups[{"docs": "Guides", "apps": "Programs"}.get(
                folder, "Development")].append(page)
        return [{"Overview": "README.md"}, *({group: pages} for group, pages in groups.items())]


def main(root, folder, site):
    pages = Pages(root, folder / "pages")
    pages.write_all()
    here = pathlib.Path(__file__).resolve().parent
    shutil.copy(here / "site.css", folder / "pages")
    shutil.copytree(root / "docs/images", folder / "pages/docs/images")
    version = re.search(r"^  VERSION (\S+)$", (root / "CMakeLists.txt").read_text(), re.MULTILINE)[1]
    (folder / "mkdocs.yml").write_text(json.dumps({
        "INHERIT": str(here / "mkdocs.yml"), "site_name": f"vok_rulecheck {version}",
        "docs_dir": "pages", "site_dir": str(site), "nav": pages.navigation()}))


if __name__ == "__main__":
    main(*(pathlib.Path(name).resolve() for name in sys.argv[1:]))
