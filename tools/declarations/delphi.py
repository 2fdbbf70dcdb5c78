"""Delphi and Free Pascal: a unit of external functions."""

from contract import pointee

FILE = "Vorel32.pas"
_HANDLES = "HGLOBAL HBITMAP HPALETTE HWND HDC HANDLE".split()
_VALUES = {
    "int": "Integer", "unsigned": "LongWord", "UINT": "LongWord", "BOOL": "LongBool", "short": "SmallInt", "WORD": "Word",
    "BYTE": "Byte", "HFILE": "Integer", "size_t": "TVorelWord", "WPARAM": "TVorelWord", "LPARAM": "TVorelInt", "LRESULT": "TVorelInt",
    "INT_PTR": "TVorelInt", "LPCSTR": "PAnsiChar", "char*": "PAnsiChar", "void*": "Pointer", "RECT": "TRect", "POINT": "TPoint",
    "RGBQUAD": "TImgColour", "BITMAPINFOHEADER": "TImgHeader",
    **dict.fromkeys(_HANDLES, "TVorelHandle"),
}  # fmt: skip
_POINTERS = {
    "int": "PInteger", "short": "PSmallInt", "WORD": "PWord", "HGLOBAL": "PVorelHandle", "HBITMAP": "PVorelHandle",
    "POINT": "PPoint", "RECT": "PRect", "RGBQUAD": "PImgColour",
}  # fmt: skip
_KEYWORDS = {"type", "end", "file", "method", "message", "index"}

_START = """\
{ Vorel32 %s for Delphi and Free Pascal. The C header vorel32.h says what each function does. Made from the table of exports.

  Pointers may be nil where the header says so. On Windows the unit uses VOREL32.DLL or VOREL64.DLL, on Linux libvorel32.so. }
unit Vorel32;

{$IFDEF FPC}{$MODE DELPHI}{$PACKRECORDS C}{$PACKENUM 4}{$ELSE}{$ALIGN 8}{$MINENUMSIZE 4}{$ENDIF}
{$IFDEF MSWINDOWS}{$DEFINE VOREL_WINDOWS}{$ENDIF}

interface

uses
  Types;

const
{$IFDEF MSWINDOWS}
  VorelFile = {$IFDEF WIN64}'VOREL64.DLL'{$ELSE}'VOREL32.DLL'{$ENDIF};
  MemoryFile = 'kernel32.dll';
{$ELSE}
  VorelFile = 'libvorel32.so.5';
  MemoryFile = VorelFile;
{$ENDIF}
"""

_TYPES = """\
type
{$IFDEF FPC}
  TVorelWord = PtrUInt;
  TVorelInt = PtrInt;
{$ELSE}{$IF CompilerVersion >= 20}
  TVorelWord = NativeUInt;
  TVorelInt = NativeInt;
{$ELSE}
  TVorelWord = LongWord;
  TVorelInt = LongInt;
{$IFEND}{$ENDIF}
  TVorelHandle = TVorelWord;
  PVorelHandle = ^TVorelHandle;
  TImgColour = packed record
    Blue, Green, Red, Reserved: Byte;
  end;
  PImgColour = ^TImgColour;
  TImgHeader = record
    biSize: LongWord;
    biWidth, biHeight: LongInt;
    biPlanes, biBitCount: Word;
    biCompression, biSizeImage: LongWord;
    biXPelsPerMeter, biYPelsPerMeter: LongInt;
    biClrUsed, biClrImportant: LongWord;
  end;
"""


def _name(name):
    return name + "_" if name.lower() in _KEYWORDS else name


def _type(type_):
    if type_ in _VALUES:
        return _VALUES[type_]
    target = pointee(type_)
    return _POINTERS.get(target) or "P" + target


def _declaration(function):
    parameters = "; ".join(f"{_name(parameter.name)}: {_type(parameter.type)}" for parameter in function.parameters)
    listed = f"({parameters})" if parameters else ""
    file = "MemoryFile" if function.builds == "linux" else "VorelFile"
    if function.result == "void":
        return f"procedure {function.name}{listed}; stdcall; external {file};"
    return f"function {function.name}{listed}: {_type(function.result)}; stdcall; external {file};"


def _structure(structure):
    lines = [f"  T{structure.name} = record"]
    for field in structure.fields:
        type_ = _VALUES[field.type] if field.type in _VALUES else "T" + field.type
        lines.append(f"    {_name(field.name)}: {f'array [0..{field.count - 1}] of ' if field.count else ''}{type_};")
    return "\n".join([*lines, "  end;", f"  P{structure.name} = ^T{structure.name};"])


def text(contract):
    everywhere = [function for function in contract.functions if function.builds != "windows"]
    on_windows = [function for function in contract.functions if function.builds == "windows"]
    named = [pair for values in contract.enumerations.values() for pair in values.items()] + list(contract.constants.items())
    lines = [_START % contract.version]
    lines += [f"  {name} = {value};" for name, value in named]
    lines += ["", _TYPES, *(_structure(structure) for structure in contract.structures), ""]
    lines += [_declaration(function) for function in everywhere]
    lines += ["", "{$IFDEF VOREL_WINDOWS}", *(_declaration(function) for function in on_windows), "{$ENDIF}"]
    return "\n".join([*lines, "", "implementation", "", "end."]) + "\n"
