# SPDX-License-Identifier: Apache-2.0

"""Certificates, made by the commands of the manual."""

import os
import re
import subprocess
import tempfile

import grpc
from servers import BUILD_DIR, README


def sh(folder, commands):
    subprocess.run(["sh", "-e", "-c", commands], cwd=folder, check=True, capture_output=True)


def make(folder):
    """The authority, and certificates for a server and a client."""
    block = re.search(r"```sh\n(openssl .*?)```", README.read_text(encoding="utf-8"), re.S)
    sh(folder, block[1])


def make_another(folder, name, subject, authority, days):
    """A certificate for the key of the server or of the client."""
    sh(folder, f"""
openssl req -new -key {name.split('-')[0]}.key -subj /CN={name} \
  -addext subjectAltName={subject} -out {name}.csr
openssl x509 -req -in {name}.csr -copy_extensions copy -CA {authority}.pem \
  -CAkey {authority}.key -CAcreateserial -days {days} -out {name}.pem
""")


class Certificates:
    """In a folder: ca, other-ca, server, client, client-expired, client-other."""

    def __init__(self, test):
        folder = tempfile.TemporaryDirectory(prefix="certificates ", dir=BUILD_DIR)
        test.addClassCleanup(folder.cleanup)
        self.folder = folder.name
        make(self.folder)
        sh(self.folder, "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes"
                        " -days 30 -subj '/CN=Another authority' -keyout other-ca.key"
                        " -out other-ca.pem")
        here = "DNS:localhost,IP:127.0.0.1"
        make_another(self.folder, "client-expired", here, "ca", -1)
        make_another(self.folder, "client-other", here, "other-ca", 30)

    def path(self, name):
        return os.path.join(self.folder, name)

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def server_options(self, certificate="server", mutual=True):
        options = ["--certificate", self.path(f"{certificate}.pem"), "--key", self.path("server.key")]
        return options + (["--client-ca", self.path("ca.pem")] if mutual else [])

    def client_files(self, certificate="client", authority="ca"):
        """The files of a client's three options."""
        return [self.path(f"{authority}.pem"), self.path(f"{certificate}.pem"),
                self.path("client.key")]

    def client_options(self, **names):
        authority, certificate, key = self.client_files(**names)
        return ["--ca", authority, "--certificate", certificate, "--key", key]

    def credentials(self, certificate="client", authority="ca"):
        """Without a certificate if that is None."""
        own = (self.read("client.key"), self.read(f"{certificate}.pem")) if certificate else ()
        return grpc.ssl_channel_credentials(self.read(f"{authority}.pem"), *own)
