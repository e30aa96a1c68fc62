#!/usr/bin/env bash
# Installs the build into a temporary prefix and checks what lands there.
set -euo pipefail
build=$1
root=$2
rm -rf "$root"
cmake --install "$build" --prefix "$root/usr" >/dev/null

fail() { echo "FAIL: $*"; exit 1; }
id=org.orvanrcu.orvanrcu

[[ -x $root/usr/bin/orvanrcu ]] || fail "no executable in bin/"
[[ -x $root/usr/bin/orvan-unit-sim ]] || fail "no simulator in bin/"
desktop=$root/usr/share/applications/$id.desktop
metainfo=$root/usr/share/metainfo/$id.metainfo.xml
[[ -f $desktop ]] || fail "no desktop entry"
[[ -f $metainfo ]] || fail "no metainfo"
grep -qx 'Name=Orvan RCU' "$desktop" || fail "desktop entry is not named Orvan RCU"
grep -q '^Categories=.*Audio;.*Midi;' "$desktop" || fail "desktop entry lacks Audio and Midi"
desktop-file-validate "$desktop" || fail "desktop-file-validate"
appstreamcli validate --pedantic --no-net "$metainfo" >/dev/null \
  || { appstreamcli validate --pedantic --no-net "$metainfo"; fail "appstreamcli"; }
grep -q '@[A-Z_]*@' "$metainfo" && fail "metainfo has a placeholder left: $(grep -o '@[A-Z_]*@' "$metainfo" | head -1)"
# Desktop, metainfo and icon must all carry the one id, or software centres show no icon.
grep -qx "Icon=$id" "$desktop" || fail "desktop entry names another icon"
grep -q "<launchable type=\"desktop-id\">$id.desktop</launchable>" "$metainfo" || fail "metainfo launches another entry"
grep -q '<url type="homepage">https://' "$metainfo" || fail "metainfo has no project URL"
grep -q '<image>https://.*/screenshot.png</image>' "$metainfo" || fail "metainfo has no screenshot"

for size in 512 256 128 64 48 32 24 22 16; do
  icon=$root/usr/share/icons/hicolor/${size}x${size}/apps/$id.png
  [[ -f $icon ]] || fail "no ${size}px icon"
  header=$(head -c 24 "$icon" | od -An -tx1 | tr -d ' \n')
  [[ ${header:0:16} == 89504e470d0a1a0a ]] || fail "${size}px icon is not a PNG"
  w=$((16#${header:32:8})); h=$((16#${header:40:8}))
  [[ $w == "$size" && $h == "$size" ]] || fail "${size}px icon is ${w}x${h}"
done

# Each manual page documents every option its program's --help lists.
for program in orvanrcu orvan-unit-sim; do
  man=$root/usr/share/man/man1/$program.1.gz
  [[ -f $man ]] || fail "no manual page for $program"
  source=$(gzip -dc "$man")
  for option in $("$root/usr/bin/$program" --help | grep -oE -- '--[a-z][a-z-]*' | sort -u); do
    written=${option//-/\\-} # troff writes a hyphen as \-
    grep -qF -- "$written" <<<"$source" || fail "$program's manual page lacks $option"
  done
done

"$root/usr/bin/orvanrcu" --version | grep -q '^OrvanRCU ' || fail "--version"
"$root/usr/bin/orvanrcu" --help | grep -q -- '--render-icon PATH' || fail "--help"
echo "installed files OK"
