# SPDX-License-Identifier: Apache-2.0

"""The shared object: what it exports and imports, how it is linked, what the loader has to do for it,
how large it is, and that programs see its objects."""

import os
import pathlib
import platform
import re
import subprocess
import tempfile
import unittest

from elf import own_functions_in, relocations, run, symbols

LIBRARY = pathlib.Path(os.environ["LIBRARY"])
OBJECTS = [pathlib.Path(name) for name in os.environ["OBJECTS"].split(":")]
# The same sources built with CMake's default Release flags; empty where the figures don't hold.
PLAIN_LIBRARY = os.environ["PLAIN_LIBRARY"]
REASON_TO_SKIP = "the figures are those of g++, Protocol Buffers 3.21, Release and packed relocations"


def object_of(source):
    return next(path for path in OBJECTS if path.name.startswith(source))


class Exports(unittest.TestCase):
    def test_are_in_the_namespace_or_part_of_the_registration(self):
        allowed = re.compile(r"_ZN?K?(T[VIS])?N?K?3vok9rulecheck"
                             r"|_ZN6google8protobuf5Arena18CreateMaybeMessageIN3vok9rulecheck"
                             r"|.*RuleService_2eproto")
        exported = symbols("-D", "--defined-only", LIBRARY)
        self.assertEqual([name for name in exported if not allowed.match(name)], [])
        self.assertTrue(any("RuleService_2eproto" in name for name in exported))


class Linking(unittest.TestCase):
    def test_is_as_documented(self):
        dynamic = run("readelf", "-dW", LIBRARY)
        for what, pattern in (("the runtime is a shared library", r"NEEDED.*\[libprotobuf\.so\."),
                              ("the library is never unmapped", "FLAGS_1.*NODELETE"),
                              ("symbols are bound at load", "FLAGS_1.*NOW")):
            with self.subTest(what):
                self.assertRegex(dynamic, pattern)
        self.assertNotRegex(dynamic, "SYMBOLIC|TEXTREL")
        segments = run("readelf", "-lW", LIBRARY)
        self.assertIn("GNU_RELRO", segments)
        self.assertRegex(segments, r"GNU_STACK .* RW +0")

    def test_no_search_path_is_left_in_an_installed_library(self):
        result = subprocess.run(["cmake", "--install", LIBRARY.parent, "--prefix",
                                 LIBRARY.parent / "stage-of-library-test", "--component", "runtime"],
                                capture_output=True, text=True, check=True)
        installed = re.search(r"(\S+/libvok_rulecheck\.so\.1\.4\.0)", result.stdout).group(1)
        self.assertNotRegex(run("readelf", "-dW", installed), "RPATH|RUNPATH")


class Sources(unittest.TestCase):
    def test_no_check_for_utf8_is_imported(self):
        imports = symbols("-D", "--undefined-only", LIBRARY)
        self.assertEqual([name for name in imports if "utf8" in name.lower()], [])

    def test_the_converter_has_no_static_object_and_no_iostream(self):
        for source in ("Converter.cpp", "numbers.cpp"):
            table = run("readelf", "-SW", object_of(source))
            self.assertEqual(re.findall(r" \.(?:init_array|fini_array|ctors|dtors)\S*", table), [])
            writable = re.findall(r" (\.(?:data|bss|tdata|tbss)) +\w+ +\w+ \w+ (\w+)", table)
            self.assertEqual([name for name, size in writable if int(size, 16)], [])
            self.assertNotIn("ios_base", run("nm", object_of(source)))


@unittest.skipIf(os.environ["HARDENED"] != "1", "hardening is switched off")
class Hardening(unittest.TestCase):
    def test_the_stack_is_protected_and_calls_are_fortified(self):
        imports = symbols("-D", "--undefined-only", LIBRARY)
        self.assertIn("__stack_chk_fail", imports)
        if os.environ["COMPILER"] == "GNU":  # glibc fortifies snprintf for g++ only
            self.assertIn("__snprintf_chk", imports)

    @unittest.skipUnless(platform.machine() == "x86_64", "landing pads are those of x86-64")
    def test_functions_begin_with_a_landing_pad(self):
        code = run("objdump", "-d", "--no-show-raw-insn", object_of("Converter.cpp"))
        functions = re.findall(r"<(_ZN3vok9rulecheck9Converter\w+)>:\n\s+\w+:\s+(\w+)", code)
        self.assertEqual([instruction for _, instruction in functions], ["endbr64"] * 10)


@unittest.skipUnless(PLAIN_LIBRARY, REASON_TO_SKIP)
class Relocations(unittest.TestCase):
    def test_with_a_symbol_are_fewer_than_800_and_others_are_packed(self):
        self.assertIn(len(relocations(LIBRARY)), range(1, 800))
        self.assertNotIn("R_X86_64_RELATIVE", relocations(LIBRARY))
        self.assertIn("(RELR)", run("readelf", "-dW", LIBRARY))


class StaticObjects(unittest.TestCase):
    def test_only_the_registration_is_initialized(self):
        initializers = own_functions_in(LIBRARY, ".init_array")
        self.assertEqual(len(initializers), 1, initializers)
        self.assertRegex(initializers[0], r"^_GLOBAL__sub_I.*RuleService\.pb\.cc$")

    def test_none_is_destroyed(self):
        self.assertEqual(own_functions_in(LIBRARY, ".fini_array"), [])
        imports = symbols("-D", "--undefined-only", LIBRARY)
        self.assertEqual([name for name in imports if "atexit" in name], [])


@unittest.skipUnless(PLAIN_LIBRARY, REASON_TO_SKIP)
class Size(unittest.TestCase):
    def stripped_size(self, path):
        with tempfile.TemporaryDirectory() as folder:
            stripped = pathlib.Path(folder) / "stripped.so"
            run("strip", "-o", stripped, path)
            return stripped.stat().st_size

    def test_without_symbols_is_at_most_72_percent_of_the_plain_librarys(self):
        self.assertLessEqual(self.stripped_size(LIBRARY), 0.72 * self.stripped_size(PLAIN_LIBRARY))


class Identity(unittest.TestCase):
    """Default instances, descriptors and types are the library's, also where the linker gave the
    program copies of them."""

    def test_a_program_and_its_plugin_see_the_librarys_objects(self):
        fixed, movable, plugin = (os.environ[name] for name in ("FIXED_PROGRAM", "MOVABLE_PROGRAM", "PLUGIN"))
        self.assertRegex(" ".join(relocations(fixed)), "_COPY")
        self.assertNotRegex(" ".join(relocations(plugin)), "_COPY")
        for program in (fixed, movable):
            with self.subTest(program):
                ended = subprocess.run([program, plugin], capture_output=True, text=True, check=False)
                self.assertEqual((ended.stdout, ended.returncode), ("38 types\n", 0), ended.stderr)


if __name__ == "__main__":
    unittest.main()
