"""What the classes of documents have in common."""

from __future__ import annotations

import dataclasses
import functools
import types
import typing
from dataclasses import dataclass, field
from typing import Any, Mapping


@dataclass(frozen=True, kw_only=True)
class Identifier:
    """A number of the library, with its name if it has one."""

    id: int
    name: str | None = None


@dataclass(frozen=True, kw_only=True)
class Container(Identifier):
    """A container format, with the brand of an MPEG-4 file."""

    brand: str | None = None


@dataclass(frozen=True, kw_only=True)
class Base:
    """A document, and the JSON object that it was made from."""

    raw: Mapping[str, Any] = field(default_factory=dict, repr=False, compare=False)
    """All of it, as "kolum probe --json" prints it."""


def _snake(name: str) -> str:
    return "".join("_" + c.lower() if c.isupper() else c for c in name)


def _class_in(hint: Any) -> tuple[type | None, bool]:
    """The dataclass that a hint names, and whether it is a tuple of them."""
    arguments = typing.get_args(hint)
    if typing.get_origin(hint) is tuple:
        return (arguments[0] if dataclasses.is_dataclass(arguments[0]) else None), True
    if isinstance(hint, types.UnionType):
        hint = next(each for each in arguments if each is not types.NoneType)
    return (hint if dataclasses.is_dataclass(hint) else None), False


@functools.cache
def _hints(kind: type) -> dict[str, tuple[type | None, bool]]:
    return {name: _class_in(hint) for name, hint in typing.get_type_hints(kind).items()}


def build(kind: type, raw: Mapping[str, Any]) -> Any:
    """An object of a class from its JSON; keys that the class does not know stay in "raw"."""
    hints = _hints(kind)
    values: dict[str, Any] = {}
    for key, value in raw.items():
        name = _snake(key)
        if name not in hints or name == "raw":
            continue
        inner, is_list = hints[name]
        if is_list:
            values[name] = tuple(build(inner, each) if inner else each for each in value)
        else:
            values[name] = build(inner, value) if inner else value
    if issubclass(kind, Base):
        values["raw"] = raw
    return kind(**values)
