#!/bin/sh
# Runs the tests named *AsUser* of the test programs given, as the user
# nobody: the tests run as root, where permissions cannot block anything.
# Exits 77 (skipped) with the reason where that is impossible.
set -u
if [ "$(id -u)" != 0 ]; then
  as_user=""  # already unprivileged
elif command -v setpriv >/dev/null 2>&1; then
  as_user="setpriv --reuid=nobody --regid=nogroup --clear-groups --"
else
  echo "skipped: setpriv is not installed"; exit 77
fi
folder=$(mktemp -d)
chmod 1777 "$folder"
trap 'rm -rf "$folder"' EXIT
status=0
for program in "$@"; do
  if ! $as_user test -x "$program"; then
    echo "skipped: $program cannot be run by the unprivileged user (a folder on its path is closed)"; exit 77
  fi
  TMPDIR=$folder HOME=$folder XDG_CONFIG_HOME=$folder $as_user "$program" --gtest_filter='*AsUser*' || status=1
done
exit $status
