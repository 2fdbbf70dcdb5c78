"""The library's interface as data: functions from the table of exports; structures, enumerations and constants from the header."""

import re
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


@dataclass(frozen=True)
class Parameter:
    type: str  # as in C: "const int*"
    name: str


@dataclass(frozen=True)
class Function:
    builds: str  # both, windows, or linux for those that the system has on Windows
    result: str
    name: str
    parameters: tuple[Parameter, ...]


@dataclass(frozen=True)
class Field:
    type: str
    name: str
    count: int  # of an array; else 0


@dataclass(frozen=True)
class Structure:
    name: str
    fields: tuple[Field, ...]


@dataclass(frozen=True)
class Contract:
    functions: tuple[Function, ...]
    structures: tuple[Structure, ...]
    enumerations: dict[str, dict[str, int]]
    constants: dict[str, int]
    version: str


# Structures of Windows that the interface uses, for languages that do not know them.
WINDOWS_STRUCTURES = (
    Structure("POINT", (Field("LONG", "x", 0), Field("LONG", "y", 0))),
    Structure("RECT", tuple(Field("LONG", side, 0) for side in ("left", "top", "right", "bottom"))),
    Structure("RGBQUAD", tuple(Field("BYTE", "rgb" + part, 0) for part in ("Blue", "Green", "Red", "Reserved"))),
    Structure(
        "BITMAPINFOHEADER",
        tuple(
            Field(type_, "bi" + name, 0)
            for type_, names in (
                ("DWORD", "Size"),
                ("LONG", "Width Height"),
                ("WORD", "Planes BitCount"),
                ("DWORD", "Compression SizeImage"),
                ("LONG", "XPelsPerMeter YPelsPerMeter"),
                ("DWORD", "ClrUsed ClrImportant"),
            )
            for name in names.split()
        ),
    ),
)


def pointee(type_):
    """The type that a pointer points to, without const; None for other types."""
    return type_[:-1].removeprefix("const ") if type_.endswith("*") else None


def _parameters(text):
    if text == "void":
        return ()
    return tuple(Parameter(*re.fullmatch(r"(.+?)\s*(\w+)", part.strip()).groups()) for part in text.split(","))


def _functions(table):
    for line in table.splitlines():
        if not line.startswith("#"):
            _, builds, result, name, parameters = (cell.strip() for cell in line.split("|"))
            yield Function(builds, result, name, _parameters(parameters))


def _fields(body):
    for declaration in filter(None, (part.strip() for part in body.split(";"))):
        type_, names = declaration.split(maxsplit=1)
        for name in names.split(","):
            bare, count = re.fullmatch(r"(\w+)(?:\[(\d+)\])?", name.strip()).groups()
            yield Field(type_, bare, int(count or 0))


def read():
    table = (ROOT / "src/exports/exports.txt").read_text()
    header = re.sub(r"/\*.*?\*/", "", (ROOT / "include/vorel32.h").read_text(), flags=re.S)
    structures = re.findall(r"typedef struct (Img\w+) \{(.*?)\} \1;", header, re.S)
    enumerations = re.findall(r"typedef enum (Img\w+) \{(.*?)\} \1;", header, re.S)
    constants = re.findall(r"#define (IMG_\w+) (\w+)", header)
    return Contract(
        functions=tuple(_functions(table)),
        structures=tuple(Structure(name, tuple(_fields(body))) for name, body in structures),
        enumerations={
            name: {key: int(value) for key, value in re.findall(r"(\w+) = (\d+)", body)} for name, body in enumerations
        },
        constants={name: int(value.rstrip("u"), 0) for name, value in constants},
        version=re.search(r"project\(vorel32 VERSION (\d+\.\d+)", (ROOT / "CMakeLists.txt").read_text()).group(1),
    )
