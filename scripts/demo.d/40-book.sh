#!/usr/bin/env bash
# Address book: a water authority builds its book from the schemes it already
# keeps (import/: folders a few deep, phone-modem, IP and direct-cable
# profiles, a profile without a NAME, a .xml file that is not XML), then looks
# a site up by its path and adds a site of its own.
set -euo pipefail
cd "$WORK"
mkdir -p addressbook
book=addressbook/AddressBook.xml  # not there yet: the book starts empty

section "Address book: import the schemes below import/ into a new, empty book"
"$MERIDEX" book import "$book" import

section "Address book: the tree (groups mirror the folders, the last level is the scheme file)"
"$MERIDEX" book show "$book"
echo "(Rain 3.XML has only a direct cable, so it gave no site; South/Notes.xml is not XML and was skipped.)"

section "Address book: the same import again adds nothing with --skip-existing"
"$MERIDEX" book import "$book" import --skip-existing 2>/dev/null

section "Address book: find a site by its path"
"$MERIDEX" book find "$book" '\North\Hill Creek.xml\import/North/Hill Creek.xml (Phone modem on COM3'

section "Address book: a group, and a path that leads nowhere (exit status 1)"
"$MERIDEX" book find "$book" '\north\catchment a'
"$MERIDEX" book find "$book" '\North\Nowhere\Site' || echo "exit status $?"

section "Address book: add a group and a site by hand; the second site of one name gets a _1 key"
"$MERIDEX" book add-group "$book" '\South' 'Estuary'
"$MERIDEX" book add-site "$book" '\South\Estuary' 'Mouth gauge' --param TYPE=IP --param METHOD=TCP --param ADDRESS=192.0.2.90 --param PORT=9000
"$MERIDEX" book add-site "$book" '\South\Estuary' 'Mouth gauge' --param TYPE=RS232 --param METHOD=PHONEMODEM
"$MERIDEX" book find "$book" '\South\Estuary\Mouth gauge_1'
"$MERIDEX" book add-site "$book" '\South\Estuary' 'Bad' --param 'PHONE NUMBER=1' || echo "exit status $? (a parameter name must be an XML element name; nothing was saved)"
