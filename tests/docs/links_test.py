"""The links of all Markdown pages, to files and to headings."""

import os
import pathlib
import sys
import unittest

from program_test import ProgramTest

sys.path.insert(0, os.environ["SITE_TOOLS"])
import check_links
import guides

SOURCE = pathlib.Path(__file__).resolve().parents[2]


class Links(ProgramTest):
    def test_of_the_repository_lead_somewhere(self):
        self.assertIn(pathlib.Path("docs/protocol.md"), guides.pages(SOURCE))
        self.assertEqual(guides.broken_links(SOURCE), [])

    def test_that_lead_nowhere_are_found(self):
        self.write("guide/README.md", "# A `b`: c_d, (e)\n## Twice\n## [Twice](../a.md)\n")
        self.write("guide/code.cpp", "// # Twice\n")
        good = ["guide", "guide/README.md", "guide/code.cpp", "#here-it-is", "a.md#here-it-is",
                "guide#a-b-c_d-e", "guide/README.md#twice", "guide/README.md#twice-1",
                "https://example.org/#x"]
        bad = ["nowhere", "nowhere.md#x", "guide/nowhere.md", "#here", "guide/README.md#twice-2",
               "guide/code.cpp#twice", "#not-this"]
        links = "".join(f"- [text `with code` of\n  two lines]({link})\n" for link in good + bad)
        links += '<picture><source srcset="guide/code.cpp"><img src="nowhere.png"></picture>\n'
        bad.append("nowhere.png")
        self.write("a.md", f"# Here it is\n\n```sh\n# Not this\n[a](b)\n```\n`[a](b)`\n\n{links}")
        self.assertEqual(guides.broken_links(self.folder), [("a.md", link) for link in bad])

    def test_of_a_site_that_are_wrong_are_found(self):
        self.write("b/c.html", '<p id="x">')
        self.write("good.css", "p { color: red }")
        good = ["#a", "b/c.html", "b/c.html#x", "https://example.org/#x", "good.css"]
        bad = ["#x", "b", "b/d.html", "b/c.html#a", "good.css#a"]
        links = "".join(f'<a href="{link}"></a>' for link in good + bad)
        self.write("a.html", '<link href="good.css"><script src="https://example.org/a.js"></script>'
                             f'<p id="a"><p id="twice"><p id="twice">{links}')
        self.write("bad.css", "p { background: url(https://example.org/a.png) }")
        problems, pages = check_links.check(self.folder)
        self.assertEqual(len(pages), 2)
        self.assertEqual([problem.split(": ")[1] for problem in problems],
                         ["#twice", "https://example.org/a.js", *bad, "loads something"])

    def test_of_no_site_are_wrong(self):
        self.assertNotEqual(check_links.check(self.folder)[0], [])


if __name__ == "__main__":
    unittest.main()
