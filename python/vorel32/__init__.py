"""Scanned pages and other raster images: load, clean, turn, scale, dither and save, fast and in bulk.

>>> import vorel32
>>> page = vorel32.open("scan.tif", page=1)
>>> page.clean(60).rotate(90).save("upright.tif")

Every operation gives the same pixels as the verb of that name of the command ``vorel``. The interpreter lock is free while the
library works, so threads run side by side.
"""

from ._errors import ClusterError, CodecError, Error, FormatError, InputError, LimitError, OutputError, UsageError
from ._image import Image, count_pages, open, pages, save_pages

__all__ = [
    "ClusterError", "CodecError", "Error", "FormatError", "Image", "InputError", "LimitError", "OutputError", "UsageError",
    "count_pages", "open", "pages", "save_pages",
]  # fmt: skip
__version__ = "5.59"
