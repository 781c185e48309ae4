# SPDX-License-Identifier: Apache-2.0

"""Each declaration of the schema has a comment of whole sentences."""

import os
import pathlib
import re
import unittest

DECLARATION = r" *(?:(?:message|enum|service|rpc) |(?:optional|required|repeated|map<)|[A-Z_]+ = )"


class Comments(unittest.TestCase):
    def test_precede_each_declaration_and_are_sentences(self):
        comment = ""
        declarations = 0
        for line in pathlib.Path(os.environ["SCHEMA"]).read_text(encoding="utf-8").splitlines():
            if found := re.match(" *//(.*)", line):
                comment += found[1]
                continue
            if re.match(DECLARATION, line):
                declarations += 1
                self.assertRegex(comment, r"^ [A-Z].{3,}\.$", line)
            comment = ""
        self.assertGreater(declarations, 0)


if __name__ == "__main__":
    unittest.main()
