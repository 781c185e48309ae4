# SPDX-License-Identifier: Apache-2.0

"""SARIF that is written, and SARIF of other tools that is read."""

import json
import os
import pathlib
import random
import subprocess
import unittest

from programs import HERE, RULECHECK, SAMPLE, RulecheckTest, read_json

LOGS = HERE / "sarif"
MULTITOOL = os.environ.get("SARIF_MULTITOOL", "")


def log(*results, **run):
    driver = {"name": "tool", "rules": run.pop("rules", [])}
    return json.dumps({"version": "2.1.0", "runs": [
        {"tool": {"driver": driver}, "results": list(results), **run}]})


def at(uri, **region):
    return {"physicalLocation": {"artifactLocation": {"uri": uri}, "region": region}}


def address_of(resource):
    port = f":{resource['port']}" if "port" in resource else ""
    query = f"?{resource['query']}" if "query" in resource else ""
    return (f"{resource['scheme'].lower()}://{resource.get('host', '')}{port}{resource['path']}{query}"
            f"#{resource['fragment']}")


class Import(RulecheckTest):
    def imported(self, path):
        self.rulecheck("import", path, "-o", "result.json")
        return read_json(self.folder / "result.json")

    @staticmethod
    def arguments_of(result):
        return result["violations"]["hashmap"]["1"]["details"]["args"]["arg"]

    def test_has_the_findings_of_other_tools(self):
        expected = {
            "clang": ["/src/s/c.c:2:34: warning: Dereference of null pointer (loaded from variable 'p') "
                      "[core.NullDereference]",
                      "/src/s/c.c:3:22: warning: Undefined or garbage value returned to caller "
                      "[core.uninitialized.UndefReturn]",
                      "/src/s/c.c:4:48: warning: Potential leak of memory pointed to by 'q' [unix.Malloc]"],
            "eslint": ["/src/s/a.js:2:7: error: Expected '===' and instead saw '=='. [eqeqeq]",
                       "/src/s/a.js:3:5: warning: 'unused' is defined but never used. [no-unused-vars]",
                       "/src/s/a.js:4:7: error: Expected '===' and instead saw '=='. [eqeqeq]",
                       "/src/s/a.js:4:18: error: 'z' is not defined. [no-undef]"],
            "stylelint": ['/src/s/b.css:1:5: error: Unknown property "colr" (property-no-unknown) '
                          "[property-no-unknown]",
                          '/src/s/b.css:1:23: error: Invalid hex color "#ggg" (color-no-invalid-hex) '
                          "[color-no-invalid-hex]",
                          "/src/s/b.css:2:3: warning: Empty block (block-no-empty) [block-no-empty]"],
        }
        for tool, lines in expected.items():
            with self.subTest(tool):
                text = self.rulecheck("text", LOGS / f"{tool}.sarif").stdout.decode("utf-8")
                self.assertEqual(text.splitlines(), lines)

    def test_has_suppressions_and_descriptions(self):
        result = self.imported(LOGS / "eslint.sarif")
        waived = result["waivedViolations"]["hashmap"].values()
        self.assertEqual([each["ruleKey"] for each in waived], ["no-undef"])
        self.write("log.sarif", log({"message": {"text": "m"}, "suppressions": [
            {"kind": "external", "status": "accepted", "justification": "old code"}]}))
        waived = self.imported("log.sarif")["waivedViolations"]["hashmap"].values()
        self.assertEqual([each["categories"]["1"] for each in waived], ["old code"])
        rule = result["specsViolated"]["hashmap"]["eqeqeq"]
        self.assertEqual(rule["fullName"], "Require the use of `===` and `!==`")
        self.assertEqual(rule["description"]["host"], "eslint.org")
        self.assertEqual(result["session"]["name"], "ESLint")

    def test_reads_what_the_format_allows(self):
        place = at("a%20b.v", startLine=3, startColumn=4)
        cases = {
            "index of a rule": (log({"ruleIndex": 0, "message": {"text": "m"}},
                                    rules=[{"id": "R", "defaultConfiguration": {"level": "error"}}]),
                                "error: m [R]"),
            "rule of an extension": (log({"rule": {"id": "E"}, "message": {"text": "m"}},
                                         tool={"extensions": [{"rules": [
                                             {"id": "E", "defaultConfiguration": {"level": "note"}}]}]}),
                                     "advisory: m [E]"),
            "index of a rule of an extension": (
                log({"rule": {"index": 0, "toolComponent": {"index": 1}}, "message": {"text": "m"}},
                    tool={"driver": {"rules": [{"id": "D"}]},
                          "extensions": [{"rules": [{"id": "E"}]}, {"rules": [{"id": "F"}]}]}),
                "warning: m [F]"),
            "index of a rule of an extension with a guid": (
                log({"rule": {"index": 0, "toolComponent": {"guid": "g"}}, "message": {"text": "m"}},
                    tool={"driver": {"rules": [{"id": "D"}]},
                          "extensions": [{"rules": [{"id": "E"}]}, {"guid": "g", "rules": [{"id": "F"}]}]}),
                "warning: m [F]"),
            "index of a rule of an extension with a name": (
                log({"rule": {"index": 0, "toolComponent": {"name": "n"}}, "message": {"text": "m"}},
                    tool={"driver": {"rules": [{"id": "D"}]}, "extensions": [{"name": "n", "rules": [{"id": "E"}]}]}),
                "warning: m [E]"),
            "guid of a rule": (log({"rule": {"guid": "g"}, "message": {"text": "m"}},
                                   rules=[{"id": "Q"}, {"id": "R", "guid": "g"}]), "warning: m [R]"),
            "part of a rule": (log({"ruleId": "R/a/b", "message": {"text": "m"}},
                                   rules=[{"id": "R", "defaultConfiguration": {"level": "error"}}]),
                               "error: m [R/a/b]"),
            "part of a rule with an index": (
                log({"ruleId": "R/a", "ruleIndex": 1, "message": {"text": "m"}},
                    rules=[{"id": "R"}, {"id": "R", "defaultConfiguration": {"level": "error"}}]),
                "error: m [R/a]"),
            "result that is not a failure": (
                log({"ruleId": "R", "kind": "informational", "message": {"text": "m"}},
                    rules=[{"id": "R", "defaultConfiguration": {"level": "error"}}]),
                "advisory: m [R]"),
            "message of the rule": (log({"ruleId": "R", "message": {"id": "x", "arguments": ["1", "2"]}},
                                        rules=[{"id": "R", "messageStrings": {"x": {"text": "{1} of {0}{9}"}}}]),
                                    "warning: 2 of 1{9} [R]"),
            "message of all rules": (log({"ruleId": "R", "message": {"id": "x", "arguments": ["1"]}}, tool={
                "driver": {"rules": [{"id": "R"}], "globalMessageStrings": {"x": {"text": "all {0}"}}}}),
                "warning: all 1 [R]"),
            "literal braces": (log({"ruleId": "R", "message": {"id": "x", "arguments": ["1"]}},
                                   rules=[{"id": "R", "messageStrings": {"x": {"text": "{{0}} {0} }}{{x"}}}]),
                               "warning: {0} 1 }{x [R]"),
            "braces of a text without arguments": (log({"message": {"text": "${{ x }} {0}"}}),
                                                   "warning: ${{ x }} {0} []"),
            "level of the invocation": (
                log({"ruleId": "R", "message": {"text": "m"}},
                    rules=[{"id": "R", "defaultConfiguration": {"level": "error"}}],
                    invocations=[{"ruleConfigurationOverrides": [
                        {"descriptor": {"index": 0}, "configuration": {"level": "note"}}]}]),
                "advisory: m [R]"),
            "level of another invocation": (
                log({"ruleId": "R", "message": {"text": "m"}, "provenance": {"invocationIndex": 1}},
                    rules=[{"id": "R", "defaultConfiguration": {"level": "error"}}],
                    invocations=[{"ruleConfigurationOverrides": [
                        {"descriptor": {"id": "R"}, "configuration": {"level": "note"}}]}]),
                "error: m [R]"),
            "object without a file": (log({"message": {"text": "m"}, "locations": [
                {"logicalLocations": [{"fullyQualifiedName": "ns::f"}]}]}), "warning: ns::f: m []"),
            "index of an object": (log({"message": {"text": "m"}, "locations": [
                {"logicalLocations": [{"index": 0}]}]}, logicalLocations=[{"name": "f"}]), "warning: f: m []"),
            "links": (log({"message": {"text": "[a](1), [b](2), [c](https://h/c)[d](http://h), [p](https://:8) [e](x) 100%"},
                           "relatedLocations": [{"id": 1}]}), "warning: a, [b](2), cd, [p](https://:8) [e](x) 100% []"),
            "encoded name": (log({"message": {"text": "m"}, "locations": [place]}), "a b.v:3:4: warning: m []"),
            "name that is not UTF-8": (log({"message": {"text": "m"}, "locations": [at("%ff%20.v", startLine=3)]}),
                                       "%ff%20.v:3: warning: m []"),
            "base of names": (log({"message": {"text": "m"}, "locations": [{"physicalLocation": {
                "artifactLocation": {"uri": "x/a.v", "uriBaseId": "ROOT"}}}]},
                                  originalUriBaseIds={"ROOT": {"uri": "file:///r/"}}), "x/a.v: warning: m []"),
            "index of a file": (log({"message": {"text": "m"}, "locations": [{"physicalLocation": {
                "artifactLocation": {"index": 0}}}]}, artifacts=[{"location": {"uri": "file:///f.v"}}]),
                                "/f.v: warning: m []"),
            "rejected suppression": (log({"message": {"text": "m"}, "suppressions": [
                {"kind": "external", "status": "rejected"}]}), "warning: m []"),
            "one of two suppressions is rejected": (log({"message": {"text": "m"}, "suppressions": [
                {"kind": "inSource"}, {"kind": "external", "status": "rejected"}]}), "warning: m []"),
            "percent signs": (log({"message": {"text": "%1 %% %"}}), "warning: %1 %% % []"),
            "absent results": (log({"message": {"text": "m"}, "baselineState": "absent"}), ""),
            "results that do not apply": (log({"message": {"text": "m"}, "kind": "notApplicable"}), ""),
            "other types": (log(3, None, "x", {"message": 1, "locations": "x", "ruleId": []}), "warning: []"),
        }
        for name, (content, line) in cases.items():
            with self.subTest(name):
                path = self.write("log.sarif", content)
                ended = self.rulecheck("text", path)
                lines = ended.stdout.decode("utf-8").replace(":  ", ": ")
                self.assertIn(line, lines)
                self.assertEqual(bool(line), bool(lines))

    def test_has_links_to_further_places_and_pages(self):
        self.write("log.sarif", log({
            "message": {"text": "see [the page](https://h/p)"},
            "locations": [at("a.c", startLine=1, snippet={"text": "int f()\r\n{"}), at("b.c", startLine=2)],
            "relatedLocations": [{**at("c.c", startLine=3), "message": {"text": "cause"}}]}))
        place, _, *links = self.arguments_of(self.imported("log.sarif"))
        self.assertEqual(place["ref"]["value"]["stringVal"], "int f()")
        links = [link["uri"] for link in links if "uri" in link]
        self.assertEqual([(link["linkText"], pathlib.PurePath(link["url"]["path"]).name) for link in links],
                         [("the page", "p"), ("b.c:2", "b.c"), ("cause (c.c:3)", "c.c")])

    def test_tells_the_rules_of_two_tools_apart(self):
        runs = [json.loads(log({"ruleId": rule, "message": {"text": name}}, tool={"driver": {"name": name}}))["runs"][0]
                for name, rule in [("t", "R"), ("u", "R"), ("t", "R"), ("u", "S")]]
        path = self.write("log.sarif", json.dumps({"version": "2.1.0", "runs": runs}))
        lines = self.rulecheck("text", path).stdout.decode("utf-8").splitlines()
        self.assertEqual(lines, [f"warning: {line}" for line in ["t [R]", "u [u/R]", "t [R]", "u [S]"]])

    def test_gives_a_file_one_name(self):
        here = (self.folder / "src").as_uri()
        bases = {"HERE": {"uri": self.folder.as_uri() + "/"}, "SRC": {"uri": "src/", "uriBaseId": "HERE"},
                 "ABS": {"uri": here}, "FAR": {"uri": "file:///far/"}, "LIB": {"uri": "lib/", "uriBaseId": "FAR"},
                 "WEB": {"uri": "https://host:80/x/"}, "LOOP": {"uri": "loop/", "uriBaseId": "LOOP"}}
        cases = {
            "nested base": ("a.c", "SRC", "src/a.c", here + "/a.c"),
            "absolute base": ("a.c", "ABS", "src/a.c", here + "/a.c"),
            "absolute": (here + "/a.c", "FAR", "src/a.c", here + "/a.c"),
            "relative": ("src/a.c", "NONE", "src/a.c", here + "/a.c"),
            "elsewhere": ("a.c", "LIB", "lib/a.c", "file:///far/lib/a.c"),
            "colon": ("a/b:c.c", "LIB", "lib/a/b:c.c", "file:///far/lib/a/b:c.c"),
            "page": ("https://host/x.c", "", "https://host/x.c", "https://host/x.c"),
            "base of pages": ("x.c", "WEB", "https://host:80/x/x.c", "https://host:80/x/x.c"),
            "other host": ("file://host/share/y.c", "", "file://host/share/y.c", "file://host/share/y.c"),
            "other scheme": ("javascript:alert(1)", "", "javascript:alert(1)", None),
        }
        for name, (uri, base, shown, address) in cases.items():
            with self.subTest(name):
                path = self.write("log.sarif", log({"message": {"text": "m"}, "locations": [{"physicalLocation": {
                    "artifactLocation": {"uri": uri, "uriBaseId": base}, "region": {"startLine": 4}}}]},
                                                   originalUriBaseIds=bases))
                place = self.arguments_of(self.imported(path))[0]["ref"]
                self.assertEqual(place["name"], shown + ":4")
                url = place.get("url")
                self.assertEqual(url and address_of(url), address and address + "#L4")
        self.write("log.sarif", log({"message": {"text": "m"}, "locations": [{"physicalLocation": {
            "artifactLocation": {"uri": "a.c", "uriBaseId": "LOOP"}}}]}, originalUriBaseIds=bases))
        self.imported("log.sarif")

    def test_has_a_finding_if_the_tool_failed(self):
        failed = {"executionSuccessful": False}
        error = {"level": "error", "message": {"text": "no"}, "descriptor": {"id": "N"},
                 "locations": [at("x.js", startLine=1)]}
        cases = {
            "error": ({**failed, "toolConfigurationNotifications": [error]}, ["x.js:1: error: no [N]"]),
            "error while it runs": ({**failed, "toolExecutionNotifications": [error]}, ["x.js:1: error: no [N]"]),
            "warning": ({"toolExecutionNotifications": [{"message": {"text": "odd"}}]},
                        ["warning: odd [notification]"]),
            "described": ({"toolExecutionNotifications": [
                {"descriptor": {"index": 0}, "message": {"id": "m", "arguments": ["y"]}}]}, ["error: bad y [D]"]),
            "described by an extension": ({"toolExecutionNotifications": [
                {"descriptor": {"id": "E", "toolComponent": {"index": 0}}, "message": {"text": "m"}}]},
                ["error: m [E]"]),
            "described and changed": (
                {"toolExecutionNotifications": [{"descriptor": {"id": "D"}, "message": {"text": "m"}}],
                 "notificationConfigurationOverrides": [
                     {"descriptor": {"id": "D"}, "configuration": {"level": "warning"}}]}, ["warning: m [D]"]),
            "notes": ({"toolExecutionNotifications": [{"level": level} for level in ["note", "none"]]}, []),
            "exit code": ({**failed, "exitCode": 2}, ["error: tool failed: exit code 2 [notification]"]),
            "signal": ({**failed, "exitCode": 139, "exitSignalName": "SIGSEGV"},
                       ["error: tool failed: signal SIGSEGV [notification]"]),
            "only a warning": ({**failed, "toolExecutionNotifications": [{"message": {"text": "odd"}}]},
                               ["error: tool failed [notification]", "warning: odd [notification]"]),
            "other types": ({"executionSuccessful": 0, "toolExecutionNotifications": None}, []),
        }
        described = {"defaultConfiguration": {"level": "error"}, "messageStrings": {"m": {"text": "bad {0}"}}}
        tool = {"driver": {"name": "tool", "notifications": [{"id": "D", **described}]},
                "extensions": [{"name": "more", "notifications": [{"id": "E", **described}]}]}
        old = self.write("old.sarif", log({"message": {"text": "gone"}}))
        for name, (invocation, lines) in cases.items():
            for run in [{"invocations": [invocation]}, {"conversion": {"invocation": invocation}}]:
                with self.subTest(name, run=run):
                    path = self.write("log.sarif", log({"message": {"text": "m"}}, tool=tool, **run))
                    text = self.rulecheck("text", path).stdout.decode("utf-8").splitlines()
                    self.assertEqual(sorted(text), sorted([*lines, "warning: m []"]))
                    has_failed = invocation.get("executionSuccessful") is False
                    self.assertEqual(b"\nnot checked: " in self.rulecheck("diff", old, path).stdout, has_failed)

    def test_refuses_what_is_not_a_log(self):
        run = '{"version": "2.1.0", "runs": [%s]}'
        deep = "[" * 1000 + "]" * 1000
        cases = {"malformed JSON in line 1": ["", "{", '"\\ud800"', "\x00", "\x1f\x8b", "[" * 1000],
                 "malformed JSON: more than 1000 levels": ["[" * 1000000, f"[{deep}]"],
                 "a log with externalPropertyFileReferences is not supported": [
                     run % '{"externalPropertyFileReferences": {"results": [{}]}}'],
                 "a log with inlineExternalProperties is not supported": [
                     '{"version": "2.1.0", "runs": [], "inlineExternalProperties": [{}]}'],
                 "malformed JSON in line 2": ["{\n]\n"],
                 "malformed JSON: a number is too large": ["1e999"],
                 "not a SARIF 2.1.0 log": [
                     "[]", "{}", deep, r'["\"' + "[" * 1001 + '"]', run % "null, 5", run % '{"results": 5}',
                     '{"version": "2.0.0", "runs": []}', '{"version": "2.1.0", "runs": 1}']}
        for words, contents in cases.items():
            for content in contents:
                path = self.write("bad.sarif", content)
                self.assert_error(f"bad.sarif: {words}\n", "import", path, "-o", "result.pb")

    def test_names_the_formats_that_it_reads(self):
        self.assert_error(".json, or .sarif for input", "text", self.write("result.xml", ""))

    def test_survives_damaged_logs(self):
        randoms = random.Random(1)
        logs = [path.read_bytes() for path in LOGS.iterdir()]
        for _ in range(150):
            content = bytearray(randoms.choice(logs))
            for _ in range(randoms.choice([1, 3, 30])):
                place = randoms.randrange(len(content))
                content[place:place + randoms.choice([0, 1, 9])] = randoms.choice(
                    [b"", b"{", b"}", b"[", b"]", b"null", b"-1", b'"', b"\\", b"1e999", b"\xff", b"%"])
            ended = subprocess.run([RULECHECK, "text", "-", "--format", "sarif"], input=content,
                                   capture_output=True, check=False)
            self.assertIn(ended.returncode, (0, 2), bytes(content))


class Export(RulecheckTest):
    def exported(self, result, *options):
        self.rulecheck("sarif", result, "-o", "out.sarif", *options)
        return read_json(self.folder / "out.sarif")

    def test_gives_the_same_findings_when_it_is_imported(self):
        bare = self.write("bare.txtpb", "session { name: 's' } violations { hashmap { key: 1 value {"
                                        " id: 1 severity: SEV_ERROR rule_key: 'R' } } }")
        for path in [SAMPLE, bare, *LOGS.iterdir()]:
            with self.subTest(path.name):
                self.exported(path)
                self.rulecheck("import", "out.sarif", "-o", "back.pb")
                self.assertEqual(self.findings_of(path), self.findings_of("back.pb"))
                self.assertRegex(self.rulecheck("diff", path, "back.pb").stdout, rb"\A0 new, 0 fixed, ")

    def findings_of(self, result):
        """All that is known of them, but their numbers."""
        content = json.loads(self.rulecheck("json", result).stdout)
        return [sorted(json.dumps({**each, "id": 0}, sort_keys=True)
                       for each in content.get(kind, {}).get("hashmap", {}).values())
                for kind in ["violations", "waivedViolations", "affirmations"]]

    def test_has_fingerprints_suppressions_and_passes(self):
        results = self.exported(SAMPLE)["runs"][0]["results"]
        self.assertEqual(sum("partialFingerprints" in each for each in results), 16)
        self.assertEqual(sum("suppressions" in each for each in results), 2)
        self.assertEqual(sum(each.get("kind") == "pass" for each in results), 4)

    def test_has_states_if_there_is_a_baseline(self):
        self.write("old.sarif", log({"ruleId": "A", "message": {"text": "same"}, "locations": [
            at("a.v", startLine=1)]}, {"ruleId": "A", "message": {"text": "gone"}}))
        self.write("new.sarif", log({"ruleId": "A", "message": {"text": "same"}, "locations": [
            at("a.v", startLine=5)]}, {"ruleId": "B", "message": {"text": "more"}}))
        results = self.exported("new.sarif", "--baseline", "old.sarif")["runs"][0]["results"]
        self.assertEqual([(each["message"]["text"], each["baselineState"]) for each in results],
                         [("more", "new"), ("same", "unchanged"), ("gone", "absent")])

    def test_has_the_address_of_each_file(self):
        for uri, address in [("a%20b.c", "a%20b.c"), ("./a:b.c", "./a:b.c"), ("file:///f/a.c", "file:///f/a.c"),
                             ("https://host:8/a.c?q", "https://host:8/a.c?q"),
                             ("file://host/share/y.c", "file://host/share/y.c")]:
            with self.subTest(uri):
                path = self.write("log.sarif", log({"message": {"text": "m"}, "locations": [at(uri, startLine=4)]}))
                result, = self.exported(path)["runs"][0]["results"]
                self.assertEqual(result["locations"], [at(address, startLine=4)])

    @unittest.skipUnless(os.path.exists(MULTITOOL), "needs npm ci in tests")
    def test_is_valid(self):
        os.chmod(MULTITOOL, 0o755)  # npm runs no script that would do it
        for path in [SAMPLE, *LOGS.iterdir()]:
            with self.subTest(path.name):
                self.exported(path, "--baseline", SAMPLE)
                ended = subprocess.run(
                    [MULTITOOL, "validate", "out.sarif", "--output", "report.sarif", "--log",
                     "ForceOverwrite"],
                    cwd=self.folder, capture_output=True, text=True, check=False,
                    env={**os.environ, "DOTNET_SYSTEM_GLOBALIZATION_INVARIANT": "1"})
                report = json.loads(pathlib.Path(self.folder, "report.sarif").read_text("utf-8-sig"))
                errors = [each for each in report["runs"][0]["results"] if each.get("level") == "error"]
                self.assertEqual(errors, [], ended.stdout)
                ended = self.check_schema("out.sarif")
                self.assertEqual(ended.returncode, 0, ended.stderr)
        self.assertNotEqual(self.check_schema(self.write("bad.sarif", "{}")).returncode, 0)

    def check_schema(self, path):
        """With the standard's schema, which the multitool doesn't apply."""
        schema = pathlib.Path(MULTITOOL).parent / "sarif-2.1.0.json"
        return self.run_program("jsonschema", "-i", path, schema)


if __name__ == "__main__":
    unittest.main()
