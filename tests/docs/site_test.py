# SPDX-License-Identifier: Apache-2.0

"""The site of tools/docs: its links and anchors lead somewhere, and nothing is loaded from elsewhere."""

import html.parser
import os
import pathlib
import re
import unittest
import urllib.parse

SITE = pathlib.Path(os.environ["SITE"]).resolve()


class Page(html.parser.HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.anchors, self.links, self.loaded = {""}, [], []
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attrs):
        for name, value in attrs:
            if name == "id":
                self.anchors.add(value)
            elif name in ("href", "src", "srcset") and not value.startswith("data:"):
                (self.links if tag == "a" else self.loaded).append(value)


class Site(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        # The page for missing pages has links from the root of a server.
        cls.pages = {path: Page(path) for path in SITE.glob("**/*.html") if path.name != "404.html"}

    def test_has_a_page_for_each_page_of_the_repository_and_the_references(self):
        for name in ("index.html", "docs/protocol.html", "rendering/Converter.h.html", "fuzz/index.html"):
            self.assertIn(SITE / name, self.pages)
        anchors = self.pages[SITE / "reference/protocol.html"].anchors
        for declared in ("Violation", "Violation.rule_key", "Violation.Severity",
                         "Violation.Severity.SEV_FATAL", "RuleCheckService.getSession"):
            self.assertIn(declared, anchors)

    def test_links_and_what_is_loaded_are_there(self):
        self.assertGreater(sum(len(page.links) for page in self.pages.values()), 0)
        for path, page in self.pages.items():
            links = [link for link in page.links if not re.match("https?:|mailto:", link)]
            for link in links + page.loaded:
                with self.subTest(f"{path.relative_to(SITE)}: {link}"):
                    name, _, anchor = urllib.parse.unquote(link).partition("#")
                    target = (path.parent / name).resolve() if name else path
                    self.assertTrue(target.is_file())
                    if anchor:
                        self.assertIn(anchor, self.pages[target].anchors)

    def test_style_sheets_load_nothing_from_elsewhere(self):
        sheets = list(SITE.glob("**/*.css"))
        self.assertGreater(len(sheets), 0)
        for sheet in sheets:
            self.assertNotRegex(sheet.read_text(encoding="utf-8"), r"url\([\"']?(https?:|//)|@import")


if __name__ == "__main__":
    unittest.main()
