# SPDX-License-Identifier: Apache-2.0

"""What a page says of a result: the data for its script, and the words that need none."""

import html
import os
import re
import types
import unittest

import make_results
from programs import RulecheckTest, data_of

PLACE = "arg { ref { type: FILE name: 'a.v:1' url { scheme: FILE path: '/a.v' } } } "


def entries(*values, first=1):
    """Those of a map of violations. A severity is required."""
    return " ".join(f"hashmap {{ key: {number} value {{ id: {number} {value} "
                    f"{'' if 'severity:' in value else 'severity: SEV_ERROR'} }} }}"
                    for number, value in enumerate(values, first))


def at(file, line, text="t", source="line"):
    return f"""rule_key: 'R' details {{ text: '{text}' args {{ arg {{ ref {{
        type: FILE name: '{file}:{line}:5' value {{ string_val: '{source}' }}
        url {{ scheme: FILE path: '/src/{file}' fragment: 'L{line}C5' }} }} }} }} }}"""


def argument(value):
    return f"rule_key: 'R' details {{ text: '%1' args {{ arg {{ {value} }} }} }}"


def finding(data, row):
    """With names for its parts, and with @ for each place of an argument."""
    kind, severity, mark, rule, file, line, column, module, number, link, text, arguments, *facts = row
    return types.SimpleNamespace(
        kind=data["kinds"][kind][1], severity=data["kinds"][severity][1], mark=data["marks"][mark][1],
        rule=data["rules"][rule][0], place=(data["files"][file][0], line, column), module=data["modules"][module],
        number=number, link=link, text=data["texts"][text].replace("\x01", "@"), arguments=arguments,
        facts={data["labels"][label]: data["texts"][value] for label, value in zip(facts[::2], facts[1::2])})


class PageTest(RulecheckTest):
    def page(self, result, *options):
        path = self.write("result.txtpb", f"session {{ name: '' }} {result}")
        return self.page_of(path, *options).decode("utf-8")

    def data(self, result, *options):
        data = data_of(self.page(result, *options))
        return {**data, "findings": [finding(data, row) for row in data["findings"]]}

    def findings(self, *violations):
        return self.data(f"violations {{ {entries(*violations)} }}")["findings"]


class Findings(PageTest):
    def test_are_sorted_by_place_and_then_by_number(self):
        found = self.findings(at("b.v", 2), at("a.v", 10), at("a.v", 9), at("a.v", 9, "x"), at("a.v", 9, "x"), "")
        self.assertEqual([each.number for each in found], [6, 3, 4, 5, 2, 1])
        self.assertEqual(found[1].place, ("a.v", 9, 5))

    def test_are_of_one_kind(self):
        reasons = ["ok", "switched off in the source", "switched off on the command line", "cut short by an error"]
        waived = entries(*(f"categories {{ key: 1 value: '{reason}' }}" for reason in reasons), first=3)
        found = self.data(f"violations {{ {entries('severity: SEV_FATAL', 'severity: SEV_UNKNOWN')} }}"
                          f"waived_violations {{ {waived} }}"
                          "affirmations { hashmap { key: 7 value { id: 7 } } }")["findings"]
        self.assertEqual([each.kind for each in found], [
            "fatal", "unknown", "not-checked", "not-checked", "not-checked", "waived", "met"])
        self.assertEqual((found[5].severity, found[5].facts), ("error", {"Reason": "ok"}))

    def test_are_marked_as_new_moved_unchanged_and_fixed(self):
        old = entries(at("a.v", 1, "same"), at("b.v", 1, "gone"), at("c.v", 1, "moved"))
        self.write("old.txtpb", f"session {{ name: '' }} violations {{ {old} }}")
        new = entries(at("a.v", 1, "same"), "severity: SEV_FATAL", at("c.v", 8, "moved"), at("d.v", 1, "more"))
        found = self.data(f"violations {{ {new} }}", "--baseline", "old.txtpb")["findings"]
        self.assertEqual([(each.number, each.kind, each.mark) for each in found], [
            (2, "fatal", "new"), (1, "error", "unchanged"), (2, "fixed", ""), (3, "error", "moved"),
            (4, "error", "new")])

    def test_are_not_fixed_if_they_are_not_checked_any_more(self):
        self.write("old.txtpb", f"session {{ name: '' }} violations {{ {entries(at('a.v', 1))} }}")
        cut = entries("rule_key: 'R' categories { key: 1 value: 'cut short by an error' }")
        page = self.page(f"waived_violations {{ {cut} }}", "--baseline", "old.txtpb")
        self.assertEqual(len(data_of(page)["findings"]), 1)
        self.assertIn("; 1 finding of the baseline not checked any more", page)

    def test_have_links_that_last(self):
        first, second, third = (each.link for each in self.findings(at("a.v", 1), at("b.v", 2), at("b.v", 2)))
        self.assertRegex(first, r"\A[0-9a-f]{16}\Z")
        self.assertEqual(third, second + "-2")
        self.assertEqual(self.findings("", at("a.v", 1))[1].link, first)

    def test_have_the_arguments_apart_and_no_place(self):
        for details, text, arguments, others in [
                ("text: '%1: %2 is bad' args { " + PLACE + "arg { string_val: 'x' } }", "@ is bad", ["x"], ""),
                ("text: 'in %1' args { " + PLACE + "}", "in @", ['<a href="file:///a.v">a.v:1</a>'], ""),
                ("text: 'bad' args { " + PLACE + "}", "bad", [], ""),
                ("text: '%2' args { arg { string_val: '<a>' } arg { string_val: 'b' } arg { string_val: 'c' } }",
                 "@", ["b"], "&lt;a&gt;, c"),
                ("text: '' args { " + PLACE + "arg { string_val: 'a' } arg { string_val: 'b' } }", "a, b", [], ""),
                ("text: ''", "", [], "")]:
            with self.subTest(details):
                found, = self.findings(f"details {{ {details} }}")
                self.assertEqual((found.text, found.arguments, found.facts.get("Arguments", "")),
                                 (text, arguments, others))

    def test_are_in_the_file_or_in_that_of_the_first_object_in_one(self):
        nowhere = ("", 0, 0)
        for arguments, place, module in [
                ("", nowhere, ""),
                (PLACE, ("a.v", 1, 0), ""),
                ("arg { ref { type: PORT name: 'p:3' url { scheme: FILE path: '/b.v' fragment: 'L7C2' } } }",
                 ("/b.v", 7, 2), ""),
                ("arg { ref { type: PORT name: 'p' url { scheme: HTTP host: 'h' } } }", nowhere, ""),
                ("arg { ref { type: PORT name: 'p' url { scheme: FILE path: '/b.v' } } } " + PLACE, ("a.v", 1, 0), ""),
                ("arg { ref { type: HIERARCHY name: 'top.u' } }", nowhere, "top.u"),
                ("arg { refs { ref { type: PORT name: 'p' } ref { type: HIERARCHY name: 'm' } } }", nowhere, "m")]:
            with self.subTest(arguments):
                found, = self.findings(f"details {{ text: 't' args {{ {arguments} }} }}")
                self.assertEqual((found.place, found.module), (place, module))

    def test_have_the_values_that_their_rule_lacks(self):
        shared = """expects: "e" threshold_value { int_val: 1 } categories { key: 2 value: "c" }
            categories { key: 3 value: "<d>" } examples { uri { link_text: "x" url { scheme: HTTP host: "h" } } }"""
        own = {"Actual": "1.500000 ns", "Build target": "&lt;b&gt;"}
        for rule, facts in [
                (f"resolution_msg: 'r' {shared}", own),
                ("""resolution_msg: "R" expects: "E" threshold_value { int_val: 2 }
                    categories { key: 2 value: "c" } categories { key: 3 value: "D" }""",
                 {**own, "Resolution": "r", "Expects": "e", "Threshold": "1",
                  "Categories": '<span class="tag">3: &lt;d&gt;</span> ',
                  "Examples": '<span class="link"><a href="http://h">x</a></span> '})]:
            violation = f"""rule_key: 'R' resolution {{ text: "r" }} build_target: "<b>"
                actual_value {{ double_val: 1.5 units: "ns" }} {shared}"""
            data = self.data(f"violations {{ {entries(violation)} }} specs_violated {{ hashmap {{ key: 'R' "
                             f"value {{ key: 'R' full_name: 'R' {rule} }} }} }}")
            self.assertEqual(data["findings"][0].facts, facts)

    def test_have_their_rule_by_the_key_as_it_came(self):
        keys = [r"rule_key: '<\377>'", r"rule_key: '<\377>'", "rule_key: 'B'"]
        data = self.data(f"violations {{ {entries(*keys)} }}" r"""
            specs_violated {
              hashmap { key: "<\376>" value { key: "" full_name: "wrong" } }
              hashmap { key: "<\377>" value { key: "" full_name: "<right>" severity: SEV_CRITICAL_WARNING
                expects: "<e>" disposition: USERDEFINED msg_id: 0 first_release { major: 1 minor: 2 patch: 3 }
                description { scheme: HTTPS host: "h" path: "A" } } } }
            specs_affirmed { hashmap { key: "B" value { key: "" full_name: "B" } } }""")
        self.assertEqual(data["rules"], [
            ["<\ufffd>", "<right>",
             ["Expects", "&lt;e&gt;", "Description", '<a href="https://h/A">https://h/A</a>'],
             ["Severity", "critical warning", "Message number", "0", "State", "userdefined", "First release", "1.2.3"]],
            ["B", "", [], []]])


class Words(PageTest):
    def test_say_what_the_result_holds(self):
        session = "session { name: '' %s }"
        unchecked = "rule_key: 'B' categories { key: 1 value: 'cut short by an error' }"
        marked = "rule_key: '<A>' details { text: '%1 <b>' args { arg { string_val: '<x>' } } }"
        for result, present, absent in [
                (session % "", "<h1>Unnamed session</h1>", 'class="facts session"'),
                (session % "timestamp: 1773500966000",
                 '<time datetime="2026-03-14T15:09:26Z">2026-03-14 15:09:26 UTC</time>', "<>"),
                (session % "timestamp: 9223372036854775807", "timestamp 9223372036854775807", "UTC"),
                (session % "report_file { scheme: FTP host: 'h' }", "<dd>ftp://h</dd>", 'href="h'),
                (session % "", '<section class="summary clean"', 'class="problems"'),
                (session % "" + f"""violations {{ {entries("rule_key: 'A'")} }}
                    waived_violations {{ {entries(unchecked)} }}
                    affirmations {{ hashmap {{ key: 1 value {{ id: 1 rule_key: 'C' }} }}
                                   hashmap {{ key: 2 value {{ id: 2 rule_key: 'D' }} }} }}""",
                 '<span class="verdict">1 violation</span> <span class="detail">4 findings in all; 1 rule violated, '
                 "2 met, 1 not fully checked", "summary clean"),
                (session % "" + "violation_count: 5", "violation_count says 5, but it lists 0.", "summary clean"),
                (session % "" + f"""violations {{ {entries(marked)} }} specs_violated {{
                    hashmap {{ key: '<A>' value {{ key: 'A' full_name: 'Name' expects: 'E' }} }} }}""",
                 '<code class="key">&lt;A&gt;</code> <span class="name">Name</span></h2>\n<dl class="facts about">\n'
                 '<div class="fact"><dt>Expects</dt><dd>E</dd></div>\n</dl>\n<ul>\n<li class="finding"><div class="row">'
                 '<span class="level error">error</span> <span class="place"></span> <span class="message">'
                 '<code class="arg">&lt;x&gt;</code> &lt;b&gt;</span></div></li>\n', "<x>")]:
            with self.subTest(result):
                body = self.page_of(self.write("result.txtpb", result)).decode("utf-8").split("<body>")[1]
                self.assertIn(present, body)
                self.assertNotIn(absent, body)

    def test_need_the_script_for_more_than_five_thousand_findings(self):
        for count, is_plain in [(5000, True), (5001, False)]:
            make_results.many(count, 1, self.folder / "many.txtpb")
            page = self.page_of("many.txtpb").decode("utf-8")
            self.assertEqual('<li class="finding">' in page, is_plain)
            self.assertEqual("needs its script" in page, not is_plain)
            self.assertIn(f">{count:,} violations</span>", page)

    def test_depend_on_nothing_but_the_result(self):
        # Maps have no order of their own. Browsers read the two addresses as one.
        alike = entries(*(f"rule_key: '{rule}' details {{ text: '' args {{ arg {{ ref {{ type: FILE name: 'a.v' "
                          f"url {{ scheme: FILE path: '{path}' }} }} }} }} }}" for rule, path in
                          [("A", "/a b"), ("B", "/a%20b")])).replace("id: 2", "id: 1")
        many = entries(*(f"rule_key: 'R{number % 7}'" for number in range(100)), first=3)
        self.write("old.txtpb", f"session {{ name: '' }} violations {{ {alike} {many} }}")
        pages = {self.page_of("old.txtpb") + self.page("", "--baseline", "old.txtpb").encode() for _ in range(20)}
        self.assertEqual(len(pages), 1)


class Messages(PageTest):
    def test_have_their_arguments_in_place(self):
        cases = [
            ("text", "", "text"),
            ("%1 is read", "a", "[a] is read"),
            ("%2, %1.", "ab", "[b], [a]."),
            ("%1 %1", "a", "[a] [a]"),
            ("%12 %1", "abcdefghijkl", "[l] [a] ([b], [c], [d], [e], [f], [g], [h], [i], [j], [k])"),
            ("%12", "ab", "%12 ([a], [b])"),
            ("100%%", "", "100%"),
            ("%%1 %1", "a", "%1 [a]"),
            ("%1%%", "a", "[a]%"),
            ("50%", "", "50%"),
            ("%d", "a", "%d ([a])"),
            ("%3", "ab", "%3 ([a], [b])"),
            ("%0", "a", "%0 ([a])"),
            ("%01", "a", "%01 ([a])"),
            ("%-1 %+1", "a", "%-1 %+1 ([a])"),
            ("%99999999999999999999999", "a", "%99999999999999999999999 ([a])"),
            ("text", "ab", "text ([a], [b])"),
            ("%1%1%1%1%1%1%1%1%1%2", "ab", "[a][a][a][a][a][a][a][a]%1[b]"),
            ("", "a", " ([a])"),
            ("%1 %2", ["%2 %%", "%1"], "[%2 %%] [%1]"),
            ("<%1>", [""], "&lt;[(empty)]&gt;"),
            ("%1 %1 %1 %1", ["x" * (1 << 20)], f"[{'x' * (1 << 20)}] [{'x' * (1 << 20)}] %1 %1"),
        ]
        violations = []
        for text, arguments, _ in cases:
            strings = " ".join(f"arg {{ string_val: '{each}' }}" for each in arguments)
            violations.append(f"details {{ text: '{text}' args {{ {strings} }} }}")
        page = self.page(f"violations {{ {entries(*violations)} }}")
        shown = re.findall(r'<span class="message">(.*)</span></div></li>', page)
        self.assertEqual(len(shown), len(cases))
        for message, (text, arguments, expected) in zip(shown, cases):
            message = message.replace('<code class="arg">', "[").replace("</code>", "]")
            self.assertEqual(re.sub("</?span[^>]*>", "", message), expected, (text, arguments))


def escaped(text):
    return html.escape(text).replace("&#x27;", "&#39;")


class SafeHtml(PageTest):
    def data_of_rules(self, rules):
        rules = list(rules)
        violations = entries(*(f"rule_key: '{number}'" for number in range(len(rules))))
        specs = "".join(
            f"hashmap {{ key: '{number}' value {{ key: '' {rule} }} }}" for number, rule in enumerate(rules))
        data = self.data(f"violations {{ {violations} }} specs_violated {{ {specs} }}")
        self.assertEqual(len(data["rules"]), len(rules))
        return data

    def test_is_made_of_texts(self):
        bad = "\ufffd"
        cases = [
            ("", ""),
            ("Latch in top.v: q[3]", "Latch in top.v: q[3]"),
            ('<b class="x">', "&lt;b class=&quot;x&quot;&gt;"),
            ("8'hff", "8&#39;hff"),
            ("&lt;&#60;", "&amp;lt;&amp;#60;"),
            ("a\tb\nc", "a\tb\nc"),
            ("a\r\nb\r", "a\nb"),
            ("a\0b", f"a{bad}b"),
            ("\x01\x0b\x1f\x7f", bad * 4),
            ("\x80\x9F", bad * 2),
            ("\xA0\xE4\u20AC\U0001F600", "\xA0\xE4\u20AC\U0001F600"),
            ("\U0010FFFD", "\U0010FFFD"),
            ("\uFFFF\uFDD0\U0001FFFE", bad * 3),
            ("\u202A\u202E\u2066\u2069", bad * 4),
            (bad, bad),
            (b"\xF4\x90\x80\x80", bad * 4),  # beyond the last code point
            (b"\xC0\xBC", bad * 2),          # overlong
            (b"\xE0\x80\xBC", bad * 3),
            (b"\xED\xA0\x80", bad * 3),      # a surrogate
            (b"\x80", bad),                  # a continuation alone
            (b"\xFF", bad),
            (b"a\xE2\x82", f"a{bad * 2}"),   # cut short
            (b"\xE2\x82<", f"{bad * 2}&lt;"),
        ]
        texts = (make_results.quoted(text if isinstance(text, bytes) else text.encode("utf-8")) for text, _ in cases)
        data = self.data_of_rules(f"full_name: {text} expects: {text}" for text in texts)
        for (_, name, facts, _), (text, expected) in zip(data["rules"], cases):
            self.assertEqual((name, facts[1:]), (html.unescape(expected), [expected] if text else []), text)

    def test_is_made_of_arguments(self):
        cases = {
            """uri { link_text: "a<b" url { scheme: HTTP host: "h" query: "a=1&b='2'" } }""":
                '<a href="http://h?a=1&amp;b=&#39;2&#39;">a&lt;b</a>',
            'uri { link_text: "owner" url { scheme: MAILTO path: "a@b" } }': '<a href="mailto:a@b">owner</a>',
            'uri { url { scheme: FILE path: "/a" media_type: "text/x" } }': '<a href="file:///a">text/x</a>',
            'uri { link_text: " " url { scheme: FILE path: "/a" media_type: "" } }': '<a href="file:///a">link</a>',
            'uri { link_text: "here" url { scheme: FTP host: "h" } }': "here",
            'uri { url { scheme: IRC host: "h<" } }': "irc://h&lt;",
            'uri { url { scheme: DATA media_type: "text/html" data: "<script>" } }': "&lt;script&gt;",
            'uri { link_text: "page" url { scheme: DATA media_type: "text/html" data: "<script>" } }':
                "page (&lt;script&gt;)",
            'uri { link_text: "wave" url { scheme: DATA media_type: "image/png" data: "x" } }': "wave",
            "uri { }": "empty link",
            r'uri { link_text: "\n" }': "empty link",
            'uri { link_text: "<empty>" }': "&lt;empty&gt;",
            'ref { type: PORT name: "a" url { scheme: FILE path: "/t v" } }': '<a href="file:///t%20v">a</a>',
            'ref { type: PORT name: "<a>" url { scheme: FTP host: "h" } }': "&lt;a&gt;",
            'ref { type: PORT name: "" id: 4 url { scheme: FTP host: "javascript:alert(1)" } }': "port #4",
            'ref { type: LOOP id: 1 url { scheme: DATA media_type: "text/html" data: "<i>" } }': "loop #1 (&lt;i&gt;)",
            'ref { type: LOOP uuid: "<u>" }': "loop &lt;u&gt;",
            'refs { ref { type: PORT name: "<" } ref { type: PORT name: ">" } }': "&lt;,&gt;",
            'uris { uri { link_text: "<" } uri { } }': "&lt;,empty link",
            r"""string_val: "\"'&" """: "&quot;&#39;&amp;",
            'scalar { string_val: "<" }': "&lt;",
            "": '<span class="absent">(empty)</span>',
        }
        found = {each.number: each.arguments for each in self.findings(*map(argument, cases))}
        for number, (value, expected) in enumerate(cases.items(), 1):
            self.assertEqual(found[number], [expected], value)

    def test_leads_to_safe_addresses_only(self):
        """What a page makes of a resource: the address that it links to, or "", and the words."""
        cases = {
            'scheme: HTTP host: "h" port: 0 path: "p" query: "q=1&r" fragment: "f"':
                ("http://h:0/p?q=1&r#f", "http://h:0/p?q=1&r#f"),
            'scheme: HTTPS host: "user@h" path: "/p"': ("https://user@h/p", "https://user@h/p"),
            'scheme: FILE path: "/src/top.v" fragment: "L7"': ("file:///src/top.v#L7", "file:///src/top.v#L7"),
            'scheme: FILE host: "localhost" path: "p"': ("file://localhost/p", "file://localhost/p"),
            'scheme: FILE host: "h" path: "/p"': ("", "file://h/p"),
            'scheme: FILE host: " " path: "/p"': ("", "file:// /p"),
            'scheme: FILE port: 445 path: "/p"': ("", "file://:445/p"),
            'scheme: FILE path: "//h/..///p"': ("file:///h/../p", "file:////h/..///p"),
            'scheme: MAILTO host: "a@b.example"': ("mailto:a@b.example", "a@b.example"),
            'scheme: MAILTO host: "a@b.example" query: "cc=c@d.example"': ("", "a@b.example"),
            'scheme: MAILTO host: "a@b?cc=c@d"': ("mailto:a@b%3Fcc=c@d", "a@b?cc=c@d"),
            'scheme: MAILTO path: "a@b.example"': ("mailto:a@b.example", "a@b.example"),
            'scheme: MAILTO host: "mailto:a@b.example"': ("mailto:a@b.example", "a@b.example"),
            'scheme: MAILTO host: "a@b.example" port: 25 path: "/p" fragment: "f"':
                ("mailto:a@b.example", "a@b.example"),
            'scheme: FTP host: "h" path: "p"': ("", "ftp://h/p"),
            'scheme: IRC host: "h" path: "room"': ("", "irc://h/room"),
            'scheme: FTP host: "javascript:alert(1)"': ("", "ftp://javascript:alert(1)"),
            'scheme: MAILTO host: "javascript:alert(1)"': ("mailto:javascript:alert(1)", "javascript:alert(1)"),
            'scheme: DATA media_type: "text/plain" data: "see line 4"': ("", "see line 4"),
            'scheme: DATA media_type: "text/html" data: "<b>hi</b>"': ("", "<b>hi</b>"),
            'scheme: DATA data: "hi"': ("", "hi"),
            'scheme: DATA media_type: "image/png" encoding: "base64" data: "aGk="': ("", "inline data (image/png)"),
            'scheme: DATA media_type: "text/html"': ("", "inline data (text/html)"),
            "scheme: DATA": ("", "inline data"),
            'scheme: HTTP path: "/p"': ("", "http:///p"),
            'scheme: HTTPS host: " "': ("", "https:// "),
            'scheme: FILE fragment: "L7"': ("", "file://#L7"),
            'scheme: MAILTO query: "q"': ("", "no address"),
            'scheme: MAILTO host: "mailto:"': ("", "no address"),
            'scheme: FILE path: "/a b"': ("file:///a%20b", "file:///a b"),
            """scheme: HTTP host: 'x" onclick="alert(1)'""":
                ("http://x%22%20onclick=%22alert(1)", 'http://x" onclick="alert(1)'),
            'scheme: FILE path: "/a?b#c"': ("file:///a%3Fb%23c", "file:///a?b#c"),
            'scheme: HTTP host: "h" query: "a?b#c"': ("http://h?a?b%23c", "http://h?a?b#c"),
            r'scheme: HTTP host: "good.example\\@bad.example"':
                ("http://good.example%5C@bad.example", r"http://good.example\@bad.example"),
            r'scheme: HTTP host: "h" path: "a\nb\tc"': ("http://h/a%0Ab%09c", "http://h/a\nb\tc"),
            r'scheme: FILE path: "/\303\244.v"': ("file:///%C3%A4.v", "file:///\xE4.v"),
            r'scheme: FILE path: "/\377"': ("file:///%FF", "file:///\ufffd"),
            'scheme: FILE path: "/a%20b%2f"': ("file:///a%20b%2f", "file:///a%20b%2f"),
            'scheme: FILE path: "/100%.v%2"': ("file:///100%25.v%252", "file:///100%.v%2"),
        }
        data = self.data_of_rules((f"full_name: '' description {{ {resource} }}" for resource in cases))
        for (_, _, facts, _), (resource, (address, words)) in zip(data["rules"], cases.items()):
            link = f'<a href="{escaped(address)}">{escaped(words)}</a>' if address else escaped(words)
            self.assertEqual(facts, ["Description", link], resource)

    def test_leads_by_a_template_to_web_hosts_and_editors_only(self):
        self.write("result.txtpb", "session { name: '' }")
        for good in ["https://host/blob/main/{path}#L{line}", "http://h:1/{path}", "vscode://file{absolute}",
                     "idea://open?file={absolute}&line={line}", "subl://open?url={absolute}"]:
            self.page_of("result.txtpb", "--link", good)
        for bad in ["", "{path}", "javascript:alert(1)", "javascript://h/%0aalert(1)", " https://h/", "https://{path}/",
                    "https://h{path}/", "data:text/html,x", "file:///{path}", "HTTPS://h/ x", "vscode:x", "https://h"]:
            self.assert_error(f"--link {bad}: expected the address", "html", "result.txtpb", "--link", bad)


class Sources(PageTest):
    def shown(self, *violations):
        return self.data(f"violations {{ {entries(*violations)} }}", "--source-root", self.folder / "root")

    def test_are_two_lines_around_each_place_once(self):
        numbers = "".join(f"{line}\n" for line in range(1, 13))
        self.write("root/rtl/a.v", "").write_bytes(numbers.encode() + b"\x01<\xff\n")
        data = self.shown(*(at("rtl/a.v", line, source="") for line in (1, 4, 12)))
        self.assertEqual(data["sources"][1], [[1, "1", "2", "3", "4", "5", "6"],
                                              [10, "10", "11", "12", "\ufffd<\ufffd"]])
        self.assertEqual(data["findings"][0].facts, {})

    def test_are_those_of_the_result_where_the_file_is_missing_or_has_changed(self):
        self.write("root/rtl/a.v", "  wire\ta;\nwire b;\n")
        data = self.shown(*(at(file, line, source=source) for file, line, source in [
            ("rtl/a.v", 1, "wire a;"), ("rtl/a.v", 2, "wire <old>;"), ("rtl/a.v", 3, "end"),
            ("rtl/missing.v", 4, "gone")]))
        self.assertEqual(data["sources"][1], [[1, "  wire\ta;", "wire b;"]])
        self.assertEqual([each.facts.get("Source", "") for each in data["findings"]],
                         ["", "wire &lt;old&gt;;", "end", "gone"])

    def test_are_those_of_the_result_for_what_is_fixed(self):
        self.write("root/a.v", "wire a;\n")
        self.write("old.txtpb", f"session {{ name: '' }} violations {{ {entries(at('a.v', 1, source='wire a;'))} }}")
        data = self.data("", "--baseline", "old.txtpb", "--source-root", "root")
        self.assertEqual((data["sources"], data["findings"][0].facts), ([[], []], {"Source": "wire a;"}))

    def test_are_not_read_outside_of_the_folder(self):
        for name in ["secret", "root/rtl/.hidden/a.v", "root/.env", "root-2/a.v"]:
            self.write(name, "secret\n")
        self.write("root/rtl/large.v", "secret\n" + "x" * (4 << 20))
        self.write("root/rtl/good.v", "good\n")
        for link, target in [("rtl/link.v", "../../secret"), ("rtl/up", "../.."), ("rtl/b.v", ".hidden/a.v"),
                             ("inside.v", "rtl/good.v")]:
            os.symlink(target, self.folder / "root" / link)
        names = {name: [] for name in [
            "../secret", "rtl/../../secret", self.folder / "secret", self.folder / "root-2/a.v", "../root-2/a.v",
            "rtl/link.v", "rtl/up/secret", "rtl/.hidden/a.v", "rtl/b.v", ".env", "rtl/large.v", "rtl", "/dev/zero",
            "x" * 5000]}
        names |= {name: [[1, "good"]] for name in ["rtl/../rtl/good.v", "inside.v", self.folder / "root/rtl/good.v"]}
        data = self.shown(*(at(name, 1, source="") for name in names))
        sources = {path: lines for (path, _), lines in zip(data["files"], data["sources"]) if path}
        self.assertEqual(sources, {str(name): lines for name, lines in names.items()})

    def test_are_shortened(self):
        self.write("root/a.v", "x" * 1000)
        self.assertEqual(self.shown(at("a.v", 1, source=""))["sources"][1], [[1, "x" * 400 + " ..."]])


if __name__ == "__main__":
    unittest.main()
