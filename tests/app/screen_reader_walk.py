#!/usr/bin/python3
"""Starts the app in demo mode and reads its window over AT-SPI, as a screen reader does.

Usage: screen_reader_walk.py <path to orvanrcu>   (inside with_atspi.sh)
Prints how many named, focusable, actionable objects a screen reader finds, checks a few of them
by name and role, toggles a +48V lamp the way a screen reader user does and expects the
confirmation instead of phantom power. Exits 1 if the window does not read or act as it should,
77 if pyatspi is missing.
"""
import subprocess
import sys

try:
    import pyatspi
    from gi.repository import GLib
except ImportError:
    print("skipped: python3-pyatspi is not installed", file=sys.stderr)
    sys.exit(77)

APP_NAMES = ("OrvanRCU", "orvanrcu")
GUARD_SECONDS = 30  # only a guard: the walk starts as soon as the app registers
FOCUS_STOPS = 24 + 68 + 12 + 1  # the Dunra, Orvan and Melko controls and the demo pill


def find_app():
    for app in pyatspi.Registry.getDesktop(0):
        if app is not None and app.name in APP_NAMES and app.childCount > 0:
            return app
    return None


def wait_for(find):
    """Runs the AT-SPI event loop until `find()` finds something, and returns it (or None)."""
    found = []

    def check(_event=None):
        result = find()
        if result is not None and not found:
            found.append(result)
            pyatspi.Registry.stop()
        return False

    for kind in ("object:children-changed", "window:create", "window:activate", "focus:"):
        pyatspi.Registry.registerEventListener(check, kind)
    GLib.idle_add(check)
    GLib.timeout_add_seconds(GUARD_SECONDS, lambda: pyatspi.Registry.stop())
    pyatspi.Registry.start()
    for kind in ("object:children-changed", "window:create", "window:activate", "focus:"):
        pyatspi.Registry.deregisterEventListener(check, kind)
    return found[0] if found else None


def walk(node, path=()):
    yield node, path
    for child in node:
        if child is not None:
            yield from walk(child, path + (node.name,))


def is_actionable(node):
    try:
        return node.queryAction().nActions > 0
    except NotImplementedError:
        return False


def main():
    app_process = subprocess.Popen([sys.argv[1], "--demo"])
    try:
        app = wait_for(find_app)
        if app is None:
            print("the app never appeared on the accessibility bus", file=sys.stderr)
            return 1
        objects = list(walk(app))
        controls = [(n, p) for n, p in objects if n.getRole() != pyatspi.ROLE_FRAME and n.name
                    and n.getState().contains(pyatspi.STATE_FOCUSABLE) and is_actionable(n)]
        print(f"{len(objects)} objects, {len(controls)} named, focusable and actionable controls")

        def control(panel, name):
            return next((n for n, p in objects if n.name == name and panel in p), None)

        failures = []
        if len(controls) != FOCUS_STOPS:
            failures.append(f"expected {FOCUS_STOPS} controls")
        expected = [("Orvan", "Channel 2 48V", pyatspi.ROLE_CHECK_BOX), ("Orvan", "Power", pyatspi.ROLE_PUSH_BUTTON),
                    ("Dunra", "Channel 1 gain", pyatspi.ROLE_SLIDER), ("Melko", "Gain knob", pyatspi.ROLE_DIAL),
                    ("Orvan", "Select channel 8", pyatspi.ROLE_PUSH_BUTTON)]
        for panel, name, role in expected:
            node = control(panel, name)
            if node is None or node.getRole() != role:
                failures.append(f"{panel}/{name}: {node.getRoleName() if node else 'missing'}")
        gain = control("Dunra", "Channel 1 gain")
        if gain is not None and gain.queryValue().currentValue <= 0:
            failures.append("the Dunra's demo gain reads as no value")
        lamp = control("Orvan", "Channel 1 48V")
        lamp.queryAction().doAction(0)
        confirm = wait_for(lambda: next((n for n, _ in walk(app) if n.name == "Turn on +48V"), None))
        if confirm is None:
            failures.append("toggling +48V showed no confirmation")
        if lamp.getState().contains(pyatspi.STATE_CHECKED):
            failures.append("+48V went on without confirmation")
        for failure in failures:
            print(failure, file=sys.stderr)
        return 1 if failures else 0
    finally:
        app_process.terminate()
        app_process.wait()


if __name__ == "__main__":
    sys.exit(main())
