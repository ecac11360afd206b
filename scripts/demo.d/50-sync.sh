#!/usr/bin/env bash
# Scheme synchronisation: a laptop's scheme folder (local) against the shared
# network folder (remote). Compare, revert one scheme, update the rest.
set -euo pipefail
cd "$WORK/schemes"

source "$(dirname "$0")/../demo-scheme-times"
stamp_scheme_times .

section "Sync: compare the laptop (local) with the network share (remote); nothing is copied"
"$MERIDEX" sync remote local

section "Sync: revert North\\Weir1.SXS (the share's copy comes back; the laptop's is kept as ~0000.BAK)"
"$MERIDEX" sync remote local --revert 'North\Weir1.SXS'
echo "local/North now holds:"
ls -1 local/North | sed 's/^/  /'

section "Sync: update every scheme that is newer on either side"
"$MERIDEX" sync remote local --update-all

section "Sync: the backups made on the way (never removed) and the file never copied"
find . -name '*~[0-9][0-9][0-9][0-9].BAK' | sort | sed 's/^/  /'
ls remote/North/Weir1.TMP 2>/dev/null || echo "  remote/North/Weir1.TMP: not copied (TMP is not a scheme file extension)"

section "Sync: the lists as JSON, for scripts"
"$MERIDEX" sync remote local --json
