# SPDX-License-Identifier: Apache-2.0

"""Runs the benchmarks and writes their figures as tables. tools/bench calls this.

    report.py [--quick] BENCHMARKS_JSON PAGE

BENCHMARKS_JSON is what the build wrote about its programs. The page is printed, and written unless
--quick is given.

A figure is the median of all repetitions. The programs take turns and run their benchmarks in random
order, so that a busy moment affects all of them alike.
"""

import argparse
import collections
import datetime
import json
import os
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile

import rows

HEAD = """\
# Benchmark results

`tools/bench` writes this page. [Performance](../docs/performance.md) draws conclusions from it.

{machine}

- Times are CPU time of the thread, and the median of {repetitions} repetitions. In parentheses is the
  ratio to the first figure of the row, computed from the figures shown.
- A preloaded library counts calls of `malloc` in a run that is not timed.
- Before anything is timed, the programs check that all renderers give the same texts, and that each
  decoder preserves the content of each message. protozero only scans, and must visit every field.
- A violation has about 480 bytes on the wire, a request about 260. A result has one affirmation for every
  five violations, and one rule specification for every fifty.
- *One copy* is the least that a call can cost: one allocation and one copy of the finished text.
  *Concatenation* appends to a `std::string` and formats numbers with `snprintf`. *{{fmt}}* and *string
  streams* are the same code, except for how they append text and format numbers.
- *Hot* findings are a hundred that stay in the cache, *in order* are ten thousand one after the other,
  and *cold* ones are used in random order, from more than any cache holds.
- Python handles a thousand arguments, each a reference with an address.
- Loading is timed with stripped libraries after the runtime is loaded.
- `rulecheck lint` and Verilator take turns. The CPU time of `rulecheck` includes that of the Verilator
  that it runs. `merge` and `diff` get the same result twice, `gate` what `merge` wrote. Each violation of
  these results has about 380 bytes.
- Calls to the rule server go through a socket of the same host, one after the other. Their times are
  wall-clock times. The empty call is gRPC's own health check.
"""

ALLOCATORS = {"jemalloc": "libjemalloc.so.2", "mimalloc": "libmimalloc.so.2",
              "tcmalloc": "libtcmalloc_minimal.so.4"}

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}

LOAD = """
import ctypes, sys, time
ctypes.CDLL(sys.argv[1])
start = time.thread_time_ns()
ctypes.CDLL(sys.argv[2])
print(time.thread_time_ns() - start)
"""


HERE = pathlib.Path(__file__).resolve().parent


class Failure(Exception):
    """Something that the user is told in one sentence."""


# Text


def digits(number):
    """Three digits, and all digits of whole numbers and of large ones."""
    if number == int(number) or number >= 100:
        return f"{number:,.0f}"
    return f"{number:.2f}" if number < 10 else f"{number:.1f}"


def duration(nanoseconds):
    for unit, size in (("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= size:
            return f"{digits(nanoseconds / size)} {unit}"
    return f"{digits(nanoseconds)} ns"


def is_time(name):
    return not name.startswith(("alloc", "loading: size", "loading: relocations"))


def ratio(name, base, figures):
    """The ratio of two figures as the page shows them: times have three digits."""
    over, under = (float(f"{figures[each]:.3g}") if is_time(each) else figures[each]
                   for each in (name, base))
    return over / under


def cell(name, first, figures):
    if name is None:
        return ""
    if not is_time(name):
        return digits(figures[name])
    relative = "" if name == first else f" ({digits(ratio(name, first, figures))})"
    return duration(figures[name]) + relative


def markdown(columns, lines):
    return ["| " + " | ".join(cells) + " |" for cells in (columns, ["---"] * len(columns), *lines)]


def target_table(targets, figures):
    lines = []
    for target in targets:
        value = ratio(target.figure, target.base, figures) if target.base else figures[target.figure]
        limit, is_met = ((f"at least {target.at_least:g}", value >= target.at_least)
                         if target.at_most is None
                         else (f"at most {target.at_most:,g}", value <= target.at_most))
        lines.append([target.what, digits(value), limit, "yes" if is_met else "**no**"])
    met = sum(line[-1] == "yes" for line in lines)
    return [f"## Targets\n\n{met} of {len(lines)} targets are met.", "",
            *markdown(["What", "Measured", "Target", "Met"], lines)]


def figure_table(table, figures):
    lines = [[label, *(cell(name, names[0], figures) for name in names)] for label, *names in table.rows]
    return ["", f"## {table.title}", "", *markdown(["", *table.columns], lines)]


def machine(built):
    model = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())
    return (f"{datetime.date.today():%Y-%m-%d}, {model.group(1) if model else 'unknown CPU'}, "
            f"{os.cpu_count()} cores, {built['compiler']}, Protocol Buffers {built['protobuf']}.")


def report(built, effort, figures):
    head = HEAD.format(machine=machine(built), repetitions=effort.rounds * effort.repetitions)
    lines = [head, *target_table(rows.TARGETS, figures)]
    for table in rows.TABLES:
        lines += figure_table(table, figures)
    return "\n".join(lines) + "\n"


# Measuring


def output_of(command, preload=None):
    environment = {**os.environ, **({"LD_PRELOAD": preload} if preload else {})}
    ended = subprocess.run(command, capture_output=True, text=True, env=environment, check=False)
    if ended.returncode != 0 or "cannot be preloaded" in ended.stderr:
        raise Failure(f"{command[0]} failed: {ended.stderr.strip()}")
    return ended.stdout


def run_benchmarks(command, options, preload=None):
    """The name and the entry of each repetition of the benchmarks of a program."""
    output = output_of([*command, "--benchmark_format=json", *options], preload)
    return [(entry["run_name"], entry) for entry in json.loads(output)["benchmarks"]
            if entry["run_type"] == "iteration"]


def times(effort):
    """Options for the benchmarks of a program."""
    return ["--benchmark_enable_random_interleaving=true",
            f"--benchmark_repetitions={effort.repetitions}",
            f"--benchmark_min_time={effort.seconds}"]


def measure_times(built, effort, series):
    runs = [(label, built[label], None) for label in ("rendering", "carrying", "messages", "checked")]
    runs += [(allocator, built["messages"], library) for allocator, library in ALLOCATORS.items()]
    for label, program, preload in runs:
        for name, entry in run_benchmarks([program], times(effort), preload):
            nanoseconds = entry["cpu_time"] * NANOSECONDS[entry["time_unit"]]
            series[f"{label}: {name}"].append(nanoseconds / entry["items"])


def count_allocations(built, series):
    """Those of one run of each benchmark that has been run once before."""
    for label in ("rendering", "carrying"):
        for name, entry in run_benchmarks([built[label]], ["--benchmark_min_time=0"],
                                          built["allocation_counter"]):
            if "allocations" in entry:
                series[f"allocations: {label}: {name}"] = [entry["allocations"]]
                series[f"allocations each: {label}: {name}"] = [entry["allocations"] / entry["items"]]
                if entry["wire_bytes"] > 0:
                    series[f"allocated: {label}: {name}"] = [entry["allocated_bytes"] / entry["wire_bytes"]]


def measure_loading(built, effort, series):
    for _ in range(effort.loads):
        for library in rows.LIBRARIES:
            nanoseconds = output_of([sys.executable, "-c", LOAD, built["runtime"], built[library]])
            series[f"loading: time/{library}"].append(float(nanoseconds))


def measure_python(built, effort, series):
    for messages, first, implementation in rows.PYTHON_MESSAGES:
        measured = output_of(["env", f"PROTOCOL_BUFFERS_PYTHON_IMPLEMENTATION={implementation}", built["python"],
                              "-B", HERE / "python.py", built["python_package"], first, str(effort.loads)])
        for operation, nanoseconds in json.loads(measured).items():
            series[f"python: {messages}/{operation}"].append(nanoseconds)


def inspect_libraries(built, series):
    for library in rows.LIBRARIES:
        kinds = re.findall(r"R_X86_64_(\w+)", output_of(["readelf", "-rW", built[library]]))
        series[f"loading: size/{library}"] = [os.path.getsize(built[library])]
        series[f"loading: relocations/{library}"] = [sum(kind != "RELATIVE" for kind in kinds)]


def cost_of(*command):
    """The CPU time of a program and of those that it runs, in nanoseconds, and its memory in bytes."""
    process = subprocess.Popen([str(word) for word in command], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise Failure(f"{command[0]} failed")
    return (usage.ru_utime + usage.ru_stime) * 1e9, usage.ru_maxrss * 1024


def write_registers(path, count):
    """A module in which each register has two findings."""
    numbers = range(count)
    path.write_text("".join([
        f"module {path.stem}(input clk, input [31:0] d, input [15:0] a, output reg [31:0] q);\n",
        *(f"  reg [31:0] r{number};\n" for number in numbers),
        *(f"  always @(posedge clk) if (a == {number % 65536}) r{number} <= d[{8 + number % 16}:0];\n"
          for number in numbers),
        "  always @(posedge clk) q <= d;\nendmodule\n"]))


def measure_recording(built, effort, series):
    """Clocked, since the client waits for the server."""
    with tempfile.TemporaryDirectory() as folder:
        address = f"unix:{folder}/socket"
        server = subprocess.Popen([built["rulecheck"], "serve", "--listen", address], stdout=subprocess.PIPE)
        try:
            server.stdout.readline()  # when it listens
            for name, entry in run_benchmarks(["env", f"RULE_SERVER={address}", built["recording"]], times(effort)):
                nanoseconds = entry["real_time"] * NANOSECONDS[entry["time_unit"]]
                series[f"recording: {name.removesuffix('/real_time')}"].append(nanoseconds)
        finally:
            server.kill()
            server.wait()


def measure_lint(built, effort, folder, series):
    write_registers(folder / "registers.v", effort.registers)
    designs = HERE.parent / "apps/designs"
    words = {"demo": ["-F", designs / "design.f", "--top-module", "board"],
             "registers": [folder / "registers.v"]}
    for design, arguments in words.items():
        verilator, _ = cost_of("verilator", "--lint-only", "-Wall", "-Wno-fatal", "-MMD", "--Mdir", folder, *arguments)
        lint, _ = cost_of(built["rulecheck"], "lint", "-o", folder / "lint.pb", "--", *arguments)
        series[f"rulecheck: {design}/Verilator"].append(verilator)
        series[f"rulecheck: {design}/lint"].append(lint)
        series[f"rulecheck: {design}/lint less 0.1 s"].append(lint - 1e8)


def measure_results(built, effort, folder, series):
    """What lint found of the registers, often enough for a million violations."""
    program, part, whole = built["rulecheck"], folder / "part.pb", folder / "whole.pb"
    cost_of(program, "merge", *[folder / "lint.pb"] * (500000 // (2 * effort.registers) + 1), "-o", part)
    for command, size, *words in (("merge", 2, part, part, "-o", whole), ("diff", 2, part, part),
                                  ("gate", 2, whole, "--fail-on", "error")):
        nanoseconds, memory = cost_of(program, command, *words)
        series[f"rulecheck: {command}/time"].append(nanoseconds)
        series[f"alloc: rulecheck: {command}/seconds"].append(nanoseconds / 1e9)
        series[f"alloc: rulecheck: {command}/memory"].append(memory / (size * part.stat().st_size))


def measure_rulecheck(built, effort, series):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        measure_lint(built, effort, folder, series)
        measure_results(built, effort, folder, series)


Effort = collections.namedtuple("Effort", "rounds repetitions seconds loads registers")
FULL = Effort(rounds=4, repetitions=3, seconds=0.05, loads=40, registers=20000)
QUICK = Effort(rounds=1, repetitions=1, seconds=0.001, loads=2, registers=1000)


def measure(built, effort):
    series = collections.defaultdict(list)
    count_allocations(built, series)
    inspect_libraries(built, series)
    for number in range(effort.rounds):
        print(f"Round {number + 1} of {effort.rounds}", file=sys.stderr, flush=True)
        measure_times(built, effort, series)
        measure_loading(built, effort, series)
        measure_python(built, effort, series)
        measure_rulecheck(built, effort, series)
        measure_recording(built, effort, series)
    return {name: statistics.median(values) for name, values in series.items()}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("built", type=pathlib.Path)
    parser.add_argument("page", type=pathlib.Path)
    arguments = parser.parse_args()
    built = json.loads(arguments.built.read_text())
    effort = QUICK if arguments.quick else FULL
    text = report(built, effort, measure(built, effort))
    print(text, end="")
    if not arguments.quick:
        arguments.page.write_text(text, encoding="utf-8")


if __name__ == "__main__":
    try:
        main()
    except Failure as failure:
        sys.exit(f"report.py: {failure}")
