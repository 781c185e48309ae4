#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Replaces the baseline, which programs of the last release rely on, with that of the sources.

usage: tests/library/compatibility/update_baseline.py

Run it at a release and at no other time; until the first one, the baseline is that of
the version to be released. Writes, next to this file:

    baseline-VERSION.binpb   the schema's descriptor, which buf compares
    baseline-VERSION.abi.xz  the interface of the shared object, which abidiff compares

Needs what the build needs, with g++ and the packaged Protocol Buffers 3.21, and abidw.
contract.txt, which holds every declaration of the schema, follows each change instead,
so that a review sees it. A new field breaks linked programs: raise VOK_RULECHECK_ABI.
"""

import argparse
import lzma
import pathlib
import re
import subprocess
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
SOURCE = HERE.parents[2]
SCHEMA = SOURCE / "swig/shared/common/services/rulecheck/protocol/RuleService.proto"

# No path of a machine is written, and nothing that no program sees.
DUMP_OPTIONS = ["--exported-interfaces-only", "--no-parameter-names", "--no-write-default-sizes",
                "--no-show-locs", "--no-comp-dir-path", "--no-corpus-path", "--no-elf-needed",
                "--type-id-style", "hash"]

# A release of the runtime may change what its own types are made of. Where that
# moves a member of ours, it is ours that has changed.
SUPPRESSIONS = """
[suppress_type]
  name_regexp = ^(google|std|__gnu_cxx)::
"""


def dump(build, *options):
    """Builds the library in that folder; returns its interface as text. Nothing is optimized:
    what is inlined would be missing. Neither exported symbols nor layouts depend on that."""
    flags = f'-O0 -g "-ffile-prefix-map={build}=build" "-ffile-prefix-map={SOURCE}=."'
    _run("cmake", "-G", "Ninja", "-S", SOURCE, "-B", build, "-DCMAKE_BUILD_TYPE=Debug",
         f"-DCMAKE_CXX_FLAGS_DEBUG={flags}", "-DVOK_RULECHECK_HARDENING=OFF", *options)
    _run("cmake", "--build", build, "--target", "vok_rulecheck")
    return _run("abidw", *DUMP_OPTIONS, pathlib.Path(build, "libvok_rulecheck.so"))


def breaking_changes(baseline, present):
    """What programs of the baseline rely on and is changed or gone, as a report, or "".
    Programs never load a library with another soname, which therefore breaks none."""
    sonames = {re.search("soname='([^']+)'", interface)[1] for interface in (baseline, present)}
    if len(sonames) > 1:
        return ""
    with tempfile.TemporaryDirectory() as folder:
        files = {"baseline.abi": baseline, "present.abi": present, "suppressions": SUPPRESSIONS}
        for name, text in files.items():
            pathlib.Path(folder, name).write_text(text, encoding="utf-8")
        return _run("abidiff", "--leaf-changes-only", "--no-added-syms", "--suppressions",
                    "suppressions", "baseline.abi", "present.abi", folder=folder, changed=4)


def _run(*command, folder=None, changed=0):
    """The standard output; the status may have the bit that says that something changed."""
    result = subprocess.run([str(word) for word in command], cwd=folder, capture_output=True,
                            text=True, check=False)
    if result.returncode != 0 and not result.returncode & changed:
        raise RuntimeError(f"{command}\n{result.stdout}{result.stderr}")
    return result.stdout if result.returncode or not changed else ""


def main():
    argparse.ArgumentParser(description=__doc__.splitlines()[0]).parse_args()
    version = re.search(r"VERSION (\d+\.\d+\.\d+)", (SOURCE / "CMakeLists.txt").read_text())[1]
    with tempfile.TemporaryDirectory() as build:
        interface = dump(build, "-DCMAKE_CXX_COMPILER=g++")
    for old in HERE.glob("baseline-*"):
        old.unlink()
    (HERE / f"baseline-{version}.abi.xz").write_bytes(lzma.compress(interface.encode(), preset=9))
    _run("protoc", f"--proto_path={SCHEMA.parent}", SCHEMA,
         f"--descriptor_set_out={HERE}/baseline-{version}.binpb")
    print(f"baselines of {version} written")


if __name__ == "__main__":
    main()
