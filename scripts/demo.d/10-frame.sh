#!/usr/bin/env bash
# The frame: documents loaded the safe way, Base64 as the legacy host wrote it, the error log.
set -euo pipefail
section "Frame: XML documents of the workspace"
mapfile -t docs < <(find "$WORK" -name '*.xml' -o -name '*.XML' | grep -v '/frame/' | sort)
"$MERIDEX" xml check "${docs[@]}" | sed "s|$WORK/||" || true
echo "A legacy settings file in windows-1252 without a declaration, and an entity bomb:"
"$MERIDEX" xml check "$WORK/frame/legacy-settings-cp1252.xml" "$WORK/frame/entity-bomb.xml" | sed "s|$WORK/||" || true

section "Frame: Base64 (windows-1252 text)"
encoded=$("$MERIDEX" base64 encode 'Pässwort€')
echo "encode 'Pässwort€' -> $encoded"
echo "decode back        -> $("$MERIDEX" base64 decode "$encoded")"
"$MERIDEX" base64 decode 'abc' || echo "(a length that is not a multiple of 4 is refused, exit $?)"

section "Frame: error log"
"$MERIDEX" log-error --log "$WORK/MeridexAppLibrary.log" 53 "File not found" "frmFirmware:cmdBrowse_Click"
"$MERIDEX" log-error --log "$WORK/MeridexAppLibrary.log" 0 "" "demo:EmptyDescription"
cat "$WORK/MeridexAppLibrary.log"
