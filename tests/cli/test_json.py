"""--json on every command: one object that a JSON parser reads, one style of keys,
times with their offset, and names that are not UTF-8 made safe."""
import json
import os
import re

CAMEL = re.compile(r"^[a-z][A-Za-z0-9]*$")
ISO_TIME = re.compile(r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d[+-]\d\d:\d\d$")


def check_keys(value, where="$"):
    """Every key is camelCase, except the element names under "parameters"."""
    if isinstance(value, dict):
        for key, item in value.items():
            assert CAMEL.match(key), f"{where}.{key}"
            if key != "parameters":
                check_keys(item, f"{where}.{key}")
    elif isinstance(value, list):
        for item in value:
            check_keys(item, where + "[]")


def times(value):
    if isinstance(value, dict):
        for key, item in value.items():
            if key in ("modified", "otherModified"):
                yield item
            yield from times(item)
    elif isinstance(value, list):
        for item in value:
            yield from times(item)


def commands(ws):
    remote, local = ws.root / "remote", ws.root / "local"
    (remote / "North").mkdir(parents=True)
    local.mkdir()
    (remote / "North" / "Weir1.SXS").write_text("scheme")
    (local / "Gauge2.SXS").write_text("scheme")
    scheme = ws.schemes / "North" / "Hill Creek.xml"
    (ws.root / "fw").mkdir()
    ws.write("image.bin", "image")
    return [
        ["xml", "check", ws.settings],
        ["base64", "encode", "Pässwort"],
        ["base64", "decode", "UORzc3dvcnQ="],
        ["log-error", "--log", ws.root / "app.log", "53", "File not found", "a:b"],
        ["settings", "show", ws.settings],
        ["settings", "get", ws.settings, "LANG"],
        ["settings", "set", ws.settings, "LANG", "fr"],
        ["settings", "profiles", ws.settings],
        ["settings", "features", ws.settings],
        ["settings", "use", ws.settings, "ADMINISTRATOR"],
        ["settings", "can", ws.settings, "V4_UNLOAD_DATA"],
        ["book", "import", ws.book, ws.schemes],
        ["book", "add-group", ws.book, "\\", "Estuary"],
        ["book", "add-site", ws.book, "\\Estuary", "Mouth", "--param", "TYPE=IP"],
        ["book", "show", ws.book],
        ["book", "find", ws.book, "\\Estuary"],
        ["ports"],
        ["comms", "add", ws.map, "udp"],
        ["comms", "list", ws.map],
        ["comms", "scan", ws.map, "--dry-run", "--companion-dir", ws.root],
        ["comms", "map", ws.map, scheme],
        ["sync", remote, local],
        ["sync", remote, local, "--update-all"],
        ["firmware", "pack", "--model", "WL400", "--version", "1.0", ws.root / "image.bin", ws.root / "fw" / "a.mxfw"],
        ["firmware", "list", ws.root / "fw", "--model", "WL400", "--running", "1.0"],
    ]


def test_every_command_prints_one_parsable_object(ws):
    for args in commands(ws):
        result = ws.run(*args, "--json")
        assert result.code == 0, (args, result.err)
        lines = result.out.splitlines()
        assert len(lines) == 1, args
        value = json.loads(lines[0])
        assert isinstance(value, dict), args
        check_keys(value)
        for time in times(value):
            assert ISO_TIME.match(time), (args, time)


def test_sync_times_carry_their_offset(ws):
    remote, local = ws.root / "remote", ws.root / "local"
    remote.mkdir(), local.mkdir()
    (remote / "Weir1.SXS").write_text("scheme")
    os.utime(remote / "Weir1.SXS", (1700000000, 1700000000))
    item = ws.run("sync", remote, local, "--json").json()["newerRemote"][0]
    assert item["relativePath"].endswith("Weir1.SXS")
    assert ISO_TIME.match(item["modified"])


def test_names_that_are_not_utf8_still_give_valid_json(ws):
    name = os.fsencode(ws.root) + b"/Einstellungen-\xe9.xml"
    with open(name, "wb") as file:
        file.write(ws.settings.read_bytes())
    result = ws.run("settings", "show", name, "--json")
    assert result.code == 0
    assert result.json()["file"].endswith("Einstellungen-\ufffd.xml")
    refused = ws.run("book", "show", name, "--json")
    assert refused.code == 3 and "Einstellungen-" in refused.json()["error"]["message"]


def test_the_shapes_of_the_documented_outputs(ws):
    ws.run("comms", "add", ws.map, "tcp")
    listed = ws.run("comms", "list", ws.map, "--json").json()
    profile = listed["profiles"][0]
    assert {"key", "name", "type", "method", "isDefault", "parameters"} <= profile.keys()
    assert isinstance(profile["isDefault"], bool) and profile["parameters"]["KEY"] == profile["key"]
    shown = ws.run("settings", "show", ws.settings, "--json").json()
    assert shown["currentProfile"] == "Field Crew"
    assert {"key": "LANG", "value": "en"} in shown["keys"]


def test_commands_that_save_say_which_conflict_copy_they_kept(ws):
    saving = [["settings", "set", ws.settings, "LANG", "fr"], ["book", "add-group", ws.book, "\\", "Estuary"],
              ["comms", "add", ws.map, "udp"]]
    for args in saving:
        assert ws.run(*args, "--json").json()["conflictCopy"] is None, args
    assert "conflictCopy" not in ws.run("settings", "show", ws.settings, "--json").json()
