# SPDX-License-Identifier: Apache-2.0

"""Prints the arguments of all findings of a SessionResult as HTML, one per line.

usage: python3 -m vok_rulecheck RESULT
"""

import sys

from google.protobuf.message import DecodeError

from . import converter
from .RuleService_pb2 import SessionResult
from .delimited import parse


def arguments(result):
    for findings in (result.violations, result.waived_violations, result.affirmations):
        for _, finding in sorted(findings.hashmap.items()):
            yield from finding.details.args.arg


def main(words):
    if len(words) != 1:
        return "usage: python3 -m vok_rulecheck RESULT"
    try:
        with open(words[0], "rb") as file:
            result = parse(SessionResult, file.read())
    except OSError as error:
        return f"vok_rulecheck: {words[0]}: {error.strerror}"
    except DecodeError:
        return f"vok_rulecheck: {words[0]}: not a SessionResult"
    sys.stdout.reconfigure(encoding="utf-8", errors="surrogateescape")
    for html in converter.to_html_many(arguments(result)):
        print(html)
    return None


if __name__ == "__main__":
    failure = main(sys.argv[1:])
    if failure:
        print(failure, file=sys.stderr)
        sys.exit(2)
