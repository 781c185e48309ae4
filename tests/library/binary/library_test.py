# SPDX-License-Identifier: Apache-2.0

"""The shared object: its names, what it exports and imports, how it is linked."""

import os
import pathlib
import platform
import re
import subprocess
import unittest

from elf import run, symbols

LIBRARY = pathlib.Path(os.environ["LIBRARY"])
OBJECTS = [pathlib.Path(name) for name in os.environ["OBJECTS"].split(":")]
ABI = os.environ["ABI"]


def object_of(source):
    return next(path for path in OBJECTS if path.name.startswith(source))


class Names(unittest.TestCase):
    def test_the_file_name_ends_in_the_version(self):
        self.assertEqual(LIBRARY.name, "libvok_rulecheck.so.1.4.0")

    def test_the_soname_ends_in_the_number_of_the_abi(self):
        self.assertIn(f"Library soname: [libvok_rulecheck.so.{ABI}]", run("readelf", "-dW", LIBRARY))

    def test_links_lead_from_the_shorter_names_to_the_file(self):
        for name in ("libvok_rulecheck.so", f"libvok_rulecheck.so.{ABI}"):
            self.assertEqual((LIBRARY.parent / name).resolve(), LIBRARY.resolve(), name)


class Exports(unittest.TestCase):
    def test_belong_to_the_namespace_or_to_the_registration(self):
        allowed = re.compile(r"_ZN?K?(T[VIS])?N?K?3vok9rulecheck"
                             r"|_ZN6google8protobuf5Arena18CreateMaybeMessageIN3vok9rulecheck"
                             r"|.*RuleService_2eproto")
        strangers = [name for name in symbols("-D", "--defined-only", LIBRARY)
                     if not allowed.match(name)]
        self.assertEqual(strangers, [])

    def test_hold_the_ten_functions_of_the_converter(self):
        names = run("nm", "-DC", "--defined-only", LIBRARY)
        functions = set(re.findall(r"vok::rulecheck::Converter::(\w+(?:\[abi:cxx11\])?\([^\n]*\))", names))
        functions = {name.replace("[abi:cxx11]", "") for name in functions}
        string = "std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >"
        package = "vok::rulecheck::"
        self.assertEqual(functions, {
            f"toString({package}Resource_Scheme)",
            f"toString({package}Reference_RefType)",
            f"toString({package}Violation_Severity)",
            f"toString({package}Scalar const&)",
            f"toString({package}Reference const&)",
            f"href({package}Resource const&)",
            f"toHtml({package}Resource const&, {string} const&)",
            f"toHtml({package}Link const&)",
            f"toHtml({package}Reference const&)",
            f"toHtml({package}Arg const&)",
        })


class Linking(unittest.TestCase):
    def setUp(self):
        self.dynamic = run("readelf", "-dW", LIBRARY)
        self.segments = run("readelf", "-lW", LIBRARY)

    def test_the_runtime_is_a_shared_library(self):
        self.assertRegex(self.dynamic, r"NEEDED.*\[libprotobuf\.so\.")

    def test_the_library_is_never_unmapped(self):
        self.assertRegex(self.dynamic, r"FLAGS_1.*NODELETE")

    def test_symbols_are_bound_at_load_and_relocations_then_read_only(self):
        self.assertRegex(self.dynamic, r"FLAGS_1.*NOW")
        self.assertIn("GNU_RELRO", self.segments)

    def test_not_every_symbol_is_bound_to_the_library_itself(self):
        self.assertNotIn("SYMBOLIC", self.dynamic)

    def test_the_stack_is_not_executable(self):
        self.assertRegex(self.segments, r"GNU_STACK .* RW +0")

    def test_code_needs_no_relocation(self):
        self.assertNotIn("TEXTREL", self.dynamic)

    def test_no_search_path_is_left_in_an_installed_library(self):
        result = subprocess.run(["cmake", "--install", LIBRARY.parent, "--prefix",
                                 LIBRARY.parent / "stage-of-library-test", "--component", "runtime"],
                                capture_output=True, text=True, check=True)
        installed = re.search(r"(\S+/libvok_rulecheck\.so\.1\.4\.0)", result.stdout).group(1)
        self.assertNotRegex(run("readelf", "-dW", installed), "RPATH|RUNPATH")


class Silence(unittest.TestCase):
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


class Hardening(unittest.TestCase):
    def setUp(self):
        if os.environ["HARDENED"] != "1":
            self.skipTest("hardening is switched off")

    def test_the_stack_is_protected(self):
        self.assertIn("__stack_chk_fail", symbols("-D", "--undefined-only", LIBRARY))

    @unittest.skipUnless(os.environ["COMPILER"] == "GNU", "glibc fortifies snprintf for g++ only")
    def test_calls_are_fortified(self):
        self.assertIn("__snprintf_chk", symbols("-D", "--undefined-only", LIBRARY))

    @unittest.skipUnless(platform.machine() == "x86_64", "what this looks for is of x86-64")
    def test_functions_begin_with_a_landing_pad(self):
        code = run("objdump", "-d", "--no-show-raw-insn", object_of("Converter.cpp"))
        functions = re.findall(r"<(_ZN3vok9rulecheck9Converter\w+)>:\n\s+\w+:\s+(\w+)", code)
        self.assertEqual(len(functions), 10)
        self.assertEqual({instruction for _, instruction in functions}, {"endbr64"})


if __name__ == "__main__":
    unittest.main()
