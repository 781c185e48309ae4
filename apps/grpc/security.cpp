// SPDX-License-Identifier: Apache-2.0

#include "grpc/security.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/types.h>
#include <openssl/x509.h>
#include <re2/re2.h>
#include <sys/socket.h>

#include <initializer_list>
#include <stdexcept>
#include <vector>

#include "common/command_line.h"
#include "common/message_file.h"

namespace rule_grpc {
namespace {

template <typename T>
using Owned = std::unique_ptr<T, void (*)(T*)>;

void checkPlain(const Security& security, const std::string& address) {
  if (!security.insecure && !isOfThisHost(parseAddress(address))) {
    throw std::runtime_error(address +
                             ": not an address of this host, which needs TLS or --insecure");
  }
}

// The first object that read, one of OpenSSL's functions, finds; null if there is none.
template <typename T>
Owned<T> firstIn(const std::string& pem, T* (*read)(BIO*, T**, pem_password_cb*, void*),
                 void (*release)(T*)) {
  const Owned<BIO> bytes(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())), &BIO_free_all);
  char noPassword[] = "";  // without one OpenSSL would ask on the terminal
  Owned<T> found(read(bytes.get(), nullptr, nullptr, noPassword), release);
  ERR_clear_error();
  return found;
}

Owned<X509> firstCertificate(const std::string& pem) {
  return firstIn<X509>(pem, &PEM_read_bio_X509, &X509_free);
}

// gRPC would take the system's authorities for none.
std::string certificatesOf(const std::string& file) {
  std::string pem = apps::readFile(file);
  if (firstCertificate(pem) == nullptr) {
    throw std::runtime_error(file + ": has no certificate");
  }
  return pem;
}

std::string keyFor(const std::string& certificate, const std::string& file) {
  std::string pem = apps::readFile(file);
  const auto key = firstIn<EVP_PKEY>(pem, &PEM_read_bio_PrivateKey, &EVP_PKEY_free);
  if (key == nullptr) {
    throw std::runtime_error(file + ": has no private key, or one with a password");
  }
  if (X509_check_private_key(firstCertificate(certificate).get(), key.get()) != 1) {
    throw std::runtime_error(file + ": not the key of the certificate");
  }
  return pem;
}

grpc::SslServerCredentialsOptions::PemKeyCertPair ownPair(const Security& security) {
  const std::string certificate = certificatesOf(security.certificate);
  return {keyFor(certificate, security.key), certificate};
}

}  // namespace

Address parseAddress(const std::string& text) {
  constexpr int kHighestPort = 65535;
  Address address;
  // gRPC's clients take a name after two slashes for a host.
  if (RE2::FullMatch(text, R"(unix:([^%?#,[:cntrl:]]+))", &address.path) &&
      !RE2::FullMatch(address.path, "//([^/].*)?")) {
    return address;
  }
  if ((RE2::FullMatch(text, R"(([\w.-]+):(\d{1,5}))", &address.host, &address.port) ||
       RE2::FullMatch(text, R"(\[([\w:.%]+)\]:(\d{1,5}))", &address.host, &address.port)) &&
      std::stoi(address.port) <= kHighestPort) {
    return address;
  }
  throw std::runtime_error(text + ": not an address, expected HOST:PORT or unix:PATH");
}

bool isOfThisHost(const Address& address) {
  in_addr number{};
  if (inet_pton(AF_INET, address.host.c_str(), &number) == 1) {
    return ntohl(number.s_addr) >> 24U == IN_LOOPBACKNET;
  }
  return !address.path.empty() || address.host == "localhost" || address.host == "::1";
}

void define(CLI::App& app, const std::string& authorityOption, const std::string& authorityHelp,
            Security& security) {
  CLI::Option* certificate =
      app.add_option("--certificate", security.certificate, "Certificate of this program, for TLS");
  CLI::Option* key = app.add_option("--key", security.key, "Private key of that certificate");
  certificate->needs(key);
  key->needs(certificate);
  CLI::Option* authority = app.add_option(authorityOption, security.authority, authorityHelp);
  for (CLI::Option* file : {certificate, key, authority}) {
    file->check(apps::notEmpty());
  }
  app.add_flag("--insecure", security.insecure, "Allow other hosts without TLS");
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
  if (!security.authority.empty()) {
    options.pem_root_certs = certificatesOf(security.authority);
  }
  options.pem_key_cert_pairs.push_back(ownPair(security));
  return grpc::SslServerCredentials(options);
}

std::shared_ptr<grpc::ChannelCredentials> clientCredentials(const Security& security,
                                                            const std::string& address) {
  if (security.authority.empty()) {
    checkPlain(security, address);
    return grpc::InsecureChannelCredentials();
  }
  grpc::SslCredentialsOptions options;
  options.pem_root_certs = certificatesOf(security.authority);
  if (!security.certificate.empty()) {
    const auto own = ownPair(security);
    options.pem_private_key = own.private_key;
    options.pem_cert_chain = own.cert_chain;
  }
  return grpc::SslCredentials(options);
}

}  // namespace rule_grpc
