"""Visual Basic 6, and VBA in 32-bit programs: a module of Declare statements."""

from contract import WINDOWS_STRUCTURES, pointee

FILE = "vorel32.bas"
_LONGS = "int unsigned UINT BOOL LONG DWORD HFILE HGLOBAL HBITMAP HPALETTE HWND HDC HANDLE WPARAM LPARAM LRESULT INT_PTR size_t void*".split()
_VALUES = {**dict.fromkeys(_LONGS, "Long"), "short": "Integer", "WORD": "Integer", "BYTE": "Byte"}
_TYPES = {"POINT": "POINTAPI"}  # Point is a method of forms
_KEYWORDS = {"type", "option", "end", "error", "line", "next", "name", "base"}


def _name(name):
    return name + "_" if name.lower() in _KEYWORDS else name


def _parameter(function, parameter):
    type_, name = parameter.type, _name(parameter.name)
    if name.lower() == function.name.lower():
        name += "_"
    if type_ in ("LPCSTR", "char*"):
        return f"ByVal {name} As String"
    target = pointee(type_)
    if target is None:
        return f"ByVal {name} As {_VALUES[type_]}"
    if target == "void":
        return f"ByVal {name} As Long"
    if target in ("int", "short", "WORD", "POINT", "RECT", "ImgPrintOptions"):  # arrays, or may be null
        return f"ByRef {name} As Any"
    return f"ByRef {name} As {_VALUES.get(target, target)}"


def _declaration(function):
    parameters = ", ".join(_parameter(function, parameter) for parameter in function.parameters)
    file = "kernel32" if function.builds == "linux" else "VOREL32.DLL"
    # Exports are found by their exact names, but the editor gives equal names one case, so that a variable zoom
    # could turn Zoom into zoom.
    declared = f'{function.name} Lib "{file}" Alias "{function.name}" ({parameters})'
    if function.result == "void":
        return f"Public Declare Sub {declared}"
    result = "Long" if function.result == "char*" else _VALUES[function.result]
    return f"Public Declare Function {declared} As {result}"


def _structure(structure):
    lines = [f"Public Type {_TYPES.get(structure.name, structure.name)}"]
    for field in structure.fields:
        count = f"(0 To {field.count - 1})" if field.count else ""
        lines.append(f"  {_name(field.name)}{count} As {_VALUES.get(field.type, field.type)}")
    return "\n".join([*lines, "End Type", ""])


def text(contract):
    lines = [
        'Attribute VB_Name = "Vorel32Declarations"',
        f"' Vorel32 {contract.version} for Visual Basic 6. The C header vorel32.h says what each function does. Made from the table of",
        "' exports.",
        "'",
        "' ByRef ... As Any: pass the first element of an array, a variable of the type in the header, or ByVal 0& for NULL. Variables for",
        "' int are Long, for short and WORD Integer. vbNullString is NULL for a string. A string to be filled must be long enough:",
        "' Space$(IMG_MESSAGE_BYTES).",
        "Option Explicit",
        "",
    ]
    for name, values in contract.enumerations.items():
        lines += [f"Public Enum {name}", *(f"  {key} = {value}" for key, value in values.items()), "End Enum", ""]
    lines += [f"Public Const {name} As Long = &H{value:X}&" for name, value in contract.constants.items()]
    lines += ["", *(_structure(structure) for structure in WINDOWS_STRUCTURES + contract.structures)]
    lines += [_declaration(function) for function in contract.functions]
    return "\r\n".join("\n".join(lines).split("\n")) + "\r\n"
