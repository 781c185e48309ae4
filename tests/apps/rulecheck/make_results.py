# SPDX-License-Identifier: Apache-2.0

"""Writes results that would be long to write by hand.

    make_results.py hostile FOLDER         a result per hostile text and kind of resource
    make_results.py many COUNT RULES FILE  a result with that many violations, of that many rules
"""

import pathlib
import re
import sys
import typing

SCHEMA = pathlib.Path(__file__).parents[3] / "swig/shared/common/services/rulecheck/protocol/RuleService.proto"

TEXTS = {
    "harmless": b"text",
    "script": b"<script>alert(1)</script>",
    "end_of_double_quotes": b'"><img src=x onerror=alert(1)>',
    "end_of_single_quotes": b"'><svg onload=alert(1)>",
    "attribute": b'x" onmouseover="alert(1)',
    "javascript_address": b"javascript:alert(1)",
    "javascript_address_in_disguise": b"\x01 JaVa\nScript\t:alert(1)//",
    "data_address": b"data:text/html,<script>alert(1)</script>",
    "end_of_style": b"</style></title></textarea><script>alert(1)</script>",
    "end_of_script": b"</script><script>alert(1)</script>",
    "end_of_comment": b"--><script>alert(1)</script><!--",
    "end_of_list": b"</li></ul></details></main><base href=//x><meta http-equiv=refresh content=0>",
    "template_tags": b"{{style}}{{{script}}}{{#kinds}}{{/sections}}{{=<% %>=}}",
    "places": b"%1 %2 %99 %% %",
    "character_references": b"&lt;script&gt;&#60;b&#x3e;&quot;&amp",
    "not_utf8": b"\xC0\xBCscript\xC0\xBE \xED\xA0\x80 \xF8\xFF <b>\xE2\x82",
    "zero_byte": b"a\0<b\0>\0",
    "line_ends": b"a\r\nb\x0b\x0c\x85<b>\r",
    "blank": b" \t\n",
}
# Those that could break out of an address are in resources of every scheme.
IN_ADDRESSES = re.compile("harmless|address|quotes|attribute")

# What a required field has that a result is not about.
DEFAULTS = {"string": '"-"', "int32": "1", "uint32": "1", "RefType": "AXI", "Severity": "SEV_ERROR"}


class Field(typing.NamedTuple):
    label: str
    type: str
    name: str


def fields_in(schema):
    """The fields of each message. Entries of maps are messages of their own."""
    fields = {}
    for kind, body in re.findall(r"^message (\w+) \{(.*?)^\}", schema, re.M | re.S):
        fields[kind] = []
        for label, key, type_, name in re.findall(
                r"(required|optional|repeated|map<(\w+),) ([\w.]+)>? (\w+) =", body):
            if key:
                entry = f"{kind}.{name}"
                fields[entry] = [Field("required", key, "key"), Field("required", type_, "value")]
                label, type_ = "repeated", entry
            fields[kind].append(Field(label, type_, name))
    return fields


def strings_of(kind):
    """The fields that lead from a message to each string in it."""
    for field in FIELDS[kind]:
        if field.type == "string":
            yield [field]
        for path in strings_of(field.type) if field.type in FIELDS else []:
            yield [field, *path]


def quoted(text):
    return '"' + "".join(f"\\{byte:03o}" for byte in text) + '"'


def message(kind, paths, text, rest, number=1):
    """A message with the text where the paths lead, and with what it requires. Each path through
    a list has an element of its own. What a resource lacks is taken from rest."""
    if kind == "Resource":
        own = {path[0].name: text for path in paths}
        return " ".join(f"{name}: {value}" for name, value in {**rest, **own}.items())
    content = ""
    for field in FIELDS[kind]:
        inner = [path[1:] for path in paths if path[0] == field]
        groups = [[path] for path in inner] if field.label == "repeated" else [inner]
        for index, group in enumerate(groups, 1):
            if group or field.label == "required":
                content += f" {field.name}: {value_of(field, group, text, rest, index, number)}"
    return content


def value_of(field, paths, text, rest, index, number):
    if field.type in FIELDS:
        return f"{{ {message(field.type, paths, text, rest, index)} }}\n"
    if paths:
        return text
    if field.name == "key":
        return f'"rule-{number}"' if field.type == "string" else number
    return DEFAULTS[field.type]


def findings_of_rules(kind, text):
    """A finding for each rule, by which the page comes to show it."""
    count = len(list(strings_of("RuleSpecMap")))
    keys = [text, *(f'"rule-{number}"' for number in range(2, count + 1))]
    required = message(kind, [], text, {})
    return "".join(f"hashmap {{ key: {number} value {{ {required} rule_key: {key} }} }}\n"
                   for number, key in enumerate(keys, 1000000))


def result_with_everywhere(text, rest):
    """Each string field has the text, in a finding, or a rule with a finding, of its own."""
    extra = {"violations": "Violation", "affirmations": "Affirmation"}
    content = ""
    for field in FIELDS["SessionResult"]:
        if field.type in FIELDS:
            content += f"{field.name} {{ {message(field.type, list(strings_of(field.type)), text, rest)} "
            content += findings_of_rules(extra[field.name], text) if field.name in extra else ""
            content += "}\n"
    return content


def hostile(folder):
    """Writes files whose names have the text's and that of what the resources are like."""
    for name, plain in TEXTS.items():
        text = quoted(plain)
        kinds = {scheme: {"scheme": scheme, "host": text, "data": text} for scheme in SCHEMES}
        kinds["MAILTO_path"] = {"scheme": "MAILTO", "path": text}
        if not IN_ADDRESSES.search(name):
            kinds = {"HTTP": kinds["HTTP"]}
        kinds["DATA_html"] = {"scheme": "DATA", "media_type": '"text/html"', "data": text}
        for kind, rest in kinds.items():
            path = pathlib.Path(folder, f"{name}-{kind}.txtpb")
            path.write_text(result_with_everywhere(text, rest), encoding="ascii")


def violation(number, rules):
    """One in one of 600 files, in 24 folders."""
    path = f"rtl/block_{number % 24}/part_{number % 600}.v"
    line = number // 600 + 1
    severity = ["FATAL", "ERROR", "CRITICAL_WARNING", "WARNING", "ADVISORY", "UNKNOWN"][number % 6]
    return f"""hashmap {{ key: {number} value {{
id: {number} severity: SEV_{severity} rule_key: "RULE-{number % rules}"
details {{ text: "%1: Register %2 is written in two always blocks." args {{
  arg {{ ref {{ type: FILE name: "{path}:{line}:7"
    url {{ scheme: FILE path: "/srv/design/{path}" fragment: "L{line}C7" }} }} }}
  arg {{ string_val: "top.u_core.r_{number}" }} }} }}
resolution {{ text: "Merge the blocks, or name the registers apart." }}
actual_value {{ int_val: 2 }} threshold_value {{ int_val: 1 }} }} }}
"""


def many(count, rules, path):
    with open(path, "w", encoding="ascii") as result:
        result.write('session { name: "Many findings" } violations {\n')
        result.writelines(violation(number, rules) for number in range(1, count + 1))
        result.write("}\n")


schema = re.sub("//.*", "", SCHEMA.read_text(encoding="utf-8"))
FIELDS = fields_in(schema)
SCHEMES = re.findall(r"(\w+) =", re.search(r"enum Scheme \{(.*?)\}", schema, re.S)[1])

if __name__ == "__main__":
    if sys.argv[1] == "hostile":
        hostile(sys.argv[2])
    else:
        many(int(sys.argv[2]), int(sys.argv[3]), sys.argv[4])
