"""Merges results, keeps errors and worse, and counts violations by module.

usage: postprocess.py OUTPUT RESULT...
"""

import collections
import itertools
import sys

from vok_rulecheck import RuleService_pb2 as pb

MAPS = {"violations": "violation_count", "waived_violations": "waived_count",
        "affirmations": "affirmation_count"}


def update_counts(result):
    for findings, count in MAPS.items():
        setattr(result, count, len(getattr(result, findings).hashmap))


def merge(source, target):
    """Adds a result to the target, which keeps its session. Findings get numbers that none has."""
    taken = {number for name in MAPS for key, finding in getattr(target, name).hashmap.items()
             for number in (key, finding.id)}
    numbers = (number for number in itertools.count(1) if number not in taken)
    for name in MAPS:
        for _, finding in sorted(getattr(source, name).hashmap.items()):
            number = next(numbers)
            added = getattr(target, name).hashmap[number]
            added.CopyFrom(finding)
            added.id = number
            if not added.HasField("build_target") and source.session.build_target != target.session.build_target:
                added.build_target = source.session.build_target
    for name in ("specs_violated", "specs_affirmed"):
        rules = getattr(target, name).hashmap
        for key, rule in getattr(source, name).hashmap.items():
            if key not in rules:
                rules[key].CopyFrom(rule)
    update_counts(target)


def keep(result, wanted):
    """Removes the violations that are not wanted."""
    violations = result.violations.hashmap
    for number in [number for number, violation in violations.items() if not wanted(violation)]:
        del violations[number]
    update_counts(result)


def count_by_module(result):
    """How many violations name a place in the hierarchy, by its first component."""
    modules = collections.Counter()
    for violation in result.violations.hashmap.values():
        modules.update({arg.ref.name.split("/")[0] for arg in violation.details.args.arg
                        if arg.HasField("ref") and arg.ref.type == pb.Reference.HIERARCHY})
    return modules


def read(path):
    with open(path, "rb") as file:
        return pb.SessionResult.FromString(file.read())


merged = read(sys.argv[2])
for path in sys.argv[3:]:
    merge(read(path), merged)
keep(merged, lambda violation: violation.severity <= pb.Violation.SEV_ERROR)
with open(sys.argv[1], "wb") as output:
    output.write(merged.SerializeToString())
for module, count in count_by_module(merged).most_common():
    print(count, module)
