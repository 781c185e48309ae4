#include "grpc/security.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <stdexcept>
#include <vector>

#include "common/message_file.h"

namespace rule_grpc {
namespace {

void checkPlain(const Security& security, const std::string& address) {
  if (!security.insecure && !isOfThisHost(address)) {
    throw std::runtime_error(address +
                             ": not an address of this host, which needs TLS or --insecure");
  }
}

std::string contentOf(const std::string& file) {
  return file.empty() ? "" : examples::readFile(file);
}

}  // namespace

void define(CLI::App& app, const std::string& authorityOption, const std::string& authorityHelp,
            Security& security) {
  CLI::Option* certificate =
      app.add_option("--certificate", security.certificate, "Own certificate, for TLS");
  CLI::Option* key = app.add_option("--key", security.key, "Private key of that certificate");
  certificate->needs(key);
  key->needs(certificate);
  app.add_option(authorityOption, security.authority, authorityHelp);
  app.add_flag("--insecure", security.insecure, "Talk to other hosts without TLS");
}

std::shared_ptr<grpc::ServerCredentials> serverCredentials(const Security& security,
                                                           const std::string& address) {
  if (security.certificate.empty()) {
    checkPlain(security, address);
    return grpc::InsecureServerCredentials();
  }
  grpc::SslServerCredentialsOptions options(
      security.authority.empty() ? GRPC_SSL_DONT_REQUEST_CLIENT_CERTIFICATE
                                 : GRPC_SSL_REQUEST_AND_REQUIRE_CLIENT_CERTIFICATE_AND_VERIFY);
  options.pem_root_certs = contentOf(security.authority);
  options.pem_key_cert_pairs.push_back({contentOf(security.key), contentOf(security.certificate)});
  return grpc::SslServerCredentials(options);
}

std::shared_ptr<grpc::ChannelCredentials> clientCredentials(const Security& security,
                                                            const std::string& address) {
  if (security.authority.empty()) {
    checkPlain(security, address);
    return grpc::InsecureChannelCredentials();
  }
  return grpc::SslCredentials(
      {contentOf(security.authority), contentOf(security.key), contentOf(security.certificate)});
}

bool isOfThisHost(const std::string& address) {
  if (address.rfind("unix:", 0) == 0) {
    return true;
  }
  const std::string host = address.substr(0, address.rfind(':'));
  in_addr number{};
  if (inet_pton(AF_INET, host.c_str(), &number) == 1) {
    return ntohl(number.s_addr) >> 24U == IN_LOOPBACKNET;
  }
  return host == "localhost" || host == "[::1]";
}

}  // namespace rule_grpc
