# SPDX-License-Identifier: Apache-2.0

"""What an HTML parser finds in the page, whatever the texts of the result are."""

import base64
import hashlib
import html.parser
import re
import unittest

import make_results
from programs import SAMPLE, RulecheckTest, data_of

# Of these may be what the script puts into the page as HTML.
HTML_OF_DATA = {"a": {"href"}, "code": {"class"}, "span": {"class"}, "time": {"datetime"}}
VOID = {"input", "link", "meta"}
HREF = re.compile(r"https?://|file://|mailto:|#findings\Z|data:,\Z")
CONTROLS = "[\x00-\x08\x0b-\x1f\x7f-\x9f]"
# Everything that a browser would strip from an address or take for the end of a part.
UNENCODED = re.compile("[^\x21-\x7e]|[\"<>\\\\^`{|}]")


class Page(html.parser.HTMLParser):
    def __init__(self, content):
        super().__init__()
        self.elements = []
        self.texts = {"script": [], "style": [], "title": []}
        self.stack = []
        self.faults = []
        self.text = ""
        self.feed(content)
        self.close()
        if self.stack:
            self.faults.append(f"not closed: {self.stack}")

    def handle_starttag(self, tag, attrs):
        self.elements.append((tag, dict(attrs)))
        if len(dict(attrs)) != len(attrs):
            self.faults.append(f"attribute twice: {attrs}")
        if tag not in VOID:
            self.stack.append(tag)

    def handle_endtag(self, tag):
        if not self.stack or self.stack.pop() != tag:
            self.faults.append(f"not open: {tag} at {self.getpos()}")

    def handle_data(self, data):
        self.text += data
        if self.stack and self.stack[-1] in self.texts:
            self.texts[self.stack[-1]].append(data)

    def handle_comment(self, data):
        self.faults.append(f"comment: {data}")

    def handle_pi(self, data):
        self.faults.append(f"processing instruction: {data}")

    def unknown_decl(self, data):
        self.faults.append(f"declaration: {data}")

    def attributes(self, name):
        return [attributes[name] for _, attributes in self.elements if name in attributes]

    def all(self, tag):
        return [attributes for element, attributes in self.elements if element == tag]


def read(content):
    return Page(content.decode("utf-8"))


def html_of(data):
    """All that the script puts into the page as HTML."""
    yield from data["texts"]
    for _, _, facts, more in data["rules"]:
        yield from facts[1::2] + more[1::2]
    for finding in data["findings"]:
        yield from finding[11]


class HostileTexts(RulecheckTest):
    """Results with markup and scripts in every string field, under every scheme."""

    def setUp(self):
        super().setUp()
        make_results.hostile(self.folder)
        self.results = sorted(self.folder.glob("*.txtpb"))
        self.assertGreater(len(self.results), 60)

    def test_every_page_is_the_template_and_text(self):
        expected = read(self.page_of(SAMPLE)).texts
        # What a page has whose texts are harmless.
        elements = {}
        for result in self.folder.glob("harmless-*.txtpb"):
            for tag, attributes in read(self.page_of(result)).elements:
                elements.setdefault(tag, set()).update(attributes)
        for result in self.results:
            with self.subTest(result.stem):
                content = self.page_of(result)
                page = read(content)
                self.check(page, elements)
                self.assertEqual(len(page.texts["script"]), 2)
                self.assertEqual(page.texts["script"][0], expected["script"][0])
                self.assertEqual(page.texts["style"], expected["style"])
                self.assertEqual(len(page.texts["title"]), 1)
                self.assertNotRegex(content.decode("utf-8"), CONTROLS)
                self.assertNotIn("<", page.texts["script"][1])
                self.check_data(data_of(content.decode("utf-8")))

    def check_data(self, data):
        for fragment in html_of(data):
            self.check(Page(fragment), HTML_OF_DATA)
            self.assertNotRegex(fragment.replace("\x01", ""), CONTROLS)
        for _, address in data["files"]:
            self.assertRegex(address, r"\A(https?://[!-~]*|file:///[!-~]*)?\Z")
            self.assertNotRegex(address, UNENCODED)

    def check(self, page, elements):
        self.assertEqual(page.faults, [])
        for tag, attributes in page.elements:
            self.assertIn(tag, elements)
            self.assertLessEqual(attributes.keys(), elements[tag], tag)
        for address in page.attributes("href"):
            self.assertRegex(address, HREF)
            self.assertNotRegex(address, UNENCODED)

    def test_the_texts_are_there_to_be_read(self):
        for name, text in [("script", "<script>alert(1)</script>"),
                           ("template_tags", "{{style}}{{{script}}}{{#kinds}}{{/sections}}{{=<% %>=}}")]:
            content = self.page_of(self.folder / f"{name}-HTTP.txtpb")
            page = read(content)
            shown = "".join(Page(fragment).text for fragment in html_of(data_of(content.decode("utf-8"))))
            self.assertGreater(page.text.count(text), 30)
            self.assertGreater(shown.count(text), 30)


class Structure(RulecheckTest):
    def setUp(self):
        super().setUp()
        self.page = read(self.page_of(SAMPLE))

    def policy(self):
        policies = [meta["content"] for meta in self.page.all("meta")
                    if meta.get("http-equiv") == "Content-Security-Policy"]
        self.assertEqual(len(policies), 1)
        return dict(rule.strip().split(" ", 1) for rule in policies[0].split(";"))

    def test_the_policy_allows_the_page_its_own_script_and_style_and_nothing_else(self):
        def source(text):
            digest = hashlib.sha256(text.encode("utf-8")).digest()
            return "'sha256-" + base64.b64encode(digest).decode("ascii") + "'"

        self.assertEqual(self.policy(), {
            "default-src": "'none'",
            "img-src": "data:",
            "style-src": source("".join(self.page.texts["style"])),
            "script-src": source(self.page.texts["script"][0]),
            "base-uri": "'none'",
            "form-action": "'none'",
        })

    def test_nothing_is_fetched(self):
        self.assertEqual([link["href"] for link in self.page.all("link")], ["data:,"])
        self.assertNotRegex("".join(self.page.texts["style"]), r"url\(|@import")
        self.assertEqual(self.page.attributes("src"), [])

    def test_ids_are_unique_and_references_to_them_hold(self):
        ids = self.page.attributes("id")
        self.assertEqual(len(ids), len(set(ids)))
        references = [name for attribute in ("aria-labelledby", "aria-describedby", "aria-controls", "for")
                      for name in self.page.attributes(attribute)]
        references += [address[1:] for address in self.page.attributes("href") if address.startswith("#")]
        self.assertLessEqual(set(references), set(ids))

    def test_the_numbers_of_the_sample_are_right(self):
        chips = re.findall(r"(\d+) ([a-z ]+)\n", self.page.text.split("Findings\n", 1)[1].split("Search")[0])
        self.assertEqual(chips, [("1", "fatal"), ("2", "error"), ("2", "critical warning"), ("5", "warning"),
                                 ("3", "advisory"), ("1", "unknown"), ("2", "waived"), ("4", "met")])


class Large(RulecheckTest):
    def test_a_finding_takes_at_most_three_hundred_bytes(self):
        result = self.folder / "large.txtpb"
        for rules in 1, 40, 6000:
            with self.subTest(rules=rules):
                make_results.many(6000, rules, result)
                content = self.page_of(result)
                self.assertEqual(len(data_of(content.decode("utf-8"))["findings"]), 6000)
                self.assertLess(len(content), 6000 * 300)


if __name__ == "__main__":
    unittest.main()
