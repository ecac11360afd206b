"""The example a hydrologist would start from: the address book as CSV."""
import csv
import io
import shutil
import subprocess
import sys
from pathlib import Path

import meridex

ROOT = Path(__file__).resolve().parents[2]


def test_sites_to_csv_lists_every_site_with_its_connection(tmp_path):
    book_path = str(tmp_path / "AddressBook.xml")
    book = meridex.AddressBook()
    book.LoadAddressBook(book_path)
    shutil.copytree(ROOT / "examples" / "demo" / "import", tmp_path / "import")
    meridex.ImportCommsProfiles().ImportSchemes(str(tmp_path / "import"), book.Sites)
    book.SaveAddressBook()

    result = subprocess.run([sys.executable, str(ROOT / "examples" / "python" / "sites_to_csv.py"), book_path],
                            capture_output=True, text=True, check=True)
    rows = list(csv.DictReader(io.StringIO(result.stdout)))
    assert len(rows) == sum(1 for _ in book)
    hill = next(r for r in rows if "Hill Creek" in r["name"] and r["connection"] == "phone modem")
    assert hill["phone"] == "0311 555 0142"
    gprs = next(r for r in rows if r["connection"] == "GPRS proxy")
    assert gprs["address"] == "203.0.113.20:9002"
