"""Words and numbers as authors write them."""

from __future__ import annotations

import re
import unicodedata

from .problems import SourceError

_NUMBER = re.compile(r"[+-]?(\d{1,6}(\.\d{0,6})?|\.\d{1,6})")


def plain(word: str) -> str:
    """The word in lower case and without accents: `Compás` and `compas` are one."""
    parts = unicodedata.normalize("NFD", word.casefold())
    return "".join(c for c in parts if not unicodedata.combining(c))


def number(text: str, what: str) -> float:
    """A decimal number with a point, of at most six digits on either side of it."""
    if not _NUMBER.fullmatch(text):
        hint = " (los decimales van con punto)" if "," in text else ""
        raise SourceError(f"{what}: «{text}» no es un número{hint}")
    return float(text)


def whole(text: str, what: str, lowest: int, highest: int) -> int:
    """A whole number between two bounds."""
    if not re.fullmatch(r"[+-]?\d{1,6}", text):
        raise SourceError(f"{what}: «{text}» no es un número entero")
    value = int(text)
    if not lowest <= value <= highest:
        raise SourceError(f"{what}: {value} no está entre {lowest} y {highest}")
    return value


def shown(value: float) -> str:
    """A number as authors write it: no needless zeros."""
    return f"{round(value, 3):g}"
