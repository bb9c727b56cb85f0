"""How far a long call is, for people to look at."""

from __future__ import annotations

import sys
import time
from typing import Any, Callable, Iterator, Optional
from contextlib import contextmanager

Tell = Callable[[str, Optional[int], int, int], None]

#: Seconds before anything is shown, and between two looks.
DELAY = 0.5


class _Bar:
    """A bar of tqdm for each stage."""

    def __init__(self, tqdm: Any) -> None:
        self._tqdm = tqdm
        self._bar: Any = None
        self._stage: Any = None

    def tell(self, text: str, stage: Any, total: int, done: int) -> None:
        if stage != self._stage:
            self.close()
            self._bar = self._tqdm(desc=text, total=total or None, leave=False)
            self._stage = stage
        done = min(done, total) if total else done
        self._bar.update(max(0, done - self._bar.n))

    def close(self) -> None:
        if self._bar is not None:
            self._bar.close()


class _Line:
    """A line of standard error that is written over and over."""

    def __init__(self) -> None:
        self._width = 0

    def tell(self, text: str, stage: Any, total: int, done: int) -> None:
        if total:
            text += f": {100 * min(done, total) // total} %"
        elif done:
            text += f": {done:,}"
        sys.stderr.write("\r" + text.ljust(self._width))
        sys.stderr.flush()
        self._width = len(text)

    def close(self) -> None:
        if self._width:
            sys.stderr.write("\r" + " " * self._width + "\r")
            sys.stderr.flush()


@contextmanager
def shown(progress: Any) -> Iterator[Optional[Tell]]:
    """What the library is to call from time to time; None for nothing.

    ``progress`` is True, False or a function of (stage, level or None, total, done).
    """
    if callable(progress):
        yield progress
        return
    if not isinstance(progress, bool):
        raise TypeError(f"progress: True, False or a function is expected, not {progress!r}")
    if not progress:
        yield None
        return
    try:
        from tqdm.auto import tqdm
    except ImportError:
        display: Any = _Line()
    else:
        display = _Bar(tqdm)
    start = time.monotonic()

    def tell(stage: str, level: Optional[int], total: int, done: int) -> None:
        if time.monotonic() - start < DELAY:
            return
        text = stage if level is None else f"level {level}, {stage}"
        display.tell(text, (stage, level), total, done)

    try:
        yield tell
    finally:
        display.close()
