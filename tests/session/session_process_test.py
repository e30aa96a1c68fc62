#!/usr/bin/python3
"""The app as a session manager runs it: the real process (offscreen), a private jackd on the dummy
driver, the unit simulator standing in for an Orvan, and nsm_stand_in.py as the manager.

Usage: session_process_test.py <orvanrcu> <orvan-unit-sim>   (inside dbus-run-session)
Exits 1 on the first broken promise, 77 when jackd or python3-liblo is missing.
"""
import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

try:
    import liblo
    from nsm_stand_in import StandIn
except ImportError:
    print("skipped: python3-liblo is not installed", file=sys.stderr)
    sys.exit(77)

APP, SIM = sys.argv[1], sys.argv[2]
JACK_NAME = "orvan-test-nsm"
SAMPLE_RATE = 48000
FRAMES_PER_MS = SAMPLE_RATE // 1000
GUARD = 10  # seconds: only a guard, every wait ends as soon as what it waits for happens
QUIET = 1.5  # seconds in which a unit that must not be sent anything hears nothing

# The unit's controllers (16 x channel + offset) and values, written out rather than taken from the
# code under test.
PHANTOM, PAD, POLARITY, MUTE, GAIN = 4, 2, 5, 7, 9
ON, OFF = 0x7F, 0x00


def fail(what):
    print("FAIL: " + what, flush=True)
    sys.exit(1)


def expect(condition, what):
    if not condition:
        fail(what)


def until(predicate, seconds=GUARD):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if predicate():
            return True
        time.sleep(0.02)
    return predicate()


def app_ports():
    listing = subprocess.run(["jack_lsp"], capture_output=True, text=True).stdout.split()
    return [port for port in listing if port.startswith("OrvanRCU-")]


def udp_listen_addresses(pid):
    """The local addresses of the process's UDP sockets, as /proc/net/udp gives them ("0100007F" is
    127.0.0.1, "00000000" every interface)."""
    inodes = set()
    for fd in os.listdir("/proc/%d/fd" % pid):
        target = os.readlink("/proc/%d/fd/%s" % (pid, fd))
        if target.startswith("socket:["):
            inodes.add(target[8:-1])
    addresses = []
    for table in ("/proc/net/udp", "/proc/net/udp6"):
        if not os.path.exists(table):
            continue  # a kernel without IPv6
        with open(table) as f:
            for row in f.readlines()[1:]:
                fields = row.split()
                if fields[9] in inodes:
                    addresses.append(fields[1].split(":")[0])
    return addresses


def app_wired_to_unit():
    """Whether the app's Orvan output reaches the simulator's input: from then on a send would arrive."""
    listing = subprocess.run(["jack_lsp", "-c", "Orvan:in"], capture_output=True, text=True).stdout
    return "OrvanRCU-Orvan:Out" in listing


class Simulator:
    """The unit: its log of what it received, "<frame> <hex bytes>" a line."""

    def __init__(self):
        self.process = subprocess.Popen([SIM, "--unit", "orvan"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.lines = []
        threading.Thread(target=self._read, daemon=True).start()
        expect(until(lambda: self.lines and self.lines[0].startswith("ready")), "the simulator never got ready")

    def _read(self):
        for line in self.process.stdout:
            self.lines.append(line.strip())

    def received(self):
        return [(int(line.split()[0]), [int(b, 16) for b in line.split()[1:]]) for line in self.lines[1:]]

    def report(self, hex_bytes):
        self.process.stdin.write(hex_bytes + "\n")
        self.process.stdin.flush()

    def stop(self):
        self.process.terminate()
        self.process.wait()


class Launch:
    """One run of the app under a stand-in manager, in its own data folders."""

    def __init__(self, folder, nsm=True, extra_env=None):
        self.manager = StandIn() if nsm else None
        env = dict(os.environ, QT_QPA_PLATFORM="offscreen", XDG_DATA_HOME=folder + "/data",
                   XDG_CACHE_HOME=folder + "/cache", XDG_RUNTIME_DIR=folder + "/run")
        env.pop("NSM_URL", None)
        if nsm:
            env["NSM_URL"] = self.manager.url
        env.update(extra_env or {})
        os.makedirs(folder + "/run", mode=0o700, exist_ok=True)
        self.process = subprocess.Popen([APP], env=env)

    def announce(self):
        message = self.manager.wait_for_message("/nsm/server/announce", GUARD)
        expect(message, "no announce")
        return message[1]

    def reply_to(self, request, start=0):
        found = self.manager.wait_for(lambda r: [m for m in r[start:] if m[0] in ("/reply", "/error") and m[1][0] == request], GUARD)
        expect(found, "no reply to " + request)
        return found[0]

    def quit(self):
        self.process.send_signal(signal.SIGTERM)
        try:
            return self.process.wait(GUARD)
        except subprocess.TimeoutExpired:
            self.process.kill()
            fail("the app did not end on SIGTERM")


def snapshot(gain=None, pad=False, phantom=False, polarity=False, mute=False):
    channel = {"mute": mute, "pad": pad, "phantom": phantom, "polarity": polarity}
    if gain is not None:
        channel["gainValue"] = gain
    return channel


def write_state(path, state):
    with open(path + ".json", "w") as f:
        json.dump(state, f)


def cycle_open_change_save_quit(folder, unit):
    """Open recalls, changes make it dirty, saves make it clean and write the file, SIGTERM ends it."""
    session = folder + "/session-a"
    os.makedirs(folder)
    write_state(session, {"Orvan": [snapshot(10, pad=True), snapshot(7, polarity=True, mute=True)],
                          "Zarn": [snapshot(3)]})  # a unit the app does not know is kept, not sent
    os.makedirs(folder + "/data/OrvanRCU")
    presets = b'[\n  {\n    "channels" : [\n    ],\n    "id" : "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0",\n    "name" : "Kept"\n  }\n]'
    with open(folder + "/data/OrvanRCU/presets.json", "wb") as f:
        f.write(presets)

    app = Launch(folder)
    expect(app.announce() == ["OrvanRCU", ":dirty:", "orvanrcu", 1, 2, app.process.pid], "announce fields")
    sockets = udp_listen_addresses(app.process.pid)
    expect(sockets == ["0100007F"], "the session socket does not listen on loopback only: %s" % sockets)
    app.manager.pump(1.0)  # the window paints; without a session it would open MIDI now
    expect(app_ports() == [], "a MIDI client opened before the session did")

    # Only the manager is heard: an open and a save from another socket change nothing.
    stranger = liblo.Server(None, liblo.UDP)
    heard = []
    stranger.add_method(None, None, lambda path, args: heard.append(path))
    app.manager.send("/nsm/client/open", session, "Session", "nORVAN", via=stranger)
    app.manager.send("/nsm/client/save", via=stranger)
    for _ in range(10):
        stranger.recv(100)
    app.manager.pump(0.2)
    expect(heard == [] and len(app.manager.received) == 1, "a message from another socket was answered")
    expect(app_ports() == [], "an open from another socket opened MIDI")

    # Open: the reply, then the recall, paced, byte for byte.
    app.manager.open(session)
    expect(app.reply_to("/nsm/client/open") == ("/reply", ["/nsm/client/open", "Loaded"]), "open reply")
    expected = [[0xB0, PHANTOM, OFF], [0xB0, 16 + PHANTOM, OFF],
                [0xB0, GAIN, 10], [0xB0, PAD, ON], [0xB0, POLARITY, OFF],
                [0xB0, 16 + GAIN, 7], [0xB0, 16 + PAD, OFF], [0xB0, 16 + POLARITY, ON],
                [0xB0, MUTE, OFF], [0xB0, 16 + MUTE, ON]]
    expect(until(lambda: len(unit.received()) >= len(expected)), "the recall did not reach the unit")
    app.manager.pump(0.3)
    received = unit.received()
    expect([m for _, m in received] == expected, "recalled bytes: %s" % received)
    gaps = [(b[0] - a[0]) / FRAMES_PER_MS for a, b in zip(received, received[1:])]
    expect(all(gap >= 11 for gap in gaps), "messages closer than the 12 ms pacing: %s" % gaps)
    expect(gaps[1] >= 900 + 11, "+48V not given its 900 ms to settle: %s" % gaps)
    expect(app.manager.wait_for_message("/nsm/client/is_dirty", GUARD), "a recall did not make the session dirty")

    # Save: the file and the reply, then clean.
    start = len(app.manager.received)
    app.manager.save()
    expect(app.reply_to("/nsm/client/save", start) == ("/reply", ["/nsm/client/save", "Saved"]), "save reply")
    expect(app.manager.wait_for_message("/nsm/client/is_clean", GUARD, start=start), "not clean after a save")
    with open(session + ".json") as f:
        saved = json.load(f)
    expect(saved["Orvan"][:2] == [snapshot(10, pad=True), snapshot(7, polarity=True, mute=True)], "saved: %s" % saved)
    expect(saved["Zarn"] == [snapshot(3)], "a unit's saved state was lost")

    # A report from the unit is a change: dirty; the next save writes it and is clean again.
    start = len(app.manager.received)
    unit.report("b0 09 0c")
    expect(app.manager.wait_for_message("/nsm/client/is_dirty", GUARD, start=start), "a report did not make it dirty")
    start = len(app.manager.received)
    app.manager.save()
    app.reply_to("/nsm/client/save", start)
    expect(app.manager.wait_for_message("/nsm/client/is_clean", GUARD, start=start), "not clean after the second save")
    with open(session + ".json") as f:
        expect(json.load(f)["Orvan"][0] == snapshot(12, pad=True), "the change was not saved")

    # SIGTERM: status 0, the clients gone, both files whole.
    expect(app.quit() == 0, "SIGTERM did not end with status 0")
    expect(until(lambda: app_ports() == []), "the app's JACK clients outlived it")
    with open(session + ".json") as f:
        json.load(f)
    with open(folder + "/data/OrvanRCU/presets.json", "rb") as f:
        expect(f.read() == presets, "the preset file changed")


def open_sends_nothing_unasked(folder, unit, state, what, session_folder=""):
    """An open whose state would switch +48V on waits for the question; a missing file sends nothing.
    A session folder that is not there cannot be saved to: the manager hears the error."""
    session = folder + session_folder + "/session"
    os.makedirs(folder)
    if state is not None:
        write_state(session, state)
    before = len(unit.received())
    app = Launch(folder)
    app.announce()
    app.manager.open(session)
    expect(app.reply_to("/nsm/client/open")[0] == "/reply", what + ": open reply")
    expect(until(app_wired_to_unit), what + ": the app never reached the unit after the open")
    app.manager.pump(QUIET)
    expect(unit.received()[before:] == [], what + ": sent unasked: %s" % unit.received()[before:])
    start = len(app.manager.received)
    app.manager.save()
    if session_folder:
        reply = app.reply_to("/nsm/client/save", start)
        expect(reply[0] == "/error" and reply[1][1] == -1, what + ": a failed save replied %s" % (reply,))
    else:
        expect(app.reply_to("/nsm/client/save", start)[0] == "/reply", what + ": save reply")
        expect(os.path.exists(session + ".json"), what + ": save wrote no file")
    expect(app.quit() == 0, what + ": SIGTERM status")


def one_window_per_desktop(folder):
    """A second plain launch raises the first and ends; a session's launch and --render-icon never hand over."""
    if not os.environ.get("DBUS_SESSION_BUS_ADDRESS"):
        print("no session bus: the single-window check is skipped")
        return
    first = Launch(folder + "/first", nsm=False)
    owned = lambda: "boolean true" in subprocess.run(
        ["dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/org/freedesktop/DBus",
         "org.freedesktop.DBus.NameHasOwner", "string:org.orvanrcu.orvanrcu"], capture_output=True, text=True).stdout
    expect(until(owned), "the first window took no name on the bus")
    second = Launch(folder + "/second", nsm=False)
    try:
        expect(second.process.wait(GUARD) == 0, "a second launch did not end with status 0")
    except subprocess.TimeoutExpired:
        fail("a second launch opened a second window")
    icon = folder + "/icon.png"
    expect(subprocess.run([APP, "--render-icon", icon]).returncode == 0 and os.path.getsize(icon) > 0, "--render-icon")
    in_session = Launch(folder + "/session")
    in_session.announce()
    expect(in_session.process.poll() is None, "a launch under a session manager handed over")
    expect(in_session.quit() == 0 and first.quit() == 0, "quit status")


def main():
    if not shutil.which("jackd"):
        print("skipped: jackd is not installed", file=sys.stderr)
        sys.exit(77)
    os.environ["JACK_DEFAULT_SERVER"] = JACK_NAME
    jackd = subprocess.Popen(["jackd", "-n", JACK_NAME, "-d", "dummy", "-r", str(SAMPLE_RATE), "-p", "256"],
                             stdout=subprocess.DEVNULL)
    try:
        expect(subprocess.run(["jack_wait", "-w", "-t", str(GUARD)], capture_output=True).returncode == 0, "no jackd")
        unit = Simulator()
        with tempfile.TemporaryDirectory() as folder:
            cycle_open_change_save_quit(folder + "/cycle", unit)
            open_sends_nothing_unasked(folder + "/phantom", unit, {"Orvan": [snapshot(10, phantom=True)]}, "+48V")
            open_sends_nothing_unasked(folder + "/new", unit, None, "new session")
            open_sends_nothing_unasked(folder + "/gone", unit, None, "no session folder", "/gone")
            one_window_per_desktop(folder + "/single")
        unit.stop()
    finally:
        jackd.terminate()
        jackd.wait()
    print("session process test: all passed")


if __name__ == "__main__":
    main()
