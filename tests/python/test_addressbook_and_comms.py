import shutil
from pathlib import Path

import pytest

import meridex
from conftest import FakePorts

DEMO_IMPORT = Path(__file__).resolve().parents[2] / "examples" / "demo" / "import"


def build_book(path):
    book = meridex.AddressBook()
    assert not book.LoadAddressBook(str(path))
    north = meridex.SiteGroup()
    north.Name = "North"
    assert book.Sites.AddGroup(north)
    site = meridex.Site()
    site.Name = "Hill Creek"
    site.SetParameter("TYPE", "RS232")
    site.SetParameter("PHONENUMBER", "0311 555 0142")
    assert north.AddSite(site)
    book.SaveAddressBook()
    return site.Path


def test_a_book_is_built_saved_and_walked(tmp_path):
    path = tmp_path / "AddressBook.xml"
    site_path = build_book(path)
    book = meridex.AddressBook()
    assert book.LoadAddressBook(str(path))
    site = book.FindSite(site_path)
    assert site.Name == "Hill Creek"
    assert site["PHONENUMBER"].text == "0311 555 0142"
    assert [p.name for p in site] == ["TYPE", "PHONENUMBER"]
    north = book.Sites.Groups[1]
    assert north.Name == "North" and len(north.Sites) == 1 and north.Sites[1].Key == site.Key
    assert [s.Name for s in book] == ["Hill Creek"]
    assert book.FindGroup("\\Nowhere") is None
    with pytest.raises(KeyError):
        north.Sites["nowhere"]


def test_library_failures_are_python_exceptions_with_their_fields(tmp_path):
    book = meridex.AddressBook()
    book.LoadAddressBook(str(tmp_path / "no" / "such" / "AddressBook.xml"))
    with pytest.raises(meridex.Error) as caught:
        book.SaveAddressBook()
    assert caught.value.source.startswith("AddressBook:")
    assert caught.value.number != 0 and caught.value.description
    with pytest.raises(meridex.Error):
        book.FindSite("no backslash")


def test_the_map_follows_the_injected_ports(tmp_path):
    path = str(tmp_path / "CommsProfiles.xml")
    manager = meridex.CommsProfileManager(FakePorts([3]))
    assert not manager.LoadXMLMapFile(path)
    assert [p.find("NAME").text for p in manager][0] == "Direct to COM3"
    manager.AddRS232Direct("9")
    manager.SaveXMLMapFile()
    manager.MapFile = ""

    later = meridex.CommsProfileManager(FakePorts([3]))
    assert later.LoadXMLMapFile(path) and len(later) == 5
    later.CleanRS232Direct()  # COM9 has gone
    assert [p.find("COMMPORT").text for p in later if p.find("COMMPORT")] == ["3"]
    assert later["PROFILE2"].find("TYPE").text == "IP"
    later.MapFile = ""


def test_import_reports_through_python_callables(tmp_path):
    folder = tmp_path / "import"
    shutil.copytree(DEMO_IMPORT, folder)
    messages, progress, completed = [], [], []
    book = meridex.AddressBook()
    book.NewAddressBook()
    importer = meridex.ImportCommsProfiles(on_message=messages.append, on_progress=progress.append,
                                           on_complete=lambda: completed.append(True))
    importer.ImportSchemes(str(folder), book.Sites)
    assert importer.SitesAdded == sum(1 for _ in book) > 0
    assert progress[-1] == 100 and completed == [True]
    assert any(m.startswith("Scheme Found: ") for m in messages)

    def fail(text):
        raise RuntimeError("stop at " + text)

    with pytest.raises(RuntimeError, match="stop at Scheme Found"):
        meridex.ImportCommsProfiles(on_message=fail).ImportSchemes(str(folder), meridex.AddressBook().Sites)
