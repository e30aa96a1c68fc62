#!/bin/sh
# Runs a command as the only client of a private Weston: its own runtime folder and socket, one
# output of 1600 x 900 logical pixels painted by the CPU, the screenshooter open to clients
# (--debug) and no panel. Exits 77 (skip) only where Weston cannot start.
#   with_weston.sh <scale> <command> [args...]   the headless back end, output at that scale
#   with_weston.sh input <command> [args...]     the X11 back end in a private Xvfb, at scale 1:
#                                                X input (xdotool) reaches clients through Weston's
#                                                seat; the X screen is larger than the output so that
#                                                the pointer can leave it and enter again
set -eu
scale=$1
shift
command -v weston >/dev/null 2>&1 || { echo "skipped: weston is not installed" >&2; exit 77; }
if [ "$scale" = input ]; then
    if [ -z "${ORVAN_WESTON_IN_XVFB:-}" ]; then
        for tool in xvfb-run xdotool; do
            command -v "$tool" >/dev/null 2>&1 || { echo "skipped: Weston's X11 back end needs $tool" >&2; exit 77; }
        done
        ORVAN_WESTON_IN_XVFB=1 exec xvfb-run -a -s "-screen 0 1700x1000x24 -nolisten tcp" "$0" input "$@"
    fi
    backend="x11-backend.so"
    scale=1
else
    backend="headless-backend.so"
fi

runtime=$(mktemp -d /tmp/orvan-weston.XXXXXX)
chmod 700 "$runtime"
weston_pid=
cleanup() {
    [ -n "$weston_pid" ] && kill "$weston_pid" 2>/dev/null && wait "$weston_pid" 2>/dev/null
    rm -rf "$runtime"
}
trap cleanup EXIT INT TERM

# The desktop's colour is one the stage never shows next to its edge, so the tests can find the
# window (and a dialog) in a screenshot by it.
cat >"$runtime/weston.ini" <<'EOF'
[shell]
panel-position=none
background-color=0xff3a5f8a
locking=false
EOF

XDG_RUNTIME_DIR=$runtime weston --backend="$backend" --use-pixman --socket=orvan-test \
    --width=1600 --height=900 --scale="$scale" --config="$runtime/weston.ini" --debug \
    --log="$runtime/weston.log" &
weston_pid=$!
# Weston listens once its output and shell are up; give it 5 s on a loaded machine.
tries=0
until [ -S "$runtime/orvan-test" ]; do
    if ! kill -0 "$weston_pid" 2>/dev/null || [ $tries -ge 50 ]; then
        echo "skipped: weston did not start:" >&2
        tail -n 5 "$runtime/weston.log" >&2 2>/dev/null || true
        exit 77
    fi
    tries=$((tries + 1))
    sleep 0.1
done

status=0
XDG_RUNTIME_DIR=$runtime WAYLAND_DISPLAY=orvan-test QT_QPA_PLATFORM=wayland ORVAN_WESTON_SCALE=$scale "$@" || status=$?
exit $status
