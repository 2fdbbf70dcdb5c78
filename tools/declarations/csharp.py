"""C#: a static class of DllImport declarations."""

from contract import WINDOWS_STRUCTURES, pointee

FILE = "Vorel32.cs"
_HANDLES = "HGLOBAL HBITMAP HPALETTE HWND HDC HANDLE".split()
_VALUES = {
    "void": "void", "int": "int", "unsigned": "uint", "UINT": "uint", "short": "short", "WORD": "ushort", "BYTE": "byte",
    "LONG": "int", "DWORD": "uint", "HFILE": "int", "BOOL": "bool", "size_t": "UIntPtr", "WPARAM": "UIntPtr", "LPARAM": "IntPtr",
    "LRESULT": "IntPtr", "INT_PTR": "IntPtr", "void*": "IntPtr",
    **dict.fromkeys(_HANDLES, "IntPtr"),
}  # fmt: skip
_KEYWORDS = {"base", "operator", "in", "out", "ref", "params", "event", "object", "string", "lock"}
_ARRAYS = {"int", "short", "RGBQUAD"}  # pointers to these may be arrays


def _name(name):
    return "@" + name if name in _KEYWORDS else name


def _typed(parameter):
    """With strings, references and arrays."""
    type_, name = parameter.type, _name(parameter.name)
    if type_ == "LPCSTR":
        return f"string {name}"
    if type_ == "char*":
        return f"StringBuilder {name}"
    target = pointee(type_)
    if target is None:
        return f"{_VALUES[type_]} {name}"
    if target == "void":
        return f"IntPtr {name}"
    if target in _ARRAYS and parameter.name not in ("error", "status"):
        direction = "[In]" if type_.startswith("const") else "[In, Out]"
        return f"{direction} {_VALUES.get(target, target)}[] {name}"
    return f"ref {_VALUES.get(target, target)} {name}"


def _by_address(parameter):
    """With addresses in place of references, which can be null."""
    typed = _typed(parameter)
    return f"IntPtr {_name(parameter.name)}" if typed.startswith("ref ") else typed


def _declaration(function, parameters):
    # A string that the caller provides comes back as an address.
    result = "IntPtr" if function.result == "char*" else _VALUES[function.result]
    file = '"kernel32.dll"' if function.builds == "linux" else "File"
    return (
        f"    [DllImport({file}, CharSet = CharSet.Ansi, ExactSpelling = true)]\n"
        f"    public static extern {result} {function.name}({', '.join(parameters)});\n"
    )


def _structure(structure):
    lines = []
    for field in structure.fields:
        if field.count:
            lines.append(f"    [MarshalAs(UnmanagedType.ByValArray, SizeConst = {field.count})]")
        lines.append(f"    public {_VALUES.get(field.type, field.type)}{'[]' * bool(field.count)} {field.name};")
    body = "\n".join(lines)
    return f"[StructLayout(LayoutKind.Sequential)]\npublic struct {structure.name}\n{{\n{body}\n}}\n"


def text(contract):
    parts = [
        f"// Vorel32 {contract.version} for C#. The C header vorel32.h says what each function does. Made from the table of exports.\n"
        "//\n"
        "// Define VOREL64 in programs for 64-bit Windows; the others use the 32-bit library. Functions with references have a second\n"
        "// form with addresses, for null (IntPtr.Zero). Arrays may be null as they are.\n"
        "using System;\nusing System.Runtime.InteropServices;\nusing System.Text;\n\nnamespace Vorel32\n{\n"
    ]
    for name, values in contract.enumerations.items():
        body = ",\n".join(f"    {key} = {value}" for key, value in values.items())
        parts.append(f"public enum {name}\n{{\n{body}\n}}\n")
    parts += [_structure(structure) for structure in WINDOWS_STRUCTURES + contract.structures]
    parts.append(
        "public static class Vorel\n{\n#if VOREL64\n"
        '    public const string File = "VOREL64.DLL";\n#else\n    public const string File = "VOREL32.DLL";\n#endif\n'
    )
    parts += [f"    public const uint {name} = {value};" for name, value in contract.constants.items()]
    for function in contract.functions:
        typed = [_typed(parameter) for parameter in function.parameters]
        by_address = [_by_address(parameter) for parameter in function.parameters]
        parts.append(_declaration(function, typed))
        if by_address != typed:
            parts.append(_declaration(function, by_address))
    parts.append("}\n}")
    return "\n".join(parts) + "\n"
