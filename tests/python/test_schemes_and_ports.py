"""Scheme files mapped onto this PC's map, and the port snapshot an operation sees."""
import shutil
from pathlib import Path

import pytest

import meridex
from conftest import FakePorts

DEMO_SCHEME = Path(__file__).resolve().parents[2] / "examples" / "demo" / "comms" / "Scheme.XML"


def test_a_scheme_is_mapped_onto_the_ports_of_this_pc_and_saved(tmp_path):
    path = tmp_path / "Scheme.XML"
    shutil.copy(DEMO_SCHEME, path)
    scheme = meridex.XmlSchemeFile()
    assert scheme.Open(str(path)) and scheme.SchemeText == str(path)
    assert scheme.Name == "Hill Creek water level"
    ports_before = {meridex.ProfileXml.PortNumber(p) for p in scheme.CommsProfiles.find_all("PROFILE")}
    assert 9 in ports_before

    manager = meridex.CommsProfileManager(FakePorts([3]))
    manager.LoadXMLMapFile(str(tmp_path / "CommsProfiles.xml"))
    manager.MapFile = ""
    manager.MapSchemeCommsProfiles(scheme)
    direct = [p for p in scheme.CommsProfiles.find_all("PROFILE")
              if meridex.ProfileXml.ChildText(p, "METHOD") == "DIRECT"]
    assert direct and {meridex.ProfileXml.PortNumber(p) for p in direct} == {3}

    scheme.SaveAs(str(tmp_path / "Mapped.XML"))
    again = meridex.XmlSchemeFile()
    assert again.Open(str(tmp_path / "Mapped.XML"))
    assert [p.xml for p in again.CommsProfiles.find_all("PROFILE")] == [p.xml for p in scheme.CommsProfiles.find_all("PROFILE")]


def test_a_file_that_is_no_scheme_does_not_open_and_a_failed_save_raises(tmp_path):
    other = tmp_path / "other.xml"
    other.write_text("<ADDRESSBOOK/>")
    scheme = meridex.XmlSchemeFile()
    assert not scheme.Open(str(other)) and scheme.CommsProfiles is None
    shutil.copy(DEMO_SCHEME, tmp_path / "Scheme.XML")
    assert scheme.Open(str(tmp_path / "Scheme.XML"))
    with pytest.raises(meridex.Error) as failure:
        scheme.SaveAs(str(tmp_path / "missing" / "Scheme.XML"))
    assert failure.value.source == "XmlSchemeFile:SaveAs"


def test_the_snapshot_lists_once_and_probes_each_port_once():
    source = FakePorts([2, 5, 7])
    snapshot = meridex.PortSnapshot(source)
    assert [p.number for p in snapshot.Ports()] == [2, 5, 7]
    assert snapshot.Find(5).device == "/dev/ttyFAKE5" and snapshot.Find(4) is None
    assert snapshot.PresentPorts(6) == [2, 5]
    assert snapshot.IsPresent(5) and not snapshot.IsPresent(4)
    assert sorted(source.probed) == [2, 5]
