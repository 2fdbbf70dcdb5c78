import os
import subprocess

import numpy as np
import pytest

import vorel32


def noise(shape, seed=1):
    return np.random.default_rng(seed).integers(0, 256, shape, dtype=np.uint8)


@pytest.fixture(scope="session")
def vorel():
    """Runs the command `vorel`."""
    return lambda *arguments: subprocess.run([os.environ["VOREL"], *map(str, arguments)], check=True, capture_output=True)


@pytest.fixture
def folder(tmp_path, monkeypatch):
    """The current folder, with the files of the examples: a fax of two pages and a photo."""
    monkeypatch.chdir(tmp_path)
    page = vorel32.Image.from_array(noise((2200, 1700)) > 40, dpi=200)
    vorel32.save_pages("scan.tif", [page, page.rotate(180)])
    vorel32.Image.from_array(noise((480, 640, 3)), dpi=150).save("photo.png")
    return tmp_path
