"""Runs the built meridex tool in a temporary workspace with its own per-user folders."""
import json
import os
import shutil
import subprocess
from pathlib import Path

import pytest

DEMO = Path(__file__).resolve().parents[2] / "examples" / "demo"

SETTINGS = (
    "<V4SETTINGS><LANG>en</LANG><CURRENT_PROFILE>Field Crew</CURRENT_PROFILE><PROFILES>"
    "<PROFILE><KEY>Field Crew</KEY><FEATURE><KEY>V4_SCHEME_EDITOR</KEY></FEATURE></PROFILE>"
    "<PROFILE><KEY>ADMINISTRATOR</KEY></PROFILE></PROFILES></V4SETTINGS>"
)


class Result:
    def __init__(self, completed):
        self.code = completed.returncode
        self.out = completed.stdout.decode("utf-8", "replace")
        self.err = completed.stderr.decode("utf-8", "replace")
        self.raw = completed.stdout

    def json(self):
        return json.loads(self.raw)


class Workspace:
    """A folder holding a settings file, an address book, a map and scheme folders."""

    def __init__(self, root: Path):
        self.root = root
        self.env = dict(os.environ)
        for name in ("XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR", "HOME"):
            path = root / ("." + name.lower())
            path.mkdir()
            self.env[name] = str(path)
        self.env["LC_ALL"] = "C.UTF-8"
        self.settings = self.write("V4Settings.xml", SETTINGS)
        self.map = root / "CommsProfiles.xml"
        self.book = root / "AddressBook.xml"
        self.schemes = root / "import"
        shutil.copytree(DEMO / "import", self.schemes)

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")
        return path

    def run(self, *args, stdin=b""):
        command = [os.environ["MERIDEX_CLI"], *[a if isinstance(a, bytes) else str(a) for a in args]]
        return Result(subprocess.run(command, input=stdin, capture_output=True, env=self.env, cwd=self.root,
                                     timeout=120))


@pytest.fixture
def ws(tmp_path):
    return Workspace(tmp_path)
