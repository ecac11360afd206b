"""The documented exit codes: parser errors, unknown commands, --help and --version."""
import re

import pytest

OK, NO, USAGE, BAD_INPUT, WRITE_FAILED, UNKNOWN_FEATURE = 0, 1, 2, 3, 4, 5


def test_help_lists_every_exit_code(ws):
    result = ws.run("--help")
    assert result.code == OK
    listed = {int(code) for code in re.findall(r"^\s+(\d+)\s", result.out.split("Exit codes:")[1], re.M)}
    assert {OK, NO, USAGE, BAD_INPUT, WRITE_FAILED, UNKNOWN_FEATURE} <= listed
    assert ws.run("--version").out.startswith("meridex ")


@pytest.mark.parametrize("args, named", [
    (["frobnicate"], '"frobnicate"'),
    (["settings", "frob", "x"], '"frob"'),
    (["book", "shoow", "b.xml"], '"shoow"'),
])
def test_an_unknown_command_is_named(ws, args, named):
    result = ws.run(*args)
    assert result.code == USAGE
    assert "unknown command" in result.err and named in result.err


@pytest.mark.parametrize("args", [
    [],
    ["settings"],
    ["settings", "get", "only-a-file.xml"],
    ["settings", "can", "f.xml", "A", "--bogus"],
    ["comms", "add", "m.xml", "serial"],
    ["comms", "add", "m.xml", "udp", "--port", "2"],
    ["comms", "add", "m.xml", "direct"],
    ["log-error", "--log", "x.log", "notanumber", "d", "c:r"],
    ["sync", "a"],
])
def test_parser_errors_exit_with_the_usage_code(ws, args):
    result = ws.run(*args)
    assert result.code == USAGE, result.err
    assert result.err.startswith("meridex: ")
    assert not (ws.root / "m.xml").exists()


def test_errors_come_as_json_objects_with_json(ws):
    result = ws.run("settings", "get", ws.root / "missing.xml", "LANG", "--json")
    assert result.code == BAD_INPUT
    assert result.json()["error"]["exitCode"] == BAD_INPUT
    assert "missing.xml does not exist" in result.json()["error"]["message"]
