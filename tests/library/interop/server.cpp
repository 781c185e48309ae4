// SPDX-License-Identifier: Apache-2.0

// The rule server on standard input and output: reads length-delimited requests until its input
// ends, and writes the last answer.

#include <google/protobuf/io/zero_copy_stream_impl.h>
#include <google/protobuf/util/delimited_message_util.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <iostream>

#include "rule_server/rule_server.h"

int main() {
  namespace pb = google::protobuf;
  rule_server::Server server{rule_server::Environment()};
  pb::io::IstreamInputStream in(&std::cin);
  vok::rulecheck::Request request;
  vok::rulecheck::Response response;
  bool isAtEnd = false;
  while (pb::util::ParseDelimitedFromZeroCopyStream(&request, &in, &isAtEnd)) {
    response = server.handle(request);
    request.Clear();
  }
  return isAtEnd && response.SerializeToOstream(&std::cout) ? 0 : 1;
}
