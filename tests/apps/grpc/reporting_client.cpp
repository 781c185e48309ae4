// SPDX-License-Identifier: Apache-2.0

// usage: reporting_client ADDRESS CA CERTIFICATE KEY SHARED NAME COUNT
//
// A client that opens a session of its own, and reports so many violations of the rule
// "W" into it, and as many into the session SHARED. For each that the server has
// acknowledged it prints "SESSION ID MARK"; the mark is the violation's argument.

#include <grpcpp/grpcpp.h>
#include <vok/rulecheck/RuleService.grpc.pb.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "grpc/remote_server.h"

namespace {

using vok::rulecheck::RuleCheckService;

void check(const grpc::Status& status) {
  if (!status.ok()) {
    std::cerr << status.error_code() << ": " << status.error_message() << '\n';
    std::exit(1);
  }
}

std::string ownSession(RuleCheckService::Stub& stub, const std::string& name) {
  vok::rulecheck::Session session;
  session.set_name(name);
  vok::rulecheck::Session started;
  grpc::ClientContext context;
  check(stub.startSession(&context, session, &started));
  return started.uuid();
}

void report(RuleCheckService::Stub& stub, const std::string& session, const std::string& mark) {
  vok::rulecheck::CreateViolation request;
  request.set_rule_key("W");
  request.set_session_uuid(session);
  request.mutable_args()->add_arg()->set_string_val(mark);
  vok::rulecheck::Violation violation;
  grpc::ClientContext context;
  check(stub.createViolation(&context, request, &violation));
  std::cout << session << ' ' << violation.id() << ' ' << mark << std::endl;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  rule_grpc::Security security;
  security.authority = words.at(1);
  security.certificate = words.at(2);
  security.key = words.at(3);
  const std::string& shared = words.at(4);
  const std::string& name = words.at(5);
  const auto stub = RuleCheckService::NewStub(rule_grpc::channelTo(words.at(0), security));
  const std::string own = ownSession(*stub, name);
  for (int i = 0; i < std::stoi(words.at(6)); ++i) {
    report(*stub, shared, name + "-shared-" + std::to_string(i));
    report(*stub, own, name + "-own-" + std::to_string(i));
  }
}
