"""The bash completion and the man page know every command and option the tool's own help lists."""
import os
import re
import subprocess
from pathlib import Path

COMPLETION = Path(__file__).resolve().parents[2] / "apps" / "meridex" / "meridex.bash-completion"


def complete(*words):
    """What the completion offers after `meridex WORDS...` with the last word being typed."""
    line = " ".join(("meridex",) + words)
    script = (f"source '{COMPLETION}'; COMP_WORDS=(meridex {' '.join(repr(w) for w in words)}); "
              f"COMP_CWORD={len(words)}; COMP_LINE='{line}'; COMP_POINT={len(line)}; "
              "_meridex; printf '%s\\n' \"${COMPREPLY[@]}\"")
    return set(subprocess.run(["bash", "-c", script], capture_output=True, text=True, check=True).stdout.split())


def help_of(ws, *command):
    """(subcommands, long options) of a command's --help."""
    text = ws.run(*command, "--help").out
    subcommands = set(re.findall(r"^  ([a-z][a-z0-9-]*)\s", text.split("Subcommands:")[1], re.M)) \
        if "Subcommands:" in text else set()
    options = set(re.findall(r"(--[a-z][a-z-]*)", text.split("Options:")[1].split("Subcommands:")[0]))
    return subcommands, options


def test_completion_offers_every_command_and_option(ws):
    pending = [()]
    while pending:
        command = pending.pop()
        subcommands, options = help_of(ws, *command)
        assert subcommands <= complete(*command, ""), command
        assert options <= complete(*command, "--"), command
        pending.extend(command + (sub,) for sub in subcommands)


def test_completion_offers_device_kinds(ws):
    assert complete("comms", "add", "map.xml", "") == {"direct", "modem", "udp", "tcp", "gprs"}


def man_sections():
    """The man page's text under each command's heading ("meridex settings get"), roff escapes undone."""
    page = Path(os.environ["MERIDEX_MAN"]).read_text().replace("\\-", "-")
    parts = re.split(r'^\.SS "(meridex [a-z0-9 -]+):"$', page, flags=re.M)
    return page, dict(zip(parts[1::2], parts[2::2]))


def test_the_man_page_lists_every_command_with_every_option(ws):
    page, sections = man_sections()
    for word in ("Exit codes", "unreadable or of another kind", "--force"):
        assert word in page, word
    pending = [()]
    while pending:
        command = pending.pop()
        subcommands, options = help_of(ws, *command)
        if command:
            section = sections.get(" ".join(("meridex",) + command))
            assert section is not None, command
            assert options - {"--help"} <= set(re.findall(r"--[a-z][a-z-]*", section)), command
        pending.extend(command + (sub,) for sub in subcommands)
