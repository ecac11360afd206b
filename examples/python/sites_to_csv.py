#!/usr/bin/env python3
"""Every site of an address book with its connection kind and phone number, as CSV.

    python3 sites_to_csv.py AddressBook.xml > sites.csv

Columns: path, name, connection, phone number, address (host:port for network sites).
"""
import csv
import sys

import meridex

KINDS = {
    ("RS232", "DIRECT"): "direct cable",
    ("RS232", "PHONEMODEM"): "phone modem",
    ("IP", "UDP"): "network (UDP)",
    ("IP", "TCP"): "network (TCP/IP)",
    ("IP", "GPRSPROXY"): "GPRS proxy",
}


def parameter(site, name):
    """A site's parameter text, or "" when the site has none of that name."""
    element = site.Parameter(name)
    return element.text if element else ""


def main(argv):
    if len(argv) != 2:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    book = meridex.AddressBook()
    if not book.LoadAddressBook(argv[1]):
        print(f"{argv[1]}: not an address book that could be read", file=sys.stderr)
        return 3
    out = csv.writer(sys.stdout)
    out.writerow(["path", "name", "connection", "phone", "address"])
    for site in book:
        kind = (parameter(site, "TYPE"), parameter(site, "METHOD"))
        port = parameter(site, "PORT") or parameter(site, "PROXYPORT")
        address = parameter(site, "ADDRESS") + (":" + port if port else "")
        out.writerow([site.Path, site.Name, KINDS.get(kind, "/".join(kind).strip("/") or "unknown"),
                      parameter(site, "PHONENUMBER"), address])
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
