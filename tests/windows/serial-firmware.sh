#!/usr/bin/env bash
# The Windows serial link to a logger, end to end: meridex.exe under Wine
# identifies and upgrades the simulated logger through COM9, which Wine maps
# to a Linux pseudo-terminal the simulator serves. Run by scripts/test-windows
# once the test programs have passed; WINEPREFIX is its seeded prefix.
#   $1 the Windows build folder, $2 a Linux LoggerSimulator
set -euo pipefail
build="$1" simulator="$2"
wine=/usr/lib/wine/wine64
[ -x "$wine" ] || wine=$(command -v wine64)
wineserver=/usr/lib/wine/wineserver
[ -x "$wineserver" ] || wineserver=$(command -v wineserver)
meridex="$build/apps/meridex/meridex.exe"

work=$(mktemp -d)
cleanup() {
  [ -n "${sim_pid:-}" ] && kill "$sim_pid" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
fail() { echo "serial-firmware: $*" >&2; exit 1; }

head -c 65536 /dev/urandom >"$work/image.bin"
"$simulator" --flash "$work/flash.bin" --pty --link "$work/tty" --model WL400 --serial 204 >"$work/sim.log" 2>&1 &
sim_pid=$!
for _ in $(seq 50); do [ -L "$work/tty" ] && break; sleep 0.1; done
[ -L "$work/tty" ] || fail "the simulated logger did not start: $(cat "$work/sim.log")"

# Wine names its serial ports from HKLM\Software\Wine\Ports when its server
# starts, and puts them in the serial device map as Windows does.
"$wine" reg add 'HKLM\Software\Wine\Ports' /v COM9 /d "$(readlink -f "$work/tty")" /f >/dev/null 2>&1
"$wineserver" -k || true
"$wineserver" -w
map=$("$wine" reg query 'HKLM\HARDWARE\DEVICEMAP\SERIALCOMM' 2>&1 || true)
grep -q COM9 <<<"$map" || fail "Wine did not list COM9: $map"

run() { "$wine" "$meridex" "$@" 2>&1 | tr -d '\r'; return "${PIPESTATUS[0]}"; }
run firmware pack "Z:$work/image.bin" "Z:$work/fw.mxfw" --model WL400 --version 2.0.0 >/dev/null \
  || fail "could not pack the image"
out=$(run firmware identify --port COM9) || fail "identify failed: $out"
grep -q "WL400 204, running firmware 1.0.0" <<<"$out" || fail "unexpected identity: $out"
out=$(run firmware upgrade --yes --port COM9 --baud 115200 "Z:$work/fw.mxfw") || fail "upgrade failed: $out"
out=$(run firmware identify --port COM9) || fail "identify after the upgrade failed: $out"
grep -q "running firmware 2.0.0" <<<"$out" || fail "the logger does not run the new firmware: $out"
# The image is in the logger's memory, after its 512-byte header.
cmp -s <(tail -c +513 "$work/flash.bin" | head -c 65536) "$work/image.bin" || fail "the logger's memory does not hold the image"
echo "serial-firmware: identified and upgraded a logger through COM9 (64 KiB at 115200 bit/s): passed"
