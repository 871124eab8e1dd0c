"""A sandbox that runs as a program of its own, and a client that signs as applications do."""
import base64
import hashlib
import http.client
import json
import ssl
import subprocess
import tempfile
import time
from pathlib import Path

HOST = "api-qa2.kavio.example"
MACHINE = 42100107


def digest(data):
    return hashlib.sha1(data).digest()


def signature(url, body):
    stamp = time.strftime("%Y%m%d%H%M%S", time.gmtime())
    of_url = digest(url.lower().encode())
    whole = of_url[:1] + digest(of_url + digest(body[:32].encode()) + digest(stamp.encode()))
    return base64.urlsafe_b64encode(whole).decode().rstrip("=") + "0" + stamp[-4:]


class RunningSandbox:
    def __init__(self, program, *options):
        self.folder = tempfile.TemporaryDirectory()
        self.authority = str(Path(self.folder.name, "authority.pem"))
        self.process = subprocess.Popen([program, "--json", "--authority", self.authority, *options],
                                        stdout=subprocess.PIPE, text=True)
        listening = json.loads(self.process.stdout.readline())
        self.port = int(listening["address"].rsplit(":", 1)[1])
        self.origin = f"https://localhost:{self.port}"
        self.trust = ssl.create_default_context(cafile=self.authority)
        self.token = ""

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.communicate()
        self.folder.cleanup()

    def send(self, method, path, body=None, headers=None):
        """The reply's status and what its JSON says."""
        connection = http.client.HTTPSConnection("localhost", self.port, context=self.trust, timeout=30)
        connection.request(method, path, None if body is None else json.dumps(body), headers or {})
        reply = connection.getresponse()
        text = reply.read()
        connection.close()
        return reply.status, json.loads(text)

    def control(self, method, path, body=None):
        status, reply = self.send(method, "/_sandbox" + path, body)
        assert status == 200, reply
        return reply

    def api(self, method, path, body=None):
        text = "" if body is None else json.dumps(body)
        headers = {"Host": HOST, "X-Zelto-Wallet-Api-Key": "demo-key", "lang": "en",
                   "Content-Type": "application/json; charset=utf-8",
                   "X-Zelto-Sign": signature(f"https://{HOST}/v1{path}", text)}
        if self.token:
            headers["X-Zelto-Wallet-Session-Token"] = self.token
        return self.send(method, "/v1" + path, body, headers)

    def log_in(self, number="151234567"):
        phone = {"countryCode": "49", "phoneNumber": number}
        _, asked = self.api("POST", "/account/challenge/", {**phone, "challenge": "", "retry": "0"})
        _, verified = self.api("POST", "/account/verify/", {
            **phone, "challenge": asked["challenge"]["challenge"], "verificationCode": "123456",
            "retryTimeoutSeconds": "0", "country": "DE"})
        self.token = verified["token"]["token"]

    def buy(self, amount):
        status, reply = self.api("POST", f"/machines/{MACHINE}/orders", {"amount": amount, "products": []})
        assert status == 200, reply
        return reply["order"]
