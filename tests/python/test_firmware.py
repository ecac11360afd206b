"""Firmware from Python: a folder's files, and the simulated logger identified and upgraded over its links."""
import os
import subprocess

import pytest

import meridex
from conftest import FakePorts


def write(folder, name, version, model="WL400", size=3000, date="2026-01-01"):
    image = meridex.FirmwareImage.Make([model], version, date, bytes([len(version)]) * size)
    path = folder / (name + ".mxfw")
    path.write_bytes(image.Serialize())
    return path


@pytest.fixture
def firmware(tmp_path):
    folder = tmp_path / "fw"
    folder.mkdir()
    files = {"new": write(folder, "new", "2.0.0", date="2026-06-01"), "old": write(folder, "old", "1.0.0"),
             "rain": write(folder, "rain", "7.0", model="RG200")}
    damaged = bytearray(files["new"].read_bytes())
    damaged[len(damaged) // 2] ^= 0xFF
    files["damaged"] = folder / "damaged.mxfw"
    files["damaged"].write_bytes(bytes(damaged))
    return folder, files


@pytest.fixture
def simulator(tmp_path):
    """Starts the simulated logger on a link ("pty", "tcp" or "udp"); its memory is a file in the test's folder."""
    started = []

    def start(link, *options):
        where = ["--pty"] if link == "pty" else ["--" + link, "0"]
        process = subprocess.Popen([os.environ["MERIDEX_LOGGER_SIMULATOR"], "--flash", str(tmp_path / "flash.bin"),
                                    "--model", "WL400", "--version", "1.0.0", *where, *options],
                                   stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        started.append(process)
        return process.stdout.readline().split()[1]

    yield start
    for process in started:
        process.terminate()
        process.wait(timeout=30)


def open_logger(link, where):
    if link == "pty":
        return meridex.LoggerLinks.OpenPort(4, 9600, FakePorts([4], {4: where}))
    host, port = meridex.LoggerLinks.SplitHostPort(where)
    return meridex.LoggerLinks.OpenTcp(host, port) if link == "tcp" else meridex.LoggerLinks.OpenUdp(host, port)


def test_a_folder_offers_its_files_for_a_model_newest_first_and_names_the_refused(firmware):
    folder, files = firmware
    listed = meridex.FirmwareFolder(str(folder))
    assert listed.Exists and len(listed.Images) == 3
    assert [(r.path, r.number) for r in listed.Refused] == [(str(files["damaged"]), 321)]
    offers = listed.OffersFor("wl400", "1.0.0")
    assert [o.image.Version for o in offers] == ["2.0.0", "1.0.0"]
    assert [o.Running() for o in offers] == [False, True] and offers[0].comparison > 0
    assert offers[0].image.Size == 3000 and offers[0].image.PayloadIntact()
    with pytest.raises(meridex.Error) as refused:
        meridex.FirmwareImage.Read(str(files["damaged"]))
    assert refused.value.number == 321
    assert not meridex.FirmwareFolder(str(folder / "nowhere")).Exists


@pytest.mark.parametrize("link", ["pty", "tcp", "udp"])
def test_the_logger_says_who_it_is_over_each_link(simulator, link):
    result = open_logger(link, simulator(link)).Identify()
    assert result.Ok() and result.status == meridex.UpgradeStatus.Ok
    assert (result.identity.model, result.identity.firmwareVersion) == ("WL400", "1.0.0")


def test_no_logger_at_an_address_is_a_connection_error():
    with pytest.raises(ConnectionError):
        meridex.LoggerLinks.OpenTcp("127.0.0.1", 1)
    assert meridex.LoggerLinks.SplitHostPort("no port") is None


def test_an_upgrade_reports_progress_stops_when_asked_and_completes_when_run_again(simulator, firmware):
    logger = open_logger("tcp", simulator("tcp", "--block-size", "512"))
    image = meridex.FirmwareImage.Read(str(firmware[1]["new"]))
    steps = []

    def progress(step, done, total):
        steps.append((step, done))

    stopped = logger.LoadFirmware(image, progress, cancel=lambda: any(d > 0 for s, d in steps
                                                                       if s == meridex.UpgradeStep.Write))
    assert stopped.status == meridex.UpgradeStatus.Cancelled and stopped.identity.inLoader

    steps.clear()
    done = logger.LoadFirmware(image, progress)
    assert done.Ok() and done.identity.firmwareVersion == "2.0.0"
    assert steps[0][0] == meridex.UpgradeStep.Identify and steps[-1][0] == meridex.UpgradeStep.Confirm

    def fail(step, done, total):
        raise RuntimeError("stop")

    with pytest.raises(RuntimeError, match="stop"):
        logger.LoadFirmware(meridex.FirmwareImage.Read(str(firmware[1]["old"])), fail)
