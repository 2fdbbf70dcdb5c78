"""Python: a module on ctypes, for Windows and Linux."""

from contract import WINDOWS_STRUCTURES, pointee

FILE = "vorel32_ctypes.py"
_HANDLES = "HGLOBAL HBITMAP HPALETTE HWND HDC HANDLE".split()
_VALUES = {
    "void": "None", "int": "c_int", "unsigned": "c_uint", "UINT": "c_uint", "BOOL": "c_int", "short": "c_short", "WORD": "c_uint16",
    "BYTE": "c_uint8", "LONG": "c_int32", "DWORD": "c_uint32", "HFILE": "c_int", "size_t": "c_size_t", "WPARAM": "c_size_t",
    "LPARAM": "c_ssize_t", "LRESULT": "c_ssize_t", "INT_PTR": "c_ssize_t", "LPCSTR": "c_char_p", "char*": "c_char_p", "void*": "c_void_p",
    **dict.fromkeys(_HANDLES, "c_void_p"),
}  # fmt: skip

_START = '''\
"""Vorel32 {version} for Python, on ctypes. The C header vorel32.h says what each function does. Made from the table of exports.

Handles are integers, None is NULL; paths and texts are bytes. The library lies beside this module or where the system finds it.
"""

import ctypes
import os
import sys
from ctypes import POINTER, Structure, c_char_p, c_int, c_int32, c_short, c_size_t, c_ssize_t, c_uint, c_uint8, c_uint16, c_uint32
from ctypes import c_void_p

IS_WINDOWS = sys.platform == "win32"


def _load():
    file = "libvorel32.so.5"
    if IS_WINDOWS:
        file = "VOREL64.DLL" if ctypes.sizeof(c_void_p) == 8 else "VOREL32.DLL"
    beside = os.path.join(os.path.dirname(os.path.abspath(__file__)), file)
    return (ctypes.WinDLL if IS_WINDOWS else ctypes.CDLL)(beside if os.path.exists(beside) else file)


library = _load()
_memory = ctypes.WinDLL("kernel32") if IS_WINDOWS else library


def _function(owner, name, result, *parameters):
    function = getattr(owner, name)
    function.restype, function.argtypes = result, parameters
    return function

'''


def _type(type_):
    return _VALUES.get(type_) or f"POINTER({_VALUES.get(pointee(type_), pointee(type_))})"


def _declaration(function, indent=""):
    owner = "_memory" if function.builds == "linux" else "library"
    types = [_type(function.result), *(_type(parameter.type) for parameter in function.parameters)]
    return f'{indent}{function.name} = _function({owner}, "{function.name}", {", ".join(types)})'


def _structure(structure):
    lines = [f"\nclass {structure.name}(Structure):", "    _fields_ = ["]
    for field in structure.fields:
        type_ = _VALUES.get(field.type, field.type)
        lines.append(f'        ("{field.name}", {type_}{f" * {field.count}" if field.count else ""}),')
    return "\n".join([*lines, "    ]\n"])


def text(contract):
    named = [pair for values in contract.enumerations.values() for pair in values.items()] + list(contract.constants.items())
    lines = [_START.format(version=contract.version), *(f"{name} = {value}" for name, value in named)]
    lines += [_structure(structure) for structure in WINDOWS_STRUCTURES + contract.structures]
    lines += ["", *(_declaration(function) for function in contract.functions if function.builds != "windows")]
    lines += ["", "if IS_WINDOWS:"]
    lines += [_declaration(function, "    ") for function in contract.functions if function.builds == "windows"]
    return "\n".join(lines) + "\n"
