import pytest


@pytest.fixture(autouse=True)
def private_user_folders(tmp_path, monkeypatch):
    """The module's per-user settings live in the test's folder, never the real user's."""
    for name in ("XDG_CONFIG_HOME", "XDG_CACHE_HOME", "HOME"):
        folder = tmp_path / ("." + name.lower())
        folder.mkdir()
        monkeypatch.setenv(name, str(folder))
