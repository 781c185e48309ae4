# SPDX-License-Identifier: Apache-2.0

"""Writes the fields of contract.txt as macros for fields_test.cpp: fields.py CONTRACT OUTPUT."""

import re
import sys

contract, output = sys.argv[1:]
lines = []
with open(contract, encoding="utf-8") as file:
    for line in file:
        if found := re.match(r"message (\w+) {", line):
            message = found[1]
        elif found := re.match(r"  (?:(\w+) (\S+)|map<.*>) (\w+) = (\d+)", line):
            label, type_name, name, number = found.groups()
            constant = "k" + "".join(word.capitalize() for word in name.split("_")) + "FieldNumber"
            lines.append(f"VOK_FIELD({message}, {name}, {constant}, {number})\n")
            if label == "repeated":
                continue
            if type_name == "string":
                lines.append(f"VOK_STRING({message}, {name})\n")
            elif re.fullmatch(r"\.vok\.rulecheck\.\w+", type_name or ""):
                lines.append(f"VOK_MESSAGE({message}, {name})\n")
with open(output, "w", encoding="utf-8") as file:
    file.writelines(lines)
