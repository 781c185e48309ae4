// SPDX-License-Identifier: Apache-2.0

// The command that serves the rule server of apps/rule_server through gRPC.

#include <grpcpp/ext/proto_server_reflection_plugin.h>
#include <grpcpp/grpcpp.h>
#include <grpcpp/health_check_service_interface.h>
#include <grpcpp/resource_quota.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>
#include <vok/rulecheck/RuleService.grpc.pb.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <CLI/CLI.hpp>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "common/command_line.h"
#include "common/message_file.h"
#include "grpc/listener.h"
#include "grpc/rule_check_service.h"
#include "grpc/security.h"
#include "rule_server/files.h"
#include "rule_server/limits.h"
#include "rule_server/rule_server.h"
#include "rulecheck/lint/server_options.h"
#include "rulecheck/page/page.h"

namespace rulecheck {
namespace {

const char* const kTokenVariable = "RULE_SERVER_TOKEN";

struct Options {
  std::string address = "127.0.0.1:0";
  std::string tokenFile;
  int idleSeconds = 60;
  rule_grpc::Security security;
  // Of all files that clients can name; empty if they can name none.
  std::string directory;
  bool mayHoldHome = false;
  rule_server::Limits limits;
  std::size_t workBytes = std::size_t{3} << 30;
};

void defineLimits(CLI::App& app, Options& options) {
  rule_server::Limits& limits = options.limits;
  // A serialized message has less than 2 GiB, and a finding's number 31 bits.
  constexpr auto kMost = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());
  // CLI11 takes a negative number for an enormous one.
  constexpr std::size_t kMostInAll = std::numeric_limits<std::size_t>::max() / 2;
  const auto limit = [&app](const char* option, std::size_t& value, std::size_t most,
                            const char* help) {
    app.add_option(option, value, help)
        ->check(CLI::Range(std::size_t{1}, most))
        ->capture_default_str();
  };
  limit("--max-rules", limits.rules, kMost, "Rules in the catalog");
  limit("--max-rule-bytes", limits.ruleBytes, kMost, "Bytes of a rule in memory");
  limit("--max-sessions", limits.sessions, kMost, "Sessions, stopped ones included");
  limit("--max-findings", limits.findings, kMost, "Findings of a session");
  limit("--max-session-bytes", limits.sessionBytes, kMost, "Bytes of a session's result in memory");
  limit("--max-text-bytes", limits.textBytes, kMost,
        "Bytes in memory of a message that is written as a page, text or JSON");
  limit("--max-bytes", limits.bytes, kMostInAll, "Bytes in memory of everything that is recorded");
  limit("--max-work-bytes", options.workBytes, kMostInAll,
        "Bytes of everything else in memory; above the sum of both, all connections are closed");
}

// None without a directory.
std::optional<rule_server::DirectoryFiles> filesOf(const Options& options) {
  if (options.directory.empty()) {
    return std::nullopt;
  }
  if (!options.mayHoldHome && rule_server::holdsHome(options.directory)) {
    throw std::runtime_error(options.directory +
                             ": is or holds a home directory, which needs --files-may-hold-home");
  }
  return std::optional<rule_server::DirectoryFiles>(options.directory);
}

void define(CLI::App& app, Options& options) {
  app.add_option("--listen", options.address, "HOST:PORT or unix:PATH; port 0 picks a free one")
      ->capture_default_str();
  app.add_option("--token-file", options.tokenFile,
                 "File with the token for stopServer; default: the environment variable " +
                     std::string(kTokenVariable))
      ->check(apps::notEmpty());
  app.add_option("--idle-seconds", options.idleSeconds,
                 "Close a connection after so many seconds without a request")
      ->check(CLI::Range(1, 3600))
      ->capture_default_str();
  rule_grpc::define(app, "--client-ca",
                    "Authority of the clients' certificates; each client must have one",
                    options.security);
  app.get_option("--client-ca")->needs("--certificate");
  app.add_option("--files", options.directory,
                 "Directory of all files that clients can name; without it, they can name none")
      ->check(CLI::ExistingDirectory);
  app.add_flag("--files-may-hold-home", options.mayHoldHome,
               "Let --files be /, a home directory, or a directory above one")
      ->needs("--files");
  defineLimits(app, options);
}

// A line break at the end of the file is not part of the token.
std::string tokenOf(const std::string& file) {
  std::string token = apps::readFile(file);
  token.erase(token.find_last_not_of("\r\n") + 1);
  if (token.empty()) {
    throw std::runtime_error(file + ": has no token");
  }
  return token;
}

std::string tokenFor(const Options& options) {
  const char* const variable = getenv(kTokenVariable);
  std::string token = variable == nullptr ? "" : variable;
  if (!options.tokenFile.empty()) {
    token = tokenOf(options.tokenFile);
  }
  vok::rulecheck::ExchangeToken argument;
  argument.set_token(token);
  if (argument.ByteSizeLong() > rule_grpc::kMaxTokenBytes) {
    throw std::runtime_error("the token is too long");
  }
  return token;
}

rule_server::Environment environmentOf(const Options& options, rule_server::Files* files) {
  rule_server::Environment environment;
  environment.token = tokenFor(options);
  environment.files = files;
  environment.limits = options.limits;
  environment.page = [](const auto& result) { return page(result); };
  return environment;
}

// Blocks the signals that end the server in this thread and all that it starts, for sigwait().
// A closed pipe does not end it.
sigset_t blockStopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  signal(SIGPIPE, SIG_IGN);
  return signals;
}

void limit(grpc::ServerBuilder& builder) {
  // gRPC takes 12 KiB for 15 bytes that begin a request, and handles all that it has read before it
  // can notice that a connection is closed.
  constexpr int kMostReadAtOnce = 8192;
  builder.AddChannelArgument(GRPC_ARG_TCP_MAX_READ_CHUNK_SIZE, kMostReadAtOnce);
  constexpr int kMostRequestsOfAConnection = 16;
  builder.AddChannelArgument(GRPC_ARG_MAX_CONCURRENT_STREAMS, kMostRequestsOfAConnection);
  // Of what arrives and is not yet whole.
  constexpr std::size_t kMostReceivedBytes = std::size_t{256} << 20;
  // A client of server reflection keeps one as long as it likes.
  constexpr int kMostThreads = 8;
  builder.SetResourceQuota(
      grpc::ResourceQuota().Resize(kMostReceivedBytes).SetMaxThreads(kMostThreads));
  builder.SetMaxReceiveMessageSize(static_cast<int>(rule_server::kMaxRequestBytes));
  // The limit is on what travels, and bytes can be compressed to a thousandth.
  builder.SetCompressionAlgorithmSupportStatus(GRPC_COMPRESS_DEFLATE, false);
  builder.SetCompressionAlgorithmSupportStatus(GRPC_COMPRESS_GZIP, false);
}

// Without pings: a busy server would take a late answer for none.
void limitIdleness(grpc::ServerBuilder& builder, int seconds) {
  constexpr int kMinute = 60000;
  builder.AddChannelArgument(GRPC_ARG_SERVER_HANDSHAKE_TIMEOUT_MS, 1000 * seconds);
  builder.AddChannelArgument(GRPC_ARG_MAX_CONNECTION_IDLE_MS, 1000 * seconds);
  builder.AddChannelArgument(GRPC_ARG_MAX_CONNECTION_AGE_MS, 10 * kMinute);
  builder.AddChannelArgument(GRPC_ARG_MAX_CONNECTION_AGE_GRACE_MS, kMinute);
}

std::unique_ptr<grpc::Server> started(const Options& options,
                                      const std::shared_ptr<grpc::ServerCredentials>& credentials,
                                      grpc::Service& service, rule_grpc::Listener& listener) {
  grpc::EnableDefaultHealthCheckService(true);
  grpc::reflection::InitProtoReflectionServerBuilderPlugin();
  grpc::ServerBuilder builder;
  limit(builder);
  limitIdleness(builder, options.idleSeconds);
  builder.RegisterService(&service);
  auto acceptor = builder.experimental().AddExternalConnectionAcceptor(
      grpc::ServerBuilder::experimental_type::ExternalConnectionType::FROM_FD, credentials);
  std::unique_ptr<grpc::Server> server = builder.BuildAndStart();
  if (server == nullptr) {
    throw std::runtime_error(listener.address() + ": gRPC cannot serve there");
  }
  listener.start(std::move(acceptor), options.limits.bytes + options.workBytes);
  server->GetHealthCheckService()->SetServingStatus(
      vok::rulecheck::RuleCheckService::service_full_name(), true);
  return server;
}

// Ends the process even if a request in progress takes longer.
void endAfter(std::chrono::seconds time) {
  signal(SIGALRM, [](int) { _exit(0); });
  alarm(static_cast<unsigned>(time.count()));
}

void serve(const Options& options) {
  const sigset_t stopSignals = blockStopSignals();
  rule_grpc::raiseDescriptorLimit();
  auto files = filesOf(options);
  rule_server::Server rules(environmentOf(options, files ? &*files : nullptr));
  rule_grpc::RuleCheckService service(rules, [] { kill(getpid(), SIGTERM); });
  const auto credentials = rule_grpc::serverCredentials(options.security, options.address);
  rule_grpc::Listener listener(options.address);
  const auto server = started(options, credentials, service, listener);
  std::cout << "Listening on " << listener.address() << std::endl;
  int signal = 0;
  sigwait(&stopSignals, &signal);
  constexpr auto kGrace = std::chrono::seconds(10);
  const auto end = std::chrono::system_clock::now() + kGrace;
  endAfter(kGrace + std::chrono::seconds(1));
  listener.stop();
  server->GetHealthCheckService()->Shutdown();
  server->Shutdown(end);
}

}  // namespace

void addServe(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand(
      "serve", "Serves a rule server in memory through gRPC, until SIGTERM or stopServer");
  define(*command, *options);
  command->footer("Example:\n  rulecheck serve --listen unix:/run/user/1000/rules --files reports");
  command->callback([options] {
    // gRPC's log would be more than the one line of an error.
    setenv("GRPC_VERBOSITY", "NONE", 0);
    serve(*options);
  });
}

}  // namespace rulecheck
