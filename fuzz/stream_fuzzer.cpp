// SPDX-License-Identifier: Apache-2.0

// Any bytes, taken for framed requests to the rule server: each frame is read or
// refused as it has to be, and each request has exactly one answer, which fits all
// answers before.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "check.h"
#include "common/framing.h"
#include "fake_environment.h"
#include "rule_server/rule_server.h"
#include "server_oracle.h"
#include "stream_input.h"
#include "support/messages.h"
#include "target.h"

namespace {

using fuzz::check;
using vok::rulecheck::Request;
using vok::rulecheck::Response;

void checkReading(const std::string& stream, std::size_t start, std::size_t end, bool isRequest) {
  Request request;
  std::size_t position = start;
  check(apps::readFramed(stream, &position, &request) == isRequest, "framing",
        "a request is refused, or something else is taken for one");
  check(position == (isRequest ? end : start), "framing", "it leaves off at the wrong place");
}

void checkFraming(const Response& response) {
  std::string stream;
  check(apps::appendFramed(response, &stream), "framing", "an answer cannot be framed");
  std::size_t position = 0;
  Response received;
  check(apps::readFramed(stream, &position, &received) && position == stream.size(), "framing",
        "an answer is not the one message in its frame");
  fuzz::checkEqual(tests::bytesOf(received), tests::bytesOf(response), "response",
                   "it changes over the wire");
}

// Sent before those of the input, so that findings are soon recorded.
const std::vector<Request>& firstRequests() {
  static const std::vector<Request> requests = {
      tests::parse<Request>("type: START_SESSION start_session { name: 'n' uuid: 's' }"),
      tests::parse<Request>(
          "type: UPSERT_RULESPEC upsert_rulespec { rule_spec { key: 'W' full_name: 'Widths'"
          "  dynamic_categories { key: 2 value: true } } }"),
      tests::parse<Request>(
          "type: UPSERT_RULESPEC upsert_rulespec { rule_spec { key: 'R' full_name: 'Resets'"
          "  disposition: READONLY } }")};
  return requests;
}

class Conversation {
 public:
  Conversation() : server_(environment_.environment()), ledger_(server_, environment_.files) {
    for (const Request& request : firstRequests()) {
      send(request);
    }
  }

  // The content of files of rules that requests may name.
  void setRules(const std::string& content) {
    for (const char* name : {"rules.pb", "rules.txtpb", "rules.json"}) {
      environment_.files.contents[name] = content;
    }
  }

  // A request that is incomplete could not be framed, but is answered as well.
  void send(const Request& request) { checkFraming(ledger_.ask(request)); }

  void checkEverything() { ledger_.checkEverything(); }

 private:
  tests::FakeEnvironment environment_;
  rule_server::Server server_;
  fuzz::ServerOracle ledger_;
};

}  // namespace

// Frames that hold no message are passed over.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string stream(reinterpret_cast<const char*>(data), size);
  Conversation conversation;
  std::size_t position = 0;
  conversation.setRules(fuzz::readFrame(stream, &position).value_or(""));
  while (position < stream.size()) {
    const std::size_t start = position;
    const auto frame = fuzz::readFrame(stream, &position);
    Request request;
    const bool isMessage = frame && request.ParsePartialFromString(*frame);
    checkReading(stream, start, position, isMessage && request.IsInitialized());
    if (!frame) {
      break;
    }
    if (isMessage) {
      conversation.send(request);
    }
  }
  conversation.checkEverything();
  return 0;
}
