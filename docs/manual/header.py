"""The public header and the table of exports as data: for every function what its comment says, by field.

A comment of the header has a summary, lines "name  text" for parameters, and prose. Prose from "Returns" on is the result; from
"NULL:", "0:", "FALSE:", "Errors:" and the like on it is errors; "Owner:" begins what differs from the general rule of ownership.
Declarations that follow each other without an empty line share a comment. A comment that begins with two blanks is common to the
functions behind it, up to the next such comment, section or condition, and supplies the fields that they do not state. The
paragraph ARGUMENTS of the header's first comment explains parameters that mean the same everywhere.
"""

import re
from dataclasses import dataclass, field

HEADING = re.compile(r"/\* ---- (.*?) -{4,} \*/")
RESULT = re.compile(r"(?:^|(?<=[.:] ))Returns? ")
ERRORS = re.compile(r"(?:^|(?<=[.;:] )|(?<=, ))(?:(?:NULL|FALSE|0|-1|Zero results)(?:, (?:no code|code in both|(?:code|number) in `\w+`))?:|Errors: )")
OWNER = re.compile(r"(?:^|(?<=[.:] ))Owner: ")


@dataclass
class Comment:
    parameters: dict = field(default_factory=dict)  # name: text
    parts: list = field(default_factory=list)  # of the prose: texts, and lists of (term, text)
    result: str = ""
    errors: str = ""
    owner: str = ""


@dataclass
class Function:
    ordinal: str
    builds: str
    result: str
    name: str
    parameters: list  # of (type, name)
    family: str = ""
    place: int = 0  # among the functions of the header
    comment: Comment = None
    common: Comment = None
    siblings: list = field(default_factory=list)  # that share the comment

    @property
    def signature(self):
        return f"{self.result} {self.name}({', '.join(f'{kind} {name}' for kind, name in self.parameters) or 'void'})"

    def stated(self, what):
        return getattr(self.comment, what) or (getattr(self.common, what) if self.common else "")


@dataclass
class Definition:
    """A structure, an enumeration, a type of function, or constants."""

    names: list
    text: str
    code: str
    family: str


def lines_of(comment):
    body = re.sub(r"^/\*\*? ?|\s*\*/$", "", comment)
    return [re.sub(r"^ \*(?:  |$)", "", line) for line in body.strip("\n").split("\n")]


def split_at(pattern, text):
    found = pattern.search(text)
    return (text[: found.start()].strip(), text[found.start() :].strip()) if found else (text.strip(), "")


def prose_and_parameters(lines, names):
    """The lines of a comment in pieces: ("parameter", names, text), ("item", term, text) and ("prose", "", text)."""
    pieces = []
    for line in lines:
        parameter = re.match(r"(\w+(?:, \w+)*)  +(\S.*)", line)
        item = re.match(r" {2,4}(\S.*?)  +(\S.*)", line)
        kind = pieces[-1][0] if pieces else ""
        if parameter and set(parameter[1].split(", ")) <= names:
            pieces.append(["parameter", parameter[1], parameter[2]])
        elif item and kind != "parameter":
            pieces.append(["item", item[1], item[2]])
        elif line.strip() and (kind == "prose" or line.startswith("  ") and kind):
            pieces[-1][2] += " " + line.strip()
        elif line.strip():
            pieces.append(["prose", "", line.strip()])
    return pieces


def parsed(comment, names):
    """A comment by field; `names` are the parameters that it may explain."""
    result = Comment()
    for kind, term, text in prose_and_parameters(lines_of(comment), names):
        if kind == "parameter":
            result.parameters[term] = text
        elif kind == "item":
            if not (result.parts and isinstance(result.parts[-1], list)):
                result.parts.append([])
            result.parts[-1].append((term, text))
        else:
            text, owner = split_at(OWNER, text)
            text, errors = split_at(ERRORS, text)
            text, returned = split_at(RESULT, text)
            result.owner += owner.removeprefix("Owner: ")
            result.errors += errors.removeprefix("Errors: ")
            result.result += returned
            if text:
                result.parts.append(text)
    return result


def table_of_exports(text):
    for line in text.splitlines():
        if not line.startswith("#"):
            ordinal, builds, result, name, parameters = (cell.strip() for cell in line.split("|"))
            pairs = [] if parameters == "void" else [re.fullmatch(r"(.+?)\s*(\w+)", p.strip()).groups() for p in parameters.split(",")]
            yield Function(ordinal, builds, result, name, pairs)


TOKENS = re.compile(
    r"/\*.*?\*/"
    r"|typedef (?:struct|enum)[^{;]*\{.*?\}[^;]*;|typedef [^;]*;"
    r"|(?:#define IMG_[^\n]*\n)+|(?:#define [A-Z]\w+ [^\n]*\n)+"
    r"|VOREL_API [^;]*;|#[^\n]*|\n[ \t]*\n",
    re.S,
)


def read(header, exports):
    """The functions by name, the definitions, and the header's first comment."""
    functions = {function.name: function for function in table_of_exports(exports)}
    explained = {name for function in functions.values() for _, name in function.parameters}
    definitions, family, comment, common, first, shared = [], "", None, None, None, []
    for token in TOKENS.findall(header):
        heading = HEADING.match(token)
        if first is None:
            first = token
        elif heading:
            family, common, comment = heading[1].removesuffix(" (Windows only)"), None, None
        elif token.startswith("/**<"):  # behind a type
            definitions[-1].text = token.replace("/**<", "/**", 1)
        elif token.startswith("/**"):
            comment, shared = token, []
        elif token.startswith("/*  "):
            common = token
        elif token.startswith("VOREL_API"):
            name = re.search(r"(\w+)\(", token)[1]
            function = functions[name]
            function.family, function.place = family, sum(1 for other in functions.values() if other.comment)
            function.comment = parsed(comment, explained)
            function.common = parsed(common, explained) if common else None
            shared.append(name)
            function.siblings = shared
        elif token.startswith(("typedef", "#define IMG_", "#define GMEM", "#define BI_")):
            names = re.findall(r"#define (\w+)|\* (\w+)\)\(", token) or [(re.search(r"(\w+);$", token.strip())[1], "")]
            definitions.append(Definition([a or b for a, b in names], comment or "", token.strip(), family))
            comment = None
        elif token.startswith("#"):
            common = None
        elif not token.strip():
            comment = None
    return functions, definitions, first


def paragraph_lines(preamble, title):
    found = re.search(rf"^{title}\b.*?(?=\n\n|\Z)", "\n".join(lines_of(preamble)), re.S | re.M)
    return found[0].split("\n") if found else []


def paragraphs(preamble, title):
    """What the header's first comment says under a title in capitals; items of numbered lists are paragraphs of their own."""
    texts = []
    for line in paragraph_lines(preamble, title):
        if re.match(r"  \w+(?:, \w+)*  +\S", line):
            continue
        begins = not texts or re.match(r"  \d\. ", line) or re.match(r"\d\. ", texts[-1]) and not line.startswith("  ")
        texts = [*texts, line.strip()] if begins else [*texts[:-1], f"{texts[-1]} {line.strip()}"]
    first = texts[0].removeprefix(f"{title}. ") if texts else ""
    return [title.capitalize() + first.removeprefix(title) if first.startswith(title) else first, *texts[1:]]


def arguments(preamble):
    """What the paragraph ARGUMENTS says of each name."""
    lines = [line.removeprefix("  ") for line in paragraph_lines(preamble, "ARGUMENTS")[1:]]
    pieces = prose_and_parameters(lines, set(re.findall(r"\w+", " ".join(lines))))
    return {names: text for kind, names, text in pieces if kind == "parameter"}
