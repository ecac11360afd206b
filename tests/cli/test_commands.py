"""What each command says and does on the cases a script meets."""
import pytest

OK, NO, USAGE, BAD_INPUT, WRITE_FAILED, UNKNOWN_FEATURE = 0, 1, 2, 3, 4, 5


def test_settings_get_tells_a_missing_file_a_foreign_file_and_a_missing_key_apart(ws):
    assert ws.run("settings", "get", ws.settings, "LANG").out == "en\n"
    missing = ws.run("settings", "get", ws.root / "none.xml", "LANG")
    assert missing.code == BAD_INPUT and "none.xml does not exist" in missing.err
    foreign = ws.write("book.xml", "<V4ADDRESSBOOK/>")
    wrong = ws.run("settings", "get", foreign, "LANG")
    assert wrong.code == BAD_INPUT and "root is V4ADDRESSBOOK" in wrong.err
    no_key = ws.run("settings", "get", ws.settings, "TABLET_MODE")
    assert no_key.code == NO and "TABLET_MODE" in no_key.err and no_key.out == ""
    assert ws.run("settings", "get", ws.settings, "TABLET_MODE", "--default", "0").out == "0\n"


def test_settings_can_tells_an_unknown_feature_from_one_not_available(ws):
    assert ws.run("settings", "can", ws.settings, "v4_unload_data").code == OK
    assert ws.run("settings", "can", ws.settings, "V4_SCHEME_EDITOR").code == NO
    unknown = ws.run("settings", "can", ws.settings, "V4_NOSUCH")
    assert unknown.code == UNKNOWN_FEATURE and "V4_NOSUCH" in unknown.err
    assert ws.run("settings", "can", ws.root / "none.xml", "V4_UNLOAD_DATA").code == BAD_INPUT


def test_settings_use_and_set_save(ws):
    assert ws.run("settings", "use", ws.settings, "nobody").code == NO
    assert ws.run("settings", "use", ws.settings, "administrator").code == OK
    assert ws.run("settings", "can", ws.settings, "V4_SCHEME_EDITOR").code == OK
    assert ws.run("settings", "set", ws.settings, "LANG", "0", "--save-null").code == OK
    assert ws.run("settings", "get", ws.settings, "LANG").out == "0\n"
    assert ws.run("settings", "set", ws.settings, "BAD KEY", "x").code == USAGE


def test_a_save_that_fails_gives_the_write_code(ws):
    not_a_folder = ws.write("plain-file", "x")
    target = not_a_folder / "V4Settings.xml"
    result = ws.run("settings", "set", target, "LANG", "fr")
    assert result.code == WRITE_FAILED and str(target) in result.err
    book = ws.run("book", "add-group", not_a_folder / "AddressBook.xml", "\\", "North")
    assert book.code == WRITE_FAILED
    assert ws.run("comms", "add", not_a_folder / "CommsProfiles.xml", "udp").code == WRITE_FAILED


def test_book_commands_on_missing_books_and_paths(ws):
    assert ws.run("book", "show", ws.root / "missing.xml").code == BAD_INPUT
    assert ws.run("book", "find", ws.root / "missing.xml", "\\A").code == BAD_INPUT
    assert ws.run("book", "add-site", ws.book, "\\Nowhere", "Weir").code == NO
    assert not ws.book.exists()


@pytest.mark.parametrize("name", ["", "North\\South", "\\"])
def test_names_that_no_path_could_reach_are_refused(ws, name):
    for command in ("add-group", "add-site"):
        result = ws.run("book", command, ws.book, "\\", name)
        assert result.code == USAGE and "\\" in result.err
    assert not ws.book.exists()


def test_import_twice_tells_what_was_already_there(ws):
    first = ws.run("book", "import", ws.book, ws.schemes, "--json").json()
    assert first["sitesAdded"] > 0 and first["alreadyInBook"] == 0
    again = ws.run("book", "import", ws.book, ws.schemes)
    assert again.code == OK
    assert f"{first['sitesAdded']} of the schemes' site(s) were already in the book: added again" in again.out
    skipped = ws.run("book", "import", ws.book, ws.schemes, "--skip-existing", "--json").json()
    assert skipped["sitesAdded"] == 0 and skipped["skipped"] == first["sitesAdded"]
    sites = ws.run("book", "show", ws.book).out.splitlines()[-1]
    assert sites.endswith(f"{2 * first['sitesAdded']} site(s)")
    assert ws.run("book", "import", ws.book, ws.root / "no-such-folder").code == BAD_INPUT


def test_book_find_gives_a_sites_parameters(ws):
    ws.run("book", "add-group", ws.book, "\\", "North")
    added = ws.run("book", "add-site", ws.book, "\\North", "Hill Creek", "--param", "PHONENUMBER=0311 555 0142",
                   "--json").json()["site"]
    found = ws.run("book", "find", ws.book, added["path"], "--json").json()
    assert found["site"]["parameters"]["PHONENUMBER"] == "0311 555 0142"
    assert found["site"]["key"] == added["key"]


def test_comms_add_reports_the_key_the_saved_map_gives_back(ws):
    for kind in ("udp", "tcp"):
        ws.run("comms", "add", ws.map, kind)
    ws.run("comms", "add", ws.map, "modem", "--port", "3")
    added = ws.run("comms", "add", ws.map, "gprs")
    key = added.out.split()[1].rstrip(":")
    listed = {p["key"]: p["name"] for p in ws.run("comms", "list", ws.map, "--json").json()["profiles"]}
    assert listed[key] == "GPRS Proxy (Harvest Modem)"


def test_comms_scan_says_what_it_removed_and_dry_run_saves_nothing(ws):
    gone = ("<COMMSPROFILES><PROFILE><KEY>PROFILE1</KEY><NAME>Logger cable</NAME><TYPE>RS232</TYPE>"
            "<METHOD>DIRECT</METHOD><COMMPORT>250</COMMPORT></PROFILE>"
            "<PROFILE><KEY>PROFILE2</KEY><NAME>Network (UDP)</NAME><TYPE>IP</TYPE><METHOD>UDP</METHOD>"
            "</PROFILE></COMMSPROFILES>")
    map_file = ws.write("CommsProfiles.xml", gone)
    dry = ws.run("comms", "scan", map_file, "--dry-run", "--companion-dir", ws.root, "--json")
    assert dry.code == OK
    report = dry.json()
    assert [d["name"] for d in report["removed"]] == ["Logger cable"] and report["saved"] is False
    assert map_file.read_text() == gone
    text = ws.run("comms", "scan", map_file, "--companion-dir", ws.root)
    assert "Removed PROFILE1: Logger cable (COM250, port gone)" in text.out
    assert "Logger cable" not in map_file.read_text()


def test_base64_reads_standard_input_and_refuses_what_windows_1252_cannot_hold(ws):
    encoded = ws.run("base64", "encode", "-", stdin="Pässwort€\n".encode()).out.strip()
    assert encoded == ws.run("base64", "encode", "Pässwort€").out.strip()
    assert ws.run("base64", "decode", "-", stdin=encoded.encode()).out == "Pässwort€\n"
    refused = ws.run("base64", "encode", "日本")
    assert refused.code == BAD_INPUT and "windows-1252" in refused.err and refused.out == ""
    assert ws.run("base64", "decode", "abc").code == BAD_INPUT


def test_log_error_into_a_missing_folder_fails(ws):
    result = ws.run("log-error", "--log", ws.root / "no" / "such" / "app.log", "53", "File not found", "a:b")
    assert result.code == WRITE_FAILED and "app.log" in result.err
    log = ws.root / "app.log"
    assert ws.run("log-error", "--log", log, "53", "File not found", "a:b").code == OK
    assert "File not found" in log.read_text(encoding="latin-1")


def test_xml_check_refuses_with_the_input_code(ws):
    bad = ws.write("bad.xml", "<A>")
    result = ws.run("xml", "check", ws.settings, bad)
    assert result.code == BAD_INPUT
    assert "root V4SETTINGS" in result.out and "bad.xml: refused" in result.out
