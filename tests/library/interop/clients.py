#!/usr/bin/env python3
"""The clients: what each one needs, how it is built from the schema, and how it is run."""

import argparse
import functools
import json
import os
import pathlib
import shlex
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
NODE_MODULES = HERE.parent / "node_modules"


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
    generated = "RuleService_pb2.py"

    def __init__(self, column, implementation, *variables):
        """The runtime uses that implementation if the environment has those variables."""
        self.column, self.implementation, self.variables = column, implementation, variables

    @functools.cached_property
    def interpreter(self):
        """That of the tests need not be the one that has the runtime."""
        return next(filter(self.has_runtime, [sys.executable, "/usr/bin/python3"]), None)

    def ask_runtime(self, interpreter, what):
        return subprocess.run(
            ["env", *self.variables, interpreter, "-c", "import google.protobuf; "
             f"from google.protobuf.internal import api_implementation; print({what})"],
            capture_output=True, text=True, check=False).stdout.strip()

    def has_runtime(self, interpreter):
        return (os.access(interpreter, os.X_OK) and
                self.ask_runtime(interpreter, "api_implementation.Type()") == self.implementation)

    def missing(self):
        runtime = [] if self.interpreter else [
            f"no python3 has google.protobuf with the implementation {self.implementation}"]
        return programs_missing("protoc") + runtime

    def version(self):
        return self.ask_runtime(self.interpreter, "google.protobuf.__version__")

    def build(self, schema, folder):
        generate(schema, f"--python_out={folder}")
        shutil.copy(HERE / "client.py", folder)
        return ["env", *self.variables, self.interpreter, "-B", folder / "client.py"]


class Java:
    column = "Java"
    generated = "classes/ui/vok/rulecheck/pb/RuleService.class"
    jar = pathlib.Path("/usr/share/java/protobuf.jar")

    def missing(self):
        runtime = [] if self.jar.exists() else [f"there is no {self.jar}"]
        return programs_missing("protoc", "javac", "java") + runtime

    def version(self):
        return self.jar.resolve().stem.removeprefix("protobuf-")

    def build(self, schema, folder):
        sources, classes = folder / "sources", folder / "classes"
        sources.mkdir()
        generate(schema, f"--java_out={sources}")
        run("javac", "-encoding", "UTF-8", "-cp", self.jar, "-d", classes,
            HERE / "Client.java", *sources.rglob("*.java"))
        return ["java", "-cp", f"{classes}:{self.jar}", "Client"]


class JavaScript:
    """Modules in a folder of their own, from where they find the packages of the tests."""

    def __init__(self, column, runtime, generated, client, *options):
        self.column, self.runtime, self.generated = column, runtime, generated
        self.client, self.options = client, options

    def missing(self):
        packages = [] if (NODE_MODULES / self.runtime).exists() else [
            f"{NODE_MODULES} has no {self.runtime}: run npm ci in {NODE_MODULES.parent}"]
        return programs_missing("protoc", "node") + packages

    def version(self):
        package = NODE_MODULES / self.runtime / "package.json"
        return json.loads(package.read_text(encoding="utf-8"))["version"]

    def build(self, schema, folder):
        (folder / "package.json").write_text('{"type": "module"}', encoding="utf-8")
        (folder / "node_modules").symlink_to(NODE_MODULES)
        for module in (self.client, "streams.mjs"):
            shutil.copy(HERE / module, folder)
        self.generate(schema, folder)
        return ["node", folder / self.client, *self.options]

    def generate(self, schema, folder):
        tools = NODE_MODULES / ".bin"
        if self.runtime == "protobufjs":
            run("node", tools / "pbjs", "--target", "static-module", "--wrap", "esm", "--es6",
                "--out", folder / self.generated, schema)
        else:
            generate(schema, f"--plugin={tools / 'protoc-gen-es'}", "--es_opt=target=js",
                     f"--es_out={folder}")


CLIENTS = {
    "python_cpp": Python("Python", "cpp"),
    "python_pure": Python("Python, pure", "python",
                          "PROTOCOL_BUFFERS_PYTHON_IMPLEMENTATION=python"),
    "java": Java(),
    "javascript_es": JavaScript("protobuf-es", "@bufbuild/protobuf", "RuleService_pb.js",
                                "client_es.mjs"),
    "javascript_protobufjs": JavaScript("protobufjs", "protobufjs", "RuleService.js",
                                        "client_protobufjs.mjs"),
    "javascript_protobufjs_keeping": JavaScript(
        "protobufjs, keeping", "protobufjs", "RuleService.js", "client_protobufjs.mjs",
        "--keep-unknown"),
}


class Parser(argparse.ArgumentParser):
    def error(self, message):
        self.exit(2, f"{self.prog}: {message}\n")


def main():
    parser = Parser(
        description="Builds a client in a new folder and prints the command that runs it.")
    parser.add_argument("client", choices=CLIENTS)
    parser.add_argument("schema", type=pathlib.Path, help="RuleService.proto, as it is installed")
    parser.add_argument("folder", type=pathlib.Path)
    arguments = parser.parse_args()
    client = CLIENTS[arguments.client]
    try:
        if client.missing():
            raise RuntimeError("; ".join(client.missing()))
        schema = arguments.schema.resolve(strict=True)
        arguments.folder.mkdir()
        command = client.build(schema, arguments.folder.resolve())
    except (OSError, RuntimeError) as error:
        parser.error(str(error))
    print(shlex.join(str(word) for word in command))


if __name__ == "__main__":
    main()
