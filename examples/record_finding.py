"""Records a finding on a running rule server, and opens the report.

usage: record_finding.py ADDRESS REPORT
"""

import sys
import webbrowser

import grpc

from vok_rulecheck import RuleService_pb2 as pb, converter


def call(channel, method, request, answer):
    return channel.unary_unary(f"/vok.rulecheck.RuleCheckService/{method}",
                               request_serializer=type(request).SerializeToString,
                               response_deserializer=answer.FromString)(request)


def record(address, report):
    """Returns the recorded violation, after the server has written the report."""
    with grpc.insecure_channel(address) as channel:
        rule = pb.RuleSpec(key="WIDTH", full_name="Width of a bus", raw_msg="The bus at %1 has 9 bits.")
        call(channel, "upsertRuleSpec", rule, pb.StatusResponse)
        page = pb.Resource(scheme=pb.Resource.FILE, path=report)
        session = call(channel, "startSession", pb.Session(name="nightly", report_file=page), pb.Session)
        finding = pb.CreateViolation(rule_key="WIDTH", session_uuid=session.uuid,
                                     severity=pb.Violation.SEV_WARNING)
        finding.args.arg.add(ref=pb.Reference(type=pb.Reference.FILE, name="fifo.v:12"))
        violation = call(channel, "createViolation", finding, pb.Violation)
        call(channel, "stopSession", session, pb.StatusResponse)
        call(channel, "writeReport", session, pb.StatusResponse)
    return violation


recorded = record(*sys.argv[1:])
print(f"{recorded.id}: {converter.to_string(recorded.severity, pb.Violation.Severity)}")
webbrowser.open(f"file://{sys.argv[2]}")
