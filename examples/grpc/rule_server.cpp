// Serves the rule server of examples/rule_server through gRPC.

#include <grpcpp/ext/proto_server_reflection_plugin.h>
#include <grpcpp/grpcpp.h>
#include <grpcpp/health_check_service_interface.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>
#include <vok/rulecheck/RuleService.grpc.pb.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "common/command_line.h"
#include "common/message_file.h"
#include "grpc/rule_check_service.h"
#include "grpc/security.h"
#include "html_report/html_report.h"
#include "rule_server/environment.h"
#include "rule_server/files.h"
#include "rule_server/rule_server.h"

namespace {

const char* const kTokenVariable = "RULE_SERVER_TOKEN";

struct Options {
  std::string address = "127.0.0.1:0";
  std::string files = ".";
  std::string tokenFile;
  rule_grpc::Security security;
};

void define(CLI::App& app, Options& options) {
  app.add_option("--listen", options.address, "HOST:PORT or unix:PATH; port 0 picks a free one")
      ->capture_default_str();
  app.add_option("--files", options.files, "Directory of all files that clients can name")
      ->check(CLI::ExistingDirectory)
      ->capture_default_str();
  app.add_option("--token-file", options.tokenFile,
                 "File with the token for stopServer; default: the environment variable " +
                     std::string(kTokenVariable));
  rule_grpc::define(app, "--client-ca", "Authority of clients: each must have a certificate of it",
                    options.security);
  app.get_option("--client-ca")->needs("--certificate");
}

// A line break at the end of the file is not part of the token.
std::string tokenFor(const Options& options) {
  if (options.tokenFile.empty()) {
    const char* token = getenv(kTokenVariable);
    return token == nullptr ? "" : token;
  }
  std::string token = examples::readFile(options.tokenFile);
  token.erase(token.find_last_not_of("\r\n") + 1);
  if (token.empty()) {
    throw std::runtime_error(options.tokenFile + ": has no token");
  }
  return token;
}

rule_server::Environment environmentOf(const Options& options, rule_server::Files& files) {
  rule_server::Environment environment;
  environment.token = tokenFor(options);
  environment.files = &files;
  environment.now = rule_server::millisecondsSince1970;
  environment.newUuid = rule_server::randomUuid;
  environment.page = html_report::page;
  return environment;
}

// The signals that end the server. They are blocked in this thread and all that it
// starts, so that wait() gets them.
class StopSignals {
 public:
  StopSignals() {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGINT);
    sigaddset(&signals_, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
  }
  void wait() const {
    int signal = 0;
    sigwait(&signals_, &signal);
  }

 private:
  sigset_t signals_{};
};

void limit(grpc::ServerBuilder& builder) {
  constexpr int kMostRequestsOfAConnection = 16;
  builder.AddChannelArgument(GRPC_ARG_MAX_CONCURRENT_STREAMS, kMostRequestsOfAConnection);
  builder.SetMaxReceiveMessageSize(static_cast<int>(rule_server::kMaxRequestBytes));
  // The limit is on what travels, and bytes can be compressed to a thousandth.
  builder.SetCompressionAlgorithmSupportStatus(GRPC_COMPRESS_DEFLATE, false);
  builder.SetCompressionAlgorithmSupportStatus(GRPC_COMPRESS_GZIP, false);
}

std::unique_ptr<grpc::Server> started(const Options& options, grpc::Service& service, int* port) {
  grpc::EnableDefaultHealthCheckService(true);
  grpc::reflection::InitProtoReflectionServerBuilderPlugin();
  grpc::ServerBuilder builder;
  limit(builder);
  // Otherwise two servers could share an address.
  builder.AddChannelArgument(GRPC_ARG_ALLOW_REUSEPORT, 0);
  builder.AddListeningPort(options.address,
                           rule_grpc::serverCredentials(options.security, options.address), port);
  builder.RegisterService(&service);
  std::unique_ptr<grpc::Server> server = builder.BuildAndStart();
  if (server == nullptr) {
    throw std::runtime_error(options.address +
                             ": cannot listen there, or not with that certificate");
  }
  server->GetHealthCheckService()->SetServingStatus(
      vok::rulecheck::RuleCheckService::service_full_name(), true);
  return server;
}

// With the port that the system chose.
std::string boundAddress(const std::string& address, int port) {
  return address.rfind("unix:", 0) == 0
             ? address
             : address.substr(0, address.rfind(':') + 1) + std::to_string(port);
}

void serve(const Options& options) {
  constexpr auto kGrace = std::chrono::seconds(10);
  const StopSignals signals;
  rule_server::DirectoryFiles files(options.files);
  rule_server::Server rules(environmentOf(options, files));
  rule_grpc::RuleCheckService service(rules, [] { kill(getpid(), SIGTERM); });
  int port = 0;
  const auto server = started(options, service, &port);
  std::cout << "Listening on " << boundAddress(options.address, port) << std::endl;
  signals.wait();
  server->GetHealthCheckService()->Shutdown();
  server->Shutdown(std::chrono::system_clock::now() + kGrace);
}

}  // namespace

int main(int argc, char** argv) {
  // gRPC's log would be more than the one line of an error.
  setenv("GRPC_VERBOSITY", "NONE", 0);
  CLI::App app("Serves a rule server in memory through gRPC, until SIGTERM or stopServer",
               "rule_server");
  Options options;
  define(app, options);
  return examples::run(app, argc, argv, [&options] { serve(options); });
}
