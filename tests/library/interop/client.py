"""The Python client. See README.md for what it is asked and what it answers."""

import sys

import RuleService_pb2 as pb


# Reading and writing


def parsed(type_name, data):
    message = getattr(pb, type_name)()
    message.MergeFromString(data)
    return message


def written(message):
    return message.SerializePartialToString(deterministic=True).hex()


def copy(type_name, data, keep_unknown):
    try:
        message = parsed(type_name, data)
    except Exception as error:  # the runtimes raise errors of different types
        return f"unreadable {error}"
    if not keep_unknown:
        message.DiscardUnknownFields()
    try:
        return f"ok {written(message)}"
    except Exception as error:
        return f"unwritable {error}"


def text(data):
    try:
        value = parsed("Link", data).link_text
    except Exception as error:
        return f"unreadable {error}"
    if isinstance(value, bytes):
        return f"bytes {value.hex()}"
    return f"text {value.encode().hex()}"


def answer(line):
    operation, type_name, *digits = line.split()
    data = bytes.fromhex("".join(digits))
    reply = text(data) if operation == "text" else copy(type_name, data, operation == "copy")
    return " ".join(reply.split())


# A conversation with a server


def rule():
    spec = pb.RuleSpec(key="WIDTH", full_name="Width of a bus", raw_msg="%1 has %2: %3",
                       resolution_msg="Make it narrower.", severity=pb.Violation.SEV_WARNING)
    spec.categories[2] = "timing"
    spec.categories[-1] = "unsorted"
    spec.dynamic_categories[7] = True
    link = spec.examples.uri.add(link_text="manual")
    link.url.scheme = pb.Resource.HTTPS
    link.url.host = "host.example"
    link.url.path = "/width"
    return pb.Request(type=pb.Request.UPSERT_RULESPEC,
                      upsert_rulespec=pb.UpsertRuleSpec(rule_spec=spec))


def session():
    start = pb.StartSession(name="nightly", pid=4711, uuid="s-1")
    start.report_file.scheme = pb.Resource.FILE
    start.report_file.path = "/reports/nightly.html"
    return pb.Request(type=pb.Request.START_SESSION, start_session=start)


def violation():
    body = pb.CreateViolation(rule_key="WIDTH", session_uuid="s-1",
                              severity=pb.Violation.SEV_CRITICAL_WARNING)
    port = body.args.arg.add().ref
    port.type = pb.Reference.PORT
    port.name = "clk"
    port.id = -1
    port.url.scheme = pb.Resource.FILE
    port.url.path = "/rtl/fifo.v"
    port.url.fragment = "L12"
    body.args.arg.add().scalar.int_val = -9007199254740993
    body.args.arg.add().string_val = "naïve – ✓ 🙂"
    body.actual_value.double_val = 187.5
    body.actual_value.units = "MHz"
    body.threshold_value.int_val = 9223372036854775807
    body.dynamic_category_values["7"] = "team α"
    return pb.Request(type=pb.Request.CREATE_VIOLATION, create_violation=body)


def status_facts(response):
    return {
        "type": (response.type, pb.Response.STATUS_RESPONSE),
        "status.code": (response.status.code, 0),
        "status.msg": (response.status.msg, "rule stored"),
        "has_error": (response.HasField("error"), False),
    }


def session_facts(response):
    opened = response.session
    return {
        "type": (response.type, pb.Response.SESSION),
        "session.name": (opened.name, "nightly"),
        "session.uuid": (opened.uuid, "s-1"),
        "session.has_description": (opened.HasField("description"), False),
        "session.timestamp": (opened.timestamp, 1700000000123),
        "session.report_file.scheme": (opened.report_file.scheme, pb.Resource.FILE),
        "session.report_file.path": (opened.report_file.path, "/reports/nightly.html"),
        "session.has_proto_file": (opened.HasField("proto_file"), False),
    }


def violation_facts(response):
    found = response.violation
    link = found.examples.uri[0]
    port, number, words = found.details.args.arg[:3]
    return {
        "type": (response.type, pb.Response.VIOLATION),
        "id": (found.id, 1),
        "severity": (found.severity, pb.Violation.SEV_CRITICAL_WARNING),
        "rule_key": (found.rule_key, "WIDTH"),
        "examples.uri": (len(found.examples.uri), 1),
        "examples.uri.link_text": (link.link_text, "manual"),
        "examples.uri.url.scheme": (link.url.scheme, pb.Resource.HTTPS),
        "examples.uri.url.host": (link.url.host, "host.example"),
        "examples.uri.url.has_port": (link.url.HasField("port"), False),
        "examples.uri.url.path": (link.url.path, "/width"),
        "has_build_target": (found.HasField("build_target"), False),
        "has_expects": (found.HasField("expects"), False),
        "actual_value.has_int_val": (found.actual_value.HasField("int_val"), False),
        "actual_value.double_val": (found.actual_value.double_val, 187.5),
        "actual_value.units": (found.actual_value.units, "MHz"),
        "threshold_value.int_val": (found.threshold_value.int_val, 9223372036854775807),
        "details.text": (found.details.text, "%1 has %2: %3"),
        "arg": (len(found.details.args.arg), 3),
        "arg.ref.type": (port.ref.type, pb.Reference.PORT),
        "arg.ref.name": (port.ref.name, "clk"),
        "arg.ref.id": (port.ref.id, -1),
        "arg.ref.url.scheme": (port.ref.url.scheme, pb.Resource.FILE),
        "arg.ref.url.path": (port.ref.url.path, "/rtl/fifo.v"),
        "arg.ref.url.fragment": (port.ref.url.fragment, "L12"),
        "arg.scalar.int_val": (number.scalar.int_val, -9007199254740993),
        "arg.string_val": (words.string_val, "naïve – ✓ 🙂"),
        "resolution.text": (found.resolution.text, "Make it narrower."),
        "resolution.has_args": (found.resolution.HasField("args"), False),
        "categories": (dict(found.categories), {-1: "unsorted", 2: "timing", 7: "team α"}),
    }


def send(request):
    data = request.SerializeToString()
    length = len(data)
    while length > 127:
        sys.stdout.buffer.write(bytes([length & 127 | 128]))
        length >>= 7
    sys.stdout.buffer.write(bytes([length]) + data)
    sys.stdout.buffer.flush()


def received():
    length, shift, byte = 0, 0, 128
    while byte > 127:
        byte = sys.stdin.buffer.read(1)[0]
        length |= (byte & 127) << shift
        shift += 7
    return pb.Response.FromString(sys.stdin.buffer.read(length))


def converse():
    failed = []
    for request, facts in ((rule(), status_facts), (session(), session_facts),
                           (violation(), violation_facts)):
        send(request)
        failed += [f"{name}: {got!r}, not {expected!r}"
                   for name, (got, expected) in facts(received()).items() if got != expected]
    return failed


def main():
    if sys.argv[1:] == ["converse"]:
        failed = converse()
        print("\n".join(failed), file=sys.stderr, end="")
        return 1 if failed else 0
    for line in sys.stdin:
        print(answer(line))
    return 0


if __name__ == "__main__":
    sys.exit(main())
