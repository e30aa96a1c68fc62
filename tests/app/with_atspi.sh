#!/bin/sh
# Runs a command in the world a screen reader sees: a private X server, a private session bus, and
# the AT-SPI accessibility bus switched on, as Orca switches it on. Exits 77 (skip) where any of
# those is not installed.
#   with_atspi.sh <command> [args...]
set -eu
for tool in dbus-run-session xvfb-run dbus-send; do
    command -v "$tool" >/dev/null 2>&1 || { echo "skipped: $tool is not installed" >&2; exit 77; }
done
[ -n "${XDG_RUNTIME_DIR:-}" ] && mkdir -p -m 700 "$XDG_RUNTIME_DIR"
exec dbus-run-session -- xvfb-run -a -s "-screen 0 1600x900x24" sh -c '
    dbus-send --session --print-reply --dest=org.a11y.Bus /org/a11y/bus \
        org.freedesktop.DBus.Properties.Set string:org.a11y.Status string:IsEnabled variant:boolean:true \
        >/dev/null 2>&1 || { echo "skipped: the AT-SPI bus (at-spi2-core) is not available" >&2; exit 77; }
    exec "$@"' with_atspi "$@"
