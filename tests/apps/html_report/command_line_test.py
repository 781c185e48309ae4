# SPDX-License-Identifier: Apache-2.0

"""How html_report answers on the command line."""

import unittest

import programs

BEFORE = b"what was there before"


class Formats(programs.FolderTestCase):
    def test_the_format_of_the_input_makes_no_difference(self):
        page = self.page_of(programs.SAMPLE)
        self.assertIn(b"Camera pipeline, nightly", page)
        for extension in "pb", "bin", "textproto", "txt", "json":
            with self.subTest(extension):
                copy = self.folder / f"copy.{extension}"
                self.make("MAKE_RESULTS", "convert", programs.SAMPLE, copy)
                self.assertEqual(self.page_of(copy), page)

    def test_an_existing_page_is_replaced(self):
        self.write("page.html", BEFORE * 100000)
        self.assertTrue(self.page_of(programs.SAMPLE).endswith(b"</html>\n"))


class BadInput(programs.FolderTestCase):
    def assert_refused(self, words, *arguments):
        done = programs.run("HTML_REPORT", *arguments)
        self.assertEqual(done.returncode, 2, done)
        self.assertEqual(done.stdout, "")
        self.assertRegex(done.stderr, r"\Ahtml_report: [^\n]+\n\Z")
        self.assertIn(words, done.stderr)

    def assert_input_refused(self, words, path):
        output = self.write("page.html", BEFORE)
        self.assert_refused(words, path, output)
        self.assertEqual(output.read_bytes(), BEFORE)

    def test_no_arguments(self):
        self.assert_refused("INPUT is required")

    def test_inputs(self):
        session = b"session { name: 's' } "
        cases = {
            "an unknown extension": ("result.xml", session, "unknown extension"),
            "malformed bytes": ("result.pb", b"\x0a\xff\xff", "malformed bytes"),
            "malformed text": ("result.txtpb", session + b"violations {", "1:"),
            "an unknown field": ("result.txtpb", session + b"colour: 1", "colour"),
            "a session without name": ("result.txtpb", b"session { }", "missing session.name"),
            "a violation without severity": (
                "result.txtpb",
                session + b"violations { hashmap { key: 1 value { id: 1 } } }",
                "severity",
            ),
        }
        for name, (file, content, words) in cases.items():
            with self.subTest(name):
                self.assert_input_refused(words, self.write(file, content))

    def test_an_input_that_is_not_there(self):
        self.assert_input_refused("cannot be read", self.folder / "missing.pb")

    def test_an_input_that_is_a_folder(self):
        folder = self.folder / "folder.pb"
        folder.mkdir()
        self.assert_input_refused("cannot be read", folder)

    def test_an_output_that_is_full(self):
        self.assert_refused("cannot be written", programs.SAMPLE, "/dev/full")

    def test_an_output_that_is_the_input(self):
        content = programs.SAMPLE.read_bytes()
        both = self.write("both.txtpb", content)
        self.assert_refused("is the input", both, both)
        self.assertEqual(both.read_bytes(), content)


if __name__ == "__main__":
    unittest.main()
