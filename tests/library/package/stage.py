# SPDX-License-Identifier: Apache-2.0

"""Installs the library for tests and moves the installation.

usage: stage.py CMAKE BUILD_DIR WORK_DIR

The result is WORK_DIR/prefix. It was installed to another place first, so that
nothing in it can depend on where it was installed.
"""

import pathlib
import shutil
import subprocess
import sys

cmake, build_dir, work_dir = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
first, final = work_dir / "installed here", work_dir / "prefix"
for directory in (first, final):
    shutil.rmtree(directory, ignore_errors=True)
subprocess.run([cmake, "--install", build_dir, "--prefix", first], check=True, stdout=subprocess.DEVNULL)
first.rename(final)
