#!/usr/bin/env bash
# Scheme synchronisation: a laptop's scheme folder (local) against the shared
# network folder (remote). Compare, revert one scheme, update the rest.
set -euo pipefail
cd "$WORK/schemes"

# Git keeps no file times, and the times are what synchronisation sorts by.
stamp() { local when=$1; shift; touch -d "$when" "$@"; }
stamp "2026-03-10 09:00:00" local/North/Weir1.*          # edited on the laptop
stamp "2026-03-01 09:00:00" remote/North/Weir1.*
stamp "2026-02-01 12:00:00" local/North/Gauge2.* remote/North/Gauge2.*  # in step
stamp "2026-03-12 08:30:00" local/South/Rain3.*          # only on the laptop
stamp "2026-01-05 16:00:00" local/South/Flow5.*
stamp "2026-03-15 14:00:00" remote/South/Flow5.*         # edited by a colleague
stamp "2026-02-20 10:00:00" remote/Coast/Tide4.*         # only on the share
stamp "2026-04-01 10:00:00" local/Lake/Level6.*          # same scheme, other letter case,
stamp "2026-04-01 11:00:00" remote/LAKE/LEVEL6.*         # exactly an hour apart
stamp "2026-03-20 12:00:01" "local/Hill Top/Bergstraße.SXS"   # one second apart,
stamp "2026-03-20 12:00:00" "remote/Hill Top/Bergstraße.SXS"  # as a FAT share rounds

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
