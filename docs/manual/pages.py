"""Writes the reference of the manual, as reStructuredText: a page per function and per family, indexes, error codes, structures."""

import re
import sys
import textwrap
from pathlib import Path

import header

BUILDS = {"both": "32-bit and 64-bit Windows, Linux", "windows": "32-bit and 64-bit Windows", "linux": "Linux (Windows has its own)"}
WINDOWS_TYPES = "HBITMAP HPALETTE HWND HDC HANDLE HMETAFILE HENHMETAFILE WPARAM LPARAM LRESULT INT_PTR POINT RECT BYTE".split()
SCALARS = {"HBITMAP": "DeleteObject", "HPALETTE": "DeleteObject", "HGLOBAL": "GlobalFree"}

LANGUAGES = [("Vorel32.cs", "C#", "csharp"), ("Vorel32.pas", "Delphi", "delphi"), ("vorel32_ctypes.py", "Python (ctypes)", "python"),
             ("vorel32.bas", "Visual Basic 6", "vbnet")]
TITLES = {"The platform's types and memory, where the platform is not Windows": "Memory on Linux"}


def slug(title):
    return re.sub(r"[^a-z0-9]+", "-", title.lower()).strip("-")


def headed(title, mark):
    return f"{title}\n{mark * len(title)}\n"


def indented(text, by=3):
    return textwrap.indent(text, " " * by)


class Reference:
    def __init__(self, root, folder, examples, pictures, declarations):
        text = (root / "include/vorel32.h").read_text()
        self.functions, self.definitions, self.preamble = header.read(text, (root / "src/exports/exports.txt").read_text())
        self.folder, self.examples, self.pictures = folder, examples, pictures
        self.declarations = [((declarations / file).read_text(), language, lexer) for file, language, lexer in LANGUAGES]
        self.arguments = header.arguments(self.preamble)
        self.families = {}
        for function in sorted(self.functions.values(), key=lambda function: (function.builds == "linux", function.place)):
            function.family = TITLES.get(function.family, function.family)
            self.families.setdefault(function.family, []).append(function)
        self.codes = [found for d in self.definitions if d.names == ["ImgErrorCode"]
                      for found in re.findall(r'(\w+) = (\d+),? +/\*\*< "(.*?)" \*/', d.code)]
        self.kinds = {name: "c:func" for name in self.functions}
        self.kinds.update({name: "c:macro" for name, _, _ in self.codes})
        for definition in self.definitions:
            kind = "c:macro" if definition.code.startswith("#") else "c:type"
            self.kinds.update({name: kind for name in definition.names})
            self.kinds.update({name: "c:macro" for name in re.findall(r"\b(IMG_\w+) = ", definition.code)})
        self.missing = []

    # ---- Text of comments ----

    def inline(self, text, here=""):
        """A comment's text with its names as links, except to the page that it is on."""
        pieces = []
        for code, word, rest in re.findall(r"(`[^`]*`)|(\b[A-Za-z_]\w*\b(?:\.\.\.)?)|(\W|\d+)", text):
            if code:
                pieces.append(f"`{code}`")
            elif word in self.kinds and word != here:
                pieces.append(f"\\ :{self.kinds[word]}:`{word}`\\ ")
            elif "_" in word or word in here.split():
                pieces.append(f"\\ ``{word}``\\ ")
            else:
                pieces.append(re.sub(r"([\\*`|<>])", r"\\\1", word or rest))
        text = "".join(pieces).replace("docs/behaviour.md", "\\ :doc:`/docs/behaviour`\\ ")
        return re.sub(r"\\ ((?:\s|$))|(^|\s)\\ ", r"\1\2", text)

    def parts(self, comment, here=""):
        for part in comment.parts:
            if isinstance(part, list):
                yield "\n".join(f"{self.inline(term, here)}\n{indented(self.inline(text, here))}" for term, text in part) + "\n"
            else:
                yield self.inline(part, here) + "\n"

    # ---- Functions ----

    def parameters(self, function):
        known = {}
        for source in (self.arguments, function.common.parameters if function.common else {}, function.comment.parameters):
            for names, text in source.items():
                known.update({name: text for name in names.split(", ")})
        for kind, name in function.parameters:
            if name not in known:
                self.missing.append(f"{function.name}: no text for {name}")
            yield f"``{name}`` : ``{kind}``\n{indented(self.inline(known.get(name, ''), function.name))}\n"

    def ownership(self, function):
        stated = function.stated("owner")
        if stated:
            yield self.inline(stated, function.name)
        if function.result in SCALARS and function.builds != "linux" and not re.search(r"\b(result|returned)\b", stated):
            yield f"The caller owns the result and frees it with ``{SCALARS[function.result]}``."
        if not stated:
            yield ("The arguments stay the caller's." if any(
                "*" in kind or kind[0] == "H" or kind == "LPCSTR" for kind, _ in function.parameters) else "Nothing changes hands.")

    def field(self, function, what):
        text = function.stated(what)
        if not text and what == "result" and function.result == "void":
            text = "None."
        if not text:
            self.missing.append(f"{function.name}: no {what}")
        return self.inline(re.sub("^Return ", "Returns ", text[:1].upper() + text[1:]), function.name)

    def summary(self, function):
        first = next((part for part in function.comment.parts if isinstance(part, str)), None) or function.comment.result
        return self.inline(re.split(r"(?<=[.:]) ", first)[0].removesuffix(":").removesuffix(".") + ".", function.name)

    def example(self, function):
        source = self.examples.get(function.name)
        if source is None and function.builds == "linux":
            return ""
        if source is None:
            self.missing.append(f"{function.name}: no example")
            return ""
        mark = f"//! [{function.name}]"
        return headed("Example", "-") + f"""
.. literalinclude:: /{source}
   :language: c
   :start-after: {mark}
   :end-before: {mark}
   :dedent:

From :download:`{source.name} </{source}>`, which the tests compile and run.
"""

    def in_other_languages(self, function):
        if function.builds == "linux":
            return ""
        text = [headed("In other languages", "-")]
        for declarations, language, lexer in self.declarations:
            line = re.search(rf"^.*\b{function.name}\b(?: Lib |\(|;|:| = ).*$", declarations, re.M)
            if line is None:
                self.missing.append(f"{function.name}: not declared for {language}")
            else:
                text.append(f"{language}:\n\n.. code-block:: {lexer}\n\n{indented(line[0].strip())}\n")
        return "\n".join(text)

    def shown(self, function):
        pictures = self.pictures.get(function.name, [])
        return headed("Before and after", "-") + "\n.. container:: pictures\n\n" + "".join(
            f"   .. figure:: /pictures/{name}\n\n      {caption}\n\n" for name, caption in pictures) if pictures else ""

    def page_of(self, function):
        others = [f":c:func:`{other.name}`" for other in self.families[function.family] if other is not function]
        ordinal = f"Ordinal {function.ordinal}" if function.ordinal != "-" else "No ordinal"
        text = [headed(function.name, "="), ".. container:: facts\n",
                f"   {ordinal} · {BUILDS[function.builds]} · :doc:`{slug(function.family)}`\n",
                f".. c:function:: {function.signature}\n"]
        text += self.parts(function.comment, function.name)
        if not function.comment.parts:
            text.append(self.inline(function.comment.result, function.name) + "\n")
        if function.parameters:
            text += [headed("Parameters", "-"), *self.parameters(function)]
        for title, what in (("Result", "result"), ("Errors", "errors")):
            text += [headed(title, "-"), self.field(function, what) + "\n"]
        text += [headed("Ownership", "-"), " ".join(self.ownership(function)) + "\n"]
        if function.common and function.common.parts:
            text += [headed("In this family", "-"), *self.parts(function.common, function.name)]
        text += [self.example(function), self.shown(function), self.in_other_languages(function)]
        text += [headed("See also", "-"), ", ".join(others) + "\n"]
        return "\n".join(text)

    # ---- Overviews ----

    def row(self, function):
        build = {"both": "Windows, Linux", "windows": "Windows", "linux": "Linux"}[function.builds]
        return f"   * - :c:func:`{function.name}`\n     - {function.ordinal.replace('-', '–')}\n     - {build}\n     - {self.summary(function)}\n"

    def table(self, functions):
        head = ".. list-table::\n   :header-rows: 1\n   :widths: auto\n   :class: functions\n\n   * - Function\n     - No.\n     - Builds\n     - Purpose\n"
        return head + "".join(map(self.row, functions))

    def family_page(self, family, functions):
        commons = []
        for function in functions:
            if function.common and function.common not in [c for _, c in commons] and function.common.parts:
                if not any(function.common.parts == c.parts for _, c in commons):
                    commons.append((function, function.common))
        text = [headed(family, "="), self.table(functions)]
        for _, common in commons:
            text += self.parts(common)
        tree = "\n".join(f"   {function.name}" for function in functions)
        return "\n".join(text) + f"\n.. toctree::\n   :hidden:\n\n{tree}\n"

    def defined(self, definition):
        kind = "c:macro" if definition.code.startswith("#") else "c:type"
        comment = header.parsed(definition.text, set()) if definition.text else None
        names = f"\n.. {kind}:: " + f"\n{' ' * (len(kind) + 6)}".join(definition.names) + "\n"
        values = re.findall(r"\b(IMG_\w+) = ", definition.code) if definition.names != ["ImgErrorCode"] else []
        if values:
            names += "".join(f"\n.. c:macro:: {value}\n   :noindexentry:\n" for value in values)
        body = "".join(part + "\n" for part in self.parts(comment)) if comment else ""
        if comment and comment.result:
            body += self.inline(comment.result) + "\n"
        code = re.sub(r"\bVORELCALL ?", "", definition.code).replace("/**<", "/*")
        return f"{names}\n{body}\n.. code-block:: c\n\n{indented(code)}\n"

    def structures(self):
        text = [headed("Types, structures and constants", "=")]
        family = None
        for definition in self.definitions:
            if definition.names == ["ImgErrorCode"]:
                continue
            if definition.family != family:
                family = definition.family
                text.append(headed(family, "-"))
            text.append(self.defined(definition))
        text += [headed("Types of Windows", "-"), "The Windows headers declare these.\n", "\n".join(f".. c:type:: {name}" for name in WINDOWS_TYPES)]
        return "\n".join(text) + "\n"

    def errors(self):
        text = [headed("Error codes", "="), *(self.inline(p) + "\n" for p in header.paragraphs(self.preamble, "ERRORS")),
                "The spelling of the messages is kept, because programs compare them.\n", ".. c:type:: ImgErrorCode\n   :noindexentry:\n"]
        for name, number, message in self.codes:
            users = [f":c:func:`{f.name}`" for f in self.functions.values() if re.search(rf"\b{name}\b", f.stated("errors"))]
            text.append(f".. c:macro:: {name}\n\n   **{number}** · “{message}”\n")
            text.append(indented("Stored by " + ", ".join(users) + ".") + "\n" if users else "")
        return "\n".join(text)

    def conventions(self):
        titles = {"THE PACKED DIB": "The packed DIB", "OWNERSHIP": "Ownership", "ERRORS": "Errors", "DAMAGED INPUT": "Damaged input",
                  "THREADS": "Threads", "PATHS": "Paths", "ARGUMENTS": "Arguments"}
        text = [headed("Conventions", "=")]
        for key, title in titles.items():
            text += [headed(title, "-"), *(self.inline(paragraph) + "\n" for paragraph in header.paragraphs(self.preamble, key))]
            if key == "ARGUMENTS":
                text += [f"``{name}``\n{indented(self.inline(meaning))}\n" for name, meaning in self.arguments.items()]
        return "\n".join(text)

    def write(self):
        pages = {function.name: self.page_of(function) for function in self.functions.values()}
        pages.update({slug(family): self.family_page(family, functions) for family, functions in self.families.items()})
        pages["alphabetical"] = headed("All functions by name", "=") + "\n" + self.table(
            sorted(self.functions.values(), key=lambda function: function.name.lower()))
        pages.update({"structures": self.structures(), "errors": self.errors(), "conventions": self.conventions()})
        families = "".join(f"{headed(f':doc:`{family} <{slug(family)}>`', '-')}\n{self.table(functions)}\n" for family, functions in self.families.items())
        tree = "\n".join(f"   {name}" for name in ["conventions", *map(slug, self.families), "alphabetical", "errors", "structures"])
        pages["index"] = f"{headed('Functions', '=')}\n.. toctree::\n   :hidden:\n\n{tree}\n\n{families}"
        self.folder.mkdir(parents=True, exist_ok=True)
        for name, text in pages.items():
            (self.folder / f"{name}.rst").write_text(text)


def examples(root):
    """The example program of each function, by the marks in it."""
    found = {}
    for path in sorted((root / "docs/examples").glob("*.c")):
        for name in re.findall(r"//! \[(\w+)\]", path.read_text()):
            found[name] = path.relative_to(root)
    return found


def main(root, declarations, folder):
    """Writes the reference into a folder, without pictures, and says what it lacks."""
    root = Path(root)
    reference = Reference(root, Path(folder), examples(root), {}, Path(declarations))
    reference.write()
    print(*reference.missing, f"{len(reference.functions)} functions", sep="\n")
    return 1 if reference.missing else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
