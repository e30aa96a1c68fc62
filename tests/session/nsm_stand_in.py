#!/usr/bin/python3
"""A small stand-in for an NSM session manager (API 1.2), for tests and for trying the app by hand.

It speaks only the protocol's documented messages over loopback UDP: it answers the announce,
sends /nsm/client/open and /nsm/client/save, and records every message a client sends it.

By hand:  nsm_stand_in.py SESSION_PATH -- orvanrcu
then type "open", "save" or "quit" (SIGTERM to the client) on standard input; every message
exchanged is printed as it goes.
"""
import os
import select
import signal
import subprocess
import sys
import time

import liblo


class StandIn:
    """The manager's socket, on 127.0.0.1, and everything clients sent to it."""

    def __init__(self, log=None):
        self.server = liblo.Server(None, liblo.UDP)
        self.url = "osc.udp://127.0.0.1:%d/" % self.server.port
        self.received = []  # (path, args, source url)
        self.client = None  # the announcing client's address
        self.log = log
        self.server.add_method(None, None, self._on_message)

    def _on_message(self, path, args, types, source):
        self.received.append((path, list(args)))
        if self.log:
            self.log("<- %s %s" % (path, " ".join(repr(a) for a in args)))
        if path == "/nsm/server/announce":
            self.client = source
            self.send("/reply", "/nsm/server/announce", "Welcome", "nsm-stand-in", ":server-control:")

    def send(self, path, *args, via=None):
        """Sends to the announced client; `via` another server sends from a foreign socket."""
        if self.log:
            self.log("-> %s %s" % (path, " ".join(repr(a) for a in args)))
        (via or self.server).send(self.client, path, *args)

    def pump(self, seconds):
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            self.server.recv(max(1, int((end - time.monotonic()) * 1000)))

    def wait_for(self, predicate, seconds):
        """Receives until `predicate(received)` holds; the first truthy result, else None."""
        end = time.monotonic() + seconds
        while True:
            found = predicate(self.received)
            if found or time.monotonic() >= end:
                return found
            self.server.recv(max(1, min(100, int((end - time.monotonic()) * 1000))))

    def wait_for_message(self, path, seconds, first_arg=None, start=0):
        def match(received):
            for message in received[start:]:
                if message[0] == path and (first_arg is None or (message[1] and message[1][0] == first_arg)):
                    return message
            return None
        return self.wait_for(match, seconds)

    def open(self, session_path, display_name="Session", client_id="nORVAN"):
        self.send("/nsm/client/open", session_path, display_name, client_id)

    def save(self):
        self.send("/nsm/client/save")


def main():
    if "--" not in sys.argv or len(sys.argv) < 4:
        sys.exit(__doc__)
    split = sys.argv.index("--")
    session_path = sys.argv[1]
    command = sys.argv[split + 1:]
    stand_in = StandIn(log=lambda line: print(line, flush=True))
    client = subprocess.Popen(command, env=dict(os.environ, NSM_URL=stand_in.url))
    print("manager at %s, client pid %d" % (stand_in.url, client.pid), flush=True)
    while client.poll() is None:
        stand_in.pump(0.1)
        if select.select([sys.stdin], [], [], 0)[0]:
            word = sys.stdin.readline().strip()
            if word == "open":
                stand_in.open(session_path)
            elif word == "save":
                stand_in.save()
            elif word == "quit":
                client.send_signal(signal.SIGTERM)
            elif word == "":
                client.send_signal(signal.SIGTERM)
    print("client exited with status %d" % client.returncode, flush=True)


if __name__ == "__main__":
    main()
