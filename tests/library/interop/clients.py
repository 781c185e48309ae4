# SPDX-License-Identifier: Apache-2.0

"""The clients: what each one needs, how it is built from the schema, and how it is run."""

import functools
import pathlib
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
NODE_MODULES = HERE.parents[1] / "node_modules"


def run(*command, **options):
    """Its standard output. What it says is the error's message if it fails."""
    ended = subprocess.run([str(word) for word in command], capture_output=True, text=True,
                           check=False, **options)
    if ended.returncode != 0:
        raise RuntimeError(f"{command} failed:\n{ended.stdout}{ended.stderr}")
    return ended.stdout


def generate(schema, *options):
    """Runs the distribution's compiler, the one that its runtimes go with."""
    run("protoc", f"--proto_path={schema.parent}", *options, schema.name)


def programs_missing(*names):
    return [f"there is no {name}" for name in names if not shutil.which(name)]


class Python:
    def __init__(self, implementation, *variables):
        """The runtime uses that implementation if the environment has those variables."""
        self.implementation, self.variables = implementation, variables

    @functools.cached_property
    def interpreter(self):
        """The first one that has the runtime: Debian's, if that of the tests lacks it."""
        return next(filter(self.has_runtime, [sys.executable, "/usr/bin/python3"]), None)

    def has_runtime(self, interpreter):
        program = "from google.protobuf.internal import api_implementation as a; print(a.Type())"
        ended = subprocess.run(["env", *self.variables, interpreter, "-c", program],
                               capture_output=True, text=True, check=False)
        return ended.stdout.strip() == self.implementation

    def missing(self):
        runtime = [] if self.interpreter else [
            f"no python3 has google.protobuf with the implementation {self.implementation}"]
        return programs_missing("protoc") + runtime

    def build(self, schema, folder):
        generate(schema, f"--python_out={folder}")
        shutil.copy(HERE / "client.py", folder)
        return ["env", *self.variables, self.interpreter, "-B", folder / "client.py"]


class Java:
    jar = pathlib.Path("/usr/share/java/protobuf.jar")

    def missing(self):
        runtime = [] if self.jar.exists() else [f"there is no {self.jar}"]
        return programs_missing("protoc", "javac", "java") + runtime

    def build(self, schema, folder):
        sources, classes = folder / "sources", folder / "classes"
        sources.mkdir()
        generate(schema, f"--java_out={sources}")
        run("javac", "-encoding", "UTF-8", "-cp", self.jar, "-d", classes,
            HERE / "Client.java", *sources.rglob("*.java"))
        return ["java", "-cp", f"{classes}:{self.jar}", "Client"]


class JavaScript:
    """Modules in a folder of their own, from where they find the packages of the tests."""

    def __init__(self, runtime, client, *options):
        self.runtime, self.client, self.options = runtime, client, options

    def missing(self):
        packages = [] if (NODE_MODULES / self.runtime).exists() else [
            f"{NODE_MODULES} has no {self.runtime}: run npm ci in {NODE_MODULES.parent}"]
        return programs_missing("protoc", "node") + packages

    def build(self, schema, folder):
        (folder / "package.json").write_text('{"type": "module"}', encoding="utf-8")
        (folder / "node_modules").symlink_to(NODE_MODULES)
        for module in (self.client, "javascript.mjs"):
            shutil.copy(HERE / module, folder)
        self.generate(schema, folder)
        return ["node", folder / self.client, *self.options]

    def generate(self, schema, folder):
        tools = NODE_MODULES / ".bin"
        if self.runtime == "protobufjs":
            run("node", tools / "pbjs", "--target", "static-module", "--wrap", "esm", "--es6",
                "--out", folder / "RuleService.js", schema)
        else:
            generate(schema, f"--plugin={tools / 'protoc-gen-es'}", "--es_opt=target=js",
                     f"--es_out={folder}")


CLIENTS = {
    "python_cpp": Python("cpp"),
    "python_pure": Python("python", "PROTOCOL_BUFFERS_PYTHON_IMPLEMENTATION=python"),
    "java": Java(),
    "javascript_es": JavaScript("@bufbuild/protobuf", "client_es.mjs"),
    "javascript_protobufjs": JavaScript("protobufjs", "client_protobufjs.mjs"),
    "javascript_protobufjs_keeping": JavaScript("protobufjs", "client_protobufjs.mjs",
                                                "--keep-unknown"),
}
