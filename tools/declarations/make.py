#!/usr/bin/env python3
"""Writes the declarations of the library for other languages, from the table of exports and the header.

usage: make.py FOLDER
"""

import sys
from pathlib import Path

import contract
import csharp
import delphi
import python_ctypes
import visual_basic

folder = Path(sys.argv[1])
folder.mkdir(parents=True, exist_ok=True)
interface = contract.read()
for language in (csharp, delphi, python_ctypes, visual_basic):
    (folder / language.FILE).write_text(language.text(interface), newline="")
