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


def run(*command, **options):
    result = subprocess.run([str(word) for word in command], text=True, check=False,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
    if result.returncode != 0:
        raise AssertionError(f"{command}\n{result.stdout}")


def digests(folder, pattern):
    found = {path.name: hashlib.sha256(path.read_bytes()).hexdigest()
             for path in folder.glob(pattern)}
    print(*(f"{digest}  {name}" for name, digest in sorted(found.items())), sep="\n")
    return found


class Reproducible(unittest.TestCase):
    def test_the_packages(self):
        with tempfile.TemporaryDirectory(prefix="another-place-") as folder:
            copy = pathlib.Path(folder) / "the sources"
            shutil.copytree(SOURCE, copy, ignore=shutil.ignore_patterns(
                ".git", "build", "out", "node_modules"))
            run(copy / "tools/package", umask=0o027,
                env={**os.environ, "TZ": "Pacific/Kiritimati", "LC_ALL": "C"})
            packages = digests(PACKAGES, "*.deb")
            self.assertEqual(len(packages), 7)
            self.assertEqual(digests(copy / "build/packages", "*.deb"), packages)


if __name__ == "__main__":
    unittest.main()
