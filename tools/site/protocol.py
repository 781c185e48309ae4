"""The reference of the protocol, from the schema's descriptor and its comments."""

import re

from google.protobuf import descriptor_pb2
from markupsafe import Markup, escape

FieldDescriptor = descriptor_pb2.FieldDescriptorProto
LABELS = {FieldDescriptor.LABEL_OPTIONAL: "optional", FieldDescriptor.LABEL_REQUIRED: "required",
          FieldDescriptor.LABEL_REPEATED: "repeated"}

# The numbers of the fields of descriptor.proto that make up a declaration's path.
PACKAGE, MESSAGE, ENUM, SERVICE = 2, 4, 5, 6
FIELD_OF_MESSAGE, ENUM_OF_MESSAGE = 2, 4
VALUE_OF_ENUM, METHOD_OF_SERVICE = 2, 2


class Schema:
    """The declarations of one file, each with an anchor: its name without the package."""

    def __init__(self, serialized):
        descriptors = descriptor_pb2.FileDescriptorSet.FromString(serialized)
        self._file, = descriptors.file
        self._locations = {tuple(location.path): location
                           for location in self._file.source_code_info.location}
        self._anchors = {}
        self._users = {}
        self.enums = []
        self.messages = [self._message(message, (MESSAGE, index))
                         for index, message in enumerate(self._file.message_type)]
        for index, enum in enumerate(self._file.enum_type):
            self.enums.append(self._enum(enum, (ENUM, index), ""))
        self.services = [self._service(service, (SERVICE, index))
                         for index, service in enumerate(self._file.service)]
        self.about = "".join(
            self._locations[(PACKAGE,)].leading_detached_comments[-1:]
            or [self._locations[(PACKAGE,)].leading_comments])

    def _comment(self, path):
        return self._locations[path].leading_comments

    def _local(self, full_name):
        return full_name.removeprefix(f".{self._file.package}.")

    def _declare(self, anchor, *other_names):
        for name in {anchor, *other_names}:
            self._anchors.setdefault(name, set()).add(anchor)
        return anchor

    def _message(self, message, path):
        anchor = self._declare(message.name)
        entries = {nested.name: nested for nested in message.nested_type}
        enums = [self._enum(enum, (*path, ENUM_OF_MESSAGE, index), f"{anchor}.")
                 for index, enum in enumerate(message.enum_type)]
        self.enums += enums
        fields = [self._field(field, (*path, FIELD_OF_MESSAGE, index), anchor, entries)
                  for index, field in enumerate(message.field)]
        return {"anchor": anchor, "comment": self._comment(path), "fields": fields, "enums": enums}

    def _type(self, field, user):
        """The name of a field's type, and its anchor if it has one."""
        if not field.type_name:
            return {"name": FieldDescriptor.Type.Name(field.type).removeprefix("TYPE_").lower()}
        name = self._local(field.type_name)
        self._users.setdefault(name, []).append(user)
        return {"name": name, "anchor": name}

    def _field(self, field, path, scope, entries):
        anchor = self._declare(f"{scope}.{field.name}")
        entry = entries.get(field.type_name.rpartition(".")[2])
        types = [self._type(part, anchor) for part in (entry.field if entry else [field])]
        return {"anchor": anchor, "scope": scope, "name": field.name, "number": field.number,
                "label": "map" if entry else LABELS[field.label], "types": types,
                "default": field.default_value, "comment": self._comment(path)}

    def _enum(self, enum, path, prefix):
        anchor = self._declare(prefix + enum.name)
        values = [{"anchor": self._declare(f"{anchor}.{value.name}", prefix + value.name, value.name),
                   "scope": anchor, "name": value.name, "number": value.number,
                   "comment": self._comment((*path, VALUE_OF_ENUM, index))}
                  for index, value in enumerate(enum.value)]
        return {"anchor": anchor, "comment": self._comment(path), "values": values}

    def _service(self, service, path):
        anchor = self._declare(service.name)
        methods = [{"anchor": self._declare(f"{anchor}.{method.name}", method.name),
                    "scope": anchor, "name": method.name,
                    "argument": self._local(method.input_type),
                    "result": self._local(method.output_type),
                    "comment": self._comment((*path, METHOD_OF_SERVICE, index))}
                   for index, method in enumerate(service.method)]
        for method in methods:
            for name in {method["argument"], method["result"]}:
                self._users.setdefault(name, []).append(method["anchor"])
        return {"anchor": anchor, "comment": self._comment(path), "methods": methods}

    def users(self, anchor):
        """The fields and methods of that type."""
        return self._users.get(anchor, [])

    def _target(self, name, scope):
        """The anchor of a name that a comment uses, if it can be no other word."""
        if not re.search(r"[._]|[a-z][A-Z]|^[A-Z]{3}", name):
            return None
        for candidate in (f"{scope}.{name}", f"{scope.partition('.')[0]}.{name}", name):
            anchors = self._anchors.get(candidate, ())
            if len(anchors) == 1:
                return next(iter(anchors))
        return None

    def _linked(self, text, scope, own):
        def link(match):
            target = self._target(match[0], scope)
            if target in (None, own):
                return match[0]
            return Markup('<a href="#{}"><code>{}</code></a>').format(target, match[0])
        return Markup(re.sub(r"\w+(?:\.\w+)*", link, str(escape(text))))

    def html(self, comment, scope="", own=""):
        """A comment as HTML: paragraphs, and lists of lines that begin with a star."""
        html = Markup()
        for paragraph in comment.strip("\n").split("\n\n"):
            first, *items = re.split(r"^ +\* ", re.sub(r"^ ", "", paragraph, flags=re.MULTILINE),
                                     flags=re.MULTILINE)
            html += Markup("<p>{}</p>").format(self._linked(first, scope, own))
            if items:
                html += Markup("<ul>{}</ul>").format(Markup().join(
                    Markup("<li>{}</li>").format(self._linked(item, scope, own))
                    for item in items))
        return html
