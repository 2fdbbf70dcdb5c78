"""The examples of the documentation run as they stand."""

import doctest
from pathlib import Path

import vorel32
import vorel32._image
import vorel32.cluster


def test_docstrings(folder):
    for module in (vorel32, vorel32._image, vorel32.cluster):
        assert doctest.testmod(module).failed == 0


def test_readme(folder):
    result = doctest.testfile(str(Path(__file__).parent.parent / "README.md"), module_relative=False)
    assert result.attempted > 20 and result.failed == 0
