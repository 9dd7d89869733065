"""Asks a document server directly, without the client: a second sign-in and the calls that show what it holds."""
import base64
import http.client
import json
import ssl
import subprocess

from .waiting import Failure


class ServerCalls:
    def __init__(self, address, port, https, certificate):
        self.address, self.port, self.https, self.certificate = address, int(port), https, certificate
        self.token = None

    def request(self, service, method, body):
        """(content type, bytes) of the reply."""
        path = f"/api/v1/{service}?method={method}" + (f"&tokenid={self.token}" if self.token else "")
        if self.https:
            unchecked = ssl._create_unverified_context()  # such servers sign their own certificates
            connection = http.client.HTTPSConnection(self.address, self.port, timeout=60, context=unchecked)
        else:
            connection = http.client.HTTPConnection(self.address, self.port, timeout=60)
        try:
            connection.request("POST", path, json.dumps(body))
            reply = connection.getresponse()
            data = reply.read()
        finally:
            connection.close()
        if reply.status != 200:
            raise Failure(f"the server answered {service} {method} with {reply.status}: {data[:300]!r}")
        return data

    def call(self, service, method, **body):
        return json.loads(self.request(service, method, body) or b"{}")

    def sign_in(self, account, password):
        command = ["openssl", "pkeyutl", "-encrypt", "-certin", "-keyform", "DER", "-inkey", self.certificate,
                   "-pkeyopt", "rsa_padding_mode:pkcs1"]
        cipher = subprocess.run(command, input=password.encode(), capture_output=True, check=False)
        if cipher.returncode != 0:
            raise Failure(f"openssl cannot encrypt the password: {cipher.stderr.decode(errors='replace').strip()}")
        reply = self.call("auth1", "getnew", account=account, password=base64.b64encode(cipher.stdout).decode(),
                          deviceinfo={"ostype": 5})
        self.token = reply["tokenid"]

    def own_entry(self):
        """Identity of the user's own entry document."""
        return self.call("entrydoc2", "get", doctype=1)["docinfos"][0]["docid"]

    def files(self, folder):
        """Records of the files in a folder, by name."""
        return {record["name"]: record for record in self.call("dir", "list", docid=folder, attr=True)["files"]}

    def create_folder(self, parent, name):
        return self.call("dir", "create", docid=parent, name=name, ondup=1)["docid"]

    def read(self, document, size):
        """All bytes of a file, asked for in parts."""
        content, part = b"", 8 * 1024 * 1024
        while len(content) < size:
            piece = self.request("file", "read", {"docid": document, "offset": len(content), "length": part})
            if not piece:
                break
            content += piece
        return content
