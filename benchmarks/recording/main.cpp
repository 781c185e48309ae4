// SPDX-License-Identifier: Apache-2.0

// Benchmarks of calls to the rule server at the address in the environment variable RULE_SERVER,
// all on one connection.

#include <grpcpp/generic/generic_stub.h>
#include <grpcpp/grpcpp.h>

#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "grpc/remote_server.h"
#include "measure.h"
#include "messages.h"

namespace {

using vok::rulecheck::Request;

// Calls a method that gRPC itself answers. No bytes go there, and two come back.
class HealthCheck {
 public:
  explicit HealthCheck(const std::shared_ptr<grpc::Channel>& channel) : stub_(channel) {}

  void operator()() {
    grpc::ClientContext context;
    // As recording has one.
    context.set_deadline(std::chrono::system_clock::now() + std::chrono::minutes(1));
    grpc::ByteBuffer answer;
    grpc::Status status;
    const auto call =
        stub_.PrepareUnaryCall(&context, "/grpc.health.v1.Health/Check", empty_, &queue_);
    call->StartCall();
    call->Finish(&answer, &status, this);
    void* ended = nullptr;
    bool isValid = false;
    queue_.Next(&ended, &isValid);
    benchmarks::require(status.ok(), "health: " + status.error_message());
  }

 private:
  const grpc::Slice nothing_;
  const grpc::ByteBuffer empty_{&nothing_, 1};
  grpc::GenericStub stub_;
  grpc::CompletionQueue queue_;
};

// Records violations as `rulecheck lint --server` does.
class Recording {
 public:
  explicit Recording(const std::shared_ptr<grpc::Channel>& channel)
      : server_(rule_grpc::remoteServer(channel)), requests_(benchmarks::makeRequests()) {
    Request start;
    start.set_type(Request::START_SESSION);
    start.mutable_start_session()->set_name("benchmark");
    server_(&start, &response_);
    const std::string session = response_.session().uuid();
    // Few, since a program has just made the finding that it reports: it is in the cache.
    constexpr std::size_t kRequests = 100;
    requests_.resize(kRequests);
    for (Request& request : requests_) {
      request.mutable_create_violation()->set_rule_key("RULE");
      request.mutable_create_violation()->set_session_uuid(session);
    }
    Request rule;
    rule.set_type(Request::UPSERT_RULESPEC);
    rule.mutable_upsert_rulespec()->mutable_rule_spec()->set_key("RULE");
    rule.mutable_upsert_rulespec()->mutable_rule_spec()->set_full_name("RULE");
    server_(&rule, &response_);
  }

  void operator()() { server_(&requests_[next_++ % requests_.size()], &response_); }

 private:
  rulecheck::Server server_;
  std::vector<Request> requests_;
  vok::rulecheck::Response response_;
  std::size_t next_ = 0;
};

void measureCalls(const std::string& name, std::function<void()> call) {
  benchmark::RegisterBenchmark(name.c_str(), [call = std::move(call)](benchmark::State& state) {
    for (auto _ : state) {
      call();
    }
    state.counters["items"] = 1;
  })->UseRealTime();
}

void registerCalls() {
  const char* address = std::getenv("RULE_SERVER");
  benchmarks::require(address != nullptr, "RULE_SERVER is not set");
  const auto channel = rule_grpc::channelTo(address, {});
  const auto check = std::make_shared<HealthCheck>(channel);
  (*check)();
  measureCalls("empty call", [check] { (*check)(); });
  const auto recording = std::make_shared<Recording>(channel);
  measureCalls("record", [recording] { (*recording)(); });
}

}  // namespace

int main(int count, char** arguments) {
  return benchmarks::runBenchmarks(count, arguments, registerCalls);
}
