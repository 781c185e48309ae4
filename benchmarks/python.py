# SPDX-License-Identifier: Apache-2.0

"""Times what Python does with a thousand arguments: prints nanoseconds of CPU time for each, as JSON.

    python.py PACKAGE MODULE REPETITIONS

PACKAGE is the folder of the package vok_rulecheck, and MODULE what is imported first: that, or
RuleService_pb2, the same messages as any program generates them.
"""

import importlib
import json
import statistics
import sys
import time

package, first, repetitions = sys.argv[1:]
sys.path += [package + "/..", package]
importlib.import_module(first)
import RuleService_pb2 as theirs  # noqa: E402
from vok_rulecheck import RuleService_pb2 as ours, converter  # noqa: E402

pb = theirs if first == "RuleService_pb2" else ours
arguments = []
for number in range(1000):
    url = pb.Resource(scheme=pb.Resource.FILE, path="/rtl/fifo.v", fragment=f"L{number}")
    arguments.append(pb.Arg(ref=pb.Reference(type=pb.Reference.FILE, name=f"fifo.v:{number}", url=url)))

OPERATIONS = {
    "serialize": lambda: [argument.SerializeToString() for argument in arguments],
    "to_html": lambda: [converter.to_html(argument) for argument in arguments],
    "to_html_many": lambda: converter.to_html_many(arguments)}


def nanoseconds(operation):
    start = time.thread_time_ns()
    operation()
    return (time.thread_time_ns() - start) / len(arguments)


assert OPERATIONS["to_html"]() == OPERATIONS["to_html_many"]()
times = [{name: nanoseconds(operation) for name, operation in OPERATIONS.items()}
         for _ in range(int(repetitions))]
print(json.dumps({name: statistics.median(each[name] for each in times) for name in OPERATIONS}))
