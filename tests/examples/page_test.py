# SPDX-License-Identifier: Apache-2.0

"""The code on docs/recipes.md, which is that of the files in examples.

A comment before each block of code names its file. If the file has marked lines,
the block has these; otherwise it has the whole file.

    page_test.py --update   updates the blocks instead
"""

import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCS = ROOT / "docs"
EXAMPLES = ROOT / "examples"
PAGE = DOCS / "recipes.md"
BLOCK = re.compile(r"(?:^<!-- (?P<file>\S+) -->\n)?^```(?P<language>\w*)\n(?P<code>.*?)^```$",
                   re.DOTALL | re.MULTILINE)
MARKED = re.compile(r"^// Shown in docs/recipes\.md: begin\n(.*)^// Shown in docs/recipes\.md: end$",
                    re.DOTALL | re.MULTILINE)
LANGUAGES = {".cpp": "cpp", ".py": "python", ".h": "cpp", ".sh": "sh", ".txt": "text", "CMakeLists.txt": "cmake",
             "meson.build": "meson", "Makefile": "make"}


def shown(name):
    """What the page shows of a file."""
    text = (DOCS / name).read_text()
    marked = MARKED.search(text)
    return marked.group(1) if marked else text


def language(name):
    path = pathlib.Path(name)
    return LANGUAGES.get(path.name) or LANGUAGES[path.suffix]


def updated(block):
    name = block["file"]
    return f"<!-- {name} -->\n```{language(name)}\n{shown(name)}```" if name else block[0]


class Page(unittest.TestCase):
    maxDiff = None

    def test_each_block_is_that_of_its_file(self):
        for block in BLOCK.finditer(PAGE.read_text()):
            name = block["file"]
            with self.subTest(file=name, code=block["code"]):
                self.assertIsNotNone(name, "no comment before the block names its file")
                self.assertEqual(block["code"], shown(name))
                self.assertEqual(block["language"], language(name))

    def test_each_file_is_shown_or_linked(self):
        text = PAGE.read_text()
        files = [path for path in EXAMPLES.glob("**/*") if path.is_file()]
        self.assertGreater(len(files), 0)
        for path in files:
            name = "../examples/" + str(path.relative_to(EXAMPLES))
            with self.subTest(name):
                self.assertTrue(f"<!-- {name} -->" in text or f"]({name})" in text)


if __name__ == "__main__":
    if sys.argv[1:] == ["--update"]:
        PAGE.write_text(BLOCK.sub(updated, PAGE.read_text()))
    else:
        unittest.main()
