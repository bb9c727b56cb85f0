import os
import pathlib
import subprocess

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[3]
PROGRAM = os.environ.get("VORL_PROGRAM", "")


@pytest.fixture
def data():
    return ROOT / "data"


@pytest.fixture
def program():
    """Runs the program."""
    if not PROGRAM:
        pytest.skip("VORL_PROGRAM tells no program")

    def run(*arguments):
        return subprocess.run([PROGRAM, *map(str, arguments)], check=True, capture_output=True)

    return run
