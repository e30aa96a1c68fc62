#!/usr/bin/env bash
# The --render-icon launch contract, checked on the real executable with no display at all.
set -uo pipefail
app=$1
dir=$2
rm -rf "$dir" && mkdir -p "$dir" && cd "$dir"
unset DISPLAY WAYLAND_DISPLAY QT_QPA_PLATFORM
fail() { echo "FAIL: $*"; exit 1; }
is_icon() { [[ -f $1 ]] && [[ $(head -c 8 "$1" | od -An -tx1 | tr -d ' \n') == 89504e470d0a1a0a ]]; }

"$app" --render-icon out.png >out.txt 2>err.txt; rc=$?
[[ $rc == 0 ]] || fail "plain export exited $rc"
is_icon out.png || fail "no PNG written"
[[ ! -s err.txt && ! -s out.txt ]] || fail "an export must print nothing, got: $(cat out.txt err.txt)"

"$app" --demo --render-icon demo.png >/dev/null 2>&1; rc=$?
[[ $rc == 0 ]] && is_icon demo.png || fail "the option anywhere on the line"

"$app" --render-icon a.png --render-icon b.png >/dev/null 2>&1; rc=$?
[[ $rc == 0 ]] && is_icon a.png && [[ ! -e b.png ]] || fail "only the first --render-icon counts"

"$app" --render-icon missing-folder/x.png >/dev/null 2>err.txt; rc=$?
[[ $rc == 0 ]] || fail "a failed write must exit 0, got $rc"
[[ ! -s err.txt ]] || fail "a failed write must stay silent"

# As the last argument it starts the app normally: here, with no display, that means it does
# not export and does not exit 0 as an export would (the offscreen window is closed by timeout).
QT_QPA_PLATFORM=offscreen XDG_DATA_HOME=$dir XDG_CACHE_HOME=$dir timeout 3 "$app" --render-icon >/dev/null 2>&1; rc=$?
[[ $rc == 124 ]] || fail "--render-icon as the last argument must start the app (exit $rc)"
echo "launch contract OK"
