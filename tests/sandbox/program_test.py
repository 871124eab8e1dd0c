#!/usr/bin/env python3
"""Starts the sandbox with options right and wrong, and leaves its events unread.

Usage: program_test.py PROGRAM
"""
import socket
import subprocess
import sys

from running_sandbox import RunningSandbox

PROGRAM = sys.argv[1]
MOST_READERS = 8


def run(*options):
    done = subprocess.run([PROGRAM, *options], capture_output=True, text=True, timeout=30)
    return done.returncode, done.stdout, done.stderr


def expect(shown, expected):
    assert shown == expected, f"\nis:      {shown}\nmust be: {expected}"


def wrong_options_are_answered_with_a_sentence():
    for options, sentence in [
        (["--port", "70000"], "--port: '70000' is not a whole number from 0 to 65535"),
        (["--seed", "-1"], "--seed: '-1' is not a whole number from 0 to 9223372036854775807"),
        (["--idle-limit", "soon"], "--idle-limit: 'soon' is not a whole number from 1 to 86400"),
        (["--port"], "--port is not followed by what it needs"),
        (["--nothing"], "There is no option '--nothing'"),
    ]:
        expect(run(*options), (2, "", f"kavio-sandbox: {sentence}.\n"))
    status, version, _ = run("--version")
    assert status == 0 and version.count(".") == 2, version


def two_run_side_by_side():
    with RunningSandbox(PROGRAM, "--seed", "7") as one, RunningSandbox(PROGRAM, "--seed", "7") as other:
        one.log_in()
        expect(len(other.control("GET", "/state")["accounts"]), 0)
        other.log_in()
        expect(one.token, other.token)  # from the same seed
        expect(run("--port", str(one.port)), (1, "", f"kavio-sandbox: cannot listen on 127.0.0.1:{one.port}\n"))
    with RunningSandbox(PROGRAM, "--seed", "8") as third:
        third.log_in()
        assert third.token != one.token


def http2_is_spoken_instead():
    with RunningSandbox(PROGRAM, "--http2") as sandbox:
        sandbox.trust.set_alpn_protocols(["http/1.1", "h2"])
        with socket.create_connection(("localhost", sandbox.port)) as plain:
            with sandbox.trust.wrap_socket(plain, server_hostname="localhost") as stream:
                expect(stream.selected_alpn_protocol(), "h2")


class Reader:
    """Asks for the events, and does not read them."""

    def __init__(self, sandbox):
        plain = socket.create_connection(("localhost", sandbox.port))
        self.stream = sandbox.trust.wrap_socket(plain, server_hostname="localhost")
        self.stream.settimeout(20)
        self.stream.sendall(b"GET /_sandbox/events HTTP/1.1\r\nHost: localhost\r\n\r\n")
        self.lines = self.stream.makefile()
        self.status = self.lines.readline().split()[1]

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.lines.close()
        self.stream.close()


def slow_readers_are_dropped():
    with RunningSandbox(PROGRAM) as sandbox:
        readers = [Reader(sandbox) for _ in range(MOST_READERS)]
        expect({reader.status for reader in readers}, {"200"})
        with Reader(sandbox) as late:
            expect(late.status, "503")

        def is_there_room():
            with Reader(sandbox) as another:
                return another.status == "200"

        # Each request is told with 16 kB to readers that take none of it.
        for _ in range(5000):
            sandbox.send("POST", "/v1/" + "x" * 4000, {"text": "y" * 8000})
            if is_there_room():
                break
        else:
            raise AssertionError("no slow reader is dropped")
        for reader in readers:
            reader.__exit__()


wrong_options_are_answered_with_a_sentence()
two_run_side_by_side()
http2_is_spoken_instead()
slow_readers_are_dropped()
