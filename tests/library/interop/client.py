# SPDX-License-Identifier: Apache-2.0

"""The client in Python. interop_test.py says what it does."""

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


for line in sys.stdin:
    name, *digits = line.split()
    print(copy(name, bytes.fromhex("".join(digits))))
