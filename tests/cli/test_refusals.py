"""The tool never saves over a file it could not read as its own kind, and never
syncs into a folder that is not there (an unmounted share), unless told to."""
import pytest

BAD_INPUT = 3

MAP = "<COMMSPROFILES><PROFILE><KEY>PROFILE1</KEY><NAME>Network (UDP)</NAME><TYPE>IP</TYPE>" \
      "<METHOD>UDP</METHOD></PROFILE></COMMSPROFILES>"


def writers(ws):
    """Each saving command with a file of another kind where its own belongs."""
    return {
        "book add-group": (["book", "add-group", ws.settings, "\\", "North"], ws.settings),
        "book add-site": (["book", "add-site", ws.settings, "\\", "Weir"], ws.settings),
        "book import": (["book", "import", ws.settings, ws.schemes], ws.settings),
        "settings set": (["settings", "set", ws.write("map.xml", MAP), "LANG", "fr"], ws.root / "map.xml"),
        "settings use": (["settings", "use", ws.write("map.xml", MAP), "ADMINISTRATOR"], ws.root / "map.xml"),
        "comms add": (["comms", "add", ws.settings, "udp"], ws.settings),
        "comms scan": (["comms", "scan", ws.settings], ws.settings),
    }


@pytest.mark.parametrize("command", ["book add-group", "book add-site", "book import", "settings set",
                                     "settings use", "comms add", "comms scan"])
def test_a_file_of_another_kind_is_not_replaced_without_force(ws, command):
    args, target = writers(ws)[command]
    before = target.read_bytes()
    result = ws.run(*args)
    assert result.code == BAD_INPUT, result.err
    assert str(target) in result.err and "--force" in result.err
    assert target.read_bytes() == before
    assert sorted(p.name for p in ws.root.iterdir() if p.name.endswith(".unreadable")) == []

    if command == "settings use":
        return  # a forced start has no profile to use
    forced = ws.run(*args, "--force")
    assert forced.code == 0, forced.err
    assert target.read_bytes() != before
    assert (ws.root / (target.name + ".unreadable")).read_bytes() == before


def test_a_broken_file_is_refused_as_well_and_a_missing_one_is_started(ws):
    broken = ws.write("broken.xml", "<V4ADDRESSBOOK><unclosed>")
    result = ws.run("book", "add-group", broken, "\\", "North")
    assert result.code == BAD_INPUT and "not a readable XML document" in result.err
    assert ws.run("book", "add-group", ws.book, "\\", "North").code == 0
    assert ws.run("book", "find", ws.book, "\\North").code == 0


def test_sync_refuses_a_root_that_is_not_there(ws):
    remote, local = ws.root / "share" / "schemes", ws.root / "local"
    local.mkdir()
    (local / "Weir1.SXS").write_text("scheme")
    result = ws.run("sync", remote, local, "--push")
    assert result.code == BAD_INPUT
    assert str(remote) in result.err and "does not exist" in result.err
    assert not remote.exists()

    a_file = ws.write("notafolder", "x")
    assert ws.run("sync", a_file, local, "--create-missing").code == BAD_INPUT

    pushed = ws.run("sync", remote, local, "--push", "--create-missing")
    assert pushed.code == 0, pushed.err
    assert (remote / "Weir1.SXS").read_text() == "scheme"
