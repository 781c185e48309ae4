"""What programs linked to the shared object rely on, and what of it has changed."""

import pathlib
import re
import subprocess
import tempfile

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


class BuildError(Exception):
    """The library could not be built or read; the text says why."""


def dump(source, build, *options):
    """Builds the library of a source tree; what its interface is, as text.

    Nothing is optimized: what is inlined or folded would show. Neither the exported
    symbols nor any layout depend on that.
    """
    flags = f'-O0 -g "-ffile-prefix-map={build}=build" "-ffile-prefix-map={source}=."'
    _run("cmake", "-G", "Ninja", "-S", source, "-B", build, "-DCMAKE_BUILD_TYPE=Debug",
         f"-DCMAKE_CXX_FLAGS_DEBUG={flags}", "-DVOK_RULECHECK_HARDENING=OFF", *options)
    _run("cmake", "--build", build, "--target", "vok_rulecheck")
    return _run("abidw", *DUMP_OPTIONS, pathlib.Path(build, "libvok_rulecheck.so"))


def soname(interface):
    return re.search(r"<abi-corpus [^>]*soname='([^']+)'", interface)[1]


def breaking_changes(baseline, present):
    """What programs of the baseline rely on and is changed or gone, as a report, or "".

    Programs never load a library with another soname, so that one breaks none.
    """
    if soname(baseline) != soname(present):
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
        raise BuildError(f"{command}\n{result.stdout}{result.stderr}")
    return result.stdout if result.returncode or not changed else ""
