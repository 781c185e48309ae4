# SPDX-License-Identifier: Apache-2.0

"""The same sources give the same bytes, wherever and however they are built."""

import hashlib
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[3]
PACKAGES = SOURCE / "build/packages"
PREFIX = pathlib.Path(os.environ["WORK_DIR"]) / "prefix"


def run(*command, **options):
    result = subprocess.run([str(word) for word in command], text=True, check=False,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
    if result.returncode != 0:
        raise AssertionError(f"{command}\n{result.stdout}")


def digests(folder, pattern):
    found = {path.name: hashlib.sha256(path.read_bytes()).hexdigest()
             for path in folder.rglob(pattern) if not path.is_symlink()}
    print(*(f"{digest}  {name}" for name, digest in sorted(found.items())), sep="\n")
    return found


class Reproducible(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="another-place-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def copy_sources(self, name):
        copy = self.folder / name
        shutil.copytree(SOURCE, copy, ignore=shutil.ignore_patterns(
            ".git", "build", "out", "node_modules"))
        return copy

    @unittest.skipIf(os.environ["REASON_TO_SKIP"], os.environ["REASON_TO_SKIP"])
    def test_the_library(self):
        build = self.folder / "a build"
        run(os.environ["CMAKE"], "-G", "Ninja", "-S", self.copy_sources("the sources"), "-B", build,
            f"-DCMAKE_CXX_COMPILER={os.environ['CXX']}", "-DCMAKE_BUILD_TYPE=Release",
            f"-DCMAKE_MAKE_PROGRAM={os.environ['MAKE_PROGRAM']}",
            f"-DCMAKE_PREFIX_PATH={os.environ['RUNTIME_PREFIXES']}")
        run(os.environ["CMAKE"], "--build", build)
        run(os.environ["CMAKE"], "--install", build, "--prefix", self.folder / "prefix")
        libraries = digests(PREFIX, "libvok_rulecheck.so*")
        self.assertEqual(len(libraries), 1)
        self.assertEqual(digests(self.folder / "prefix", "libvok_rulecheck.so*"), libraries)

    def test_the_packages(self):
        copy = self.copy_sources("sources")
        run(copy / "tools/package", umask=0o027,
            env={**os.environ, "TZ": "Pacific/Kiritimati", "LC_ALL": "C"})
        packages = digests(PACKAGES, "*.deb")
        self.assertEqual(len(packages), 3)
        self.assertEqual(digests(copy / "build/packages", "*.deb"), packages)


if __name__ == "__main__":
    unittest.main()
