# SPDX-License-Identifier: Apache-2.0

"""What README.md shows its readers, for the tests that do as it says."""

import pathlib
import re

README = pathlib.Path(__file__).resolve().parents[2] / "README.md"


def readme(language, containing="", page=README):
    """The first block of code that is in that language and has that text; of another page if one is given."""
    blocks = re.findall(r"^```(\w+)\n(.*?)^```$", page.read_text(encoding="utf-8"), re.DOTALL | re.MULTILINE)
    return next(text for kind, text in blocks if kind == language and containing in text)
