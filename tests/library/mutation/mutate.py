# SPDX-License-Identifier: Apache-2.0

"""Mutation testing of a source of the library. Called by tools/mutate, which has the help."""

import collections
import concurrent.futures
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

from mutants import mutants

HERE = pathlib.Path(__file__).resolve().parent
RENDERING = HERE.parents[2] / "rendering"
SOURCES = [RENDERING / name for name in ("numbers.h", "numbers.cpp", "Converter.cpp")]
EQUIVALENTS = HERE / "equivalent.txt"

# Runs of the tests, the quick ones first, with the memory in bytes and the seconds that each gets:
# a mutant may allocate without end, or loop forever. failures_tests has texts larger than memory.
RUNS = [("rendering/rendering_tests", "-*Random*:*Powers*:*Rounding*", 1 << 32, 20),
        ("failures/failures_tests", "*", 1 << 50, 20),
        ("rendering/rendering_tests", "*Random*:*Powers*:*Rounding*", 1 << 32, 200)]

# Undefined behavior must end a test, in the classes of the standard library too.
OPTIONS = ["-std=gnu++2b", "-O0", "-fPIC", "-fvisibility-inlines-hidden", "-w",
           "-D_GLIBCXX_ASSERTIONS", "-fsanitize=undefined", "-fno-sanitize=function,vptr",
           "-fsanitize-trap=undefined"]


def source():
    """The library's sources as one, without comments and without what is not compiled."""
    text = "".join(path.read_text() for path in SOURCES).replace('#include "numbers.h"\n', "")
    return re.sub(r"(?m)^ *//.*\n|  //.*|^#else(?s:.*?)(?=#endif)", "", text)


class Compiler:
    """Makes shared objects of variants of the source. What the headers define is compiled once,
    which only Clang can do: it saves two thirds of the time."""

    def __init__(self, build, folder):
        self.folder = folder
        commands = json.loads((build / "compile_commands.json").read_text())
        words = next(shlex.split(entry["command"]) for entry in commands
                     if pathlib.Path(entry["file"]) == SOURCES[-1])
        folders = [word for pair in zip(words, words[1:]) if pair[0] == "-isystem" for word in pair]
        headers, parsed, compiled = (folder / f"headers.{kind}" for kind in ("h", "pch", "o"))
        headers.write_text("\n".join(re.findall("^#include.*", source(), re.MULTILINE)) + "\n")
        command = ["clang++", *OPTIONS]
        subprocess.run([*command, *folders, "-fpch-instantiate-templates", "-fpch-codegen",
                        "-x", "c++-header", headers, "-o", parsed], check=True)
        subprocess.run([*command, "-c", parsed, "-o", compiled], check=True)
        self.command = [*command, *folders, "-include-pch", parsed, "-shared", compiled]

    def compile(self, name, text):
        """The shared object, or None if the text does not compile."""
        path, library = self.folder / f"{name}.cpp", self.folder / f"{name}.so"
        path.write_text(text)
        done = subprocess.run([*self.command, path, "-o", library], stderr=subprocess.DEVNULL, check=False)
        return library if done.returncode == 0 else None


def passes(build, run, library):
    """Whether the tests pass in time with those functions, which the loader prefers to the library's."""
    program, tests, memory, seconds = run
    try:
        return subprocess.run(
            ["prlimit", "--core=0", f"--as={memory}", "env", f"LD_PRELOAD={library}",
             build / "tests/library" / program, "--gtest_fail_fast", f"--gtest_filter={tests}"],
            timeout=seconds, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False).returncode == 0
    except subprocess.TimeoutExpired:
        return False


def fate(build, compiler, number, mutant):
    library = compiler.compile(number, mutant.text)
    if library is None:
        return "invalid"
    alive = all(passes(build, run, library) for run in RUNS)
    library.unlink()
    return "alive" if alive else "killed"


def report(chosen, fates, equivalents):
    """Prints the mutants that live and the counts; returns whether all is as it should be."""
    counts = collections.Counter(fates)
    alive = {mutant.description: mutant for mutant, found in zip(chosen, fates) if found == "alive"}
    survivors = [mutant for description, mutant in alive.items() if description not in equivalents]
    for mutant in survivors:
        print(f"survives: line {mutant.line}, {mutant.description}")
    outdated = [line for line in equivalents if line not in alive]
    for line in outdated:
        print(f"listed as equivalent, but killed or not made: {line}")
    print(f"{len(fates) - counts['invalid']} mutants made, {counts['killed']} killed,"
          f" {len(alive) - len(survivors)} equivalent, {len(survivors)} survive"
          f" ({counts['invalid']} more do not compile)")
    return not survivors and not outdated


def main(build, text):
    chosen = [mutant for mutant in mutants(source()) if text in mutant.description]
    equivalents = [line for line in EQUIVALENTS.read_text().splitlines()
                   if line and line[0] != "#" and text in line]
    with tempfile.TemporaryDirectory() as folder:
        compiler = Compiler(build, pathlib.Path(folder))
        unchanged = compiler.compile("unchanged", source())
        if unchanged is None or not all(passes(build, run, unchanged) for run in RUNS):
            print("mutate: the tests fail with the unchanged source", file=sys.stderr)
            return 1
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            fates = list(pool.map(lambda item: fate(build, compiler, *item), enumerate(chosen)))
    return 0 if report(chosen, fates, equivalents) else 1


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1]), sys.argv[2]))
