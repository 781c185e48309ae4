// SPDX-License-Identifier: Apache-2.0

// Benchmarks of the library's messages. With ALTERNATIVES also of other sizes and other libraries.

#include <google/protobuf/arena.h>

#include <memory>
#include <string>
#include <vector>

#include "carrying/carrying.h"

namespace benchmarks {

using google::protobuf::Arena;
using google::protobuf::ArenaOptions;
using namespace vok::rulecheck;

namespace {

// Memory for the first block of an arena.
class FirstBlock {
 public:
  explicit FirstBlock(std::size_t size) : memory_(size) {}

  ArenaOptions options() {
    ArenaOptions options;
    options.initial_block = memory_.data();
    options.initial_block_size = memory_.size();
    return options;
  }

 private:
  std::vector<char> memory_;
};

void parse(google::protobuf::Message* message, const std::string& bytes) {
  if (!message->ParseFromString(bytes)) {
    throw std::runtime_error("a message cannot be parsed");
  }
}

template <typename Message>
void parseOn(Arena* arena, const std::string& bytes) {
  parse(Arena::CreateMessage<Message>(arena), bytes);
}

std::size_t sizeOf(const std::vector<std::string>& stream) {
  std::size_t size = 0;
  for (const std::string& bytes : stream) {
    size += bytes.size();
  }
  return size;
}

std::string nameOf(int violations) {
  return violations == resultViolations ? "result" : "result of " + std::to_string(violations);
}

void registerResult(int violations) {
  const std::string& bytes = resultBytes(violations);
  const auto items = static_cast<std::size_t>(violations);
  const std::string name = nameOf(violations);
  measure(name + ", parse/heap", {items, bytes.size()}, [&bytes] {
    SessionResult result;
    parse(&result, bytes);
  });
  measure(name + ", parse/arena", {items}, [&bytes] {
    Arena arena;
    parseOn<SessionResult>(&arena, bytes);
  });
  measure(name + ", serialize/heap", {items},
          [result = std::make_shared<SessionResult>(makeResult(violations))] {
            std::string written;
            result->SerializeToString(&written);
            benchmark::DoNotOptimize(written);
          });
}

void registerResultReuse() {
  const std::string& bytes = resultBytes(resultViolations);
  measure("result, parse/arena with a first block", {resultViolations},
          [&bytes, block = std::make_shared<FirstBlock>(std::size_t{64} << 20)] {
            Arena arena(block->options());
            parseOn<SessionResult>(&arena, bytes);
          });
  measure("result, parse/reused", {resultViolations},
          [&bytes, result = std::make_shared<SessionResult>()] { parse(result.get(), bytes); });
}

void registerRequestParsing() {
  const std::vector<std::string>& stream = requestBytes();
  measure("requests, parse/fresh", {stream.size(), sizeOf(stream)}, [&stream] {
    for (const std::string& bytes : stream) {
      Request request;
      parse(&request, bytes);
    }
  });
  measure("requests, parse/reused", {stream.size()},
          [&stream, request = std::make_shared<Request>()] {
            for (const std::string& bytes : stream) {
              parse(request.get(), bytes);
            }
          });
  measure("requests, parse/arena", {stream.size()}, [&stream] {
    for (const std::string& bytes : stream) {
      Arena arena;
      parseOn<Request>(&arena, bytes);
    }
  });
  measure("requests, parse/arena with a first block", {stream.size()},
          [&stream, block = std::make_shared<FirstBlock>(4096)] {
            for (const std::string& bytes : stream) {
              Arena arena(block->options());
              parseOn<Request>(&arena, bytes);
            }
          });
}

void registerRequestSerialization() {
  const auto requests = std::make_shared<std::vector<Request>>(makeRequests());
  measure("requests, serialize/fresh", {requests->size()}, [requests] {
    for (const Request& request : *requests) {
      std::string bytes;
      request.SerializeToString(&bytes);
      benchmark::DoNotOptimize(bytes);
    }
  });
  measure("requests, serialize/reused", {requests->size()},
          [requests, bytes = std::string()]() mutable {
            for (const Request& request : *requests) {
              request.SerializeToString(&bytes);
              benchmark::DoNotOptimize(bytes);
            }
          });
}

template <typename Message>
void requireSameBytes(const std::string& bytes) {
  Message message;
  parse(&message, bytes);
  require(bytesOf(message) == bytes, "a parsed message has other bytes than its source");
}

// The figures are about messages of these sizes.
void requireMeanSize(std::size_t size, std::size_t count, double expected) {
  const double mean = static_cast<double>(size) / static_cast<double>(count);
  require(mean > 0.95 * expected && mean < 1.05 * expected,
          "messages have " + std::to_string(mean) + " bytes");
}

void registerMessages() {
  const std::string violations = bytesOf(makeResult(resultViolations).violations());
  requireMeanSize(violations.size(), resultViolations, 480);
  requireMeanSize(sizeOf(requestBytes()), requestBytes().size(), 260);
  requireSameBytes<SessionResult>(resultBytes(resultViolations));
  for (const std::string& bytes : requestBytes()) {
    requireSameBytes<Request>(bytes);
  }
  registerResult(resultViolations);
  registerResultReuse();
  registerRequestParsing();
  registerRequestSerialization();
}

// Results of other sizes.
[[maybe_unused]] void registerGrowth() {
  for (const int violations : {100, 1000, 100000}) {
    requireSameBytes<SessionResult>(resultBytes(violations));
    registerResult(violations);
  }
}

}  // namespace
}  // namespace benchmarks

int main(int count, char** arguments) {
  return benchmarks::runBenchmarks(count, arguments, [] {
    benchmarks::registerMessages();
#ifdef ALTERNATIVES
    benchmarks::registerGrowth();
    benchmarks::registerProtozero();
    benchmarks::registerRapidJson();
#endif
  });
}
