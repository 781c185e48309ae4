"""What a schema declares, and which changes of it break programs of a release."""

import pathlib
import subprocess
import tempfile

# The declarations in a descriptor, and what each is called.
KINDS = {
    "message_type": "message",
    "nested_type": "message",
    "field": "field",
    "enum_type": "enumeration",
    "value": "value",
    "service": "service",
    "method": "method",
}

# The enumeration whose numbers are the parts of the protocol's version.
VERSION = "ActualVersion"


class SchemaError(Exception):
    """The schema compiler refused a schema; the text says why."""


def compile_schema(protoc, schema):
    """The descriptor of a schema file, as the bytes of a FileDescriptorSet."""
    schema = pathlib.Path(schema)
    with tempfile.NamedTemporaryFile() as descriptor:
        result = subprocess.run(
            [protoc, f"--proto_path={schema.parent}", f"--descriptor_set_out={descriptor.name}",
             schema], capture_output=True, text=True, check=False)
        if result.returncode != 0:
            raise SchemaError(result.stderr)
        return descriptor.read()


def read_schema(protoc, descriptor_dir, descriptor_set):
    """The file in a FileDescriptorSet: a dictionary of lists of texts and dictionaries."""
    result = subprocess.run(
        [protoc, f"--proto_path={descriptor_dir}", "--decode=google.protobuf.FileDescriptorSet",
         f"{descriptor_dir}/google/protobuf/descriptor.proto"], input=descriptor_set, capture_output=True, check=True)
    return _read_lines(iter(result.stdout.decode().splitlines()))["file"][0]


def _read_lines(lines):
    tree = {}
    for line in map(str.strip, lines):
        if line == "}":
            break
        if line.endswith(" {"):
            tree.setdefault(line.removesuffix(" {"), []).append(_read_lines(lines))
        else:
            key, text = line.split(": ", 1)
            tree.setdefault(key, []).append(text.strip('"'))
    return tree


def breaking_changes(released, present):
    """One sentence for each change that programs of the release do not survive.

    What may be added, after what is there: messages, enumerations, values, methods,
    and fields that are not required. The version's minor and patch number may rise.
    """
    return list(_changes("the file", "", released, present))


def _changes(title, scope, released, present):
    """The changes of one declaration; scope is what the names inside it begin with."""
    if scope == VERSION + ".":
        yield from _changes_of_version(released["value"], present["value"])
        return
    for key in dict.fromkeys([*released, *present]):
        before, now = released.get(key, []), present.get(key, [])
        if key in KINDS:
            yield from _changes_of_list(title, scope, key, before, now)
        elif before != now:
            yield f"{title}: {key.replace('_', ' ')} changed from {_words(before)} to {_words(now)}"


def _words(facts):
    words = (str(fact).removeprefix("TYPE_").removeprefix("LABEL_").lstrip(".") for fact in facts)
    return ", ".join(words) or "nothing"


def _changes_of_list(title, scope, key, released, present):
    """The changes of the declarations of one kind that stand side by side."""
    before, now = _by_name(released), _by_name(present)
    gone = [name for name in before if name not in now]
    for name in gone:
        yield f"{KINDS[key]} {scope}{name} is gone" + _successor(scope, before[name], present)
    for name in before:
        if name in now:
            yield from _changes(
                f"{KINDS[key]} {scope}{name}", f"{scope}{name}.", before[name], now[name])
    if not gone:
        for place, (name, other) in enumerate(zip(before, now), start=1):
            if name != other:
                yield f"{title}: {KINDS[key]} {place} was {name} and is {other}"
                break
    for name in now:
        if name not in before and now[name].get("label") == ["LABEL_REQUIRED"]:
            yield f"{KINDS[key]} {scope}{name} is new and required"


def _by_name(declarations):
    return {declaration["name"][0]: declaration for declaration in declarations}


def _successor(scope, gone, present):
    for declaration in present:
        if "number" in gone and declaration["number"] == gone["number"]:
            return f": its number {gone['number'][0]} is that of {scope}{declaration['name'][0]}"
    return ""


def _changes_of_version(released, present):
    """Only the last two numbers of the version change, and only upwards."""
    before, now = ([(part["name"][0], int(part["number"][0])) for part in parts]
                   for parts in (released, present))
    same_names = [name for name, _ in before] == [name for name, _ in now]
    if not same_names or before[0] != now[0] or before > now:
        words = [", ".join(f"{name} {number}" for name, number in parts) for parts in (before, now)]
        yield f"the version was {words[0]} and is {words[1]}"
