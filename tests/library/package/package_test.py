# SPDX-License-Identifier: Apache-2.0

"""The package as users meet it: consumer projects are configured, built and run."""

import itertools
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

from readme import readme

HERE = pathlib.Path(__file__).resolve().parent
SOURCE = HERE.parents[2]
CONSUMERS = HERE / "consumers"
CMAKE = os.environ["CMAKE"]
CXX = os.environ["CXX"]
WORK = pathlib.Path(os.environ["WORK_DIR"])
PREFIX = WORK / "prefix"
RUNTIME_PREFIXES = [path for path in os.environ["RUNTIME_PREFIXES"].split(";") if path]
PREFIX_PATH = ";".join([str(PREFIX), *RUNTIME_PREFIXES])
LIBRARY_DIR = next(PREFIX.glob("**/libvok_rulecheck.*")).parent if PREFIX.exists() else None

LOWEST_STANDARD = 11 if os.environ["PROTOBUF_RELEASE"].startswith("3.") else 17


def run(*command, env=None):
    """The finished process; its output is in the failure of a test that needed success."""
    return subprocess.run([str(part) for part in command], text=True, check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          env={**os.environ, **(env or {})})


class PackageTest(unittest.TestCase):
    def setUp(self):
        WORK.mkdir(parents=True, exist_ok=True)
        self.build = pathlib.Path(tempfile.mkdtemp(prefix=f"{self.id().split('.')[-1]}-", dir=WORK))
        self.addCleanup(shutil.rmtree, self.build, ignore_errors=True)

    def succeed(self, *command, env=None):
        result = run(*command, env=env)
        self.assertEqual(result.returncode, 0, f"{command}\n{result.stdout}")
        return result.stdout

    def configure(self, source, *options):
        if not any(option.startswith("-DCMAKE_PREFIX_PATH=") for option in options):
            options = (*options, f"-DCMAKE_PREFIX_PATH={';'.join(RUNTIME_PREFIXES)}")
        return run(CMAKE, "-G", "Ninja", "-S", source, "-B", self.build,
                   f"-DCMAKE_CXX_COMPILER={CXX}", f"-DCMAKE_MAKE_PROGRAM={os.environ['MAKE_PROGRAM']}",
                   f"-DPROTOC={os.environ['PROTOC']}", *options)

    def build_consumer(self, name, *options):
        """Builds a consumer project; returns the path of its program."""
        result = self.configure(CONSUMERS / name, f"-DLIBRARY_SOURCE_DIR={SOURCE}", *options)
        self.assertEqual(result.returncode, 0, result.stdout)
        self.succeed(CMAKE, "--build", self.build)
        return self.build / "program"


class FindPackage(PackageTest):
    def test_a_program_of_the_lowest_or_a_later_standard(self):
        for standard, build_type in ((LOWEST_STANDARD, "Debug"), (20, "Release")):
            with self.subTest(standard=standard):
                self.succeed(self.build_consumer(
                    "program", "-DADDED_BY=find_package", f"-DCMAKE_PREFIX_PATH={PREFIX_PATH}",
                    f"-DCMAKE_CXX_STANDARD={standard}", "-DCMAKE_CXX_EXTENSIONS=OFF",
                    f"-DCMAKE_BUILD_TYPE={build_type}"))

    def test_its_include_folder_is_absolute(self):
        targets = (LIBRARY_DIR / "cmake/vok_rulecheck/vok_rulecheckTargets.cmake").read_text()
        self.assertEqual(set(re.findall(r'INTERFACE_\w*INCLUDE_DIRECTORIES "(.*)"', targets)),
                         {"${_IMPORT_PREFIX}/include"})

    def test_another_major_or_a_later_minor_version_is_not_found(self):
        project = self.build / "project"
        project.mkdir()
        for version, accepted in (("1.4", True), ("1.0", True), ("0.9", False), ("1.5", False), ("2.0", False)):
            (project / "CMakeLists.txt").write_text(
                "cmake_minimum_required(VERSION 3.25)\nproject(p LANGUAGES CXX)\n"
                f"find_package(vok_rulecheck {version} REQUIRED)\n")
            result = self.configure(project, f"-DCMAKE_PREFIX_PATH={PREFIX_PATH}")
            self.assertEqual(result.returncode == 0, accepted, f"{version}\n{result.stdout}")


class Options(PackageTest):
    def test_by_default_nothing_is_looked_for_that_the_library_does_not_need(self):
        self.assertEqual(self.configure(SOURCE).returncode, 0)
        cache = (self.build / "CMakeCache.txt").read_text()
        self.assertEqual(re.findall("(?i)CLI11|GTest|Python3?_|mustache|benchmark_DIR", cache), [])

    def test_an_optional_part_whose_packages_are_missing_is_left_out_with_one_line(self):
        result = self.configure(
            SOURCE, *(f"-DVOK_RULECHECK_BUILD_{part}=ON" for part in ("APPS", "PYTHON", "TESTS")),
            *(f"-DCMAKE_DISABLE_FIND_PACKAGE_{package}=ON" for package in ("CLI11", "GTest", "pybind11")))
        self.assertEqual(result.returncode, 0, result.stdout)
        for line in ("-- Without CLI11, nlohmann's JSON, kainjow's mustache, pkg-config and RE2 "
                     "there are no programs",
                     "-- Without pybind11, and Python with its headers and google.protobuf "
                     f"{os.environ['PROTOBUF_RELEASE']}, there is no Python package",
                     "-- Without GoogleTest and Python 3 there are no tests"):
            self.assertEqual(result.stdout.splitlines().count(line), 1, result.stdout)


class Packager(PackageTest):
    """Builds as those make them who package the library for others."""

    def test_flags_names_and_folders_of_a_packager_are_kept(self):
        self.build /= "a$b, c"
        outside = tempfile.TemporaryDirectory()
        self.addCleanup(outside.cleanup)
        folders = {name: pathlib.Path(outside.name, name) for name in ("LIBDIR", "INCLUDEDIR")}
        result = self.configure(
            SOURCE, "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_DEBUG_POSTFIX=d",
            "-DCMAKE_CXX_FLAGS=-O2 -D_FORTIFY_SOURCE=3 -Werror",
            *(f"-DCMAKE_INSTALL_{name}={path}" for name, path in folders.items()))
        self.assertEqual(result.returncode, 0, result.stdout)
        self.succeed(CMAKE, "--build", self.build)
        self.succeed(CMAKE, "--install", self.build, "--prefix", self.build / "prefix")
        commands = self.succeed(os.environ["MAKE_PROGRAM"], "-C", self.build, "-t", "commands")
        self.assertEqual(set(re.findall(r"_FORTIFY_SOURCE\S*", commands)), {"_FORTIFY_SOURCE=3"})
        flags = self.succeed("pkg-config", "--cflags", "--libs", "vok_rulecheck",
                             env={"PKG_CONFIG_PATH": f"{folders['LIBDIR']}/pkgconfig:"
                                                     f"{search_path_of_pkg_config()}"})
        for flag in (f"-I{folders['INCLUDEDIR']}", f"-L{folders['LIBDIR']}", "-lvok_rulecheckd"):
            self.assertIn(flag, flags.split())
        self.assertTrue((folders["LIBDIR"] / "libvok_rulecheckd.so").exists())


class Subdirectory(PackageTest):
    def test_a_host_keeps_its_own_kind_of_libraries_and_installs_its_own_files(self):
        self.succeed(self.build_consumer("program", "-DADDED_BY=add_subdirectory"))
        self.assertTrue((self.build / "libown.a").is_file())
        self.assertNotIn("BUILD_SHARED_LIBS", (self.build / "CMakeCache.txt").read_text())
        prefix = self.build / "prefix"
        self.succeed(CMAKE, "--install", self.build, "--prefix", prefix)
        self.assertEqual([path.name for path in prefix.rglob("*") if path.is_file()], ["program"])


class FetchContent(PackageTest):
    def test_fetched_and_linked_statically_with_link_time_optimization(self):
        self.succeed(self.build_consumer(
            "program", "-DADDED_BY=FetchContent", "-DCMAKE_BUILD_TYPE=Release", "-DBUILD_SHARED_LIBS=OFF",
            "-DCMAKE_INTERPROCEDURAL_OPTIMIZATION=ON", "-DCMAKE_CXX_FLAGS=-flto=auto"))
        self.assertEqual(list(self.build.glob("**/libvok_rulecheck.so*")), [])


class Logging(PackageTest):
    def test_bytes_that_are_not_utf8_log_nothing_in_a_debug_build(self):
        program = self.build_consumer("logging", "-DCMAKE_BUILD_TYPE=Debug")
        self.assertEqual(self.succeed(program), "")
        imports = self.succeed("nm", "-D", "--undefined-only",
                               next(self.build.glob("**/libvok_rulecheck.so.1")))
        self.assertNotIn("utf8", imports.lower())
        # The host's own strings are checked, so a log line would have been seen.
        # Releases after 3.21 check no proto2 string in generated code.
        if os.environ["PROTOBUF_RELEASE"].startswith("3."):
            self.assertIn("UTF-8", self.succeed(program, "host"))


def search_path_of_pkg_config():
    runtimes = [str(path) for prefix in RUNTIME_PREFIXES
                for path in pathlib.Path(prefix).glob("lib*/**/pkgconfig")]
    return ":".join([f"{LIBRARY_DIR}/pkgconfig", *runtimes])


def pkg_config(*options):
    result = run("pkg-config", *options, "vok_rulecheck",
                 env={"PKG_CONFIG_PATH": search_path_of_pkg_config()})
    assert result.returncode == 0, result.stdout
    return result.stdout.split()


class PkgConfig(PackageTest):
    def test_readmes_command_gives_a_program_that_starts(self):
        (self.build / "main.cpp").write_text(readme("cpp"))
        self.succeed("sh", "-e", "-c", f"cd '{self.build}'\n" + readme("sh", "g++"),
                     env={"PKG_CONFIG_PATH": search_path_of_pkg_config()})
        self.assertEqual(self.succeed(self.build / "a.out"), readme("text"))

    def test_a_program_that_names_nothing_of_the_library_keeps_it_by_readmes_line(self):
        for line, status in ((readme("cpp", "descriptor();"), 0), ("", 1)):
            (self.build / "main.cpp").write_text(
                "#include <google/protobuf/descriptor.h>\n#include <vok/rulecheck/RuleService.pb.h>\n"
                f"int main() {{\n{line}\nreturn google::protobuf::DescriptorPool::generated_pool()"
                "->FindFileByName(\"RuleService.proto\") == nullptr;\n}\n")
            self.succeed(CXX, "-std=c++17", "-Wl,--as-needed", self.build / "main.cpp",
                         "-o", self.build / "program", *pkg_config("--cflags", "--libs"),
                         f"-Wl,-rpath,{LIBRARY_DIR}")
            self.assertEqual(run(self.build / "program").returncode, status, f"with: {line}")

    def test_paths_follow_the_installation(self):
        real = {str(pathlib.Path(flag[2:]).resolve()) for flag in pkg_config("--cflags", "--libs")
                if flag[:2] in ("-I", "-L")}
        self.assertIn(str(PREFIX / "include"), real)
        self.assertIn(str(LIBRARY_DIR), real)

    def test_a_runtime_with_the_same_abi_is_required(self):
        major, minor = map(int, os.environ["PROTOBUF_ABI"].split("."))
        for version, accepted in ((f"{major}.{minor - 1}.99", False), (f"{major}.{minor}.99", True),
                                  (f"{major}.{minor + 1}.0", False)):
            (self.build / "protobuf.pc").write_text(
                f"Name: protobuf\nDescription: fake\nVersion: {version}\n")
            result = run("pkg-config", "--exists", "vok_rulecheck",
                         env={"PKG_CONFIG_PATH": f"{self.build}:{LIBRARY_DIR}/pkgconfig"})
            self.assertEqual(result.returncode == 0, accepted, version)
        self.assertEqual(pkg_config("--modversion"), ["1.4.0"])


class Components(PackageTest):
    """What "cmake --install" installs, whole and by component."""

    def setUp(self):
        super().setUp()
        self.shared = os.environ["SHARED"] == "1"
        self.folder = LIBRARY_DIR.relative_to(PREFIX)

    def install(self, *options):
        """Installs into a folder of its own; returns it and the files in it."""
        prefix = pathlib.Path(tempfile.mkdtemp(dir=self.build))
        self.succeed(CMAKE, "--install", os.environ["BUILD_DIR"], "--prefix", prefix, *options)
        return prefix, {str(path.relative_to(prefix)) for path in prefix.rglob("*")
                        if not path.is_dir()}

    def runtime_files(self):
        if not self.shared:
            return set()
        return {f"{self.folder}/libvok_rulecheck.so.{os.environ[number]}"
                for number in ("ABI", "VERSION")}

    def development_files(self):
        return {
            "include/vok/rulecheck/Converter.h",
            "include/vok/rulecheck/RuleService.pb.h",
            f"{self.folder}/cmake/vok_rulecheck/VokProtobuf.cmake",
            f"{self.folder}/cmake/vok_rulecheck/vok_rulecheckConfig.cmake",
            f"{self.folder}/cmake/vok_rulecheck/vok_rulecheckConfigVersion.cmake",
            f"{self.folder}/cmake/vok_rulecheck/vok_rulecheckTargets.cmake",
            f"{self.folder}/cmake/vok_rulecheck/vok_rulecheckTargets-"
            f"{os.environ['BUILD_TYPE'].lower()}.cmake",
            f"{self.folder}/libvok_rulecheck.{'so' if self.shared else 'a'}",
            f"{self.folder}/pkgconfig/vok_rulecheck.pc",
            "share/vok/rulecheck/RuleService.proto",
            "share/vok/rulecheck/conformance/rendering.jsonl",
            "share/vok/rulecheck/conformance/wire.jsonl",
        }

    def python_files(self):
        folder = os.environ["PYTHON_DIR"]
        names = ("RuleService_pb2.py", "RuleService_pb2.pyi", "__init__.py", "__main__.py",
                 "converter.SOABI.so", "converter.pyi", "delimited.py", "py.typed")
        return {f"{folder}/vok_rulecheck/{name}" for name in names if folder}

    def test_each_installs_its_files_and_together_they_are_the_whole(self):
        for options, files in (
                (("--component", "runtime"), self.runtime_files()),
                (("--component", "development"), self.development_files()),
                (("--component", "python"), self.python_files()),
                ((), self.runtime_files() | self.development_files() | self.python_files())):
            with self.subTest(options=options):
                installed = {re.sub(r"\.cpython-.*\.so$", ".SOABI.so", name)
                             for name in self.install(*options)[1]}
                self.assertEqual(installed, files)

class Maps(PackageTest):
    def test_are_shared_by_programs_however_these_are_compiled(self):
        program = self.build / "program"
        for standard, options in itertools.product(
                (LOWEST_STANDARD, 17),
                ("-O0", "-O0 -DNDEBUG", "-O2", "-O2 -DNDEBUG", "-O3 -fvisibility=hidden")):
            with self.subTest(standard=standard, options=options):
                self.succeed(CXX, f"-std=c++{standard}", *options.split(),
                             CONSUMERS / "maps/main.cpp", "-o", program,
                             *pkg_config("--cflags", "--libs"), f"-Wl,-rpath,{LIBRARY_DIR}")
                self.succeed(program)


class Schema(PackageTest):
    SCHEMA_DIR = PREFIX / "share/vok/rulecheck"

    def test_the_installed_schema_gives_the_code_that_the_library_holds(self):
        self.succeed(os.environ["PROTOC"], f"--proto_path={self.SCHEMA_DIR}",
                     f"--cpp_out={self.build}", self.SCHEMA_DIR / "RuleService.proto")
        for name in ("RuleService.pb.h", "RuleService.pb.cc"):
            self.assertEqual((self.build / name).read_bytes(),
                             (pathlib.Path(os.environ["GENERATED_DIR"]) / name).read_bytes(), name)

    def test_a_schema_that_imports_it_uses_the_librarys_types(self):
        consumer = CONSUMERS / "importing"
        self.succeed(os.environ["PROTOC"], f"--proto_path={self.SCHEMA_DIR}", f"--proto_path={consumer}",
                     f"--cpp_out={self.build}", consumer / "bundle.proto")
        # Generated code includes what it imports by the name of the schema.
        self.succeed(CXX, f"-std=c++{LOWEST_STANDARD}", f"-I{self.build}", f"-I{PREFIX}/include/vok/rulecheck",
                     consumer / "main.cpp", self.build / "bundle.pb.cc", "-o", self.build / "program",
                     *pkg_config("--cflags", "--libs"), f"-Wl,-rpath,{LIBRARY_DIR}")
        self.succeed(self.build / "program")


class Programs(PackageTest):
    def test_build_on_their_own_against_the_installed_package(self):
        result = self.configure(SOURCE / "apps", f"-DCMAKE_PREFIX_PATH={PREFIX_PATH}",
                                "-DCMAKE_DISABLE_FIND_PACKAGE_gRPC=ON",
                                "-DCMAKE_UNITY_BUILD=ON", "-DCMAKE_UNITY_BUILD_BATCH_SIZE=0")
        self.assertEqual(result.returncode, 0, result.stdout)
        self.succeed(CMAKE, "--build", self.build)
        session = self.build / "session.txtpb"
        page = self.build / "report.html"
        session.write_text('session { name: "of an outside project" }')
        self.succeed(self.build / "rulecheck/rulecheck", "html", session, "-o", page)
        self.assertIn("of an outside project", page.read_text())


class Headers(PackageTest):
    FLAGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wshadow", "-Wconversion", "-Werror",
             "-fsyntax-only", "-x", "c++"]

    def test_compile_without_warning_in_every_standard(self):
        if not os.environ["PROTOBUF_RELEASE"].startswith("3.21."):
            self.skipTest("headers that other releases generate have warnings of their own")
        source = self.build / "source.cpp"
        for standard in ("11", "14", "17", "20", "2b"):
            for header in ("RuleService.pb.h", "Converter.h"):
                source.write_text(f"#include <vok/rulecheck/{header}>\n")
                with self.subTest(standard=standard, header=header):
                    self.succeed(CXX, f"-std=c++{standard}", *self.FLAGS, f"-I{PREFIX}/include",
                                 *(f"-isystem{path}/include" for path in RUNTIME_PREFIXES), source)

    def test_need_no_macro_of_ours(self):
        self.assertNotIn("VOK_", (PREFIX / "include/vok/rulecheck/RuleService.pb.h").read_text())


class Readme(PackageTest):
    def setUp(self):
        super().setUp()
        (self.build / "main.cpp").write_text(readme("cpp"))

    def test_its_project_builds_its_example_which_prints_what_it_says(self):
        (self.build / "CMakeLists.txt").write_text(readme("cmake"))
        result = self.configure(self.build, f"-DCMAKE_PREFIX_PATH={PREFIX_PATH}",
                                "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Wpedantic -Wconversion -Werror")
        self.assertEqual(result.returncode, 0, result.stdout)
        self.succeed(CMAKE, "--build", self.build)
        self.assertEqual(self.succeed(self.build / "program"), readme("text"))


class Refusals(PackageTest):
    """Configurations that cannot work stop with one sentence."""

    def fake_protobuf(self, headers, compiler, library="libprotobuf.so"):
        """A prefix that looks like Protocol Buffers of these releases."""
        prefix = self.build / "protobuf"
        stubs = prefix / "include/google/protobuf/stubs"
        for directory in (stubs, prefix / "lib", prefix / "bin"):
            directory.mkdir(parents=True)
        (stubs / "common.h").write_text(f"#define GOOGLE_PROTOBUF_VERSION {headers}\n")
        (prefix / "lib" / library).touch()
        protoc = prefix / "bin/protoc"
        protoc.write_text(f"#!/bin/sh\necho libprotoc {compiler}\n")
        protoc.chmod(0o755)
        return prefix

    def refuse(self, source, sentence, *options):
        result = self.configure(source, *options)
        self.assertNotEqual(result.returncode, 0, result.stdout)
        self.assertIn(sentence, " ".join(result.stdout.split()))

    def test_a_runtime_that_cannot_be_used(self):
        for headers, compiler, library, sentence in (
                ("3002000", "3.2.0", "libprotobuf.so",
                 "Protocol Buffers 3.2.0 is too old: release 3.3.0 or later is needed."),
                ("3012004", "3.21.12", "libprotobuf.so",
                 "does not match the runtime, Protocol Buffers 3.12.4: install both from one release."),
                ("3012004", "3.12.4", "libprotobuf.a",
                 "was found as a static library: a shared one is needed.")):
            with self.subTest(sentence):
                prefix = self.fake_protobuf(headers, compiler, library)
                self.refuse(SOURCE, sentence, f"-DCMAKE_PREFIX_PATH={prefix}",
                            "-DCMAKE_FIND_USE_CMAKE_SYSTEM_PATH=OFF")
                shutil.rmtree(self.build)

    def test_no_compiler(self):
        prefix = self.fake_protobuf("3012004", "3.12.4")
        (prefix / "bin/protoc").unlink()
        self.refuse(SOURCE, "protoc, the compiler of Protocol Buffers 3.12.4, was not found",
                    f"-DCMAKE_PREFIX_PATH={prefix}", "-DCMAKE_FIND_USE_CMAKE_SYSTEM_PATH=OFF",
                    "-DCMAKE_FIND_USE_SYSTEM_ENVIRONMENT_PATH=OFF")

    def test_no_runtime(self):
        self.refuse(SOURCE, "Protocol Buffers was not found: install its development package",
                    "-DCMAKE_PREFIX_PATH=", "-DCMAKE_FIND_USE_CMAKE_SYSTEM_PATH=OFF",
                    "-DCMAKE_FIND_USE_SYSTEM_ENVIRONMENT_PATH=OFF")

    def test_the_package_refuses_a_runtime_with_another_abi(self):
        prefix = self.fake_protobuf("3020003", "3.20.3")
        self.refuse(CONSUMERS / "program",
                    f"vok_rulecheck was built with Protocol Buffers "
                    f"{os.environ['PROTOBUF_RELEASE']} and needs a release with the same ABI",
                    "-DADDED_BY=find_package", f"-DCMAKE_PREFIX_PATH={prefix};{PREFIX}")

    def test_the_package_accepts_another_patch_of_the_same_release(self):
        if not os.environ["PROTOBUF_RELEASE"].startswith("3."):
            self.skipTest("later releases have another ABI for each patch")
        minor = int(os.environ["PROTOBUF_ABI"].split(".")[1])
        prefix = self.fake_protobuf(f"3{minor:03}099", f"3.{minor}.99")
        result = self.configure(CONSUMERS / "program", "-DADDED_BY=find_package",
                                f"-DLIBRARY_SOURCE_DIR={SOURCE}", f"-DCMAKE_PREFIX_PATH={prefix};{PREFIX}")
        self.assertEqual(result.returncode, 0, result.stdout)


if __name__ == "__main__":
    unittest.main()
