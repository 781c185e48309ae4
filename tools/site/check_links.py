"""Checks the links of a site: all lead somewhere, and no page loads anything from elsewhere.

usage: check_links.py SITE

Prints what it has counted, or each link that is wrong. Exit status: 0 if none is, 1 otherwise.
"""

import html.parser
import pathlib
import re
import sys
import urllib.parse

LEADS_OUT = re.compile(r"(https?|mailto):")


class Page(html.parser.HTMLParser):
    """The anchors, the links and what the browser loads by itself of one page."""

    def __init__(self, path):
        super().__init__()
        self.anchors, self.links, self.loaded, self.repeated = set(), [], [], []
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attrs):
        for name, value in attrs:
            if name == "id":
                if value in self.anchors:
                    self.repeated.append(value)
                self.anchors.add(value)
            elif name in ("href", "src", "srcset", "action", "data", "poster"):
                (self.links if tag == "a" else self.loaded).append(value)
            elif name == "style":
                self.loaded.append(value)


def problem_of(link, path, pages):
    """What is wrong with a link within the site, or None."""
    target, _, anchor = link.partition("#")
    file = (path.parent / urllib.parse.unquote(target)).resolve() if target else path
    if not file.is_file():
        return "leads nowhere"
    if anchor and (file not in pages or urllib.parse.unquote(anchor) not in pages[file].anchors):
        return "leads to no anchor"
    return None


def problems_of(path, pages):
    page = pages[path]
    for anchor in page.repeated:
        yield f"#{anchor}: the anchor is there twice"
    for link in page.loaded + [link for link in page.links if not LEADS_OUT.match(link)]:
        problem = problem_of(link, path, pages)
        if problem:
            yield f"{link}: {problem}"


def check(folder):
    """The problems of a site, and its pages."""
    folder = folder.resolve()
    pages = {path: Page(path) for path in sorted(folder.glob("**/*.html"))}
    problems = [f"{path.relative_to(folder)}: {problem}"
                for path in pages for problem in problems_of(path, pages)]
    problems += [f"{path.relative_to(folder)}: loads something"
                 for path in folder.glob("**/*.css") if re.search(r"url\(|@import", path.read_text())]
    if not pages:
        problems.append(f"{folder}: no pages")
    return problems, pages.values()


def main(folder):
    problems, pages = check(folder)
    print(*problems, sep="\n", end="\n" if problems else "")
    if not problems:
        print(f"{len(pages)} pages, {sum(len(page.anchors) for page in pages)} anchors and "
              f"{sum(len(page.links) for page in pages)} links")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
