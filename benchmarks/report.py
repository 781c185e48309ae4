"""Runs the benchmarks and makes tables of them. tools/bench calls this.

    report.py [--quick] BENCHMARKS_JSON PAGE

BENCHMARKS_JSON is what the build wrote about its programs. The tables are
printed, and put between the markers of PAGE unless --quick is given.

All figures are series, one value for each repetition. Programs run in turn,
their benchmarks in random order, so that a ratio compares values of one moment.
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

import rows

BEGIN = "<!-- Written by tools/bench: begin -->"
END = "<!-- Written by tools/bench: end -->"

ALLOCATORS = {
    "jemalloc": "libjemalloc.so.2",
    "mimalloc": "libmimalloc.so.2",
    "tcmalloc": "libtcmalloc_minimal.so.4",
}

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


class Failure(Exception):
    """Something that the user is told in one sentence."""


# --- Arithmetic


def median_ratio(numerators, denominators):
    """The median over the repetitions of the ratio."""
    if len(numerators) != len(denominators):
        raise Failure(f"{len(numerators)} values cannot be compared with {len(denominators)}")
    return statistics.median(a / b for a, b in zip(numerators, denominators))


def measured(target, series):
    values = []
    for names in target.pairs:
        samples = [series[name] for name in names]
        values.append(statistics.median(samples[0]) if len(samples) == 1 else median_ratio(*samples))
    return statistics.median(values)


def is_met(target, value):
    return value >= target.at_least if target.at_most is None else value <= target.at_most


# --- Text


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


def cell(name, first, series):
    """A median, followed by its ratio to the first one of the row if both are times."""
    if name is None:
        return ""
    median = statistics.median(series[name])
    if not is_time(name):
        return digits(median)
    ratio = "" if name == first else f" ({digits(median_ratio(series[name], series[first]))})"
    return duration(median) + ratio


def markdown(columns, lines):
    return ["| " + " | ".join(cells) + " |" for cells in (columns, ["---"] * len(columns), *lines)]


def target_table(targets, series):
    lines = []
    for target in targets:
        value = measured(target, series)
        limit = (f"at least {target.at_least:g}" if target.at_most is None
                 else f"at most {target.at_most:,g}")
        lines.append([target.what, digits(value), limit, "yes" if is_met(target, value) else "**no**"])
    met = sum(line[-1] == "yes" for line in lines)
    return [f"{met} of {len(lines)} targets are met.", "",
            *markdown(["What", "Measured", "Target", "Met"], lines)]


def figure_table(table, series):
    lines = [[label, *(cell(name, names[0], series) for name in names)]
             for label, *names in table.rows]
    return ["", f"**{table.title}**", "", *markdown(["", *table.columns], lines)]


def machine(built):
    model = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())
    return (f"{datetime.date.today():%Y-%m-%d}, {model.group(1) if model else 'unknown CPU'}, "
            f"{os.cpu_count()} cores, {built['compiler']}, Protocol Buffers {built['protobuf']}.")


def report(built, series):
    lines = [machine(built), *target_table(rows.TARGETS, series)]
    for table in rows.TABLES:
        lines += figure_table(table, series)
    return "\n".join(lines)


def replace_between_markers(page, text):
    if page.count(BEGIN) != 1 or page.count(END) != 1 or page.index(BEGIN) > page.index(END):
        raise Failure("the page must have both markers of the tables, once each and in order")
    before, rest = page.split(BEGIN)
    return f"{before}{BEGIN}\n\n{text}\n\n{END}{rest.split(END)[1]}"


# --- Measuring


def output_of(command, preload=None):
    environment = {**os.environ, **({"LD_PRELOAD": preload} if preload else {})}
    ended = subprocess.run(command, capture_output=True, text=True, env=environment, check=False)
    if ended.returncode != 0 or "cannot be preloaded" in ended.stderr:
        raise Failure(f"{command[0]} failed: {ended.stderr.strip()}")
    return ended.stdout


def run_benchmarks(program, options, preload=None):
    """The repetitions of the benchmarks of a program, by name and in order."""
    output = output_of([program, "--benchmark_format=json", *options], preload)
    found = collections.defaultdict(dict)
    for entry in json.loads(output)["benchmarks"]:
        if entry["run_type"] == "iteration":
            found[entry["run_name"]][entry["repetition_index"]] = entry
    return {name: [entries[i] for i in sorted(entries)] for name, entries in found.items()}


def programs(built):
    """The label, the program and the library to be preloaded of each run of a round."""
    for label in ("rendering", "carrying", "messages", "checked", "static"):
        yield label, built[label], None
    for allocator, library in ALLOCATORS.items():
        yield allocator, built["messages"], library


def measure_times(built, effort, series):
    options = ["--benchmark_enable_random_interleaving=true",
               f"--benchmark_repetitions={effort.repetitions}",
               f"--benchmark_min_time={effort.seconds}"]
    for label, program, preload in programs(built):
        for name, entries in run_benchmarks(program, options, preload).items():
            for entry in entries:
                nanoseconds = entry["cpu_time"] * NANOSECONDS[entry["time_unit"]]
                series[f"{label}: {name}"].append(nanoseconds / entry["items"])


def count_allocations(built, series):
    """Those of one run of each benchmark that has been run once before."""
    for label in ("rendering", "carrying"):
        counted = run_benchmarks(built[label], ["--benchmark_min_time=0"], built["allocation_counter"])
        for name, [entry] in counted.items():
            if "allocations" in entry:
                name = f"{label}: {name}"
                series[f"allocations: {name}"] = [entry["allocations"]]
                series[f"allocations each: {name}"] = [entry["allocations"] / entry["items"]]
                if entry["wire_bytes"] > 0:
                    series[f"allocated: {name}"] = [entry["allocated_bytes"] / entry["wire_bytes"]]


def measure_loading(built, effort, series):
    for _ in range(effort.loads):
        for library in rows.LIBRARIES:
            nanoseconds = output_of([built["load_time"], built["runtime"], built[library]])
            series[f"loading: time/{library}"].append(float(nanoseconds))


def inspect_libraries(built, series):
    for library in rows.LIBRARIES:
        kinds = re.findall(r"R_X86_64_(\w+)", output_of(["readelf", "-rW", built[library]]))
        series[f"loading: size/{library}"] = [os.path.getsize(built[library])]
        series[f"loading: relocations/{library}"] = [sum(kind != "RELATIVE" for kind in kinds)]


Effort = collections.namedtuple("Effort", "rounds repetitions seconds loads")
FULL = Effort(rounds=4, repetitions=3, seconds=0.05, loads=40)
QUICK = Effort(rounds=1, repetitions=1, seconds=0.001, loads=2)


def measure(built, effort):
    series = collections.defaultdict(list)
    count_allocations(built, series)
    inspect_libraries(built, series)
    for number in range(effort.rounds):
        print(f"Round {number + 1} of {effort.rounds}", file=sys.stderr, flush=True)
        measure_times(built, effort, series)
        measure_loading(built, effort, series)
    return dict(series)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("built", type=pathlib.Path)
    parser.add_argument("page", type=pathlib.Path)
    arguments = parser.parse_args()
    built = json.loads(arguments.built.read_text())
    text = report(built, measure(built, QUICK if arguments.quick else FULL))
    print(text)
    if not arguments.quick:
        page = arguments.page.read_text(encoding="utf-8")
        arguments.page.write_text(replace_between_markers(page, text), encoding="utf-8")


if __name__ == "__main__":
    try:
        main()
    except Failure as failure:
        sys.exit(f"report.py: {failure}")
