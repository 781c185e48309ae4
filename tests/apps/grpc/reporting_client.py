# SPDX-License-Identifier: Apache-2.0

"""The client of reporting_client.cpp, in Python."""

import sys

import grpc
import RuleService_pb2 as protocol


def read(path):
    with open(path, "rb") as file:
        return file.read()


def main(address, authority, certificate, key, shared, name, count):
    channel = grpc.secure_channel(
        address, grpc.ssl_channel_credentials(read(authority), read(key), read(certificate)))

    def method(name, answer):
        return channel.unary_unary(
            f"/vok.rulecheck.RuleCheckService/{name}",
            request_serializer=lambda message: message.SerializeToString(),
            response_deserializer=answer.FromString)

    create = method("createViolation", protocol.Violation)

    def report(session, mark):
        request = protocol.CreateViolation(rule_key="W", session_uuid=session)
        request.args.arg.add().string_val = mark
        print(session, create(request).id, mark, flush=True)

    own = method("startSession", protocol.Session)(protocol.Session(name=name)).uuid
    for i in range(int(count)):
        report(shared, f"{name}-shared-{i}")
        report(own, f"{name}-own-{i}")


main(*sys.argv[1:])
