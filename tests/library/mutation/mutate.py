# SPDX-License-Identifier: Apache-2.0

"""Mutation testing of a source of the library. Called by tools/mutate, which has the help."""

import collections
import concurrent.futures
import json
import os
import pathlib
import shlex
import subprocess
import sys
import tempfile
import typing

import mutants

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[2]
SOURCE = ROOT / "rendering/Converter.cpp"
NUMBERS = [ROOT / "rendering/numbers.h", ROOT / "rendering/numbers.cpp"]
EQUIVALENTS = HERE / "equivalent.txt"

# The programs, in the order in which they run, and the memory that each gets: a
# mutant may want all that there is. The second one has texts that are larger.
GIB = 1 << 30
TESTS = {"tests/library/rendering/rendering_tests": 4 * GIB, "tests/library/failures/failures_tests": 1024 * GIB}

# What is undefined is to end a test, in the classes of the standard library too.
OPTIONS = ["-std=gnu++2b", "-O0", "-fPIC", "-fvisibility-inlines-hidden", "-w",
           "-D_GLIBCXX_ASSERTIONS", "-fsanitize=undefined", "-fno-sanitize=function,vptr",
           "-fsanitize-trap=undefined"]
QUICK = 0.02  # seconds; tests that take longer run last


def sources():
    """The library's sources as one."""
    return "".join(path.read_text() for path in [*NUMBERS, SOURCE]).replace('#include "numbers.h"\n', "")


class Failure(Exception):
    """Why nothing can be said about the mutants."""


class Compiler:
    """Makes shared objects of variants of the source.

    What the headers define is compiled once. Only Clang can do that, and what is
    left takes it a third of the time.
    """

    def __init__(self, build, folder):
        self.folder = folder
        commands = json.loads((build / "compile_commands.json").read_text())
        words = next(shlex.split(entry["command"]) for entry in commands
                     if pathlib.Path(entry["file"]) == SOURCE)
        folders = [word for pair in zip(words, words[1:]) if pair[0] == "-isystem" for word in pair]
        headers, parsed, compiled = (folder / f"headers.{kind}" for kind in ("h", "pch", "o"))
        headers.write_text("".join(line for line in sources().splitlines(keepends=True)
                                   if line.startswith("#include")))
        command = ["clang++", *OPTIONS]
        subprocess.run([*command, *folders, "-fpch-instantiate-templates", "-fpch-codegen",
                        "-x", "c++-header", headers, "-o", parsed], check=True)
        subprocess.run([*command, "-c", parsed, "-o", compiled], check=True)
        self.command = [*command, *folders, "-include-pch", parsed, "-shared", compiled]

    def compile(self, name, text):
        """The shared object, or None if the text is no C++."""
        source, library = self.folder / f"{name}.cpp", self.folder / f"{name}.so"
        source.write_text(text)
        done = subprocess.run([*self.command, source, "-o", library],
                              stderr=subprocess.DEVNULL, check=False)
        source.unlink()
        return library if done.returncode == 0 else None


class Tests:
    """The tests of an ordinary build, run with a variant of the library's functions.

    The loader prefers the variant's functions to the library's of the same names.
    """

    def __init__(self, build, library):
        """Orders the tests by what they take with the unchanged source: the quick ones first."""
        self.runs = []
        slow = []
        for program, memory in TESTS.items():
            report = library.with_suffix(".json")
            run = Run(build / program, memory, [f"--gtest_output=json:{report}"], 600)
            if run.fails(library):
                raise Failure(f"{program} fails with the unchanged source")
            tests = [(f"{suite['name']}.{test['name']}", float(test["time"].rstrip("s")))
                     for suite in json.loads(report.read_text())["testsuites"]
                     for test in suite["testsuite"]]
            self.runs += run.of([test for test in tests if test[1] < QUICK])
            slow += run.of([test for test in tests if test[1] >= QUICK])
        self.runs += slow

    def notice(self, library):
        """Whether a test fails; one that takes too long does."""
        return any(run.fails(library) for run in self.runs)


class Run(typing.NamedTuple):
    program: pathlib.Path
    memory: int
    options: list
    seconds: float

    def of(self, tests):
        """A run of those tests, given with the seconds that each takes; none if there are none."""
        if not tests:
            return []
        names = ":".join(name for name, _ in tests)
        seconds = 3 + 10 * sum(seconds for _, seconds in tests)
        return [self._replace(options=["--gtest_fail_fast", f"--gtest_filter={names}"], seconds=seconds)]

    def fails(self, library):
        try:
            ended = subprocess.run(
                ["prlimit", "--core=0", f"--as={self.memory}", "env", f"LD_PRELOAD={library}",
                 self.program, *self.options], timeout=self.seconds, stdout=subprocess.DEVNULL,
                stderr=subprocess.DEVNULL, check=False)
        except subprocess.TimeoutExpired:
            return True
        return ended.returncode != 0


def read_equivalents():
    """The descriptions of those changes that no test can notice. The file says why."""
    return [line for line in EQUIVALENTS.read_text().splitlines() if line and line[0] != "#"]


def test_mutant(compiler, tests, source, number, mutant):
    library = compiler.compile(number, source.mutated(mutant))
    if library is None:
        return "invalid"
    noticed = tests.notice(library)
    library.unlink()
    return "killed" if noticed else "alive"


def test_mutants(build, source, chosen):
    """What becomes of each of the chosen mutants: "invalid", "killed" or "alive"."""
    with tempfile.TemporaryDirectory() as name:
        compiler = Compiler(build, pathlib.Path(name))
        unchanged = compiler.compile("unchanged", source.text)
        if unchanged is None:
            raise Failure("the unchanged source does not compile")
        tests = Tests(build, unchanged)
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            return list(pool.map(lambda item: test_mutant(compiler, tests, source, *item),
                                 enumerate(chosen)))


def report(source, chosen, fates, equivalents):
    """Prints the mutants that live and the counts; whether all is as it should be."""
    counts = collections.Counter(fates)
    alive = collections.Counter()
    survivors = 0
    for mutant, fate in zip(chosen, fates):
        if fate == "alive":
            description = source.described(mutant)
            alive[description] += 1
            if description not in equivalents:
                survivors += 1
                print(f"survives: line {source.line_of(mutant)}, {description}")
    made = {source.described(mutant) for mutant in chosen}
    outdated = [line for line in equivalents if line not in alive]
    for line in outdated:
        print(f"listed as equivalent, but {'killed' if line in made else 'not made'}: {line}")
    print(f"{len(fates) - counts['invalid']} mutants made, {counts['killed']} killed,"
          f" {counts['alive'] - survivors} equivalent, {survivors} survive"
          f" ({counts['invalid']} more do not compile)")
    return survivors == 0 and not outdated


def main(build, text):
    source = mutants.Source(sources())
    chosen = [mutant for mutant in source.mutants() if text in source.described(mutant)]
    equivalents = [line for line in read_equivalents() if text in line]
    try:
        fates = test_mutants(pathlib.Path(build), source, chosen)
    except Failure as failure:
        print(f"mutate: {failure}", file=sys.stderr)
        return 1
    return 0 if report(source, chosen, fates, equivalents) else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2]))
