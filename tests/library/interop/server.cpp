// The rule server, behind standard input and output.
//
// usage: interop_server [TEXT REPLACEMENT]...
//
// Answers length-delimited requests until its input ends. With arguments it lies: the
// text format of an answer has each REPLACEMENT in the place of its TEXT.

#include <unistd.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "common/framing.h"
#include "rule_server/environment.h"
#include "rule_server/rule_server.h"
#include "support/messages.h"

namespace {

using vok::rulecheck::Request;
using vok::rulecheck::Response;

rule_server::Environment environment(rule_server::Files& files) {
  rule_server::Environment environment;
  environment.files = &files;
  environment.now = [] { return 1700000000123; };
  environment.newUuid = [] { return std::string("made by the server"); };
  return environment;
}

using Replacements = std::vector<std::pair<std::string, std::string>>;

// With the first occurrence of each text replaced.
Response changed(const Response& response, const Replacements& replacements) {
  std::string form = tests::textOf(response);
  for (const auto& [text, replacement] : replacements) {
    const std::size_t at = form.find(text);
    if (at != std::string::npos) {
      form.replace(at, text.size(), replacement);
    }
  }
  return tests::parse<Response>(form);
}

// Answers the requests that are complete, and returns the bytes behind them.
template <typename Answer>
std::string answerAll(const std::string& received, const Answer& answer) {
  std::size_t position = 0;
  std::string sent;
  for (Request request; apps::readFramed(received, &position, &request);) {
    if (!apps::appendFramed(answer(request), &sent)) {
      throw std::logic_error("an answer is incomplete");
    }
  }
  std::cout << sent << std::flush;
  return received.substr(position);
}

void serve(const Replacements& replacements) {
  rule_server::DirectoryFiles files(".");
  rule_server::Server server(environment(files));
  const auto answer = [&](const Request& request) {
    const Response response = server.handle(request);
    return replacements.empty() ? response : changed(response, replacements);
  };
  std::string pending;
  std::array<char, 4096> chunk;
  for (ssize_t count = 0; (count = ::read(STDIN_FILENO, chunk.data(), chunk.size())) > 0;) {
    pending = answerAll(pending.append(chunk.data(), static_cast<std::size_t>(count)), answer);
  }
  if (!pending.empty()) {
    throw std::runtime_error("the last request is malformed");
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc % 2 == 0) {
    std::fprintf(stderr, "usage: interop_server [TEXT REPLACEMENT]...\n");
    return 2;
  }
  try {
    Replacements replacements;
    for (int i = 1; i < argc; i += 2) {
      replacements.emplace_back(argv[i], argv[i + 1]);
    }
    serve(replacements);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "interop_server: %s\n", error.what());
    return 1;
  }
}
