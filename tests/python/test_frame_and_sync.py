import pytest

import meridex


def test_base64_as_the_legacy_host_stores_passwords():
    encoder = meridex.Base64Encoder()
    assert encoder.Decode(encoder.Encode("Pässwort€")) == "Pässwort€"
    with pytest.raises(meridex.Error) as caught:
        encoder.Decode("abc")
    assert "Decode" in caught.value.source


def test_the_error_handler_writes_its_log(tmp_path):
    handler = meridex.ErrorHandler()
    handler.ErrorLogFile = str(tmp_path / "app.log")
    handler.LogErrors = True
    handler.LogError(53, "File not found", "frmFirmware:cmdBrowse_Click")
    assert "frmFirmware:cmdBrowse_Click" in (tmp_path / "app.log").read_text(encoding="latin-1")


def test_sync_compares_copies_and_raises_its_events(tmp_path):
    remote, local = tmp_path / "remote", tmp_path / "local"
    (remote / "North").mkdir(parents=True)
    local.mkdir()
    (remote / "North" / "Weir1.SXS").write_text("new")
    (local / "Gauge2.SXS").write_text("local only")
    found, copied = [], []
    sync = meridex.SyncSchemes(found_files=found.append, copy_files=lambda s, d, p: copied.append((s, d, p)))
    sync.GetSchemeList(str(remote), str(local))
    assert len(found) == 2
    newer_remote = sync.NewerRemoteFiles
    assert len(newer_remote) == 1 and len(sync.NewerLocalFiles) == 1
    item = newer_remote[1]
    assert item.RelativePath.endswith("Weir1.SXS") and [i.Key for i in newer_remote] == [item.Key]
    assert item.Key in newer_remote and item.OtherFile is None and item.File.Size == 3
    item.SyncOptions = meridex.syncUpdate
    sync.SyncSchemes()
    assert [source for source, _, _ in copied] == [str(remote / "North" / "Weir1")]
    assert (local / "North" / "Weir1.SXS").read_text() == "new"
    assert len(sync.Errors) == 0


def test_file_operations_write_atomically_and_raise_the_library_errors(tmp_path):
    target = tmp_path / "a" / "b"
    meridex.FileOps.CreateFolderPath(str(target))
    meridex.FileOps.WriteFileAtomic(str(target / "f.bin"), b"\x00\xffdata")
    assert (target / "f.bin").read_bytes() == b"\x00\xffdata" and [p.name for p in target.iterdir()] == ["f.bin"]
    with pytest.raises(meridex.Error) as relative:
        meridex.FileOps.CreateFolderPath("relative/folder")
    assert relative.value.number == 76
    with pytest.raises(meridex.Error):
        meridex.FileOps.WriteFileAtomic(str(tmp_path / "missing" / "f.bin"), b"x")
    assert meridex.FileOps.KeepUnreadableFile(str(target / "f.bin")) == str(target / "f.bin.unreadable")


class Answers(meridex.UserInterface):
    """A user interface that records every message and answers input boxes from a list."""

    def __init__(self, inputs):
        super().__init__()
        self.messages, self.inputs = [], list(inputs)

    def MessageBox(self, text, buttons, icon, caption, default_button):
        self.messages.append((text, icon))
        return meridex.MessageResult.OK

    def InputBox(self, prompt, title, options):
        return self.inputs.pop(0) if self.inputs else None

    def SetPassword(self):
        return ""

    def EnterPassword(self, password):
        return False


def test_an_installed_python_interface_is_shown_what_the_library_says(tmp_path):
    answers = Answers([])
    meridex.UserInterface.Install(answers)
    try:
        handler = meridex.ErrorHandler()
        handler.ErrorLogFile, handler.DisplayErrorMsg = str(tmp_path / "log.txt"), True
        handler.LogError(53, "File not found", "frmFirmware:cmdBrowse_Click")
    finally:
        meridex.UserInterface.Install(None)
    assert len(answers.messages) == 1 and "File not found" in answers.messages[0][0]
    handler.LogError(53, "File not found", "again")
    assert len(answers.messages) == 1


def test_xml_values_are_read_and_stored_by_the_documents_rules():
    root = meridex.Document.Parse("<SETTINGS><PORT>7</PORT><BIG>70000</BIG></SETTINGS>").Root
    ops = meridex.XMLOps
    assert ops.ReadXMLInteger(root, "PORT", 0) == 7 and ops.GetXMLValue(root, "HOST", "h") == "h"
    assert root.find("HOST").text == "h"
    ops.SetXMLValue(root, "HOST", "")
    assert root.find("HOST") is None
    ops.SetXMLValue(root, "FLAG", "0", force=True)
    assert not ops.ReadXMLBoolean(root, "FLAG", True) and ops.ReadXMLBoolean(root, "NEW", True)
    with pytest.raises(meridex.Error) as overflow:
        ops.ReadXMLInteger(root, "BIG", 0)
    assert overflow.value.number == 6
