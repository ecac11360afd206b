"""meridex firmware: listing files, identifying and upgrading the simulated logger over loopback TCP,
each failure with its exit code, and a logger never left without a way back."""
import os
import socket
import subprocess

import pytest

OK, NO, USAGE, BAD_INPUT = 0, 1, 2, 3
NO_LINK, NO_ANSWER, LINK_LOST = 6, 7, 8


class Simulator:
    """The simulated logger on a loopback TCP port; its memory is a file, so a restart keeps its state."""

    def __init__(self, flash, *options):
        self.process = subprocess.Popen(
            [os.environ["MERIDEX_LOGGER_SIMULATOR"], "--flash", str(flash), "--tcp", "0", *options],
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        kind, self.where = self.process.stdout.readline().split()
        assert kind == "TCP"

    def stop(self):
        if self.process.poll() is None:
            self.process.terminate()
        self.process.wait(timeout=30)


@pytest.fixture
def simulators():
    started = []

    def start(flash, *options):
        started.append(Simulator(flash, *options))
        return started[-1]

    yield start
    for simulator in started:
        simulator.stop()


def pack(ws, name, model, version, size=3000, date="2026-01-01"):
    image = ws.write(name + ".bin", chr(ord("a") + len(version) % 26) * size)
    out = ws.root / "fw" / (name + ".mxfw")
    out.parent.mkdir(exist_ok=True)
    result = ws.run("firmware", "pack", "--model", model, "--version", version, "--date", date, image, out)
    assert result.code == OK, result.err
    return out


@pytest.fixture
def folder(ws):
    files = {
        "new": pack(ws, "new", "WL400", "2.0.0", date="2026-06-01"),
        "old": pack(ws, "old", "WL400", "1.0.0", date="2025-06-01"),
        "rain": pack(ws, "rain", "RG200", "7.0"),
        "damaged": ws.root / "fw" / "damaged.mxfw",
    }
    data = bytearray(files["new"].read_bytes())
    data[len(data) // 2] ^= 0xFF
    files["damaged"].write_bytes(bytes(data))
    return files


def identity(ws, where):
    result = ws.run("firmware", "identify", "--tcp", where, "--json")
    assert result.code == OK, result.err
    return result.json()


def test_list_offers_the_files_for_a_model_newest_first_and_names_the_refused(ws, folder):
    listed = ws.run("firmware", "list", ws.root / "fw", "--model", "wl400", "--running", "1.0.0", "--json").json()
    assert [f["version"] for f in listed["files"]] == ["2.0.0", "1.0.0"]
    assert [f["running"] for f in listed["files"]] == [False, True]
    assert listed["files"][0]["models"] == ["WL400"] and listed["files"][0]["size"] == 3000
    assert [r["file"] for r in listed["refused"]] == [str(folder["damaged"])]
    assert listed["refused"][0]["error"] == 321

    everything = ws.run("firmware", "list", ws.root / "fw").out
    assert "7.0" in everything and "RG200" in everything
    marked = ws.run("firmware", "list", ws.root / "fw", "--model", "WL400", "--running", "2.0.0").out.splitlines()
    assert marked[0].startswith("* 2.0.0") and marked[1].startswith("  1.0.0")
    assert ws.run("firmware", "list", ws.root / "nowhere").code == BAD_INPUT


def test_an_upgrade_changes_the_version_and_refused_files_send_nothing(ws, folder, simulators):
    sim = simulators(ws.root / "flash.bin", "--model", "WL400", "--version", "1.0.0")
    before = identity(ws, sim.where)
    assert (before["model"], before["version"], before["inLoader"]) == ("WL400", "1.0.0", False)

    for bad, says in [(folder["damaged"], "nothing was sent"), (ws.root / "fw" / "missing.mxfw", "File not found"),
                      (folder["rain"], "is not for a WL400")]:
        result = ws.run("firmware", "upgrade", "--tcp", sim.where, bad, "--yes", "--json")
        assert result.code == BAD_INPUT, bad
        assert says in result.json()["error"]["message"]
    assert identity(ws, sim.where) == before

    done = ws.run("firmware", "upgrade", "--tcp", sim.where, folder["new"], "--yes", "--json")
    assert done.code == OK, done.err
    shown = done.json()
    assert shown["before"]["version"] == "1.0.0" and shown["after"]["version"] == "2.0.0"
    assert shown["file"]["version"] == "2.0.0" and not shown["after"]["inLoader"]
    assert identity(ws, sim.where)["version"] == "2.0.0"


def test_a_downgrade_is_asked_first_and_no_leaves_the_logger_alone(ws, folder, simulators):
    sim = simulators(ws.root / "flash.bin", "--model", "WL400", "--version", "2.0.0")
    declined = ws.run("firmware", "upgrade", "--tcp", sim.where, folder["old"], stdin=b"n\n")
    assert declined.code == NO
    assert "This is a downgrade." in declined.err and "nothing was sent" in declined.err
    assert identity(ws, sim.where)["version"] == "2.0.0"

    confirmed = ws.run("firmware", "upgrade", "--tcp", sim.where, folder["old"], stdin=b"y\n")
    assert confirmed.code == OK, confirmed.err
    assert "1.0.0" in confirmed.out
    assert identity(ws, sim.where)["version"] == "1.0.0"


def test_a_link_lost_mid_way_leaves_the_loader_and_a_second_attempt_completes(ws, folder, simulators):
    flash = ws.root / "flash.bin"
    sim = simulators(flash, "--model", "WL400", "--version", "1.0.0", "--drop-after-block", "2",
                     "--block-size", "512")
    lost = ws.run("firmware", "upgrade", "--tcp", sim.where, folder["new"], "--yes", "--timeout", "1000")
    assert lost.code == LINK_LOST, lost.err
    sim.stop()

    again = simulators(flash, "--model", "WL400", "--block-size", "512")
    waiting = identity(ws, again.where)
    assert waiting["inLoader"] is True
    assert "waiting in its loader" in ws.run("firmware", "identify", "--tcp", again.where).out
    done = ws.run("firmware", "upgrade", "--tcp", again.where, folder["new"], "--yes")
    assert done.code == OK, done.err
    assert identity(ws, again.where) == dict(waiting, version="2.0.0", inLoader=False)


def test_a_logger_that_is_not_there_or_never_answers(ws):
    with socket.socket() as closed:
        closed.bind(("127.0.0.1", 0))
        port = closed.getsockname()[1]
    nothing = ws.run("firmware", "identify", "--tcp", f"127.0.0.1:{port}", "--json")
    assert nothing.code == NO_LINK
    assert f"127.0.0.1:{port}" in nothing.json()["error"]["message"]

    with socket.socket() as silent:
        silent.bind(("127.0.0.1", 0))
        silent.listen()
        where = "127.0.0.1:%d" % silent.getsockname()[1]
        quiet = ws.run("firmware", "identify", "--tcp", where, "--timeout", "300")
    assert quiet.code == NO_ANSWER
    assert quiet.err.startswith("meridex: ")


@pytest.mark.parametrize("args", [
    ["firmware", "identify"],
    ["firmware", "identify", "--tcp", "a:1", "--udp", "b:2"],
    ["firmware", "identify", "--tcp", "no-port"],
    ["firmware", "identify", "--port", "LPT1"],
    ["firmware", "identify", "--profile", "PROFILE1"],
    ["firmware", "upgrade", "--tcp", "127.0.0.1:1"],
    ["firmware", "list", "fw", "--running", "1.0"],
])
def test_usage_errors(ws, args):
    result = ws.run(*args)
    assert result.code == USAGE, result.err


def test_a_logger_is_reached_through_a_device_profile_of_the_map(ws, simulators):
    sim = simulators(ws.root / "flash.bin", "--model", "WL400", "--serial", "5150", "--version", "1.0.0")
    added = ws.run("comms", "add", ws.map, "tcp", "--json").json()["added"]
    port = sim.where.split(":")[1]
    ws.map.write_text(ws.map.read_text(encoding="cp1252").replace(
        "<PORT>9000</PORT>\n    <TIMEOUT>5</TIMEOUT>", f"<PORT>{port}</PORT>\n    <TIMEOUT>5</TIMEOUT>"), encoding="cp1252")
    found = ws.run("firmware", "identify", "--map", ws.map, "--profile", added["key"], "--json")
    assert found.code == OK, found.err
    assert found.json()["serial"] == "5150" and port in found.json()["link"]
    assert ws.run("firmware", "identify", "--map", ws.map, "--profile", "PROFILE99").code == NO
    assert ws.run("firmware", "identify", "--map", ws.root / "missing.xml", "--profile", "PROFILE1").code == BAD_INPUT
