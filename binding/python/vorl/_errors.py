"""Faults of files."""

from __future__ import annotations

from typing import Optional


class InputError(ValueError):
    """A file is at fault: ``file:line: what is wrong, what was found, what is expected``.

    Attributes
    ----------
    file : str
        Name of the file.
    line : int or None
        Line of the fault, from 1; None where it is of no line.
    wrong, found, expected : str
        The parts of the message, as far as they are known apart.
    """

    file: str = ""
    line: Optional[int] = None
    wrong: str = ""
    found: str = ""
    expected: str = ""


class MemoryLimitError(InputError, MemoryError):
    """A network would need more memory than there is."""


class InputWarning(UserWarning):
    """What one should know of a file that was read."""
