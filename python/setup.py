# SPDX-License-Identifier: Apache-2.0

"""Builds the package with an installed library, which pkg-config finds: pip install ./python"""

import pathlib
import shlex
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_py import build_py

HERE = pathlib.Path(__file__).resolve().parent


def pkg_config(*options):
    found = subprocess.run(["pkg-config", "--print-errors", *options, "vok_rulecheck"],
                           stdout=subprocess.PIPE, text=True, check=False)
    if found.returncode != 0:
        sys.exit("Install the library first, and name its pkgconfig folder in PKG_CONFIG_PATH")
    return shlex.split(found.stdout)


class BuildMessages(build_py):
    def run(self):
        super().run()
        (schema,) = pkg_config("--variable=schemadir")
        folder = f"{self.build_lib}/vok_rulecheck"
        subprocess.run(["protoc", f"-I{schema}", f"--python_out={folder}", f"--pyi_out={folder}",
                        f"{schema}/RuleService.proto"], check=True)


setup(
    name="vok_rulecheck",
    version=pkg_config("--modversion")[0],
    description="The protocol of the rule-check service: messages and their texts",
    license="Apache-2.0",
    packages=["vok_rulecheck"],
    package_data={"vok_rulecheck": ["*.pyi", "py.typed"]},
    install_requires=["protobuf"],
    ext_modules=[Extension(
        "vok_rulecheck.converter", ["converter.cpp"], language="c++",
        extra_compile_args=["-std=c++17", "-g0", "-fvisibility=hidden", *pkg_config("--cflags")],
        extra_link_args=[*pkg_config("--libs"), f"-Wl,-rpath,{pkg_config('--variable=libdir')[0]}",
                         f"-Wl,--version-script={HERE / 'converter.map'}"])],
    cmdclass={"build_py": BuildMessages})
