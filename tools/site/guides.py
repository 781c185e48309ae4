"""The Markdown pages of the repository: which there are, their anchors and their links.

Anchors are those that GitHub makes, since the pages are read there too.
"""

import collections
import os
import pathlib
import re

NO_SOURCES = {"build", "out", "node_modules"}


def pages(root):
    """The paths of all pages, relative to the root."""
    found = []
    for folder, folders, files in os.walk(root):
        folders[:] = [name for name in folders if name not in NO_SOURCES and name[0] != "."]
        found += [pathlib.Path(folder, name).relative_to(root)
                  for name in files if name.endswith(".md")]
    return sorted(found)


class Anchors:
    """Makes anchors of the headings of one page, in their order."""

    def __init__(self):
        self._taken = collections.Counter()

    def of(self, heading):
        anchor = re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")
        self._taken[anchor] += 1
        repeated = self._taken[anchor] - 1
        return f"{anchor}-{repeated}" if repeated else anchor


def without_blocks_of_code(text):
    return re.sub(r"^( *)```.*?^\1```$", "", text, flags=re.DOTALL | re.MULTILINE)


def anchors(text):
    """The anchors of a page's headings."""
    made = Anchors()
    headings = re.findall(r"^#{1,6} +(.+?)(?: +#+)?$", without_blocks_of_code(text), re.MULTILINE)
    return {made.of(re.sub(r"\[([^]]*)\]\([^)]*\)|[`*]", r"\1", heading)) for heading in headings}


def links(text):
    """The targets of a page's links, and its images."""
    text = re.sub(r"(`+)(?!`).*?\1", "", without_blocks_of_code(text), flags=re.DOTALL)
    return re.findall(r'(?:\]\(|\bsrc(?:set)?=")([^()\s"]+)[)"]', text)


def page_at(path):
    """The page that a path leads to, which for a folder is its README.md."""
    return path / "README.md" if path.is_dir() else path


def leads_somewhere(page, link):
    """Whether a link of a page leads to something in the repository, or out of it."""
    if re.match(r"(https?|mailto):", link):
        return True
    path, _, anchor = link.partition("#")
    target = page.parent / path if path else page
    if not anchor:
        return target.exists()
    target = page_at(target)
    return (target.suffix == ".md" and target.is_file()
            and anchor in anchors(target.read_text(encoding="utf-8")))


def broken_links(root):
    """The pages and links that lead nowhere."""
    return [(str(page), link) for page in pages(root)
            for link in links((root / page).read_text(encoding="utf-8"))
            if not leads_somewhere(root / page, link)]
