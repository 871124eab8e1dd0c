"""Servers on this machine that meet clients with TLS of every kind, or with something else."""
import functools
import select
import socket
import struct
import subprocess
import tempfile
import threading

from OpenSSL import SSL, crypto

REPLY = b"HTTP/1.1 200 OK\r\nContent-Length: 2\r\nConnection: close\r\n\r\nok"
PATIENCE = 20  # seconds; no set-up waits for that long


class Server:
    """Passes each connection to `meet`, one after the other."""

    def __init__(self, meet):
        self._meet = meet
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.address = "127.0.0.1:%d" % self._listener.getsockname()[1]
        self._thread = threading.Thread(target=self._run)

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *_):
        self._listener.shutdown(socket.SHUT_RDWR)
        self._thread.join()
        self._listener.close()

    def _run(self):
        while True:
            try:
                connection, _ = self._listener.accept()
            except OSError:
                return
            with connection:
                connection.settimeout(None)
                connection.setsockopt(socket.SOL_SOCKET, socket.SO_RCVTIMEO, struct.pack("ll", PATIENCE, 0))
                try:
                    self._meet(connection)
                except (SSL.Error, OSError):
                    pass  # the client refuses


def context(chain, *, oldest=SSL.TLS1_2_VERSION, newest=SSL.TLS1_3_VERSION, ciphers="ALL:eNULL", staple=None):
    """`chain`: identities, the server's first; none for anonymous ciphers. What is weak is allowed here."""
    made = SSL.Context(SSL.TLS_METHOD)
    made.set_cipher_list((ciphers + ":@SECLEVEL=0").encode())
    made.set_min_proto_version(oldest)
    made.set_max_proto_version(newest)
    with tempfile.NamedTemporaryFile() as file:
        file.write(dh_parameters())
        file.flush()
        made.load_tmp_dh(file.name.encode())
    for identity in chain[:1]:
        made.use_certificate(crypto.X509.from_cryptography(identity.certificate))
        made.use_privatekey(crypto.PKey.from_cryptography_key(identity.key))
    for identity in chain[1:]:
        made.add_extra_chain_cert(crypto.X509.from_cryptography(identity.certificate))
    if staple is not None:
        made.set_ocsp_server_callback(lambda connection, data: staple)
    return made


@functools.cache
def dh_parameters():
    return subprocess.run(["openssl", "genpkey", "-genparam", "-algorithm", "DH", "-pkeyopt", "group:ffdhe2048"],
                          check=True, capture_output=True).stdout


def asked(tls_context, connection):
    """The connection after a handshake and a request."""
    tls = SSL.Connection(tls_context, connection)
    tls.set_accept_state()
    tls.do_handshake()
    request = b""
    while not request.endswith(b"\r\n\r\n"):
        request += tls.recv(4096)
    return tls


def answering(tls_context):
    """What a proper server does."""
    def meet(connection):
        tls = asked(tls_context, connection)
        tls.sendall(REPLY)
        tls.shutdown()
    return meet


def truncating(tls_context):
    """Ends the connection, but not TLS, in the place of a reply's end."""
    def meet(connection):
        asked(tls_context, connection).sendall(b"HTTP/1.1 200 OK\r\nConnection: close\r\n\r\nhalf of a rep")
    return meet


def renegotiating(tls_context):
    """Answers only after a second handshake."""
    def meet(connection):
        tls = asked(tls_context, connection)
        tls.renegotiate()
        tls.do_handshake()  # only asks for it
        connection.setblocking(False)
        while tls.renegotiate_pending():
            select.select([connection], [], [], PATIENCE)
            try:
                tls.recv(0, socket.MSG_PEEK)  # reads no data, but the handshake
            except SSL.WantReadError:
                pass
        tls.sendall(REPLY)
        tls.shutdown()
    return meet


def choosing_by_name(contexts):
    """Presents the identity of the host that the client asks for."""
    chosen = next(iter(contexts.values()))
    chosen.set_tlsext_servername_callback(
        lambda tls: tls.set_context(contexts.get((tls.get_servername() or b"").decode(), chosen)))
    return answering(chosen)


def saying(*records):
    """Sends bytes in answer to the client's hello, and leaves."""
    def meet(connection):
        connection.recv(65536)
        connection.sendall(b"".join(records))
        connection.shutdown(socket.SHUT_WR)
        while connection.recv(65536):
            pass
    return meet


def echoing(connection):
    connection.sendall(connection.recv(65536))


def resetting(connection):
    connection.recv(65536)
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))


def record(kind, payload, version=0x0303):
    return struct.pack(">BHH", kind, version, len(payload)) + payload


def alert(description):
    return record(21, bytes([2, description]))


def hello(*, version=0x0303, suite=0xC02B, compression=0, random=bytes(32), extensions=b"\xff\x01\x00\x01\x00"):
    """A server's hello; by default a proper one, for ECDHE-ECDSA-AES128-GCM-SHA256 with secure renegotiation."""
    body = struct.pack(">H", version) + random + b"\0" + struct.pack(">HB", suite, compression)
    body += struct.pack(">H", len(extensions)) + extensions if extensions else b""
    return record(22, b"\x02" + len(body).to_bytes(3, "big") + body, min(version, 0x0303))
