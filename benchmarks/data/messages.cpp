#include "data/messages.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include <map>
#include <stdexcept>

#include "data/findings.h"

namespace benchmarks {

using namespace vok::rulecheck;

SessionResult makeResult(int violations) {
  Random random(1);
  SessionResult result;
  result.mutable_session()->set_name("nightly");
  result.mutable_session()->set_uuid(sessionUuid());
  result.mutable_session()->set_timestamp(1767225600);
  result.set_violation_count(violations);
  result.set_affirmation_count(violations / 5);
  for (int id = 0; id < violations; ++id) {
    fillViolation(random, id, &(*result.mutable_violations()->mutable_hashmap())[id]);
  }
  for (int id = 0; id < violations / 5; ++id) {
    fillAffirmation(random, id, &(*result.mutable_affirmations()->mutable_hashmap())[id]);
  }
  for (int number = 0; number < violations / 50; ++number) {
    fillRuleSpec(random, number,
                 &(*result.mutable_specs_violated()->mutable_hashmap())[ruleKey(number)]);
  }
  return result;
}

std::vector<Request> makeRequests() {
  Random random(2);
  std::vector<Request> requests(20000);
  for (Request& request : requests) {
    request.set_type(Request::CREATE_VIOLATION);
    fillCreateViolation(random, request.mutable_create_violation());
  }
  return requests;
}

std::string bytesOf(const google::protobuf::Message& message) {
  std::string bytes;
  {
    google::protobuf::io::StringOutputStream sink(&bytes);
    google::protobuf::io::CodedOutputStream out(&sink);
    out.SetSerializationDeterministic(true);
    if (!message.SerializeToCodedStream(&out)) {
      throw std::runtime_error("a message cannot be serialized");
    }
  }
  return bytes;
}

const std::string& resultBytes(int violations) {
  static std::map<int, std::string> bytes;
  std::string& found = bytes[violations];
  if (found.empty()) {
    found = bytesOf(makeResult(violations));
  }
  return found;
}

const std::vector<std::string>& requestBytes() {
  static const std::vector<std::string> bytes = [] {
    std::vector<std::string> made;
    for (const Request& request : makeRequests()) {
      made.push_back(bytesOf(request));
    }
    return made;
  }();
  return bytes;
}

}  // namespace benchmarks
