#!/usr/bin/env python3
"""Declarations for other languages: every export with its stack bytes, structures laid out as in C, and the sample program of each
language, compiled where its compiler is installed, writing the same file.

usage: declarations_test.py SOURCE_FOLDER BUILD_FOLDER C_COMPILER
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

source, build, c_compiler = Path(sys.argv[1]), Path(sys.argv[2]), sys.argv[3]
made = build / "declarations"
work = Path(tempfile.mkdtemp())
failures = []


def expect(what, condition, details=""):
    print(f"{'ok' if condition else 'FAILED'}: {what}{'' if condition else f': {details}'}")
    if not condition:
        failures.append(what)


def run(*command, **options):
    result = subprocess.run([str(word) for word in command], capture_output=True, text=True, cwd=work, **options)
    if result.returncode != 0:
        expect(" ".join(map(str, command[:2])), False, result.stdout + result.stderr)
    return result.stdout


# ---- names and stack bytes

# Bytes of a value on the stack of a 32-bit program; whatever else a parameter is, it is an address.
SIZES = {
    "vorel32.bas": {"Long": 4, "Integer": 2, "String": 4},
    "Vorel32.pas": {"Integer": 4, "LongWord": 4, "LongBool": 4, "SmallInt": 2, "Word": 2, "TVorelWord": 4, "TVorelInt": 4, "TVorelHandle": 4},
    "Vorel32.cs": {"int": 4, "uint": 4, "bool": 4, "short": 2, "ushort": 2, "IntPtr": 4, "UIntPtr": 4},
    "vorel32_ctypes.py": {"c_int": 4, "c_uint": 4, "c_short": 2, "c_uint16": 2, "c_size_t": 4, "c_ssize_t": 4},
}  # fmt: skip
# The text of a declaration: its name and its parameters.
FORMS = {
    "vorel32.bas": r'^Public Declare (?:Sub|Function) (?P<name>\w+) Lib "\S+" Alias "(?P=name)" \((?P<list>.*)\)(?: As Long)?\r?$',
    "Vorel32.pas": r"^(?:procedure|function) (?P<name>\w+)(?:\((?P<list>.*)\))?(?:: \w+)?; stdcall; external \w+;$",
    "Vorel32.cs": r"^    public static extern \w+ (?P<name>\w+)\((?P<list>.*)\);$",
    "vorel32_ctypes.py": r'^ *(?P<name>\w+) = _function\(\w+, "(?P=name)", (?P<list>.*)\)$',
}
PARAMETERS = {
    "vorel32.bas": r"(?:ByRef \w+ As \w+|ByVal \w+ As (?P<value>\w+))",
    "Vorel32.pas": r"\w+: (?:P\w+|(?P<value>\w+))",
    "Vorel32.cs": r"(?:(?:ref|string|StringBuilder|\[In(?:, Out)?\] \w+\[\]) ?\w+(?: @?\w+)?|(?P<value>\w+) @?\w+)",
    "vorel32_ctypes.py": r"(?:POINTER\(\w+\)|c_char_p|c_void_p|(?P<value>\w+))",
}


def declared(file):
    """For each declaration its name and the bytes of its parameters."""
    for match in re.finditer(FORMS[file], (made / file).read_text(), re.M):
        separator = "; " if file.endswith(".pas") else r", (?!Out\])"
        parameters = [part for part in re.split(separator, match["list"] or "") if part]
        if file.endswith(".py"):
            del parameters[0]  # the result
        total = 0
        for parameter in parameters:
            form = re.fullmatch(PARAMETERS[file], parameter)
            expect(f"{file}: {parameter}", form is not None, "another form") if form is None else None
            value = form and form["value"]
            total += 4 if not value else (SIZES[file].get(value, 99) + 3) // 4 * 4
        yield match["name"], total


def from_table():
    for line in (source / "src/exports/exports.txt").read_text().splitlines():
        if not line.startswith("#"):
            name, parameters = (cell.strip() for cell in line.split("|")[3:])
            yield name, 0 if parameters == "void" else 4 * len(parameters.split(","))


for file in FORMS:
    wanted, found = sorted(from_table()), sorted(set(declared(file)))
    expect(f"{file}: names and stack bytes of {len(wanted)} functions", found == wanted, set(found) ^ set(wanted))


# ---- layouts

sys.path.insert(0, str(source / "tools/declarations"))
sys.dont_write_bytecode = True
import contract  # noqa: E402

structures = contract.read().structures


def expect_layout(language, lines):
    """Lines are "STRUCTURE.FIELD OFFSET" and "STRUCTURE SIZE", of a 64-bit program."""
    checks = []
    for name, number in (line.split() for line in lines.splitlines()):
        place = f"offsetof({name.replace('.', ', ')})" if "." in name else f"sizeof({name})"
        checks.append(f'_Static_assert({place} == {number}, "{name}");')
    (work / "layout.c").write_text("\n".join(["#include <vorel32.h>", "#include <stddef.h>", *checks]))
    least = sum(1 + len(structure.fields) for structure in structures)
    expect(f"{language}: {len(checks)} places in structures", len(checks) >= least, "too few")
    if shutil.which("x86_64-w64-mingw32-gcc-posix"):
        run("x86_64-w64-mingw32-gcc-posix", "-fsyntax-only", "-I", source / "include", "layout.c")


# ---- languages

PICTURE = work / "scan.png"


def expect_sample(language, *command, **options):
    target = work / f"{language}.bmp"
    run(*command, PICTURE, target, **options)
    expect(f"{language}: the sample", target.exists() and target.read_bytes() == (work / "c.bmp").read_bytes(), "another picture")
    refused = subprocess.run([str(word) for word in (*command, work / "missing", target)], capture_output=True, text=True, **options)
    told = refused.returncode == 1 and refused.stderr.strip().endswith("Invalid file format")
    expect(f"{language}: the sample without its file", told, refused.stderr)


def try_c():
    run(c_compiler, "-I", source / "include", source / "samples/turn.c", "-o", "turn", "-L", build / "bin", "-lvorel32")
    run("./turn", PICTURE, "c.bmp", env=environment)


def try_python():
    script = work / "layout.py"
    for name in ("vorel32_ctypes.py", "turn.py"):
        shutil.copy((made if name.startswith("vorel") else source / "samples") / name, work)
    script.write_text(
        "import vorel32_ctypes as vorel\n"
        "for kind in (each for each in vorel.Structure.__subclasses__() if hasattr(each, '_fields_')):\n"
        "    print(kind.__name__, vorel.ctypes.sizeof(kind))\n"
        "    for name, *_ in kind._fields_: print(f'{kind.__name__}.{name}', getattr(kind, name).offset)\n"
    )
    expect_layout("Python", run(sys.executable, "-B", script, env=environment))
    expect_sample("Python", sys.executable, "-B", work / "turn.py", env=environment)


def try_delphi():
    lines = []
    for structure in structures:
        lines.append(f"  WriteLn('{structure.name} ', SizeOf(T{structure.name}));")
        for field in structure.fields:
            lines.append(f"  WriteLn('{structure.name}.{field.name} ', PtrUInt(@P{structure.name}(nil)^.{field.name}));")
    (work / "layout.dpr").write_text("program layout;\n{$MODE DELPHI}\nuses Vorel32;\nbegin\n" + "\n".join(lines) + "\nend.\n")
    options = ["-Mdelphi", "-vw", f"-Fu{made}", f"-FU{work}", f"-FE{work}"]
    run("fpc", *options, "-dVOREL_WINDOWS", "-Cn", made / "Vorel32.pas")
    # The linker looks for libraries by their plain names.
    for program in (work / "layout.dpr", source / "samples/turn.dpr"):
        run("fpc", *options, f"-Fl{build / 'bin'}", f"-o{work / program.stem}-pascal", program)
    expect_layout("Pascal", run("./layout-pascal", env=environment))
    expect_sample("Pascal", work / "turn-pascal", env=environment)


def try_csharp():
    (work / "Layout.cs").write_text(
        "using System; using System.Runtime.InteropServices;\n"
        "static class Layout { static void Main() {\n"
        "  foreach (var type in typeof(Vorel32.Vorel).Assembly.GetTypes()) if (type.IsValueType && !type.IsEnum) {\n"
        '    Console.WriteLine("{0} {1}", type.Name, Marshal.SizeOf(type));\n'
        '    foreach (var field in type.GetFields()) Console.WriteLine("{0}.{1} {2}", type.Name, field.Name, Marshal.OffsetOf(type, field.Name));\n'
        "} } }\n"
    )
    for name, program in (("layout", work / "Layout.cs"), ("turn", source / "samples/turn.cs")):
        run("mcs", "-warnaserror", f"-out:{name}.exe", program, made / "Vorel32.cs")
        maps = "".join(f'<dllmap dll="{dll}" target="{build}/bin/libvorel32.so.5"/>' for dll in ("VOREL32.DLL", "kernel32.dll"))
        (work / f"{name}.exe.config").write_text(f"<configuration>{maps}</configuration>")
    run("mcs", "-warnaserror", "-define:VOREL64", "-target:library", "-out:declarations.dll", made / "Vorel32.cs")
    if shutil.which("mono"):
        expect_layout("C#", run("mono", "layout.exe"))
        expect_sample("C#", "mono", work / "turn.exe")


environment = {**os.environ, "LD_LIBRARY_PATH": str(build / "bin")}
run(build / "bin/make_samples", work)
run(build / "bin/vorel", "convert", work / "chart-24bit.bmp", PICTURE)
try_c()
for compiler, attempt in ((sys.executable, try_python), ("fpc", try_delphi), ("mcs", try_csharp)):
    if shutil.which(compiler):
        attempt()
    else:
        print(f"skipped: {compiler} is not installed")
shutil.rmtree(work)
sys.exit(bool(failures))
