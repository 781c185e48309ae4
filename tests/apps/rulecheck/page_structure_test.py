# SPDX-License-Identifier: Apache-2.0

"""What an HTML parser finds in the page, whatever the texts of the result are."""

import base64
import hashlib
import html.parser
import re
import unittest

from programs import SAMPLE, RulecheckTest

# The elements of the templates, with the attributes that they may have.
ELEMENTS = {
    "a": {"class", "href"},
    "b": set(),
    "body": set(),
    "button": {"type", "id", "class", "aria-expanded", "disabled"},
    "code": {"class"},
    "dd": {"tabindex"},
    "details": {"class"},
    "div": {"class", "id", "role", "aria-label", "hidden"},
    "dl": {"class"},
    "dt": set(),
    "fieldset": {"class"},
    "h1": set(),
    "h2": {"id"},
    "h3": set(),
    "head": set(),
    "header": {"class"},
    "html": {"lang"},
    "input": {"id", "type", "autocomplete", "spellcheck", "placeholder", "aria-describedby", "value", "checked"},
    "label": {"class"},
    "legend": set(),
    "li": {"class", "id", "data-kind"},
    "link": {"rel", "href"},
    "main": set(),
    "meta": {"charset", "http-equiv", "content", "name"},
    "p": {"class", "id", "role", "tabindex", "hidden"},
    "script": set(),
    "section": {"class", "id", "aria-labelledby", "tabindex"},
    "span": {"class"},
    "style": set(),
    "summary": set(),
    "time": {"datetime"},
    "title": set(),
    "ul": {"class"},
}
VOID = {"input", "link", "meta"}
HREF = re.compile(r"https?://|file://|mailto:|#(violations|(violation|waived|affirmation)--?[0-9]+)\Z|data:,\Z")
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
        self.feed(content.decode("utf-8"))
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


class HostileTexts(RulecheckTest):
    """Results with markup and scripts in every string field, under every scheme."""

    def setUp(self):
        super().setUp()
        self.make_results("hostile", self.folder)
        self.results = sorted(self.folder.glob("*.pb"))
        self.assertGreater(len(self.results), 60)

    def test_every_page_is_the_template_and_text(self):
        expected = Page(self.page_of(SAMPLE)).texts
        for result in self.results:
            with self.subTest(result.stem):
                content = self.page_of(result)
                page = Page(content)
                self.assertEqual(page.faults, [])
                self.check_elements(page)
                self.check_addresses(page)
                self.assertEqual(page.texts["script"], expected["script"])
                self.assertEqual(page.texts["style"], expected["style"])
                self.assertEqual(len(page.texts["title"]), 1)
                self.assertNotRegex(content.decode("utf-8"), "[\x00-\x08\x0b-\x1f\x7f-\x9f]")

    def check_elements(self, page):
        for tag, attributes in page.elements:
            self.assertIn(tag, ELEMENTS)
            self.assertLessEqual(attributes.keys(), ELEMENTS[tag], tag)

    def check_addresses(self, page):
        for address in page.attributes("href"):
            self.assertRegex(address, HREF)
            self.assertNotRegex(address, UNENCODED)

    def test_the_texts_are_there_to_be_read(self):
        page = Page(self.page_of(self.folder / "script-HTTP.pb"))
        self.assertGreater(page.text.count("<script>alert(1)</script>"), 100)
        page = Page(self.page_of(self.folder / "template_tags-HTTP.pb"))
        self.assertGreater(page.text.count("{{style}}{{{script}}}{{#kinds}}{{/sections}}{{=<% %>=}}"), 100)


class Structure(RulecheckTest):
    def setUp(self):
        super().setUp()
        self.page = Page(self.page_of(SAMPLE))

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
            "script-src": source("".join(self.page.texts["script"])),
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
        references = self.page.attributes("aria-labelledby") + self.page.attributes("aria-describedby")
        references += [address[1:] for address in self.page.attributes("href") if address.startswith("#")]
        self.assertLessEqual(set(references), set(ids))

    def test_the_numbers_of_the_sample_are_right(self):
        tiles = re.findall(r"(\d+) ([a-z ]+)\n", self.page.text.split("affirmed\n", 1)[1].split("Search")[0])
        self.assertEqual(tiles, [("1", "fatal"), ("2", "error"), ("2", "critical warning"), ("5", "warning"),
                                 ("3", "advisory"), ("1", "unknown"), ("2", "waived"), ("4", "affirmed")])


class Large(RulecheckTest):
    """A browser is quick with parts that are small, and few."""

    def large_page(self, rules):
        result = self.folder / "large.pb"
        self.make_results("many", "2000", str(rules), result)
        content = self.page_of(result)
        return content, Page(content)

    def lengths(self, page, holders, inner):
        """How many of the inner elements each of the holders has."""
        lengths = []
        for tag, attributes in page.elements:
            kind = (tag, attributes.get("class", "").split(" ")[0])
            if kind == holders:
                lengths.append(0)
            elif kind == inner:
                lengths[-1] += 1
        return lengths

    def test_a_rule_with_many_findings_has_short_lists(self):
        _, page = self.large_page(1)
        self.assertEqual(self.lengths(page, ("ul", "list"), ("li", "finding")), [25] * 80)

    def test_many_rules_are_in_short_blocks(self):
        _, page = self.large_page(2000)
        self.assertEqual(self.lengths(page, ("div", "block"), ("div", "group")), [25] * 80)

    def test_a_finding_takes_less_than_a_kibibyte(self):
        for rules in 1, 40, 2000:
            with self.subTest(rules=rules):
                content, page = self.large_page(rules)
                findings = [attributes for attributes in page.all("li") if "data-kind" in attributes]
                self.assertEqual(len(findings), 2000)
                self.assertLess(len(content), 2000 * 1024)


if __name__ == "__main__":
    unittest.main()
