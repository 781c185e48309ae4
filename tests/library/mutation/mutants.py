# SPDX-License-Identifier: Apache-2.0

"""Small changes of a C++ source, each of which a good test would notice.

A source is read as tokens, by knowledge of the language and of how clang-format
lays it out, not of what the source is about. Changes that do not compile are
made too: whoever uses them finds out.
"""

import collections
import re
import typing


class Mutant(typing.NamedTuple):
    """The source with the text from start to end replaced."""
    start: int
    end: int
    text: str


class Token(typing.NamedTuple):
    kind: str
    text: str
    start: int
    end: int


_TOKEN = re.compile(r"""
      (?P<skipped> \n | ^[ ]*\#[^\n]* | [ ]+ | //[^\n]* | /\*.*?\*/ )
    | (?P<string>  "(?:\\.|[^"\\])*" )
    | (?P<char>    '(?:\\.|[^'\\])*' )
    | (?P<number>  \d(?:[eEpP][-+]|'?[\w.])* )
    | (?P<word>    [A-Za-z_]\w* )
    | (?P<sign>    <<=|>>=|->|::|\+\+|--|&&|\|\||[-+*/%&|^=!<>]=|<<|>>|. )
    """, re.VERBOSE | re.MULTILINE | re.DOTALL)

_BINARY = {
    "==": ["!="], "!=": ["=="], "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="],
    ">=": [">", "<"], "&&": ["||"], "||": ["&&"], "+": ["-"], "-": ["+"], "*": ["/"],
    "/": ["*"], "%": ["/"], "<<": [">>"], ">>": ["<<"], "&": ["|"], "|": ["&"], "+=": ["-=", "="],
    "-=": ["+=", "="], "*=": ["/="], "/=": ["*="],
}
_OTHER_WORD = {"true": "false", "false": "true", "front": "back", "back": "front",
               "begin": "end", "end": "begin", "min": "max", "max": "min"}
_OPENING = {"(": ")", "[": "]", "{": "}"}
_CLOSING = set(_OPENING.values())
_BEFORE_BLOCK = {")", "else", "do", "const", "noexcept", "override"}
_NO_STATEMENT = {"if", "else", "for", "while", "do", "switch", "case", "default", "template",
                 "namespace", "class", "struct", "enum", "public", "private", "using", "}", ")", ","}


def _in_one_line(text):
    """The text without comments, and without needless spaces."""
    code = "".join(" " if found[0].startswith(("//", "/*")) else found[0]
                   for found in _TOKEN.finditer(text))
    return " ".join(code.split())


class Source:
    def __init__(self, text):
        self.text = text
        self.tokens = [Token(found.lastgroup, found[0], found.start(), found.end())
                       for found in _TOKEN.finditer(text) if found.lastgroup != "skipped"]
        self.partner = self._partners()
        self.functions = list(self._functions())

    def mutants(self):
        """All changes, in the order of the source, each once."""
        makers = [self._binary_operators, self._operands, self._unary_operators, self._literals,
                  self._words, self._conditions, self._choices, self._presence, self._calls,
                  self._accessors, self._enumerators, self._returns, self._statements, self._branches]
        return sorted({mutant for make in makers for mutant in make()
                       if mutant.text != self.text[mutant.start:mutant.end]})

    def mutated(self, mutant):
        return self.text[:mutant.start] + mutant.text + self.text[mutant.end:]

    def described(self, mutant):
        """The function and the lines that the change is in, before and after, as one line."""
        start = self.text.rfind("\n", 0, mutant.start) + 1
        end = (self.text + "\n").find("\n", mutant.end)
        before = self.text[start:end]
        after = self.text[start:mutant.start] + mutant.text + self.text[mutant.end:end]
        name = next((name for begin, close, name in self.functions
                     if begin <= mutant.start < close), "outside")
        return f"{name}: {_in_one_line(before)} => {_in_one_line(after)}"

    def line_of(self, mutant):
        return self.text.count("\n", 0, mutant.start) + 1

    # How the tokens belong together.

    def _word(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def _partners(self):
        partner, open_ones = {}, []
        for index, token in enumerate(self.tokens):
            if token.text in _OPENING:
                open_ones.append(index)
            elif token.text in _CLOSING:
                partner[index] = open_ones.pop()
                partner[partner[index]] = index
        return partner

    def _functions(self):
        """Where each function begins and ends, with its name."""
        head, index = 0, 0
        while index < len(self.tokens):
            word = self._word(index)
            if word == "{":
                words = [token.text for token in self.tokens[head:index]]
                if "(" in words and self._word(index - 1) in _BEFORE_BLOCK:
                    name = self.tokens[head + words.index("(") - 1].text
                    yield self.tokens[head].start, self.tokens[self.partner[index]].end, name
                    index = self.partner[index]
            if word in ("{", "}", ";"):
                head = index + 1
            index += 1

    def _span(self, first, last):
        return self.text[self.tokens[first].start:self.tokens[last].end]

    def _replace(self, first, last, text):
        return Mutant(self.tokens[first].start, self.tokens[last].end, text)

    def _swap(self, first, second):
        """Exchanges two runs of tokens, given as pairs of the first and the last."""
        between = self.text[self.tokens[first[1]].end:self.tokens[second[0]].start]
        return self._replace(first[0], second[1],
                             self._span(*second) + between + self._span(*first))

    def _scan(self, index, step, stops):
        """The next index, in steps of 1 or -1, of one of the stops outside of brackets."""
        while self._word(index) and self._word(index) not in stops:
            brackets = _OPENING if step == 1 else _CLOSING
            index = (self.partner[index] if self._word(index) in brackets else index) + step
        return index

    def _is_binary(self, token):
        return (token.text in _BINARY and self.text[token.start - 1].isspace()
                and self.text[token.end].isspace())

    # What is changed.

    def _binary_operators(self):
        for index, token in enumerate(self.tokens):
            if self._is_binary(token):
                for other in _BINARY[token.text]:
                    yield self._replace(index, index, other)

    def _operands(self):
        """One side of && or || alone."""
        ends = {"&&", "||", ",", ";", "?", ":", "=", "return", *_OPENING, *_CLOSING}
        for index, token in enumerate(self.tokens):
            if token.text in ("&&", "||") and self._is_binary(token):
                left = self._scan(index - 1, -1, ends - _CLOSING) + 1
                right = self._scan(index + 1, 1, ends - set(_OPENING)) - 1
                yield self._replace(left, right, self._span(left, index - 1))
                yield self._replace(left, right, self._span(index + 1, right))

    def _unary_operators(self):
        for index, token in enumerate(self.tokens):
            if token.text == "!" or (token.text == "-" and not self._is_binary(token)):
                yield self._replace(index, index, "")
            elif token.text in ("++", "--"):
                yield self._replace(index, index, {"++": "--", "--": "++"}[token.text])

    def _literals(self):
        for index, token in enumerate(self.tokens):
            for text in self._other_literals(token):
                yield self._replace(index, index, text)

    @staticmethod
    def _other_literals(token):
        if token.kind == "string":
            return ['""', token.text[:-1] + '~"']
        if token.kind == "char":
            return ["'~'"]
        if token.kind != "number":
            return []
        try:
            number = int(re.sub(r"[uUlL']", "", token.text), 0)
        except ValueError:
            return [f"({token.text} * 2)", f"({token.text} / 2)"]
        return [str(number + 1)] + ([str(number - 1)] if number else [])

    def _words(self):
        for index, token in enumerate(self.tokens):
            if token.text in _OTHER_WORD:
                yield self._replace(index, index, _OTHER_WORD[token.text])

    def _conditions(self):
        for index, token in enumerate(self.tokens):
            if token.text in ("if", "while", "for") and self._word(index + 1) == "(":
                first, last = index + 2, self.partner[index + 1] - 1
                if token.text == "for":
                    first = self._scan(first, 1, {";", ")"}) + 1
                    last = self._scan(first, 1, {";", ")"}) - 1
                if first <= last < self.partner[index + 1]:
                    for text in (f"!({self._span(first, last)})", "true", "false"):
                        yield self._replace(first, last, text)

    def _choices(self):
        """The branches of a ? b : c, exchanged or one of them alone."""
        for index, token in enumerate(self.tokens):
            if token.text == "?":
                colon = self._scan(index + 1, 1, {":"})
                last = self._scan(colon + 1, 1, {",", ";", *_CLOSING}) - 1
                yes, no = self._span(index + 1, colon - 1), self._span(colon + 1, last)
                for texts in ((no, yes), (yes, yes), (no, no)):
                    yield self._replace(index + 1, last, " : ".join(texts))

    def _member_calls(self):
        """Calls of a member without arguments: the object's and the name's first token."""
        for index, token in enumerate(self.tokens):
            if (token.kind == "word" and self._word(index - 1) in (".", "->")
                    and self._word(index + 1) == "(" and self._word(index + 2) == ")"):
                first = index - 1
                while self._word(first) in (".", "->", "::"):
                    first -= 1
                    if first in self.partner:
                        first = self.partner[first] - 1
                    first -= 1
                yield first + 1, index

    def _presence(self):
        """A presence test that is always the same, or looks at the content."""
        for first, index in self._member_calls():
            name = self.tokens[index].text
            if name.startswith("has_"):
                content = f"{self._span(first, index - 1)}{name.removeprefix('has_')}()"
                for text in ("true", "false", f"!{content}.empty()", f"({content} != 0)"):
                    yield self._replace(first, index + 2, text)

    def _accessors(self):
        """A member that the same object is asked for elsewhere in the function."""
        groups = collections.defaultdict(list)
        for first, index in self._member_calls():
            name = self.tokens[index].text
            function = next((begin for begin, close, _ in self.functions
                             if begin <= self.tokens[index].start < close), 0)
            groups[function, self._span(first, index - 1), name.startswith("has_")].append(index)
        for indices in groups.values():
            yield from self._rotated(indices)

    def _enumerators(self):
        groups = collections.defaultdict(list)
        for index, token in enumerate(self.tokens):
            found = re.fullmatch(r"((?:[A-Z]\w*?_)?[A-Z][a-z]\w*?_)[A-Z][A-Z_0-9]+", token.text)
            if found:
                groups[found[1]].append(index)
        for indices in groups.values():
            yield from self._rotated(indices)

    def _rotated(self, indices):
        """Each of the names replaced by the one after it, in the order of the alphabet."""
        names = sorted({self.tokens[index].text for index in indices})
        for index in indices if len(names) > 1 else []:
            following = names[(names.index(self.tokens[index].text) + 1) % len(names)]
            yield self._replace(index, index, following)

    def _calls(self):
        """The argument alone of a function of the standard library that has one."""
        for index, token in enumerate(self.tokens):
            if token.text == "std" and self._word(index + 1) == "::" and self._word(index + 3) == "(":
                last = self.partner[index + 3]
                if (last > index + 4 and self._scan(index + 4, 1, {",", ")"}) == last
                        and self._word(index + 2) not in _OTHER_WORD):
                    yield self._replace(index, last, self._span(index + 3, last))

    def _returns(self):
        """A result without content. For a text alone, there is such a change already."""
        for index, token in enumerate(self.tokens):
            if token.text == "return" and self._word(index + 1) not in (";", "{"):
                last = self._scan(index, 1, {";"})
                if last > index + 2 or self.tokens[index + 1].kind != "string":
                    yield self._replace(index, last, "return {};")

    def _simple_statements(self):
        """The first and the last token of each statement that has no block."""
        begins = [index + 1 for index, token in enumerate(self.tokens) if token.text in ("{", "}", ";")]
        begins += [self._scan(index, 1, {":"}) + 1 for index, token in enumerate(self.tokens)
                   if token.text in ("case", "default")]
        for first in sorted(begins):
            if self._word(first) in _NO_STATEMENT:
                continue
            last = first
            while self._word(last) not in ("", ";", "}"):
                if self._word(last) == "{" and self._word(last - 1) in _BEFORE_BLOCK:
                    break
                last = self.partner[last] + 1 if self._word(last) in _OPENING else last + 1
            if self._word(last) == ";" and last > first:
                yield first, last

    def _statements(self):
        """Statements left out, and those that do something exchanged with the next."""
        statements = list(self._simple_statements())
        for first, last in statements:
            yield self._replace(first, last, ";")
        for one, other in zip(statements, statements[1:]):
            if other[0] == one[1] + 1 and self._does_something(one) and self._does_something(other):
                yield self._swap(one, other)

    def _does_something(self, statement):
        """False for a declaration without an initial value."""
        words = {token.text for token in self.tokens[statement[0]:statement[1]]}
        return not words.isdisjoint({"=", "(", "{", "++", "--", "+=", "-=", "*=", "/="})

    def _branches(self):
        """An if with its block, exchanged with the next."""
        for index, token in enumerate(self.tokens):
            last = self._end_of_if(index)
            if token.text == "if" and last:
                following = last + 2 if self._word(last + 1) == "else" else last + 1
                if self._word(following) == "if" and self._end_of_if(following):
                    yield self._swap((index, last), (following, self._end_of_if(following)))

    def _end_of_if(self, index):
        block = self.partner.get(index + 1, -2) + 1
        return self.partner[block] if self._word(block) == "{" else None
