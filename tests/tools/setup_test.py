# SPDX-License-Identifier: Apache-2.0

"""What the tools do before they build: tools/lib/setup.sh."""

import fcntl
import os
import pathlib
import shutil
import subprocess
import unittest

from program_test import ProgramTest

TOOLS = pathlib.Path(os.environ["TOOLS_DIR"])
WAITING = "Waiting for another tool that builds in this checkout\n"


class SetupTest(ProgramTest):
    """A folder with a checkout that has only the tools, and one with programs to be found first."""

    def setUp(self):
        super().setUp()
        self.checkout = self.folder / "checkout"
        shutil.copytree(TOOLS, self.checkout / "tools")
        self.programs = self.folder / "programs"
        self.programs.mkdir()
        self.environment = {**os.environ, "PATH": f"{self.programs}:{os.environ['PATH']}"}
        self.environment.pop("VOK_BUILDS_LOCKED", None)

    def command(self, script, checkout=None):
        checkout = checkout or self.checkout
        setup = f"set -euo pipefail; source '{checkout}/tools/lib/setup.sh'; {script}"
        return ["bash", "-c", setup, "tool"]

    def run_script(self, script, checkout=None, **environment):
        return subprocess.run(
            self.command(script, checkout), env={**self.environment, **environment},
            capture_output=True, text=True, check=False)

    def add_program(self, name, script):
        path = self.programs / name
        path.write_text(f"#!/bin/bash\n{script}", encoding="utf-8")
        path.chmod(0o755)


class Paths(SetupTest):
    def test_paths_that_cmake_does_not_take(self):
        for name in ["a;b", 'a"b', "a\\b"]:
            with self.subTest(name):
                checkout = self.folder / name
                shutil.copytree(TOOLS, checkout / "tools")
                self.assert_refused(
                    self.run_script("prepare_builds", checkout),
                    f"tool: {checkout}: CMake does not support a semicolon, quote or backslash in a path")


class BuildFolders(SetupTest):
    def test_are_locked(self):
        (self.checkout / "build").mkdir()
        with open(self.checkout / "build/.lock", "wb") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            with subprocess.Popen(
                    self.command("prepare_builds; echo building"), env=self.environment, text=True,
                    stdout=subprocess.PIPE, stderr=subprocess.PIPE) as second:
                self.assertEqual(second.stderr.readline(), WAITING)
                self.assertIsNone(second.poll())
                fcntl.flock(lock, fcntl.LOCK_UN)
                self.assertEqual(second.communicate(timeout=10), ("building\n", ""))

    def test_are_not_locked_against_tools_that_a_tool_starts(self):
        inner = " ".join(f"'{word}'" for word in ["bash", str(self.checkout / "inner")])
        (self.checkout / "inner").write_text(self.command("prepare_builds; echo inner")[2], encoding="utf-8")
        ended = self.run_script(f"prepare_builds; {inner}")
        self.assertEqual((ended.stdout, ended.stderr), ("inner\n", ""))


class Apt(SetupTest):
    def install(self, answer):
        """Installs a package that is missing; apt-get, called for the nth time, runs the script."""
        self.add_program("apt-get", f"echo \"$1\" >> '{self.folder}/calls'\n{answer}")
        self.add_program("sudo", 'shift; exec "$@"')
        return self.run_script("install_packages no-such-package")

    def calls(self):
        return (self.folder / "calls").read_text(encoding="utf-8").split()

    def test_locks_are_waited_for(self):
        ended = self.install(f"""
            count=$(wc -l < '{self.folder}/calls')
            case $count in 1 | 3)
              echo 'E: Could not get lock /var/lib/apt/lists/lock. It is held by process 1' >&2
              exit 100
            esac""")
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))
        self.assertEqual(
            ended.stdout,
            "Installing no-such-package\n" + 2 * "Waiting for another program that uses apt\n")
        self.assertEqual(self.calls(), ["update", "update", "install", "install"])

    def test_other_failures_are_shown(self):
        ended = self.install("echo 'E: no network'; exit 100")
        self.assertEqual(ended.stderr, "E: no network\ntool: apt-get update failed\n")
        self.assertEqual((ended.returncode, self.calls()), (2, ["update"]))


class Quietly(SetupTest):
    def test_output_is_shown_after_a_failure_only(self):
        for status, shown in [(0, ""), (3, "out\nerr\n")]:
            ended = self.run_script(f"quietly bash -c 'echo out; echo err >&2; exit {status}'")
            self.assertEqual((ended.returncode, ended.stdout, ended.stderr), (status, "", shown))


class Npm(SetupTest):
    @unittest.skipUnless(shutil.which("npm"), "needs npm")
    def test_runs_no_scripts_of_packages(self):
        ended = self.run_program(
            "npm", "--prefix", TOOLS.parent / "tests", "config", "get", "ignore-scripts")
        self.assertEqual(ended.stdout, "true\n")


if __name__ == "__main__":
    unittest.main()
