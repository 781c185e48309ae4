# SPDX-License-Identifier: Apache-2.0

"""Prints the reference of the protocol as Markdown.

usage: protocol.py < DESCRIPTOR_SET

The descriptor set has one file, with its comments.
"""

import html
import re
import sys

from google.protobuf import descriptor_pb2

Field = descriptor_pb2.FieldDescriptorProto
# The numbers of fields of descriptor.proto, of which the path of a declaration consists.
MESSAGE, ENUM, SERVICE = 4, 5, 6
FIELD, ENUM_IN_MESSAGE, VALUE, METHOD = 2, 4, 2, 2

schema, = descriptor_pb2.FileDescriptorSet.FromString(sys.stdin.buffer.read()).file
comments = {tuple(location.path): location.leading_comments
            for location in schema.source_code_info.location}


def text(path):
    """A comment as HTML, without what Markdown would read as markup. Each declaration must have one."""
    if not re.fullmatch(r" [A-Z].{3,}\.\s*", comments[path], re.DOTALL):
        sys.exit(f"protocol.py: the comment {comments[path]!r} of declaration {path} is not a sentence")
    paragraphs = re.sub(r"^ ", "", html.escape(comments[path], quote=False), flags=re.MULTILINE).strip().split("\n\n")
    parts = [re.split(r"\n? +\* ", paragraph) for paragraph in paragraphs]
    shown = "<br><br>".join(
        first + ("<ul>" + "".join(f"<li>{item}</li>" for item in items) + "</ul>" if items else "")
        for first, *items in parts)
    return re.sub(r"[|*_`\[\]]", lambda found: f"&#{ord(found[0])};", shown.replace("\n", " "))


def row(*cells):
    print("| " + " | ".join(map(str, cells)) + " |")


def head(level, name, kind, path):
    print(f"\n{'#' * level} {kind} `{name}` {{#{name}}}\n\n{text(path)}\n")


def table(*titles):
    row(*titles)
    row(*["---"] * len(titles))


def declared(scope, name):
    return f'<code id="{scope}.{name}">{name}</code>'


def link(full_name):
    name = full_name.removeprefix(f".{schema.package}.")
    return f"[`{name}`](#{name})"


def type_of(field, entries):
    entry = entries.get(field.type_name.rpartition(".")[2])
    if entry:
        return "map of " + " to ".join(type_of(part, {}).partition(" ")[2] for part in entry.field)
    label = Field.Label.Name(field.label).removeprefix("LABEL_").lower()
    name = link(field.type_name) if field.type_name else Field.Type.Name(field.type)[5:].lower()
    return f"{label} {name}" + (f", default `{field.default_value}`" if field.default_value else "")


def print_enum(level, enum, scope, path):
    head(level, scope + enum.name, "enum", path)
    table("Number", "Value", "Meaning")
    for index, value in enumerate(enum.value):
        row(value.number, declared(scope + enum.name, value.name), text((*path, VALUE, index)))


def print_message(message, path):
    head(2, message.name, "message", path)
    entries = {nested.name: nested for nested in message.nested_type}
    table("Number", "Field", "Type", "Meaning")
    for index, field in enumerate(message.field):
        row(field.number, declared(message.name, field.name), type_of(field, entries), text((*path, FIELD, index)))
    for index, enum in enumerate(message.enum_type):
        print_enum(3, enum, message.name + ".", (*path, ENUM_IN_MESSAGE, index))


def print_service(service, path):
    head(2, service.name, "service", path)
    table("Method", "Argument", "Result", "Meaning")
    for index, method in enumerate(service.method):
        row(declared(service.name, method.name), link(method.input_type), link(method.output_type),
            text((*path, METHOD, index)))


print("# Messages and service")
for number, found in enumerate(schema.service):
    print_service(found, (SERVICE, number))
for number, found in enumerate(schema.message_type):
    print_message(found, (MESSAGE, number))
for number, found in enumerate(schema.enum_type):
    print_enum(2, found, "", (ENUM, number))
