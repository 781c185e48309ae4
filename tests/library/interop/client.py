# SPDX-License-Identifier: Apache-2.0

"""The client in Python. interop_test.py says what its commands do."""

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


def request():
    body = pb.CreateViolation(rule_key="WIDTH", session_uuid="s-1",
                              severity=pb.Violation.SEV_CRITICAL_WARNING)
    port = body.args.arg.add().ref
    port.type = pb.Reference.PORT
    port.name = "clk"
    port.id = -1
    body.args.arg.add().scalar.int_val = -9007199254740993
    body.args.arg.add().string_val = "naïve – ✓ 🙂"
    body.actual_value.double_val = 187.5
    body.threshold_value.int_val = 9223372036854775807
    body.dynamic_category_values["7"] = "team α"
    return pb.Request(type=pb.Request.CREATE_VIOLATION, create_violation=body)


def values(found):
    port, number, words = found.details.args.arg
    url = found.examples.uri[0].url
    return [found.severity, found.rule_key, int(found.HasField("build_target")), url.scheme, url.host,
            found.actual_value.double_val, int(found.actual_value.HasField("int_val")),
            found.threshold_value.int_val, port.ref.type, port.ref.name, port.ref.id,
            number.scalar.int_val, words.string_val, len(found.categories), found.categories[-1],
            found.categories[7]]


command = sys.argv[1]
if command == "copy":
    for line in sys.stdin:
        type_name, *digits = line.split()
        print(copy(type_name, bytes.fromhex("".join(digits))))
elif command == "request":
    sys.stdout.buffer.write(request().SerializeToString())
else:
    sys.stdout.reconfigure(encoding="utf-8")
    print(*values(pb.Response.FromString(sys.stdin.buffer.read()).violation))
