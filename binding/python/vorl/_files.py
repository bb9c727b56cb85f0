"""Files that appear under their names when they are whole."""

from __future__ import annotations

import errno
import os
import shutil
import tempfile
from contextlib import contextmanager
from typing import Iterator


@contextmanager
def replacing(name: str) -> Iterator[str]:
    """A name to write to, in a folder of its own beside the file; what is there moves then."""
    folder = os.path.dirname(os.path.abspath(name))
    if not os.path.isdir(folder):
        raise FileNotFoundError(errno.ENOENT, os.strerror(errno.ENOENT), name)
    with tempfile.TemporaryDirectory(prefix=".vorl-", dir=folder) as hidden:
        yield os.path.join(hidden, os.path.basename(name))
        for written in sorted(os.listdir(hidden)):
            source, target = os.path.join(hidden, written), os.path.join(folder, written)
            if os.path.isdir(source):
                os.makedirs(target, exist_ok=True)
                for part in sorted(os.listdir(source)):
                    os.replace(os.path.join(source, part), os.path.join(target, part))
                shutil.rmtree(source)
            else:
                os.replace(source, target)
