"""Turns the first page of an image file upright and saves it as a bitmap file: turn.py scan.tif upright.bmp"""

import os
import sys

import vorel32_ctypes as vorel


def fail(what):
    code = vorel.ImgError()  # some failures of codec modules leave no code
    why = vorel.ImgErrorString(vorel.ctypes.create_string_buffer(vorel.IMG_MESSAGE_BYTES), code).decode()
    sys.exit(f"{what}: {why if code else 'damaged or not supported'}")


if len(sys.argv) != 3:
    sys.exit("usage: turn.py IN OUT.bmp")
source, target = sys.argv[1:]
scan = vorel.LoadImageIntoDIB(os.fsencode(source), 1, None) or fail(source)
upright = vorel.RotateDIB90(scan)
vorel.GlobalFree(scan)
if not upright or not vorel.SaveDIB(os.fsencode(target), upright):
    fail(target)
vorel.GlobalFree(upright)
