"""Pages to measure and to try things with: text in lines on paper with noise. The same numbers give the same pages."""

import os

import numpy as np
from vorel32 import Image


def a4_page(seed=1):
    """A colour scan of text at 300 dpi: dark lines of letters on paper with noise."""
    random = np.random.default_rng(seed)
    page = np.full((3508, 2480), 235, np.uint8)
    page += random.integers(0, 15, page.shape, dtype=np.uint8)
    for y in range(250, 3200, 60):
        for x in range(200, 2200, 28):
            if random.random() < 0.85:
                page[y : y + random.integers(20, 36), x : x + random.integers(3, 20)] = 30
    return np.repeat(page[:, :, None], 3, axis=2)


def make_pages(folder, count, width=850, height=1100, dpi=200):
    """Fax pages of 1 bit with specks, Group 4."""
    paths = []
    sheet = np.asarray(Image.from_array(a4_page()).gray()) > 128
    for i in range(count):
        path = os.path.join(folder, f"page-{i:05}.tif")
        page = np.roll(sheet, -10 * (i % 40), axis=0)[:height, :width].copy()
        random = np.random.default_rng(i)
        specks = width * height // 2000
        page[random.integers(0, height, specks), random.integers(0, width, specks)] ^= True
        Image.from_array(page, dpi=dpi).save(path, compression="g4")
        paths.append(path)
    return paths
