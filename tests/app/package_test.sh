#!/usr/bin/env bash
# Builds the Debian package from a finished build and holds it to Debian's own checker: no
# errors, no warnings, and hardened binaries. Then looks inside for what a user relies on.
set -euo pipefail
build=$1
out=$2

if ! command -v lintian >/dev/null; then
  echo "SKIP: lintian is not installed (scripts/install-deps installs it)"
  exit 77
fi

fail() { echo "FAIL: $*"; exit 1; }

rm -rf "$out"
mkdir -p "$out"
(cd "$build" && cpack -G DEB -B "$out" >"$out/cpack.log" 2>&1) || { cat "$out/cpack.log"; fail "cpack"; }
debs=("$out"/orvanrcu_*.deb)
deb=${debs[0]}
[[ -f $deb ]] || fail "no package written"

# Errors and warnings fail; of the notes, only the hardening ones: they mean a binary was built
# without the flags.
report=$(lintian --display-info --tag-display-limit 0 "$deb" 2>&1 | grep -v '^running with root privileges' || true)
[[ -n $report ]] && echo "$report"
if grep -E '^(E|W): |^I: .*hardening-' <<<"$report" >/dev/null; then
  fail "lintian"
fi

# lintian cannot see fortification in a binary whose copies all have run-time sizes (the app's
# note is overridden), so look for it directly: the simulator's formatted output must go through
# the checked calls, and both programs must carry stack canaries.
unpacked=$out/root
dpkg-deb -x "$deb" "$unpacked"
imports() { objdump -T "$unpacked/usr/bin/$1"; }
grep -qE '__[a-z]+printf_chk' <<<"$(imports orvan-unit-sim)" || fail "simulator not fortified"
for program in orvanrcu orvan-unit-sim; do
  grep -q '__stack_chk_fail' <<<"$(imports $program)" || fail "$program has no stack protector"
done

contents=$(dpkg-deb -c "$deb" | awk '{print $6}' | sed 's|^\./|/|')
has() { grep -qx -- "$1" <<<"$contents" || fail "package lacks $1"; }
has /usr/bin/orvanrcu
has /usr/bin/orvan-unit-sim
has /usr/share/man/man1/orvanrcu.1.gz
has /usr/share/man/man1/orvan-unit-sim.1.gz
has /usr/share/doc/orvanrcu/copyright
has /usr/share/doc/orvanrcu/changelog.gz
for size in 16 22 24 32 48 64 128 256 512; do
  has /usr/share/icons/hicolor/${size}x${size}/apps/org.orvanrcu.orvanrcu.png
done
# Debian 12's hicolor theme has no folder above 512: an icon there would be found by nothing.
grep -q '/hicolor/1024x1024/' <<<"$contents" && fail "icon in a folder the theme does not have"

# In a Wayland session the window needs Qt's Wayland plugin to be a Wayland client at all.
[[ $(dpkg-deb -f "$deb" Recommends) == *qt6-wayland* ]] || fail "package does not recommend qt6-wayland"

# The changelog speaks of the version being packaged.
version=$(dpkg-deb -f "$deb" Version)
latest=$(gzip -dc "$unpacked/usr/share/doc/orvanrcu/changelog.gz" | sed -n 1p)
[[ $latest == "orvanrcu ($version) "* ]] || fail "changelog does not start with version $version: $latest"
echo "package OK: $(basename "$deb")"
