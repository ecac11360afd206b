"""Completes the stubs stubgen made of the module and puts them where the package wants them.

    stub_fixup.py STUBGEN_OUTPUT_FOLDER TARGET.pyi     (with the built module importable)

- stubgen cannot read the signatures of pybind11's static methods (their docstring is not
  where it looks), so those are written from the functions' own docstrings;
- pybind11 cannot say what a Python iterator yields, so __iter__ is typed after the
  class's __getitem__ (an address book yields sites);
- meridex.Error, a Python class the module defines, is written out with its fields;
- in a class with a property named Element (a site's element), the type is named
  through the alias _Element, since the property hides the class there.
"""
import inspect
import re
import sys
from pathlib import Path

import meridex

ERROR = """class Error(Exception):
    number: int
    source: str
    description: str
    def __init__(self, number: int, source: str, description: str) -> None: ...

"""
UNREAD = re.compile(r"^    def (\w+)\(self, \*args, \*\*kwargs\) -> Any: \.\.\.$", re.M)


def static_signature(cls, name):
    """The stub lines of a static method from its pybind11 docstring."""
    first = getattr(cls, name).__doc__.splitlines()[0]
    params, result = re.fullmatch(rf"{name}\((.*)\) -> (.+)", first).groups()
    params = re.sub(r"=\s*[^,\]]+?(?=,|$)", "= ...", params)
    return f"    @staticmethod\n    def {name}({params}) -> {result}: ..."


def complete_class(block):
    found = re.match(r"class (\w+)", block)
    if not found:
        return block
    if found.group(1) == "Error":
        return ERROR
    cls = getattr(meridex, found.group(1))

    def replace(match):
        name = match.group(1)
        if isinstance(inspect.getattr_static(cls, name), staticmethod):
            return static_signature(cls, name)
        return match.group(0)

    block = UNREAD.sub(replace, block)
    if re.search(r"def Element\(self\)", block):
        block = re.sub(r"(?<!def )\bElement\b(?!\(self\))", "_Element", block)
    item = re.search(r"def __getitem__\(self, [^)]*\) -> (\w+):", block)
    item = item.group(1) if item else ("Site" if found.group(1) == "AddressBook" else None)
    if item:
        block = block.replace("def __iter__(self) -> Iterator:", f"def __iter__(self) -> Iterator[{item}]:")
    return block


def main(folder, target):
    text = next(Path(folder).rglob("*.pyi")).read_text(encoding="utf-8")
    text = "".join(complete_class(block) for block in re.split(r"(?m)^(?=class )", text))
    text = text.replace("meridex.", "") + "\n_Element = Element\n"
    # An element view is compared by what it views and so cannot be hashed (typeshed's own way to say so).
    text = text.replace("__hash__: ClassVar[None] = ...", "__hash__: ClassVar[None] = ...  # type: ignore[assignment]")
    names = sorted(n for n in ("Any", "Callable", "ClassVar", "Iterator", "List", "Optional", "Tuple", "Union")
                   if re.search(rf"\b{n}\[|\b{n}\b", text.split("\n", 1)[1]))
    text = re.sub(r"^from typing import .*$", "from typing import " + ", ".join(names), text, count=1, flags=re.M)
    Path(target).write_text(text, encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
