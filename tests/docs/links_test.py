"""The links of all Markdown pages, to files and to headings."""

import os
import pathlib
import sys
import unittest

from program_test import ProgramTest

sys.path.insert(0, os.environ["SITE_TOOLS"])
import guides  # pylint: disable=wrong-import-position

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
        self.write("a.md", f"# Here it is\n\n```sh\n# Not this\n[a](b)\n```\n`[a](b)`\n\n{links}")
        self.assertEqual(guides.broken_links(self.folder), [("a.md", link) for link in bad])


if __name__ == "__main__":
    unittest.main()
