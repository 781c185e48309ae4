"""The changes that tools/mutate makes of a source."""

import unittest

import mutants

# A statement, and what becomes of the lines that are changed.
CASES = {
    "x = a == b;": [";", "x = a != b;"],
    "x = a < 10;": [";", "x = a <= 10;", "x = a >= 10;", "x = a < 11;", "x = a < 9;"],
    "x = a && b;": [";", "x = a;", "x = b;", "x = a || b;"],
    "x = !a;": [";", "x = a;"],
    "x = -a - b;": [";", "x = a - b;", "x = -a + b;"],
    "++x;": [";", "--x;"],
    "x += 0;": [";", "x -= 0;", "x = 0;", "x += 1;"],
    "f(true);": [";", "f(false);"],
    "f(\"a\\\"\", 'b');": [";", "f(\"\", 'b');", "f(\"a\\\"~\", 'b');", "f(\"a\\\"\", '~');"],
    "f(1e13);": [";", "f((1e13 * 2));", "f((1e13 / 2));"],
    "x = a ? b : f(c);": [";", "x = a ? f(c) : b;", "x = a ? b : b;", "x = a ? f(c) : f(c);"],
    "f(std::fabs(x));": [";", "f((x));"],
    "f(o.has_a());": [";", "f(true);", "f(false);", "f(!o.a().empty());", "f((o.a() != 0));"],
    "f(o.a(), o.b());": [";", "f(o.b(), o.b());", "f(o.a(), o.a());"],
    "f(Kind_ONE, Kind_TWO);": [";", "f(Kind_TWO, Kind_TWO);", "f(Kind_ONE, Kind_ONE);"],
    "return x;": [";", "return {};"],
    "return \"x\";": [";", "return \"\";", "return \"x~\";"],
    "return;": [";"],
    "int x;": [";"],
    "vector<int> x(const T& t);": [";"],
    "f();\n  g();": [";", "g(); f();", ";"],
    "f([&] { g(); });": [";", "f([&] { ; });"],
    "if (a) {\n    f();\n  }": ["if (!(a)) {", "if (true) {", "if (false) {", ";"],
    "for (; a; ++b) {\n    f();\n  }": [
        "for (; !(a); ++b) {", "for (; true; ++b) {", "for (; false; ++b) {", "for (; ; ++b) {",
        "for (; a; --b) {", ";"],
    "switch (x) {\n    case A: f();\n    default: g();\n  }": [
        "case A: ;", "default: ;"],
    "if (a) {\n  } else if (b) {\n  }": [
        "if (!(a)) {", "if (true) {", "if (false) {", "} else if (!(b)) {", "} else if (true) {",
        "} else if (false) {", "if (b) { } else if (a) { }"],
    "// x = a == b;\n": [],
    "#include \"a\"\n": [],
}


class Mutants(unittest.TestCase):
    def test_follow_the_table(self):
        for statement, expected in CASES.items():
            with self.subTest(statement):
                source = mutants.Source(f"void f() {{\n  {statement}\n}}\n")
                changed = [source.described(mutant).split(" => ")[1] for mutant in source.mutants()]
                self.assertCountEqual(changed, expected)

    def test_are_described_by_function_and_line(self):
        source = mutants.Source(
            "namespace n {\n\nvoid first() {}\n\nvoid second(int i) {\n  f( );  // Why\n}\n}\n")
        mutant, = source.mutants()
        self.assertEqual(source.described(mutant), "second: f( ); => ;")
        self.assertEqual(source.line_of(mutant), 6)
        self.assertIn("{\n  ;  // Why\n}", source.mutated(mutant))


if __name__ == "__main__":
    unittest.main()
