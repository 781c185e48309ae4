# SPDX-License-Identifier: Apache-2.0

"""What README.md shows its readers, for the tests that do as it says."""

import pathlib
import re

README = pathlib.Path(__file__).resolve().parents[2] / "README.md"


def readme(language, containing=""):
    """The first block of code that is in that language and has that text."""
    blocks = re.findall(r"^```(\w+)\n(.*?)^```$", README.read_text(), re.DOTALL | re.MULTILINE)
    return next(text for kind, text in blocks if kind == language and containing in text)
