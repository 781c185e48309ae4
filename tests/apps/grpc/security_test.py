# SPDX-License-Identifier: Apache-2.0

"""Which clients and servers accept each other."""

import os
import unittest

from certificates import Certificates
from servers import RULECHECK, SERVE, Server, ServerTest


class SecurityTest(ServerTest):
    @classmethod
    def setUpClass(cls):
        cls.certificates = Certificates(cls)


class MutualTls(SecurityTest):
    def setUp(self):
        super().setUp()
        server = Server(self, "--listen", "0.0.0.0:0", *self.certificates.server_options())
        self.address = server.address.replace("0.0.0.0", "localhost")

    def test_accepts_clients_of_the_authority(self):
        self.assert_answered(self.certificates.credentials())

    def test_rejects_all_others(self):
        refused = {
            "no TLS": None,
            "no certificate": self.certificates.credentials(certificate=None),
            "a certificate of another authority": self.certificates.credentials("client-other"),
            "an expired certificate": self.certificates.credentials("client-expired"),
            "a client that trusts another authority": self.certificates.credentials(
                authority="other-ca"),
        }
        for name, credentials in refused.items():
            with self.subTest(name):
                client = self.channel(self.address, credentials)
                self.assertEqual(client.refusal("getVersion")[0], "UNAVAILABLE")
        self.assert_answered(self.certificates.credentials())

    def assert_answered(self, credentials):
        self.assertEqual(
            self.channel(self.address, credentials).refusal("getVersion"), ("OK", None))


class Tls(SecurityTest):
    def test_without_client_ca_needs_no_certificate_of_clients(self):
        server = Server(self, *self.certificates.server_options(mutual=False))
        for certificate in [None, "client", "client-other"]:
            client = self.channel(server.address, self.certificates.credentials(certificate))
            self.assertEqual(client.refusal("getVersion"), ("OK", None), certificate)


class LintClient(SecurityTest):
    def test_is_rejected(self):
        server = Server(self, *self.certificates.server_options())
        for options in [self.certificates.client_options(authority="other-ca"),
                        self.certificates.client_options(certificate="client-other"),
                        self.certificates.client_options()[:2], []]:
            self.assert_lost(self.report(server.address, *options))

    def test_talks_to_no_other_host_without_tls(self):
        self.assert_refused(
            self.report("rules.example:80"),
            "rulecheck: rules.example:80: not an address of this host, "
            "which needs TLS or --insecure")
        self.assert_lost(self.report("0.0.0.0:1", "--insecure"))


class PlainServers(ServerTest):
    def test_listen_on_this_host_only(self):
        for address in ["0.0.0.0:0", "[::]:0", "rules.example:0"]:
            self.assert_refused(
                self.run_program(*SERVE, "--listen", address),
                f"rulecheck: {address}: not an address of this host, "
                "which needs TLS or --insecure")

    def test_listen_elsewhere_if_told_to(self):
        server = Server(self, "--listen", "0.0.0.0:0", "--insecure")
        client = self.channel(server.address.replace("0.0.0.0", "127.0.0.1"))
        self.assertEqual(client.call("getVersion").major, 1)


class SecureServers(SecurityTest):
    def test_need_certificates_and_the_key(self):
        empty = self.write("empty", "")
        self.write("m.v", "module m; endmodule\n")
        paths = {name: self.certificates.path(name) for name in [
            "ca.pem", "server.pem", "server.key", "client.pem", "client.key"]}
        server, key = paths["server.pem"], paths["server.key"]
        for certificate, own, authority, line in [
                (empty, key, paths["ca.pem"], f"{empty}: has no certificate"),
                (key, key, paths["ca.pem"], f"{key}: has no certificate"),
                (server, empty, paths["ca.pem"], f"{empty}: has no private key, or one with a password"),
                (server, server, paths["ca.pem"], f"{server}: has no private key, or one with a password"),
                (server, paths["client.key"], paths["ca.pem"],
                 f"{paths['client.key']}: not the key of the certificate"),
                (server, key, empty, f"{empty}: has no certificate"),
                (server, key, key, f"{key}: has no certificate")]:
            words = ["--certificate", certificate, "--key", own]
            for program, *options in [
                    [*SERVE, "--client-ca", authority],
                    [RULECHECK, "lint", "--ca", authority, "--server", "localhost:1", "m.v"]]:
                with self.subTest(line, program=program):
                    self.assert_refused(
                        self.run_program(program, *options, *words),
                        f"{os.path.basename(program)}: {line}")


if __name__ == "__main__":
    unittest.main()
