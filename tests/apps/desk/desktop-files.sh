#!/usr/bin/env bash
# The desk's desktop entry and AppStream metainfo validate, the icon they name is there, and the
# program answers --help and --version with no display at all.
#   desktop-files.sh SOURCE_FOLDER APP_ID PATH/TO/meridex-desk
set -euo pipefail
dir=$1 id=$2 desk=$3
fail() { echo "desktop-files: $*" >&2; exit 1; }
desktop-file-validate "$dir/$id.desktop" || fail "$id.desktop does not validate"
appstreamcli validate --no-net "$dir/$id.metainfo.xml" || fail "$id.metainfo.xml does not validate"
grep -qx "Icon=$id" "$dir/$id.desktop" || fail "the desktop entry does not name the icon $id"
grep -q "<launchable type=\"desktop-id\">$id.desktop</launchable>" "$dir/$id.metainfo.xml" \
  || fail "the metainfo does not launch $id.desktop"
grep -q '<svg' "$dir/$id.svg" || fail "no scalable icon $id.svg"
for option in --help --version; do
  out=$(env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM "$desk" "$option") || fail "meridex-desk $option failed"
  grep -q . <<<"$out" || fail "meridex-desk $option printed nothing"
done
echo "desktop-files: the entry, the metainfo and the icon of $id are valid"
