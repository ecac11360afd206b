#!/usr/bin/env bash
# The communications map: this PC's serial ports under stable COM numbers, the
# map kept in step with them, a device added, and a foreign scheme mapped.
set -euo pipefail
map="$WORK/CommsProfiles.xml"
scheme="$WORK/comms/Scheme.XML"
ini="$XDG_CONFIG_HOME/meridex/meridexv4.ini"

# The companion runs from a copy in the workspace, so ports.txt lands there.
companion="$(dirname "$MERIDEX")/SerialPortInfoDump"
mkdir -p "$WORK/bin"
[ -x "$companion" ] && cp "$companion" "$WORK/bin/"

# A pseudo-terminal pair stands in for a USB adapter plugged in during the demo.
socat_pid=""
cleanup() { [ -n "$socat_pid" ] && kill "$socat_pid" 2>/dev/null; wait 2>/dev/null || true; }
trap cleanup EXIT
if command -v socat >/dev/null; then
  socat pty,raw,echo=0,link="$WORK/ttyA" pty,raw,echo=0,link="$WORK/ttyB" 2>/dev/null &
  socat_pid=$!
  for _ in $(seq 100); do [ -e "$WORK/ttyA" ] && break; sleep 0.05; done
fi

section "Comms: serial ports of this PC"
"$MERIDEX" ports
echo "The default map this PC would start from (no map file yet):"
"$MERIDEX" comms list "$WORK/comms/none.xml" 2>/dev/null

section "Comms: a map written earlier (the field kit's adapter on COM4 is not plugged in)"
"$MERIDEX" comms list "$map"

if [ -e "$WORK/ttyA" ]; then
  section "Comms: an adapter appears; the user pins it to COM5 in $(basename "$ini")"
  mkdir -p "$(dirname "$ini")"
  printf '; COM numbers of this PC'"'"'s serial devices\n[SerialPorts]\nCOM5=%s\n' "$WORK/ttyA" >>"$ini"
  sed "s|$WORK|\$WORK|" "$ini"
  "$MERIDEX" ports | sed "s|$WORK|\$WORK|"
fi

section "Comms: scan (gone ports dropped, new ports added and named after the devices)"
"$MERIDEX" comms scan "$map" --companion-dir "$WORK/bin"
[ -f "$WORK/bin/ports.txt" ] && { echo "ports.txt written by the companion:"; cat "$WORK/bin/ports.txt"; }

section "Comms: add devices"
"$MERIDEX" comms add "$map" tcp
"$MERIDEX" comms add "$map" modem --port 2
"$MERIDEX" comms add "$map" gprs --port 2 || echo "(--port is refused for a network device, exit $?)"

section "Comms: a scheme from another PC mapped onto this one"
"$MERIDEX" comms map "$map" "$scheme" --save | sed "s|$WORK|\$WORK|"
echo "The saved scheme now carries this PC's devices:"
grep -c '<PROFILE>' "$scheme" | sed 's/^/  profiles: /'
echo "Its GPRS proxy took this PC's proxy login:"
grep -o '<USERNAME>[^<]*\|<PROXYADDRESS>[^<]*' "$scheme" | sed 's/^</  /; s/>/ = /'
