#!/usr/bin/env bash
# Starts meridex-desk under a real X server (Xvfb), waits for its main window, saves a screenshot
# and quits. Exit 77 (skipped) when Xvfb is not installed or cannot start here.
# Usage: xvfb-screenshot.sh PATH/TO/meridex-desk
set -uo pipefail
desk=$1
if ! command -v xvfb-run >/dev/null 2>&1; then
  echo "SKIPPED: xvfb-run is not installed (Debian packages xvfb and xauth)"
  exit 77
fi
if ! xvfb-run -a true >/dev/null 2>&1; then
  echo "SKIPPED: Xvfb cannot start on this machine"
  exit 77
fi
work=$(mktemp -d "${TMPDIR:-/tmp}/meridex-desk-xvfb-XXXXXX")
trap 'rm -rf "$work"' EXIT
# Never the real user's folders.
export XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data" HOME="$work/home"
mkdir -p "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$HOME"
export QT_QPA_PLATFORM=xcb
unset DISPLAY WAYLAND_DISPLAY
shot="$work/desk.png"
timeout 90 xvfb-run -a -s "-screen 0 1280x900x24" "$desk" --screenshot "$shot"
status=$?
if [ $status -ne 0 ]; then
  echo "FAILED: meridex-desk ended with status $status"
  exit 1
fi
# With no --workspace the desk made its default workspace under XDG_DATA_HOME from the demo.
if [ ! -f "$XDG_DATA_HOME/meridex/workspace/settings/V4Settings.xml" ]; then
  echo "FAILED: no workspace was made under $XDG_DATA_HOME/meridex/workspace"
  exit 1
fi
if [ "$(head -c 8 "$shot" | od -An -tx1 | tr -d ' \n')" != "89504e470d0a1a0a" ]; then
  echo "FAILED: $shot is not a PNG picture"
  exit 1
fi
echo "meridex-desk showed its main window under Xvfb; picture of $(stat -c %s "$shot") bytes"
