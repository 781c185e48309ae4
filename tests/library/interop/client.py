# SPDX-License-Identifier: Apache-2.0

"""The client in Python. README.md says what its commands do."""

import sys

import RuleService_pb2 as pb


def copy(type_name, data):
    message = getattr(pb, type_name)()
    try:
        message.MergeFromString(data)
    except Exception as error:  # the runtimes raise errors of different types
        return f"unreadable: {error!r}"
    try:
        return message.SerializePartialToString(deterministic=True).hex()
    except Exception as error:
        return f"unwritable: {error!r}"


def rule():
    spec = pb.RuleSpec(key="WIDTH", full_name="Width of a bus", raw_msg="%1 has %2: %3",
                       severity=pb.Violation.SEV_WARNING)
    spec.categories[-1] = "unsorted"
    spec.dynamic_categories[7] = True
    link = spec.examples.uri.add(link_text="manual")
    link.url.scheme = pb.Resource.HTTPS
    link.url.host = "host.example"
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
    body.args.arg.add().scalar.int_val = -9007199254740993
    body.args.arg.add().string_val = "naïve – ✓ 🙂"
    body.actual_value.double_val = 187.5
    body.actual_value.units = "MHz"
    body.threshold_value.int_val = 9223372036854775807
    body.dynamic_category_values["7"] = "team α"
    return pb.Request(type=pb.Request.CREATE_VIOLATION, create_violation=body)


def delimited(message):
    data = message.SerializeToString()
    return bytes([len(data) & 127 | 128, len(data) >> 7]) + data  # fewer than 16,384 bytes


def responses(data):
    while data:
        length = data[0] & 127
        start = 1
        if data[0] > 127:
            length |= data[1] << 7
            start = 2
        yield pb.Response.FromString(data[start:start + length])
        data = data[start + length:]


def values(stored, opened, recorded):
    found = recorded.violation
    port, number, words = found.details.args.arg
    return [stored.type, stored.status.code, stored.status.msg, int(stored.HasField("error")),
            opened.session.name, opened.session.timestamp, opened.session.report_file.path,
            int(opened.session.HasField("description")),
            found.severity, found.rule_key, int(found.HasField("build_target")),
            found.examples.uri[0].url.scheme, found.examples.uri[0].url.host,
            found.actual_value.double_val, found.actual_value.units,
            int(found.actual_value.HasField("int_val")), found.threshold_value.int_val,
            found.details.text, port.ref.type, port.ref.name, port.ref.id, number.scalar.int_val,
            words.string_val, len(found.categories), found.categories[-1], found.categories[7]]


command = sys.argv[1]
if command == "copy":
    for line in sys.stdin:
        type_name, *digits = line.split()
        print(copy(type_name, bytes.fromhex("".join(digits))))
elif command == "requests":
    for request in (rule(), session(), violation()):
        sys.stdout.buffer.write(delimited(request))
else:
    sys.stdout.reconfigure(encoding="utf-8")
    print(*values(*responses(sys.stdin.buffer.read())), sep="\n")
