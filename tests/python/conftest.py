import pytest

import meridex


@pytest.fixture(autouse=True)
def private_user_folders(tmp_path, monkeypatch):
    """The module's per-user settings live in the test's folder, never the real user's."""
    for name in ("XDG_CONFIG_HOME", "XDG_CACHE_HOME", "HOME"):
        folder = tmp_path / ("." + name.lower())
        folder.mkdir()
        monkeypatch.setenv(name, str(folder))


class FakePorts(meridex.SerialPortSource):
    """Made-up serial ports: COM n is /dev/ttyFAKEn unless a device is given; every probe is counted."""

    def __init__(self, numbers, devices=None):
        super().__init__()
        self.numbers, self.devices, self.probed = numbers, devices or {}, []

    def ListPorts(self):
        return [meridex.SerialPort(n, self.devices.get(n, f"/dev/ttyFAKE{n}"), f"Adapter {n}") for n in self.numbers]

    def Probe(self, port):
        self.probed.append(port.number)
        return True
