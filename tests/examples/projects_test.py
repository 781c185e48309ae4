# SPDX-License-Identifier: Apache-2.0

"""The projects and commands of examples/, with the package installed as README.md says."""

import _ctypes
import ctypes
import os
import pathlib
import shutil
import subprocess
import unittest

from program_test import ProgramTest

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
PREFIX = pathlib.Path(os.environ["PREFIX"])
RUNTIME_PREFIXES = [path for path in os.environ["RUNTIME_PREFIXES"].split(";") if path]


class ProjectTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.work = self.folder / "recipes"
        shutil.copytree(EXAMPLES, self.work)
        self.install()

    def install(self):
        """The package under the home folder, with its libraries in lib."""
        installed = self.folder / "rulecheck"
        installed.mkdir()
        for path in PREFIX.iterdir():
            (installed / path.name).symlink_to(path)
        library = next(PREFIX.glob("**/libvok_rulecheck.so")).parent
        if not (installed / "lib/pkgconfig").exists():
            (installed / "lib").unlink(missing_ok=True)
            (installed / "lib").symlink_to(library)

    def run_script(self, name):
        """What a script of the recipes prints."""
        tools = [pathlib.Path(os.environ[tool]).parent
                 for tool in ("PROTOC", "CMAKE", "RULECHECK") if tool in os.environ]
        environment = {
            **os.environ, "HOME": str(self.folder),
            "PATH": ":".join([*map(str, tools), os.environ["PATH"]]),
            "CMAKE_PREFIX_PATH": ":".join(RUNTIME_PREFIXES),
            "CXXFLAGS": "-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror"}
        ended = subprocess.run(["sh", "-e", self.work / name], cwd=self.work, env=environment,
                               capture_output=True, text=True, check=False)
        self.assertEqual(ended.returncode, 0, ended.stdout + ended.stderr)
        return ended.stdout

    def assert_sends(self, program):
        """The program runs, and writes a request with the length that it says."""
        sent = subprocess.run([program], capture_output=True, check=True).stdout
        self.assertGreater(len(sent), 20)
        self.assertEqual(sent[0], len(sent) - 1)


class Cmake(ProjectTest):
    def test_finds_the_library(self):
        self.run_script("with_cmake.sh")
        self.assert_sends(self.work / "build/send_finding")


class FirstReport(ProjectTest):
    def test_is_written_as_the_page_says(self):
        self.run_script("first_report.sh")
        page = (self.work / "report.html").read_text(encoding="utf-8")
        for text in ("Width of a bus", 'href="file:///rtl/fifo.v#L12"', "fifo.v:12", "has 9 bits"):
            self.assertIn(text, page)


class Make(ProjectTest):
    def test_finds_the_library(self):
        self.run_script("with_make.sh")
        self.assert_sends(self.work / "send_finding")


class Meson(ProjectTest):
    def test_finds_the_library(self):
        self.run_script("with_meson.sh")
        self.assert_sends(self.work / "build/send_finding")


class Plugin(ProjectTest):
    def test_it_is_loaded_and_unloaded_twice(self):
        shutil.copy(self.work / "with_cmake.sh", self.work / "plugin")
        shutil.copytree(self.work / "plugin", self.work, dirs_exist_ok=True)
        self.run_script("with_cmake.sh")
        violation = b"\x08\x07\x10\x02"  # id: 7 severity: SEV_CRITICAL_WARNING
        for _ in range(2):
            plugin = ctypes.CDLL(self.work / "build/plugin.so")
            function = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_char_p, ctypes.c_size_t,
                                        ctypes.c_char_p, ctypes.c_size_t)(("severityWord", plugin))
            word = ctypes.create_string_buffer(32)
            for size, room, status in [(2, 32, -1), (3, 32, -1), (4, 16, -1), (4, 17, 0)]:
                self.assertEqual(function(violation, size, word, room), status, (size, room))
            self.assertEqual(word.value, b"critical warning")
            _ctypes.dlclose(plugin._handle)
            self.assertNotIn("plugin.so", pathlib.Path("/proc/self/maps").read_text())


class Decode(ProjectTest):
    def test_prints_what_the_page_says(self):
        body = subprocess.run(
            [os.environ["PROTOC"], "-I", PREFIX / "share/vok/rulecheck",
             "--encode=vok.rulecheck.Request", PREFIX / "share/vok/rulecheck/RuleService.proto"],
            input=(EXAMPLES / "request.txtpb").read_bytes(), capture_output=True, check=True).stdout
        (self.work / "stream").write_bytes(bytes([len(body)]) + body)
        self.assertEqual(self.run_script("decode.sh"), (EXAMPLES / "decode.txt").read_text())


if __name__ == "__main__":
    unittest.main()
