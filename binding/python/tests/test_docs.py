"""Examples of docstrings, README and docs run."""

import doctest
import importlib
import pathlib
import pkgutil
import re
import subprocess
import sys

import pytest
import vorl

from conftest import ROOT


def test_docstrings():
    tried = 0
    for module in pkgutil.iter_modules(vorl.__path__):
        if module.name == "_vorl":
            continue
        result = doctest.testmod(importlib.import_module(f"vorl.{module.name}"))
        assert result.failed == 0
        tried += result.attempted
    assert doctest.testmod(vorl).failed == 0 and tried > 10


@pytest.mark.parametrize("page", ["README.md", "docs/python.md"])
def test_lines_of_the_docs(page):
    text = (ROOT / page).read_text()
    for code in re.findall(r"```python\n(.*?)```", text, re.S):
        out = subprocess.check_output([sys.executable, "-c", code], text=True)
        shares = eval(out)
        assert len(shares) > 1 and sum(shares.values()) == pytest.approx(1)


def test_example(tmp_path):
    out = subprocess.check_output(
        [sys.executable, ROOT / "examples/python/characters.py", tmp_path / "drawn.svg"],
        text=True, encoding="utf-8")
    assert re.search(r"^\d communities save \d+ bits$", out, re.M)
    assert "Fantine: 0." in out and float(re.search(r"F1 .*: (.*)", out)[1]) > 0.8
    assert pathlib.Path(tmp_path / "drawn.svg").stat().st_size > 10000
