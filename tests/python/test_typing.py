"""The module describes itself: a docstring on every bound class, method and property, and
type stubs that mypy reads (it rejects a script that misuses a return type)."""
import inspect
import subprocess
import sys

import pytest

import meridex

# What pybind11 gives every class or enumeration by itself.
GIVEN = {"__init__", "__new__", "__doc__", "__module__", "__dict__", "__weakref__", "__hash__", "__ne__", "__int__",
         "__index__", "__str__", "__getstate__", "__setstate__", "__members__", "__entries", "name", "value"}
ENUM_GIVEN = {"__repr__", "__eq__"}


def description(member):
    """A member's own text: a property's docstring, or a function's after pybind11's signature lines."""
    if isinstance(member, property):
        member = member.fget if member.__doc__ is None else member
        return (member.__doc__ or "").strip()
    if isinstance(member, staticmethod):
        member = member.__func__
    lines = (member.__doc__ or "").splitlines()
    return "\n".join(line for line in lines if not line.startswith(member.__name__ + "(")).strip()


def bound_members():
    for class_name, cls in vars(meridex).items():
        if not inspect.isclass(cls) or class_name.startswith("_"):
            continue
        yield class_name, cls.__doc__
        enum = hasattr(cls, "__members__")
        for name, member in vars(cls).items():
            if name in GIVEN or (enum and (name in cls.__members__ or name in ENUM_GIVEN)) or inspect.isclass(member):
                continue
            if name == "__init__" and "self, *args" in str(member.__doc__):
                continue
            yield f"{class_name}.{name}", description(member)
    for name, function in vars(meridex).items():
        if inspect.isbuiltin(function):
            yield name, description(function)


def test_every_bound_class_method_and_property_has_a_docstring():
    members = dict(bound_members())
    assert len(members) > 250
    assert [name for name, text in members.items() if not text] == []
    assert "The text stored under key" in meridex.Settings.GetString.__doc__


TYPED = '''
from typing import Optional
import meridex

settings = meridex.Settings()
text: str = settings.GetString("HOST", "none")
profile: Optional[meridex.Profile] = settings.CurrentProfile
sites: list[str] = [site.Path for site in meridex.AddressBook()]
offers = meridex.FirmwareFolder("fw").OffersFor("WL400", "1.0.0")
versions: list[str] = [offer.image.Version for offer in offers]
where = meridex.LoggerLinks.SplitHostPort("127.0.0.1:9000")
port: int = where[1] if where else 0
'''


@pytest.mark.parametrize("script, errors", [(TYPED, []), (TYPED + "wrong: int = settings.GetString('A')\n", [
    'typed.py:13: error: Incompatible types in assignment (expression has type "str", variable has type "int")'])],
                         ids=["typed", "misused"])
def test_mypy_reads_the_stubs(tmp_path, script, errors):
    path = tmp_path / "typed.py"
    path.write_text(script)
    result = subprocess.run([sys.executable, "-m", "mypy", "--strict", "--no-incremental", "--cache-dir", str(tmp_path),
                             str(path)], capture_output=True, text=True, cwd=tmp_path)
    assert [line.split("  [")[0] for line in result.stdout.splitlines() if "error:" in line] == errors, result.stdout
