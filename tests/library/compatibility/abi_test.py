"""The shared object against the baseline: what breaks linked programs is found."""

import lzma
import os
import pathlib
import re
import shutil
import tempfile
import unittest

import abi

BASELINE = next(pathlib.Path(__file__).resolve().parent.glob("baseline-*.abi.xz"))
SOURCE = pathlib.Path(os.environ["SOURCE"])
SCHEMA = pathlib.Path(os.environ["SCHEMA"]).relative_to(SOURCE)
OPTIONS = os.environ["OPTIONS"].split("|")
REASON_TO_SKIP = os.environ["REASON_TO_SKIP"]

# What is changed, the texts of the baseline that are replaced for it,
# and what must be said of it.
BREAKING = [
    ("a function is gone",
     {"<elf-symbol name='_ZN3vok9rulecheck9Converter4hrefB5cxx11ERKNS0_8ResourceE'":
      "<elf-symbol name='_ZN3vok9rulecheck9Converter7addressB5cxx11ERKNS0_8ResourceE'"},
     "[D] 'method std::string vok::rulecheck::Converter::href()'"),
    ("a class is larger",
     {"<class-decl name='Link' size-in-bits='384'": "<class-decl name='Link' size-in-bits='448'"},
     "'class vok::rulecheck::Link' changed"),
    ("two members exchange their places",
     {"'host_'": "'path_'", "'path_'": "'host_'"},
     "ArenaStringPtr host_' offset changed from 64 to 128"),
    ("a virtual function has another place in the table",
     {"vtable-offset='8'": "vtable-offset='4'"},
     "ABI incompatible change to the vtable of class vok::rulecheck::Link"),
    ("an enumerator has another value",
     {"_SEV_ADVISORY' value='4'": "_SEV_ADVISORY' value='6'"},
     "SEV_ADVISORY' from value '4' to '6'"),
]


def edited(text, edits):
    """The text with each of the texts replaced wherever it stands."""
    text, count = re.subn("|".join(map(re.escape, edits)), lambda found: edits[found[0]], text)
    if count < len(edits):
        raise ValueError(f"{count} places found: {edits}")
    return text


@unittest.skipIf(REASON_TO_SKIP, REASON_TO_SKIP)
class Abi(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.baseline = lzma.decompress(BASELINE.read_bytes()).decode()
        folder = tempfile.TemporaryDirectory(prefix="abi test ")
        cls.addClassCleanup(folder.cleanup)
        cls.copy, cls.build = pathlib.Path(folder.name, "source"), pathlib.Path(folder.name, "build")
        shutil.copytree(SOURCE, cls.copy,
                        ignore=shutil.ignore_patterns(".git", "build", "out", "node_modules"))
        cls.present = cls.dump()

    @classmethod
    def dump(cls):
        return abi.dump(cls.copy, cls.build, *OPTIONS)

    def edit(self, path, edits):
        """Edits a file of the copy for this test."""
        before = (self.copy / path).read_text(encoding="utf-8")
        self.addCleanup((self.copy / path).write_text, before, encoding="utf-8")
        (self.copy / path).write_text(edited(before, edits), encoding="utf-8")

    def test_nothing_breaks_the_baseline(self):
        changes = abi.breaking_changes(self.baseline, self.present)
        if changes:
            self.fail("programs that were linked to the baseline's library would break; undo the change,"
                      " or raise VOK_RULECHECK_ABI in CMakeLists.txt:\n" + changes)

    def test_a_function_may_be_added(self):
        self.edit("rendering/Converter.h", {
            "  static std::string toHtml(const Arg& arg);":
            "  static std::string toHtml(const Arg& arg);\n"
            "  static std::string toHtml(const Links& links);"})
        self.edit("rendering/Converter.cpp", {
            "std::string Converter::toHtml(const Arg& arg) {":
            'std::string Converter::toHtml(const Links&) { return ""; }\n'
            "std::string Converter::toHtml(const Arg& arg) {"})
        present = self.dump()
        self.assertIn("Converter6toHtmlB5cxx11ERKNS0_5LinksE", present)
        self.assertEqual(abi.breaking_changes(self.baseline, present), "")

    def test_breaking_changes_are_said(self):
        for what, edits, sentence in BREAKING:
            with self.subTest(what):
                self.assertIn(sentence,
                              abi.breaking_changes(self.baseline, edited(self.baseline, edits)))

    def test_programs_do_not_survive_a_new_field_but_under_another_soname(self):
        self.edit(SCHEMA, {"optional string docgen_filename = 3;":
                           "optional string docgen_filename = 3; optional int32 line = 4;"})
        present = self.dump()
        self.assertIn("type size changed from 384 to 448",
                      abi.breaking_changes(self.baseline, present))
        renamed = edited(present, {"soname='libvok_rulecheck.so.1'": "soname='libvok_rulecheck.so.2'"})
        self.assertEqual(abi.breaking_changes(self.baseline, renamed), "")


if __name__ == "__main__":
    unittest.main()
