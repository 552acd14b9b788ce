"""The library's result codes as exceptions."""

from __future__ import annotations

import re

_OUT_OF_MEMORY = -199

# The library speaks of its own matrices: a row of numpy is one of their columns.
_EXCHANGED = {
    "row": "column",
    "rows": "columns",
    "column": "row",
    "columns": "rows",
    "3 x nodes": "(n, 3)",
    "2 x nodes": "(n, 2)",
    "~0U": "NONE",
}
_WORDS = re.compile(r"3 x nodes|2 x nodes|~0U|\b(?:rows?|columns?)\b")


class Error(Exception):
    """A function of the library failed.

    Attributes: `function`, its name in C++; `code`, the result that it returned.
    """

    def __init__(self, message: str, function: str = "", code: int = 0) -> None:
        super().__init__(message)
        self.function = function
        self.code = code

    def __reduce__(self) -> tuple[type[Error], tuple[str, str, int]]:
        return type(self), (str(self), self.function, self.code)


class ArgumentError(Error, ValueError):
    """An argument is invalid."""


class FormatError(Error, ValueError):
    """The contents of a file cannot be read."""


class OutOfMemory(Error, MemoryError):
    """Memory ran out, or a number does not fit its 32 bits."""


def in_numpys_words(sentence: str) -> str:
    """A sentence of the library, with rows and columns exchanged."""
    return _WORDS.sub(lambda word: _EXCHANGED[word.group()], sentence)


def _kind(function: str, code: int) -> type[Error]:
    if code == _OUT_OF_MEMORY or (function, code) == ("medit_output", -6):
        return OutOfMemory
    reads = function.endswith("_input")
    return FormatError if reads and code != -4 else ArgumentError


def make_error(function: str, code: int, sentence: str) -> Error:
    """The exception of a result code; the core raises it."""
    return _kind(function, code)(f"{function}: {in_numpys_words(sentence)}", function, code)
