"""Builds the site of the documentation.

usage: build.py ROOT DESCRIPTORS DOXYGEN_XML SITE

ROOT is the repository, DESCRIPTORS a descriptor set of the schema with its
comments, DOXYGEN_XML the folder of what Doxygen made. SITE is written.
"""

import html
import os
import pathlib
import re
import shutil
import subprocess
import sys

import jinja2
from markupsafe import Markup

import converter
import guides
import protocol

HERE = pathlib.Path(__file__).resolve().parent
PROTOCOL = pathlib.Path("reference/protocol.html")
CONVERTER = pathlib.Path("reference/converter.html")
# Folders without a page of their own that have one in the site.
FOLDERS = {
    pathlib.Path("rendering"): CONVERTER,
    pathlib.Path("swig/shared/common/services/rulecheck/protocol"): PROTOCOL}
GROUPS = ("Guides", "Reference", "Examples", "Development")


def place_of(page):
    """Where a Markdown page goes."""
    return pathlib.Path("index.html") if page == pathlib.Path("README.md") else page.with_suffix(".html")


def group_of(page):
    if page == pathlib.Path("README.md") or page.parent.name == "docs":
        return "Guides"
    return "Examples" if page.parts[0] == "examples" else "Development"


def plain(fragment):
    """The text of a fragment of HTML."""
    return html.unescape(re.sub(r"<[^>]*>", "", fragment))


def rendered(text):
    return subprocess.run(
        ["cmark-gfm", "--unsafe", "--extension", "table", "--extension", "strikethrough",
         "--extension", "autolink"],
        input=text, capture_output=True, text=True, encoding="utf-8", check=True).stdout


def with_diagrams_as_text(body):
    """The body whose sequence diagrams name who sends what to whom."""
    def line_by_line(match):
        text = match[1]
        for short, name in re.findall(r"participant (\w+) as (.+)", text):
            text = re.sub(rf"\b{short}\b(?=.*:|-)", name, text)
        text = re.sub(r"^ *participant .*\n", "", text, flags=re.MULTILINE)
        text = re.sub(r"^ +", "", text, flags=re.MULTILINE)
        return f"<pre><code>{re.sub('--?&gt;&gt;', ' → ', text)}</code></pre>"
    return re.sub(r'<pre><code class="language-mermaid">sequenceDiagram\n(.*?)</code></pre>',
                  line_by_line, body, flags=re.DOTALL)


def scrollable(body):
    """The body whose wide parts scroll by themselves, also by keyboard."""
    body = body.replace("<th></th>", "<td></td>").replace("<pre>", '<pre tabindex="0">')
    return re.sub(r"<table>.*?</table>", r'<div class="wide" tabindex="0">\g<0></div>', body,
                  flags=re.DOTALL)


class Site:
    def __init__(self, root, folder):
        self._root = root
        self._folder = folder
        self._pages = {page: (root / page).read_text(encoding="utf-8") for page in guides.pages(root)}
        self._copies = set()
        self._templates = jinja2.Environment(
            loader=jinja2.FileSystemLoader(HERE / "templates"), autoescape=True,
            trim_blocks=True, lstrip_blocks=True, undefined=jinja2.StrictUndefined)
        self._menu = self._groups()

    def _groups(self):
        """The pages of the site: (title, place) by group."""
        menu = {group: [] for group in GROUPS}
        for page, text in self._pages.items():
            title = "Overview" if page == pathlib.Path("README.md") else self._title(page, text)
            menu[group_of(page)].append((title, place_of(page)))
        menu["Guides"].sort(key=lambda entry: entry[1] != pathlib.Path("index.html"))
        menu["Reference"] = [("Messages and service", PROTOCOL), ("Converter", CONVERTER)]
        return menu

    @staticmethod
    def _title(page, text):
        heading = re.search(r"^# (.+)$", text, re.MULTILINE)
        return plain(rendered(heading[1])).strip() if heading else str(page)

    def write(self, place, template, title, **values):
        """Writes a page, in whose template to(place) is the way to another one."""
        def to(target, anchor=""):
            return os.path.relpath(target, place.parent) + (f"#{anchor}" if anchor else "")
        text = self._templates.get_template(template).render(
            title=title, menu=self._menu, place=place, to=to, **values)
        (self._folder / place).parent.mkdir(parents=True, exist_ok=True)
        (self._folder / place).write_text(text, encoding="utf-8")

    def write_guides(self):
        for page, text in self._pages.items():
            body, sections = self._with_anchors(rendered(text))
            body = with_diagrams_as_text(self._with_images(page, self._with_links(page, body)))
            self.write(place_of(page), "guide.html", self._title(page, text), body=Markup(scrollable(body)),
                       sections=sections)

    @staticmethod
    def _with_anchors(body):
        """The body whose headings have anchors, and the sections: (anchor, title)."""
        made, sections = guides.Anchors(), []

        def heading(match):
            level, content = match.groups()
            anchor = made.of(plain(content))
            if level == "2":
                sections.append((anchor, plain(content)))
            return (f'<h{level} id="{anchor}">{content} <a class="anchor" href="#{anchor}" '
                    f'aria-label="Link to this section">#</a></h{level}>')
        return re.sub(r"<h([1-6])>(.*?)</h\1>", heading, body), sections

    def _with_links(self, page, body):
        def link(match):
            target, content = html.unescape(match[1]), match[2]
            if re.match(r"(https?|mailto):|#", target):
                return match[0]
            path, _, anchor = target.partition("#")
            place = self._place_of_link(pathlib.Path(os.path.normpath(page.parent / path)))
            if place is None:
                return content
            way = os.path.relpath(place, place_of(page).parent) + (f"#{anchor}" if anchor else "")
            return f'<a href="{html.escape(way)}">{content}</a>'
        return re.sub(r'<a href="([^"]*)">(.*?)</a>', link, body, flags=re.DOTALL)

    def _with_images(self, page, body):
        """The body whose images are those of the site, which gets them."""
        def image(match):
            path = pathlib.Path(os.path.normpath(page.parent / html.unescape(match[2])))
            (self._folder / path).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(self._root / path, self._folder / path)
            return f'{match[1]}="{html.escape(os.path.relpath(path, place_of(page).parent))}"'
        return re.sub(r'\b(src|srcset)="([^"]*)"', image, body)

    def _place_of_link(self, target):
        """Where a link to a file or folder leads: a page, a copy of the file, or nowhere."""
        page = target / "README.md" if (self._root / target).is_dir() else target
        if page in self._pages:
            return place_of(page)
        if (self._root / target).is_dir():
            return FOLDERS.get(target)
        if (self._root / target).is_file():
            self._copies.add(target)
        return pathlib.Path("source") / f"{target}.html"

    def write_copies(self):
        for path in sorted(self._copies):
            self.write(pathlib.Path("source") / f"{path}.html", "source.html", str(path),
                       text=(self._root / path).read_text(encoding="utf-8"))

    def write_protocol(self, schema):
        self.write(PROTOCOL, "protocol.html", "Messages and service", schema=schema)

    def write_converter(self, reference):
        self.write(CONVERTER, "converter.html", "Converter", **reference)


def main(root, descriptors, doxygen, folder):
    shutil.rmtree(folder, ignore_errors=True)
    site = Site(root, folder)
    site.write_guides()
    site.write_copies()
    site.write_protocol(protocol.Schema(descriptors.read_bytes()))
    site.write_converter(converter.reference(doxygen))
    shutil.copy(HERE / "style.css", folder)


if __name__ == "__main__":
    main(*map(pathlib.Path, sys.argv[1:]))
