"""What the report says: the targets, and the tables with all figures.

Everything is named by series of measurements. "rendering: toHtml(Link)/one copy"
is the time of that benchmark of that program for one item: a call, a finding, a
violation, a request. See report.py for the others.
"""

import dataclasses


@dataclasses.dataclass(frozen=True)
class Target:
    """What a ratio must be: of times, mostly. Several pairs: their median."""
    what: str
    pairs: tuple  # of (numerator, denominator), or one of (series,)
    at_least: float = None
    at_most: float = None


@dataclasses.dataclass(frozen=True)
class Table:
    """In each row the first series is what the others are compared with."""
    title: str
    columns: tuple
    rows: tuple  # of (label, series...), None for no series


# --- Rendering

RENDERERS = ("Converter", "one copy", "concatenation", "{fmt}", "string streams")

ANCHORS = ("toHtml(Arg) of a reference", "toHtml(Arg) of a link", "toHtml(Link)", "toHtml(Reference)",
           "toHtml(Arg) of four references", "toHtml(Resource)")

CALLS = (*ANCHORS, "href of a file", "href of a page", "toString(Scalar) of an integer",
         "toString(Scalar) of a double", "toString(Reference)", "toString(Severity)")

DOUBLES = ("double 0.5", "double 1.234567", "double 350.25", "double 1e20", "double 1e300",
           "double 5e-324")


def rendering(name, form):
    return f"rendering: {name}/{form}"


def anchor_targets(name):
    ours = rendering(name, "Converter")
    return (
        Target(f"{name}: times as fast as concatenation",
               ((rendering(name, "concatenation"), ours),), at_least=4),
        Target(f"{name}: times as fast as string streams",
               ((rendering(name, "string streams"), ours),), at_least=15),
        Target(f"{name}: time, in copies of its text",
               ((ours, rendering(name, "one copy")),), at_most=3.5),
    )


RENDERING_TARGETS = (
    *(target for name in ANCHORS for target in anchor_targets(name)),
    Target("cold findings: times as fast as concatenation",
           ((rendering("findings, cold", "concatenation"), rendering("findings, cold", "Converter")),),
           at_least=2),
    Target("doubles: times as fast as `snprintf`, median of six",
           tuple((rendering(name, "snprintf"), rendering(name, "Converter")) for name in DOUBLES),
           at_least=4),
)

RENDERING_TABLES = (
    Table("Time of a call, and of the ten texts of a finding", RENDERERS, (
        *((name, *(rendering(name, form) for form in RENDERERS)) for name in CALLS),
        ("findings, hot", *(rendering("findings, hot", form) for form in RENDERERS)),
        *((name, rendering(name, "Converter"), None, *(rendering(name, form) for form in RENDERERS[2:]))
          for name in ("findings, in order", "findings, cold")))),
    Table("Allocations of a call", RENDERERS, tuple(
        (name, *("allocations: " + rendering(name, form) for form in RENDERERS)) for name in CALLS)),
    Table("Time of a double", ("Converter", "snprintf", "Converter, rounding upward"), tuple(
        (name, rendering(name, "Converter"), rendering(name, "snprintf"),
         rendering(name + ", rounding upward", "Converter") if name == "double 350.25" else None)
        for name in DOUBLES)),
)


# --- Carrying

RESULT_FORMS = ("heap", "reused", "arena", "arena with a first block",
                "protobuf-c", "nanopb", "RapidJSON", "protozero", "memcpy")
REQUEST_FORMS = ("fresh", *RESULT_FORMS[1:])
SIZES = (100, 1000, 10000, 100000)
ALLOCATORS = ("jemalloc", "mimalloc", "tcmalloc")
PARSING = ("result, parse/heap", "result, parse/arena", "result, parse/reused",
           "requests, parse/fresh", "requests, parse/arena", "requests, parse/reused")
SERIALIZING = ("result, serialize/heap", "requests, serialize/reused")


def carrying(name):
    return f"carrying: {name}"


def result_of(violations):
    return "result" if violations == 10000 else f"result of {violations}"


def carrying_row(label, prefix, name, forms, all_forms):
    return (label, *(f"{prefix}{carrying(name)}/{form}" if form in forms else None for form in all_forms))


PARSED = set(RESULT_FORMS) | set(REQUEST_FORMS)
SERIALIZED = {"heap", "fresh", "reused", "protobuf-c", "nanopb", "RapidJSON"}

# Of ten times the violations each may cost more, as caches end; cost that grows
# with the square of the size would make it ten times as much.
GROWTH = tuple((form, small, 10 * small) for form in ("parse/heap", "parse/arena", "serialize/heap")
               for small in SIZES[:-1])

CARRYING_TARGETS = (
    Target("result: parse and destroy on an arena, beside the heap",
           ((carrying("result, parse/arena"), carrying("result, parse/heap")),), at_most=0.45),
    Target("result: allocations of `SerializeToString`",
           (("allocations: " + carrying("result, serialize/heap"),),), at_most=1),
    Target("requests: allocations of parsing one, message reused",
           (("allocations each: " + carrying("requests, parse/reused"),),), at_most=0),
    Target("requests: parse with a reused message, beside fresh ones",
           ((carrying("requests, parse/reused"), carrying("requests, parse/fresh")),), at_most=0.42),
    Target("requests: parse with a reused message, beside a protozero scan",
           ((carrying("requests, parse/reused"), carrying("requests, parse/protozero")),), at_most=2),
    Target("requests: serialize, beside a build with the generated code's checks",
           (("messages: requests, serialize/reused", "checked: requests, serialize/reused"),),
           at_most=0.75),
    *(Target(f"result: cost per violation of {form}, {large:,} of them beside {small:,}",
             ((carrying(f"{result_of(large)}, {form}"), carrying(f"{result_of(small)}, {form}")),),
             at_most=4)
      for form, small, large in GROWTH),
)

CARRYING_TABLES = (
    Table("A result of 10,000 violations: time and allocations for each violation", RESULT_FORMS, (
        carrying_row("parse and destroy", "", "result, parse", PARSED, RESULT_FORMS),
        carrying_row("destroy", "", "result, destroy", {"heap", "arena", "protobuf-c"}, RESULT_FORMS),
        carrying_row("serialize", "", "result, serialize", SERIALIZED - {"reused"}, RESULT_FORMS),
        carrying_row("allocations of parse", "allocations each: ", "result, parse", PARSED,
                     RESULT_FORMS))),
    Table("20,000 requests: time and allocations for each request", REQUEST_FORMS, (
        carrying_row("parse and destroy", "", "requests, parse", PARSED, REQUEST_FORMS),
        carrying_row("serialize", "", "requests, serialize", SERIALIZED, REQUEST_FORMS),
        carrying_row("allocations of parse", "allocations each: ", "requests, parse", PARSED,
                     REQUEST_FORMS),
        carrying_row("the same with two categories", "allocations each: ",
                     "requests with two categories, parse", {"reused"}, REQUEST_FORMS))),
    Table("Results of other sizes: time for each violation", tuple(f"{size:,}" for size in SIZES),
          tuple((form.replace("/", ", "), *(carrying(f"{result_of(size)}, {form}") for size in SIZES))
                for form in ("parse/heap", "parse/arena", "serialize/heap"))),
    Table("Bytes that parsing allocates for each byte parsed", ("result", "requests", "list of empty arguments"),
          (("heap", *("allocated: " + carrying(name) for name in
                      ("result, parse/heap", "requests, parse/fresh", "empty arguments, parse/heap"))),)),
    Table("Allocators", ("C library", *ALLOCATORS), tuple(
        (name.replace("/", ": "), *(f"{program}: {name}" for program in ("messages", *ALLOCATORS)))
        for name in PARSING)),
    Table("Forms of the library and the runtime", ("as it is", "static runtime", "with checks"), tuple(
        (name.replace("/", ": "), *(f"{program}: {name}" for program in ("messages", "static", "checked")))
        for name in (*PARSING, *SERIALIZING))),
)


# --- Loading

LIBRARIES = ("ours", "plain")

LOADING_TARGETS = (
    Target("loading: time of `dlopen`, beside plain Release flags",
           (("loading: time/ours", "loading: time/plain"),), at_most=0.5),
    Target("loading: stripped size, beside plain Release flags",
           (("loading: size/ours", "loading: size/plain"),), at_most=0.72),
    Target("loading: relocations that look a symbol up",
           (("loading: relocations/ours",),), at_most=1000),
)

LOADING_TABLES = (
    Table("Loading", ("as it is", "plain Release flags"), (
        ("`dlopen`", *(f"loading: time/{library}" for library in LIBRARIES)),
        ("stripped size in bytes", *(f"loading: size/{library}" for library in LIBRARIES)),
        ("relocations that look a symbol up",
         *(f"loading: relocations/{library}" for library in LIBRARIES)))),
)

TARGETS = (*RENDERING_TARGETS, *CARRYING_TARGETS, *LOADING_TARGETS)
TABLES = (*RENDERING_TABLES, *CARRYING_TABLES, *LOADING_TABLES)
