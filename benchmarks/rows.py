# SPDX-License-Identifier: Apache-2.0

"""What the report says: the targets, and the tables with all figures.

A figure has a name. "rendering: toHtml(Link)/one copy" is the time that the program `rendering`
takes for one item (a call, a finding, a violation, a request) of that benchmark. report.py names
the others.
"""

import dataclasses


@dataclasses.dataclass(frozen=True)
class Target:
    """A figure, or its ratio to another one, and a limit."""
    what: str
    figure: str
    base: str = None
    at_least: float = None
    at_most: float = None


@dataclasses.dataclass(frozen=True)
class Table:
    """A row has a label and names of figures. The others are compared with the first one."""
    title: str
    columns: tuple
    rows: tuple


def figures(pattern, values, only=None):
    """The names of figures that a pattern makes of values; None for those that do not exist."""
    return tuple(pattern.format(value) if only is None or value in only else None for value in values)


# Rendering

RENDERERS = ("Converter", "one copy", "concatenation", "{fmt}", "string streams")
ANCHORS = ("toHtml(Arg) of a reference", "toHtml(Arg) of a link", "toHtml(Link)", "toHtml(Reference)",
           "toHtml(Arg) of four references", "toHtml(Resource)")
CALLS = (*ANCHORS, "href of a file", "href of a page", "toString(Scalar) of an integer",
         "toString(Scalar) of a double", "findings, hot")
DOUBLES = ("0.5", "1.234567", "350.25", "1e20", "1e300", "5e-324")


def rendering(name, by="Converter"):
    return f"rendering: {name}/{by}"


# Parsing and serializing

RESULT = ("heap", "reused", "arena", "arena with a first block", "RapidJSON", "protozero")
REQUESTS = ("fresh", *RESULT[1:])
SERIALIZED = ("heap", "fresh", "RapidJSON")
SIZES = (100, 1000, 10000, 100000)
OPERATIONS = ("parse/heap", "parse/arena", "serialize/heap")
ALLOCATORS = ("messages", "jemalloc", "mimalloc", "tcmalloc")
PARSING = ("result, parse/heap", "result, parse/arena", "requests, parse/fresh",
           "requests, parse/arena", "requests, parse/reused")
CHECKED = (*PARSING, "result, serialize/heap", "requests, serialize/reused")


def result_of(violations, operation):
    size = "" if violations == 10000 else f" of {violations}"
    return f"carrying: result{size}, {operation}"


LIBRARIES = ("ours", "plain")

# Python: how messages were made, what is imported first, and the runtime's implementation.

PYTHON_MESSAGES = (
    ("messages of the package", "vok_rulecheck", "cpp"),
    ("messages imported before the package", "RuleService_pb2", "cpp"),
    ("pure Python", "vok_rulecheck", "python"))
PYTHON_OPERATIONS = ("serialize", "to_html", "to_html_many")


def python(messages, operation):
    return f"python: {messages}/{operation}"


DESIGNS = {"the demo": "demo", "20,000 registers with 40,000 findings": "registers"}
COMMANDS = ("merge", "diff", "gate")

TARGETS = (
    *(target for name in ANCHORS for target in (
        Target(f"{name}: times as fast as concatenation", rendering(name, "concatenation"),
               rendering(name), at_least=4),
        Target(f"{name}: times as fast as string streams", rendering(name, "string streams"),
               rendering(name), at_least=15),
        Target(f"{name}: time, relative to one copy of the text", rendering(name),
               rendering(name, "one copy"), at_most=3.5))),
    Target("cold findings: times as fast as concatenation", rendering("findings, cold", "concatenation"),
           rendering("findings, cold"), at_least=2),
    *(Target(f"double {number}: times as fast as `snprintf`", rendering(f"double {number}", "snprintf"),
             rendering(f"double {number}"), at_least=4) for number in DOUBLES),
    Target("result: time to parse on an arena, relative to the heap", "carrying: result, parse/arena",
           "carrying: result, parse/heap", at_most=0.45),
    Target("result: allocations of `SerializeToString`", "allocations: carrying: result, serialize/heap",
           at_most=1),
    Target("requests: allocations of parsing one into a reused message",
           "allocations each: carrying: requests, parse/reused", at_most=0),
    Target("requests: time to parse into a reused message, relative to fresh ones",
           "carrying: requests, parse/reused", "carrying: requests, parse/fresh", at_most=0.42),
    Target("requests: time to parse into a reused message, relative to a scan with protozero",
           "carrying: requests, parse/reused", "carrying: requests, parse/protozero", at_most=2),
    Target("requests: time to serialize, relative to a build with the generated code's checks",
           "messages: requests, serialize/reused", "checked: requests, serialize/reused", at_most=0.75),
    # A larger result may cost more for each violation, as caches end. Ten times as much would be
    # quadratic.
    *(Target(f"{operation}: time for each of {10 * size:,} violations, relative to {size:,}",
             result_of(10 * size, operation), result_of(size, operation), at_most=4)
      for operation in OPERATIONS for size in SIZES[:-1]),
    *(Target(f"Python, {messages}: time of `{operation}`, relative to `SerializeToString`",
             python(messages, operation), python(messages, "serialize"), at_most=limit)
      for messages, *_ in PYTHON_MESSAGES for operation, limit in (("to_html", 3), ("to_html_many", 1.5))),
    Target("loading: time of `dlopen`, relative to plain Release flags", "loading: time/ours",
           "loading: time/plain", at_most=0.5),
    Target("loading: stripped size, relative to plain Release flags", "loading: size/ours",
           "loading: size/plain", at_most=0.72),
    Target("loading: relocations that look up a symbol", "loading: relocations/ours", at_most=1000),
    *(Target(f"`rulecheck lint` of {name}: time less 0.1 s, relative to Verilator",
             f"rulecheck: {design}/lint less 0.1 s", f"rulecheck: {design}/Verilator", at_most=1.05)
      for name, design in DESIGNS.items()),
    *(Target(f"`rulecheck {command}` of 1,000,000 violations: seconds", f"alloc: rulecheck: {command}/seconds",
             at_most=10) for command in COMMANDS),
    *(Target(f"`rulecheck {command}` of 1,000,000 violations: memory, relative to its input",
             f"alloc: rulecheck: {command}/memory", at_most=8) for command in COMMANDS),
    Target("recording with gRPC: calls in the time of an empty one", "recording: empty call", "recording: record",
           at_least=0.8),
)

TABLES = (
    Table("Time of a call, and of the ten texts of a finding", RENDERERS, (
        *((name, *figures(rendering(name, "{}"), RENDERERS)) for name in CALLS),
        *((name, *figures(rendering(name, "{}"), RENDERERS, {*RENDERERS} - {"one copy"}))
          for name in ("findings, in order", "findings, cold")))),
    Table("Allocations of a call", RENDERERS, tuple(
        (name, *figures("allocations: " + rendering(name, "{}"), RENDERERS)) for name in CALLS[:-1])),
    Table("Time of a double", ("Converter", "snprintf", "Converter, rounding upward"), tuple(
        (number, rendering(f"double {number}"), rendering(f"double {number}", "snprintf"),
         rendering(f"double {number}, rounding upward") if number == "350.25" else None)
        for number in DOUBLES)),
    Table("A result of 10,000 violations: time and allocations for each violation", RESULT, (
        ("parse and destroy", *figures("carrying: result, parse/{}", RESULT)),
        ("serialize", *figures("carrying: result, serialize/{}", RESULT, SERIALIZED)),
        ("allocations of parse", *figures("allocations each: carrying: result, parse/{}", RESULT)))),
    Table("20,000 requests: time and allocations for each request", REQUESTS, (
        ("parse and destroy", *figures("carrying: requests, parse/{}", REQUESTS)),
        ("serialize", *figures("carrying: requests, serialize/{}", REQUESTS, (*SERIALIZED, "reused"))),
        ("allocations of parse", *figures("allocations each: carrying: requests, parse/{}", REQUESTS)))),
    Table("Results of other sizes: time for each violation", tuple(f"{size:,}" for size in SIZES), tuple(
        (operation, *(result_of(size, operation) for size in SIZES)) for operation in OPERATIONS)),
    Table("Bytes that parsing allocates for each byte parsed", ("result", "requests"), (
        ("heap", "allocated: carrying: result, parse/heap", "allocated: carrying: requests, parse/fresh"),)),
    Table("Allocators", ("C library", *ALLOCATORS[1:]), tuple(
        (name, *figures("{}: " + name, ALLOCATORS)) for name in PARSING)),
    Table("The generated code's checks", ("without", "with"), tuple(
        (name, f"messages: {name}", f"checked: {name}") for name in CHECKED)),
    Table("Python: time of an argument", PYTHON_OPERATIONS, tuple(
        (messages, *(python(messages, operation) for operation in PYTHON_OPERATIONS))
        for messages, *_ in PYTHON_MESSAGES)),
    Table("Loading", ("as built", "plain Release flags"), (
        ("time of `dlopen`", *figures("loading: time/{}", LIBRARIES)),
        ("stripped size in bytes", *figures("loading: size/{}", LIBRARIES)),
        ("relocations that look up a symbol", *figures("loading: relocations/{}", LIBRARIES)))),
    Table("Time of a check", ("Verilator", "`rulecheck lint`"), tuple(
        (name, *figures(f"rulecheck: {design}/{{}}", ("Verilator", "lint"))) for name, design in DESIGNS.items())),
    Table("1,000,000 violations: time, and memory relative to the input", COMMANDS, (
        ("time", *figures("rulecheck: {}/time", COMMANDS)),
        ("memory", *figures("alloc: rulecheck: {}/memory", COMMANDS)))),
    Table("A call to the rule server", ("empty", "recording a violation"), (
        ("time", *figures("recording: {}", ("empty call", "record"))),)),
)
