"""Bayer tiles and demosaic methods as enumerations, and how names are found."""

from __future__ import annotations

import difflib
import enum
from typing import TypeVar

from . import _core

_Enumeration = TypeVar("_Enumeration", bound="_Named")


class _Named(enum.IntEnum):
    """Values of the library, found by any name that it knows, whatever its case."""

    @classmethod
    def of(cls: type[_Enumeration], value: int | str) -> _Enumeration:
        """The member with this value, name or alias; the same as calling the enumeration, for type checkers."""
        return cls(value)  # type: ignore[arg-type]

    @classmethod
    def _missing_(cls: type[_Enumeration], value: object) -> _Enumeration | None:
        if not isinstance(value, str):
            return None
        found = cls._find(value)
        if found is None:
            raise ValueError(cls._not_found(value))
        return cls(found)

    @classmethod
    def _find(cls, name: str) -> int | None:
        raise NotImplementedError

    @classmethod
    def _not_found(cls, name: str) -> str:
        return f"{name!r} is no {cls.__name__}; it is one of {', '.join(map(str, cls))}"

    def __str__(self) -> str:
        return self.name.lower()

    def __format__(self, spec: str) -> str:
        return format(str(self), spec)

    def __repr__(self) -> str:
        return f"{type(self).__name__}.{self.name}"


class NamedFormat(_Named):
    """What PixelFormat, whose members _formats.py has, does with names."""

    @classmethod
    def _find(cls, name: str) -> int | None:
        return _core.find_format(name)

    @classmethod
    def _not_found(cls, name: str) -> str:
        names = [known.lower() for row in _core.formats() for known in (row["name"], *row["aliases"])]
        near = " or ".join(difflib.get_close_matches(name.lower(), names, n=3))
        return f"{name!r} is no {cls.__name__}; " + (f"did you mean {near}? " if near else "") + "formats() lists all"


class BayerTile(_Named):
    """The colours of the top-left 2 x 2 samples of a mosaic, in reading order; NONE for samples that are grey."""

    RGGB = 1
    GRBG = 2
    GBRG = 3
    BGGR = 4
    NONE = 0

    @classmethod
    def _find(cls, name: str) -> int | None:
        return _core.find_tile(name)


class Method(_Named):
    """How a mosaic becomes colour. NONE shows it as grey, DEFAULT takes the library's default, which is NEAREST."""

    NEAREST = 2
    EDGE = 3
    HQ_LINEAR = 4
    DIRECTIONAL = 7
    RIGOROUS = 5
    NONE = 1
    DEFAULT = 0

    @classmethod
    def _find(cls, name: str) -> int | None:
        return _core.find_method(name)
