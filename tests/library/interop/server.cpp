// SPDX-License-Identifier: Apache-2.0

// The rule server on standard input and output: reads length-delimited requests until its input
// ends, and writes the last answer.

#include <google/protobuf/io/zero_copy_stream_impl.h>
#include <google/protobuf/util/delimited_message_util.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <cstdio>
#include <exception>
#include <iostream>

#include "rule_server/rule_server.h"

int main() {
  namespace pb = google::protobuf;
  try {
    rule_server::DirectoryFiles files(".");
    rule_server::Environment environment;
    environment.files = &files;
    rule_server::Server server(environment);
    pb::io::IstreamInputStream in(&std::cin);
    vok::rulecheck::Request request;
    vok::rulecheck::Response response;
    bool isAtEnd = false;
    while (pb::util::ParseDelimitedFromZeroCopyStream(&request, &in, &isAtEnd)) {
      response = server.handle(request);
      request.Clear();
    }
    response.SerializeToOstream(&std::cout);
    return isAtEnd ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "interop_server: %s\n", error.what());
    return 1;
  }
}
