# SPDX-License-Identifier: Apache-2.0

"""What `rulecheck lint` makes of Verilator's lines, and which places it names and reads."""

import unittest

from lint_test import LintTest

OUTPUTS = {
    "nothing": ("", ""),
    "a warning": ("%Warning-WIDTH: a.v:1:2: text\n", "warning WIDTH: [a.v:1:2] text\n"),
    "an error": ("%Error: a.v:1:2: text\n", "error ERROR: [a.v:1:2] text\n"),
    "an error with a name": ("%Error-PINNOTFOUND: a.v:1:2: text\n", "error PINNOTFOUND: [a.v:1:2] text\n"),
    "a last line without an end": ("%Error: a.v:1:2: text", "error ERROR: [a.v:1:2] text\n"),
    "a message without a place": ("%Error: No top level module found\n", "error ERROR: No top level module found\n"),
    "a path with blanks and colons": ("%Warning-X: /my designs/b:2/a b.v:10:20: text: 1:2: x\n",
                                      "warning X: [/my designs/b:2/a b.v:10:20] text: 1:2: x\n"),
    "numbers that are no place": ("%Warning-X: ratio 1:2: too narrow\n", "warning X: ratio 1:2: too narrow\n"),
    "a text that begins like a place": ("%Warning-X: :1:2: text\n", "warning X: :1:2: text\n"),
    "numbers that are too long": ("%Warning-X: a.v:1234567890:1: text\n", "warning X: a.v:1234567890:1: text\n"),
    "a place without a text": ("%Warning-X: a.v:1:2: \n", "warning X: [a.v:1:2] \n"),
    "totals": ("%Error: Exiting due to 3 warning(s)\n%Error: Exiting due to 1 error(s), 2 warning(s)\n"
               "        ... See the manual at https://verilator.org/verilator_doc.html\n"
               "%Error: Command Failed /usr/bin/verilator_bin --lint-only\n", ""),
    "an excerpt of the source": (
        "%Warning-X: a.v:12:3: text\n   12 |   assign a = b | c;\n      |   ^~~~~~\n 1234 |\n",
        "warning X: [a.v:12:3] text\n"),
    "an excerpt of a long source": (
        "%Warning-X: a.v:12345:3: text\n12345 |   assign a = b;\n      |          ^\n123456 | wire a;\n",
        "warning X: [a.v:12345:3] text\n"),
    "a text with a bar": ("%Warning-X: a.v:12:2: one\n12 | two\n", "warning X: [a.v:12:2] one\n12 | two\n"),
    "an instance": ("%Warning-X: a.v:1:2: text\n     : ... In instance top.u_a[3].u_b\n",
                    "warning X: [a.v:1:2] text\n  names top.u_a[3].u_b\n"),
    "an instance in quotes": ("%Warning-X: a.v:1:2: text\n     : ... note: In instance 'top.u_a[3].u_b'\n",
                              "warning X: [a.v:1:2] text\n  names top.u_a[3].u_b\n"),
    "another place": ("%Warning-X: a.v:1:2: text\n     b c.v:3:4: ... Location of other driver\n",
                      "warning X: [a.v:1:2] text\n  note: Location of other driver (b c.v:3:4) #L3C4\n"),
    "a path through the design": ("%Warning-UNOPTFLAT: a.v:1:2: text\n     a.v:3:4:      Example path: top.x\n",
                                  "warning UNOPTFLAT: [a.v:1:2] text\n  note: Example path: top.x (a.v:3:4) #L3C4\n"),
    "advice": ("%Warning-X: a.v:1:2: text\n     : ... Suggest add newline.\n     ... Or do not\n",
               "warning X: [a.v:1:2] text\n  note: Suggest add newline.\n  note: Or do not\n"),
    "pointers to the manual": (
        "%Warning-X: a.v:1:2: text\n"
        "     ... For warning description see https://verilator.org/warn/X?v=5.006\n"
        '     ... Use "/* verilator lint_off X */" and lint_on around source to disable\n'
        "     ... With current working directory '/d'\n"
        "     *** See https://verilator.org/warn/X before disabling this,\n"
        "     else you may end up with different sim results.\n",
        "warning X: [a.v:1:2] text\n"),
    "a text of several lines": ("%Warning-USERWARN: a.v:1:2: one\n   : ... In instance a\ntwo\n\n",
                                "warning USERWARN: [a.v:1:2] one\ntwo\n\n  names a\n"),
    "advice in the form of an error": (
        "%Error: a.v:1:2: Cannot find file containing module: 'm'\n"
        "%Error: a.v:1:2: This may be because there's no search path specified with -I<dir>.\n"
        "        ... Looked in:\n             m.v\n",
        "error ERROR: [a.v:1:2] Cannot find file containing module: 'm'\n  names m\n"
        "  note: This may be because there's no search path specified with -I<dir>.\n"),
    "information": ("-Info: a.v:1:2: hello\n   : ... In instance a\nmore\n%Error: a.v:3:4: text\n",
                    "error ERROR: [a.v:3:4] text\n"),
    "lines before the first message": ("perl: warning: Setting locale failed.\n  : ... In instance a\n", ""),
    "lines behind the totals": ("%Error: Exiting due to 1 error(s)\nnoise\n  noise\n", ""),
    "an error in Verilator itself": ("%Error: Internal Error: a.v:1:31: ../V3Dfg.cpp:761: Oops\n",
                                     "error ERROR: Internal Error: a.v:1:31: ../V3Dfg.cpp:761: Oops\n"),
    "lines that look like messages": ("%Note: a.v:1:2: x\n%Warnings-X: a.v:1:2: x\n%Error-X\n", ""),
}


def notes_of(argument):
    """A line for each object and note."""
    if "ref" in argument:
        return f"  names {argument['ref']['name']}\n"
    if "stringVal" in argument:
        return f"  note: {argument['stringVal']}\n"
    links = [argument["uri"]] if "uri" in argument else argument["uris"]["uri"]
    return "".join(f"  note: {link['linkText']} #{link['url']['fragment']}\n" for link in links)


def text_of(violation):
    place, text, *others = violation["details"]["args"]["arg"]
    level = "error" if violation["severity"] == "SEV_ERROR" else "warning"
    name = f"[{place['ref']['name']}] " if "ref" in place else ""
    return f"{level} {violation['ruleKey']}: {name}{text['stringVal']}\n" + "".join(map(notes_of, others))


class Messages(LintTest):
    def violations(self, output):
        _, result = self.lint(output)
        violations = result.get("violations", {}).get("hashmap", {})
        return [violations[str(number)] for number in range(1, len(violations) + 1)]

    def test_are_taken_apart(self):
        for name, (output, messages) in OUTPUTS.items():
            with self.subTest(name):
                self.assertEqual("".join(map(text_of, self.violations(output))), messages)

    def of_texts(self, texts):
        found = self.violations("".join(f"%Warning-X: a.v:1:2: {text}\n" for text in texts))
        return zip(found, texts.items(), strict=True)

    def test_hold_the_compared_values(self):
        four, eight = ({"intVal": str(bits), "units": "bits"} for bits in (4, 8))
        cases = {
            "Operator ASSIGNDLY expects 4 bits on the Assign RHS, but Assign RHS's VARREF 'data' generates 8 bits.":
                (four, eight),
            "Logical operator IF expects 1 bit on the If, but If's VARREF 'a' generates 8 bits.":
                ({**four, "intVal": "1"}, eight),
            "Operator EQ expects 32 or 26 bits on the LHS, but LHS's VARREF 'count' generates 8 bits.":
                ({"stringVal": "32 or 26", "units": "bits"}, eight),
            "Bit extraction of array[15:0] requires 4 bit index, not 8 bits.": (four, eight),
            "Selection index out of range: 9:9 outside 7:0": ({"stringVal": "7:0"}, {"stringVal": "9:9"}),
            "Signal is not used: 'expects'": (None, None),
            "It expects 4 bits": (None, None),
            "It generates 4 bits and expects nothing": (None, None),
        }
        for found, (text, values) in self.of_texts(cases):
            self.assertEqual((found.get("thresholdValue"), found.get("actualValue")), values, text)

    def test_name_objects(self):
        cases = {
            "Cell has missing pin: 'dd'": "PORT dd",
            "Cell pin connected by name with empty reference: 'c'": "PORT c",
            "Signal is not driven: 'a_1'": "VARIABLE a_1",
            "Signal has multiple driving blocks with different clocking: 'uart.fast'": "VARIABLE uart.fast",
            "Bits of signal are not used: 'k'[31:4]": "VARIABLE k",
            "Parameter is not used: 'P'": "OTHER P",
            "Genvar is not used: 'i'": "VARIABLE i",
            "Can't find definition of variable: 'a'": "VARIABLE a",
            "Can't find definition of task/function: 'f'": "FUNCTION f",
            "Duplicate declaration of module: 'm'": "HIERARCHY m",
            "Input port connection 'b' expects 2 bits on the pin connection, but pin connection's VARREF 'x' "
            "generates 1 bits.": "PORT b, VARIABLE x",
            "'r' has split_var metacomment": "OTHER r",
            "port 'a' and port 'a'": "PORT a",
            "Blocking assignment '=' in sequential logic process": "",
            "Suggest casez (with ?'s) in place of casex (with X's)": "",
            "Assign RHS's CONST '5'h1f' generates 5 bits.": "",
            "Define or directive not defined: '`NOPE'": "",
            "Redefining existing define: 'DUP', with different value: '2'": "OTHER DUP",
            "an 'open quote": "",
            "''": "",
            "": "",
        }
        for found, (text, expected) in self.of_texts(cases):
            objects = []
            for argument in found["details"]["args"]["arg"][2:]:
                objects += [argument["ref"]] if "ref" in argument else argument["refs"]["ref"]
            self.assertEqual(", ".join(f"{each['type']} {each['name']}" for each in objects), expected, text)


class Places(LintTest):
    def test_are_addresses_and_names_relative_to_the_working_directory(self):
        below, above = (str(folder).replace(" ", "%20") for folder in [self.folder, self.folder.parent])
        cases = {
            "a.v:12:3": ("a.v:12:3", f"{below}/a.v", "L12C3"),
            "./x/../a.v:12:0": ("a.v:12", f"{below}/a.v", "L12"),
            "../a.v:0:0": (f"{self.folder.parent}/a.v", f"{above}/a.v", ""),
            f"{self.folder}/rtl/a.v:1:2": ("rtl/a.v:1:2", f"{below}/rtl/a.v", "L1C2"),
            "a b?c#d%\"<>&':1:1": ("a b?c#d%\"<>&':1:1", f"{below}/a%20b%3Fc%23d%25%22%3C%3E%26%27", "L1C1"),
            "\xe4\x01\x7f:1:0": ("\xe4\x01\x7f:1", f"{below}/%C3%A4%01%7F", "L1"),
            "a:b;c:7:1": ("a:b;c:7:1", f"{below}/a:b%3Bc", "L7C1"),
        }
        _, result = self.lint("".join(f"%Warning-X: {place}: text\n" for place in cases))
        for number, (place, expected) in enumerate(cases.items(), 1):
            found = result["violations"]["hashmap"][str(number)]["details"]["args"]["arg"][0]["ref"]
            self.assertEqual((found["name"], found["url"]["path"], found["url"].get("fragment", "")), expected, place)

    def test_are_read_from_the_first_reference_to_a_file_with_an_address(self):
        cases = {
            "name: 'a.v:12:3' url { scheme: FILE path: '/d/a.v' fragment: 'L12C3' }": "a.v:12:3",
            "name: 'a.v' url { scheme: FILE path: '/d/a.v' fragment: 'L12C3' }": "a.v:12:3",
            "name: 'a.v:12' url { scheme: FILE path: '/d/a.v' }": "a.v:12",
            "name: 'a.v' url { scheme: FILE path: '/d/a.v' fragment: 'L12-L14' }": "a.v:12",
            "url { scheme: FILE path: '/d/a.v' fragment: '7:2' }": "/d/a.v:7:2",
            "name: 'a.v' url { scheme: FILE path: '/d/a.v' fragment: 'anchor' }": "a.v",
            "name: 'a:b.v:12345678901' url { scheme: FILE }": "a:b.v:12345678901",
            "name: 'a:1:2:3' url { scheme: FILE }": "a:1:2:3",
            "name: 'a.v:0:0' url { scheme: FILE }": "a.v",
            "name: ':7' url { scheme: FILE path: '/d/a.v' }": "/d/a.v:7",
            "name: 'a.v:x' url { scheme: FILE fragment: 'L7x' }": "a.v:x",
            "name: 'a.v:3:4' url { scheme: FILE fragment: 'L7' }": "a.v:7",
            "name: 'named'": "",
            "name: 'named' } } arg { ref { type: PORT name: 'p' url { scheme: FILE path: '/p' }": "",
            "name: 'named' } } arg { ref { type: FILE name: 'a:1' url { scheme: FILE } } } "
            "arg { ref { type: FILE name: 'b:2' url { scheme: FILE }": "a:1",
        }
        for reference, place in cases.items():
            with self.subTest(reference):
                path = self.write("result.txtpb", "session { name: '' } violations { hashmap { key: 1 value { id: 1 "
                                  "severity: SEV_ERROR rule_key: 'R' details { text: 't' args { "
                                  f"arg {{ ref {{ type: FILE {reference} }} }} }} }} }} }} }}")
                self.assertEqual(self.rulecheck("text", path).stdout.decode("utf-8"),
                                 f"{place}{place and ': '}error: t [R]\n")


if __name__ == "__main__":
    unittest.main()
