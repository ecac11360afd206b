#!/usr/bin/env bash
# Settings and user profiles: the host's per-command question, and switching profiles.
set -euo pipefail
settings="$WORK/settings/V4Settings.xml"

# Asks what the host asks before it shows a command.
ask() {
  local status=0
  "$MERIDEX" settings can "$settings" "$1" || status=$?
  case $status in
    0) echo "  $1: available" ;;
    1) echo "  $1: not available" ;;
    *) echo "  $1: could not ask (exit $status)"; return 1 ;;
  esac
}

section "Settings: a legacy settings document (windows-1252, no declaration)"
"$MERIDEX" settings show "$settings"

section "Settings: feature switches of the current profile"
"$MERIDEX" settings features "$settings"

section "Settings: the host's question for a few commands"
for feature in V4_UNLOAD_DATA V4_SCHEME_EDITOR ED_EVENTS ED_XML_BAR; do ask "$feature"; done

section "Settings: switch to the LOCKDOWN profile (completed from the catalogue on load)"
"$MERIDEX" settings use "$settings" lockdown
"$MERIDEX" settings features "$settings"
for feature in V4_UNLOAD_DATA V4_SCHEME_EDITOR; do ask "$feature"; done

section "Settings: keys, saved back (UTF-8, root element and CR LF)"
"$MERIDEX" settings get "$settings" V4DATA_PATH
"$MERIDEX" settings set "$settings" LANG fr
"$MERIDEX" settings get "$settings" TABLET_MODE --default "(not set)"
"$MERIDEX" settings profiles "$settings" --json
