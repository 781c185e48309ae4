# SPDX-License-Identifier: Apache-2.0

"""Small changes of a C++ source that clang-format has laid out, each of which a good test
would notice. Some of them do not compile.
"""

import re

_OPERATORS = {
    "==": ["!="], "!=": ["=="], "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
    "&&": ["||"], "||": ["&&"], "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["/"],
    "<<": [">>"], ">>": ["<<"], "&": ["|"], "|": ["&"], "+=": ["-=", "="], "-=": ["+=", "="],
    "*=": ["/="], "/=": ["*="],
}
_WORDS = {"true": "false", "false": "true", "front": "back", "back": "front",
          "begin": "end", "end": "begin", "min": "max", "max": "min"}
_OPERATOR = "|".join(re.escape(sign) for sign in sorted(_OPERATORS, key=len, reverse=True))
_VALUE = r"(?:\([^()]*\)|[^:;,?()])+"
_BLOCK = r"if .*\{\n(?:\1 .*\n)+\1\}"


def _number(found):
    if "e" in found[0]:
        return [f"({found[0]} * 2)", f"({found[0]} / 2)"]
    return [str(int(found[0]) + change) for change in (1, -1) if int(found[0]) + change >= 0]


def _presence(found):
    content = f"{found[1]}{found[2]}()"
    return ["true", "false", f"!{content}.empty()", f"({content} != 0)"]


# What is changed, and the texts to put there.
_RULES = [
    (rf"(?<= )(?:{_OPERATOR})(?=\s)", lambda found: _OPERATORS[found[0]]),
    # One side of && or || alone.
    (r"(?:(?<=return )|(?<=\())([^\s(){};&|][^;{}&|]*?) (?:&&|\|\|)\s+([^;{}&|]+)(?=\)|;| [&|?])", lambda found: [found[1], found[2]]),
    (r"!(?=[\w(])|(?<=[ (])-(?=\w)", lambda found: [""]),
    (r"\+\+|--", lambda found: ["--" if found[0] == "++" else "++"]),
    (r'(?<!include )"(?:\\.|[^"\\])*"', lambda found: ['""', found[0][:-1] + '~"']),
    (r"'(?:\\.|[^'\\])+'", lambda found: ["'~'"]),
    (r"(?<![\w.])\d+(?:e\d+)?\b", _number),
    (rf"\b(?:{'|'.join(_WORDS)})\b", lambda found: [_WORDS[found[0]]]),
    (r"(?<=(?:  |e )if \()(?:.|\n)*?(?=\) \{)|(?<=while \().*?(?=\) \{)|(?<=; )[^;\n]+(?=; )",
     lambda found: [f"!({found[0]})", "true", "false"]),
    (rf"([^\s(][^?\n]*?) \? ({_VALUE}) : ({_VALUE})",
     lambda found: [f"{found[1]} ? {yes} : {no}" for yes, no in
                    ((found[3], found[2]), (found[2], found[2]), (found[3], found[3]))]),
    (r"\b(\w+(?:\.\w+\(\))*\.)has_(\w+)\(\)", _presence),
    # A function of the standard library that has one argument: the argument alone.
    (r"std::\w+(\([^(),]+\))", lambda found: [found[1]]),
    (r"return [^;]*;", lambda found: [";", "return {};"]),
    (r"(?<=\n)(?: +)(?!return|case)[^\s#{}][^;{}]*;(?=\n)|(?<=: )[^;{}\n]+;", lambda found: [";"]),
    (r"(?<=: )(\w[^;\n]*;) break;", lambda found: [found[1]]),
    # Two statements, or two blocks, exchanged.
    (r"(?=^( +)((?!case)\S.*;)\n\1(\S.*;)$)", lambda found: [f"{found[1]}{found[3]}\n{found[1]}{found[2]}"]),
    (rf"(?=^( +)({_BLOCK})\n\1({_BLOCK})$)", lambda found: [f"{found[1]}{found[3]}\n{found[1]}{found[2]}"]),
    (rf"(?<=\n)( +)({_BLOCK}) else ({_BLOCK})", lambda found: [f"{found[1]}{found[3]} else {found[2]}"]),
]
# Names of which each is replaced by the next: values of an enumeration, members of an object.
_GROUPS = [r"\b([A-Z]\w*?_[A-Z][a-z]\w*?_)[A-Z][A-Z_0-9]+\b", r"\b(\w+\.has_)\w+(?=\(\))", r"\b(\w+\.)(?!has_)\w+(?=\(\))"]


class Mutant:
    """The source with the text from start to end replaced."""

    def __init__(self, source, start, end, text):
        self.text = source[:start] + text + source[end:]
        self.line = source.count("\n", 0, start) + 1
        first = source.rfind("\n", 0, start) + 1
        last = source.find("\n", end)
        after = source[first:start] + text + source[end:last]
        heads = re.findall(r"^(?:  )?(?!if|for|while|switch)\w[^;=\n]*?\b(\w+)\(.*\{$", source[:last], re.MULTILINE)
        self.description = " ".join(
            f"{heads[-1] if heads else 'outside'}: {source[first:last]} => {after}".split())


def mutants(source):
    """All changes of a source without comments, in its order, each once."""
    changes = set()
    for pattern, texts in _RULES:
        for found in re.finditer(pattern, source, re.MULTILINE):
            end = found.end() if found[0] else found.start() + len(f"{found[1]}{found[2]}\n{found[1]}{found[3]}")
            changes |= {(found.start(), end, text) for text in texts(found)}
    for pattern in _GROUPS:
        names = sorted({(found[1], found[0]) for found in re.finditer(pattern, source)})
        for found in re.finditer(pattern, source):
            group = [name for prefix, name in names if prefix == found[1]]
            changes.add((*found.span(), group[(group.index(found[0]) + 1) % len(group)]))
    return [Mutant(source, *change) for change in sorted(changes) if change[2] != source[change[0]:change[1]]]
