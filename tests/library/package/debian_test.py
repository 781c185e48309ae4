# SPDX-License-Identifier: Apache-2.0

"""The Debian packages that tools/package has built: their contents, and how users install and use them."""

import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

from readme import README, readme

HERE = pathlib.Path(__file__).resolve().parent
SOURCE = HERE.parents[2]
PACKAGES = SOURCE / "build/packages"
VERSION = os.environ["VERSION"]
RUNTIME = f"libvok-rulecheck{os.environ['ABI']}"
DEVELOPMENT = "libvok-rulecheck-dev"
PYTHON = "python3-vok-rulecheck"
PROGRAM = "rulecheck"
PYTHON_PAGE = SOURCE / "docs/python.md"


def run(*command, **options):
    return subprocess.run([str(word) for word in command], text=True, check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)


def succeed(*command, **options):
    result = run(*command, **options)
    if result.returncode != 0:
        raise AssertionError(f"{command}\n{result.stdout}")
    return result.stdout


def package(name):
    return next(PACKAGES.glob(f"{name}_*.deb"))


def field(name, key):
    return succeed("dpkg-deb", "--field", package(name), key).strip()


def folder_of_systems():
    """Where to make a system: in memory if there is enough, which takes half the time."""
    memory = pathlib.Path("/dev/shm")
    if memory.is_dir() and os.access(memory, os.W_OK):
        files = os.statvfs(memory)
        if not files.f_flag & (os.ST_NODEV | os.ST_NOEXEC) and files.f_bavail * files.f_frsize > 2**31:
            return str(memory)
    return tempfile.gettempdir()


def apt_sources():
    """The files that say where this system's packages come from."""
    return [path for path in (pathlib.Path("/etc/apt/sources.list"),
                              *sorted(pathlib.Path("/etc/apt/sources.list.d").iterdir()))
            if path.suffix in (".list", ".sources") and path.is_file()]


class FolderTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="debian-test-")
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        for name in (RUNTIME, DEVELOPMENT):
            succeed("dpkg-deb", "--extract", package(name), cls.folder / name)
        cls.library = next((cls.folder / RUNTIME).glob(f"usr/lib/*/libvok_rulecheck.so.{VERSION}"))
        cls.library_dir = f"usr/lib/{cls.library.parent.name}"


class Packages(FolderTest):
    def test_they_have_the_version_of_the_library(self):
        for name in (RUNTIME, DEVELOPMENT, PYTHON, PROGRAM, f"{RUNTIME}-dbgsym"):
            self.assertEqual(field(name, "Version"), VERSION, name)

    def test_the_runtime_package_depends_on_the_c_library_whose_loader_it_needs(self):
        versions = re.findall(r"Name: GLIBC_(\S+)", succeed("readelf", "-VW", self.library))
        # Packed relocations ask for a loader by this name; glibc 2.36 is the first that has it.
        numbers = ["2.36" if version == "ABI_DT_RELR" else version for version in versions]
        newest = max(numbers, key=lambda number: [int(part) for part in number.split(".")])
        self.assertIn(f"libc6 (>= {newest})", field(RUNTIME, "Depends"))

    def test_lintian_has_nothing_to_say(self):
        said = run("lintian", "--no-cfg", "--allow-root", "--pedantic", "--display-info",
                   "--tag-display-limit", "0", *sorted(PACKAGES.glob("*.deb")))
        self.assertEqual((said.returncode, said.stdout), (0, ""))


class Users(FolderTest):
    """Build and run the program of README.md."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        shutil.copytree(cls.folder / RUNTIME, cls.folder / "both", symlinks=True)
        shutil.copytree(cls.folder / DEVELOPMENT, cls.folder / "both", symlinks=True,
                        dirs_exist_ok=True)
        cls.library_path = str(cls.folder / "both" / cls.library_dir)
        cls.project = cls.folder / "project"
        cls.project.mkdir()
        (cls.project / "main.cpp").write_text(readme("cpp"))
        (cls.project / "CMakeLists.txt").write_text(readme("cmake"))
        (cls.project / "command.sh").write_text(readme("sh", "g++"))
        (cls.project / "example.py").write_text(readme("python", page=PYTHON_PAGE))
        (cls.project / "install.sh").write_text(readme("sh", "--install"))
        (cls.project / "documented_packages.txt").write_text(
            re.search(r"On Debian: `(.+?)`", README.read_text())[1])
        succeed("sh", "-e", "command.sh", cwd=cls.project,
                env={**os.environ, "PKG_CONFIG_PATH": f"{cls.library_path}/pkgconfig"})
        (cls.project / "a.out").rename(cls.project / "built_outside")

    def test_with_the_packages_unpacked(self):
        self.assertEqual(succeed(self.project / "built_outside"), readme("text"))

    def test_with_the_packages_installed_in_a_system_that_has_nothing_else(self):
        packages = (RUNTIME, DEVELOPMENT, PYTHON, PROGRAM)
        for name in packages:
            shutil.copy(package(name), self.project / f"{name}.deb")
        shutil.copytree(SOURCE / "apps/designs", self.project / "designs")
        shutil.copy(HERE / "use_packages.sh", self.project)
        (self.project / "source").mkdir()
        succeed("cp", "-R", "CMakeLists.txt", "cmake", "conformance", "packaging", "python", "rendering", "swig",
                self.project / "source", cwd=SOURCE)
        log = run("mmdebstrap", "--variant=apt", "--format=null",
                  f"--customize-hook=copy-in {self.project} /",
                  f"--customize-hook=chroot \"$1\" sh /project/use_packages.sh {' '.join(packages)}",
                  f"--customize-hook=copy-out /project/said {self.folder}", "", "-", *apt_sources(),
                  env={**os.environ, "TMPDIR": folder_of_systems()})
        if "running --customize-hook" not in log.stdout:
            self.skipTest("no such system could be made: " + log.stdout.splitlines()[-1])
        self.assertEqual(log.returncode, 0, log.stdout)
        self.assertEqual((self.folder / "said/python").read_text(), readme("text", page=PYTHON_PAGE))
        for how in ("runtime", "installed_from_source", "find_package", "pkg_config"):
            self.assertEqual((self.folder / "said" / how).read_text(), readme("text"), how)
        self.assertIn("LATCH", (self.folder / "said/findings").read_text())


class Reproducible(unittest.TestCase):
    @staticmethod
    def digests(folder):
        return {path.name: hashlib.sha256(path.read_bytes()).hexdigest() for path in folder.glob("*.deb")}

    def test_the_same_sources_give_the_same_bytes_wherever_they_are_built(self):
        with tempfile.TemporaryDirectory(prefix="another-place-") as folder:
            copy = pathlib.Path(folder) / "the sources"
            shutil.copytree(SOURCE, copy, ignore=shutil.ignore_patterns(".git", "build", "out", "node_modules"))
            succeed(copy / "tools/package", umask=0o027,
                    env={**os.environ, "TZ": "Pacific/Kiritimati", "LC_ALL": "C"})
            packages = self.digests(PACKAGES)
            self.assertEqual(len(packages), 7)
            self.assertEqual(self.digests(copy / "build/packages"), packages)


if __name__ == "__main__":
    unittest.main()
