#!/usr/bin/python3
"""Changes single tokens of the library's code and runs the tests of the changed file: a test must fail.

usage: mutate.py BUILD [--count N] [--seed N] [--sources] [--list FILE] [--again FILE]

BUILD is a finished build of this folder's sources, whose tests have passed. Each change is made in the source itself and taken back, so run it in a copy
(coverage.sh does). A change that does not compile is replaced by another one. A change is killed if a test fails, crashes or does not
end. The changes in equal_changes.txt are left out: nobody can notice them. A line is a survivor's without its line number, and the reason
behind " # ". Where a line of code allows a change in several places, " (2)" names the second one.
"""
import argparse
import collections
import hashlib
import json
import os
import pathlib
import re
import signal
import subprocess
import sys
from typing import NamedTuple

# The tests that cover a folder, and tests that cover every folder.
TESTS = {
    "apps/common": "page_test cli_test",
    "src/bilevel": "bilevel_test kernels_test",
    "src/kernels/bilevel": "kernels_test bilevel_test",
    "src/kernels/filter": "tone_test kernels_test",
    "src/kernels/rle": "formats_test",
    "src/kernels/scale": "kernels_test geometry_test",
    "src/kernels/tone": "tone_test kernels_test",
    "src/kernels/turn": "geometry_test kernels_test",
    "src/core": "dib_test formats_test kernels_test tone_test page_test image_file_test codec_test",
    "src/dib": "dib_test geometry_test",
    "src/display": "display_test",
    "src/exports": "geometry_test tone_test bilevel_test formats_test dib_test exports_test frame_test display_test image_file_test",
    "src/formats": "formats_test image_file_test module_lookup_test",
    "src/frame": "frame_test module_lookup_test",
    "src/geometry": "geometry_test",
    "src/metafile": "metafile_test",
    "src/platform/posix": "platform_test image_file_test frame_test module_lookup_test",
    "src/print": "print_test",
    "src/tone": "tone_test",
    "codecs": "codec_test foreign_files_test group4_test codec_allocation_test",
}
TESTS_OF_ALL = "checks_rows checks_allocations checks_files checks_replaced digests_test"
# Built for a test of another name. Modules are loaded, not linked.
TARGETS = {"checks_rows": "checks", "checks_allocations": "checks", "checks_files": "checks", "checks_replaced": "checks",
           "foreign_files_test": "foreign_files_test codec_modules", "image_file_test": "image_file_test RECORDER",
           "module_lookup_test": "module_lookup_test RECORDER", "codec_test": "codec_test codec_modules"}
CHANGES = {
    "<": ["<="], "<=": ["<"], ">": [">="], ">=": [">"], "==": ["!="], "!=": ["=="], "&&": ["||"], "||": ["&&"],
    "+": ["-"], "-": ["+"], "*": ["+"], "/": ["*"], "%": ["/"], "+=": ["-="], "-=": ["+="], "<<": [">>"], ">>": ["<<"],
    "&": ["|"], "|": ["&"], "^": ["|"], "++": ["--"], "--": ["++"], "true": ["false"], "false": ["true"], "min": ["max"], "max": ["min"],
}
TOKEN = re.compile(r"\b(?:true|false|min|max)\b|(?<![\w.'])\d+(?![\w.'])|<<=|>>=|<=>|->|::|&&|\|\||[<>=!+\-]=|\+\+|--|<<|>>|[-+*/%<>&|^]")


def is_array_size(text, match):
    """The number in `Type name[2]`: nothing uses what a longer array has at its end. The size of a std::array is a part of its type."""
    line = text[text.rfind("\n", 0, match.start()) + 1:match.start()]
    return re.search(r"^\s*(?:(?:static|constexpr|const)\s+)*(?!return\b)\w[\w:]*(?:<[^<>]*>)?\s+(?:[^=()]*,\s*)?\w+\[$", line)


def candidates(path):
    """Places of tokens outside comments, literals, declarations of templates and preprocessor lines."""
    text = path.read_text()
    hidden = re.compile(r"//[^\n]*|/\*.*?\*/|\"(?:\\.|[^\"\\\n])*\"|(?<![\da-fA-F])'(?:\\.|[^'\\\n])*'|^[ \t]*#[^\n]*|\btemplate <[^\n]*|static_assert[^\n]*",
                        re.S | re.M)
    plain = hidden.sub(lambda match: re.sub(r"[^\n]", " ", match.group()), text)
    for match in TOKEN.finditer(plain):
        token = match.group()
        spaced = plain[match.start() - 1:match.start()] == " " and plain[match.end():match.end() + 1] == " "
        if token in "<>&|*-+/%^" and not spaced:  # templates, references, pointers, signs
            continue
        if is_array_size(plain, match):
            continue
        if token.isdigit():
            yield match.start(), token, str(int(token) + 1)
        for other in CHANGES.get(token, []):
            yield match.start(), token, other


class Change(NamedTuple):
    path: pathlib.Path
    start: int
    token: str
    other: str
    line: int
    name: str  # without the number of the line, which other changes move
    key: str  # for a place in the order

    def listed(self):
        return self.name.replace(":", f":{self.line}:", 1)


def changes_of(path):
    text = path.read_text()
    lines = text.splitlines()
    seen = collections.Counter()
    for start, token, other in candidates(path):
        line, column = text.count("\n", 0, start) + 1, start - text.rfind("\n", 0, start) - 1
        code = lines[line - 1]
        seen[line, token, other] += 1
        place = f" ({seen[line, token, other]})" if seen[line, token, other] > 1 else ""
        yield Change(path, start, token, other, line, f"{path}: {token} becomes {other}{place}: {code.strip()}",
                     f"{path} {code} {column} {token} {other}")


def sampled(files, seed):
    """All changes in a random order. It depends on the changed lines, so editing others keeps the sample."""
    changes = (change for path in files for change in changes_of(path))
    return sorted(changes, key=lambda change: hashlib.sha256(f"{seed} {change.key}".encode()).digest())


def tests_of(path):
    folder = path.parent
    while str(folder) not in TESTS:
        if folder == folder.parent:
            return None
        folder = folder.parent
    return f"{TESTS[str(folder)]} {TESTS_OF_ALL}".split()


def headers_of(build, here):
    """The headers that were read, without those of the core: a change of one would build everything again."""
    lines = subprocess.run(["ninja", "-C", build, "-t", "deps"], stdout=subprocess.PIPE, check=True, text=True).stdout.splitlines()
    read = {pathlib.Path(build, line.strip()).resolve() for line in lines if line.startswith(" ") and line.endswith(".h")}
    own = {path.relative_to(here) for path in read if path.is_relative_to(here)}
    return {path for path in own if path.parent != pathlib.Path("src/core")}


def run(command, seconds):
    try:
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=seconds,
                              env=os.environ | {"GTEST_FAIL_FAST": "1"})
        return done.returncode, done.stdout.decode(errors="replace")
    except subprocess.TimeoutExpired:
        return -1, "no end"


def seconds_of_tests(build):
    """How long each test took that passed when it last ran: names and times, a line of dashes, tests that failed."""
    times, _, failed = pathlib.Path(build, "Testing/Temporary/CTestCostData.txt").read_text().partition("---\n")
    entries = (line.split() for line in times.splitlines())
    return {name: float(seconds) for name, runs, seconds in entries if int(runs) > 0 and name not in failed.splitlines()}


def fails(build, test, usual_seconds):
    """A test that takes far longer than usual does not end."""
    limit = int(60 + 5 * usual_seconds)
    return run(["ctest", "--test-dir", build, "-R", f"^{test}$", "--no-tests=error", "--timeout", str(limit)], limit + 60)[0] != 0


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build")
    parser.add_argument("--count", type=int, default=300)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--sources", action="store_true", help="change no headers, so that little is built")
    parser.add_argument("--list", default="/dev/null", help="receives the survivors")
    parser.add_argument("--again", help="a list of survivors: make these changes alone")
    options = parser.parse_args()
    here = pathlib.Path.cwd()
    compiled = {pathlib.Path(unit["file"]) for unit in json.loads(pathlib.Path(options.build, "compile_commands.json").read_text())}
    sources = {p.relative_to(here) for p in compiled if p.is_relative_to(here)}
    headers = set() if options.sources else headers_of(options.build, here)
    files = sorted(p for p in sources | headers if tests_of(p))
    changes = sampled(files, options.seed)
    again = options.again and {re.sub(r":\d+:", ":", name, 1) for name in pathlib.Path(options.again).read_text().splitlines()}
    equal = {line.partition(" # ")[0].strip() for line in pathlib.Path(__file__).with_name("equal_changes.txt").read_text().splitlines()}
    places = collections.Counter(change.name for change in changes)
    if unclear := {name for name in equal if places[name] != 1 and pathlib.Path(name.partition(":")[0]) in files}:
        print("lines of equal_changes.txt that name no change or several:", *sorted(unclear), sep="\n")
        return 1
    usual = seconds_of_tests(options.build)
    if unfit := {test for path in files for test in tests_of(path)} - usual.keys():
        print("not passed before any change:", *sorted(unfit))
        return 1
    killed, survivors, broken, left_out = 0, [], 0, 0
    for number in (signal.SIGHUP, signal.SIGTERM):
        signal.signal(number, lambda *_: sys.exit(1))  # takes the change back first
    for change in changes:
        if killed + len(survivors) == options.count:
            break
        if again and change.name not in again:
            continue
        if change.name in equal:
            left_out += 1
            continue
        path = change.path
        original = path.read_text()
        try:
            path.write_text(original[:change.start] + change.other + original[change.start + len(change.token):])
            tests = sorted(tests_of(path), key=usual.get)
            targets = " ".join(TARGETS.get(test, test) for test in tests).split()
            code, output = run(["cmake", "--build", options.build, "--target", *targets], 900)
            if code != 0:
                broken += 1
                continue
            is_killed = any(fails(options.build, test, usual[test]) for test in tests)
        finally:
            path.write_text(original)
        if is_killed:
            killed += 1
        else:
            survivors.append(change.listed())
        print("killed  " if is_killed else "survives", change.listed(), flush=True)
    pathlib.Path(options.list).write_text("".join(f"{name}\n" for name in survivors))
    print(f"killed={killed} survived={len(survivors)} not_compiled={broken} equal={left_out} candidates={len(changes)}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
