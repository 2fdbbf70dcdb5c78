"""Runs the commands of docs/howto. Each page has a folder of its own, with the pictures that pictures.sh makes.

In a page, blocks of `sh` are run in order. A block of `text` behind one is what it prints, on either stream; `...` stands for
anything, and an exit code other than 0 is the last line. A code block behind a line that ends with `NAME`: is saved under that name.
A block of `bash` needs something that is not here; the line in front of it must say so ("Not run by the tests"). A line that ends
with (needs `NAME`): names a program or a Python module without which the block behind it is left out.

usage: howtos.py SOURCE_FOLDER BUILD_FOLDER [--write] [PAGE...]    --write puts what the commands print into the pages
"""

import importlib.util
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

source, build = (pathlib.Path(word).resolve() for word in sys.argv[1:3])
write = "--write" in sys.argv
named = [word for word in sys.argv[3:] if word != "--write"]
pages = [page for page in sorted((source / "docs/howto").glob("*.md")) if not named or page.stem in named]
block = re.compile(r"(?P<lead>[^\n]*)\n+```(?P<kind>\w+)\n(?P<text>.*?)^```$", re.DOTALL | re.MULTILINE)


def shell(commands, folder):
    done = subprocess.run(["bash", "-eo", "pipefail", "-c", commands], cwd=folder, stdin=subprocess.DEVNULL, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=100)
    return done.stdout + (f"exit code {done.returncode}\n" if done.returncode else "")


def is_installed(name):
    return shutil.which(name) is not None or importlib.util.find_spec(name) is not None


def matches(printed, shown):
    return re.fullmatch(".*".join(map(re.escape, shown.split("..."))), printed, re.DOTALL) is not None


def run_page(page, folder):
    """Returns the page's failures and its text with what was printed."""
    text, failures, printed = page.read_text(), [], None
    if not re.match(r"# \S.*\n\n", text):
        failures.append("the page has no title")

    def run_block(found):
        nonlocal printed
        kind, content = found["kind"], found["text"]
        if kind == "text" and printed is not None:
            if write and not matches(printed, content):
                content = printed
            if not matches(printed, content):
                failures.append(f"shown:\n{content}printed:\n{printed}")
            printed = None
        elif (needed := re.search(r"\(needs `(\w+)`\):$", found["lead"])) and not is_installed(needed[1]):
            print(f"left out: {page.name}: {needed[1]} is not installed")
            printed = None
        elif kind == "sh":
            printed = shell(content, folder)
            if "exit code" in printed and not re.match(r"\n*```text\n", text[found.end():]):
                failures.append(f"{content}{printed}")
        elif kind == "bash":
            if not found["lead"].startswith("Not run by the tests"):
                failures.append(f"a block that is not run does not say so:\n{content}")
        elif name := re.search(r"`([\w.-]+)`:$", found["lead"]):
            (folder / name[1]).write_text(content)
        start, end = (place - found.start() for place in found.span("text"))
        return found[0][:start] + content + found[0][end:]

    return failures, block.sub(run_block, text)


def install(prefix):
    """What a machine with the packages has: library, header, tool, declarations, Python package."""
    subprocess.run(["cmake", "--install", build, "--prefix", prefix], check=True, stdout=subprocess.DEVNULL)
    libraries = next(prefix.rglob("libvorel32.so")).parent
    package = prefix / "python/vorel32"
    package.mkdir(parents=True)
    for file in [*(source / "python/vorel32").glob("*.py"), *(build / "bin").glob("*.so*")]:
        shutil.copy(file, package)
    (prefix / "bin/python3").symlink_to(sys.executable)
    os.environ.update(PKG_CONFIG_PATH=str(libraries / "pkgconfig"), CMAKE_PREFIX_PATH=str(prefix), LD_LIBRARY_PATH=str(libraries),
                      PYTHONPATH=str(package.parent), PYTHONDONTWRITEBYTECODE="1", LC_ALL="C.UTF-8", VOREL_SOURCE=str(source),
                      PATH=os.pathsep.join([str(prefix / "bin"), str(build / "bin"), os.environ["PATH"]]))


def main():
    failed = not pages
    with tempfile.TemporaryDirectory() as work:
        work = pathlib.Path(work)
        install(work / "installed")
        (work / "pictures").mkdir()
        subprocess.run(["bash", source / "docs/howto/pictures.sh"], cwd=work / "pictures", check=True, stdout=subprocess.DEVNULL)
        for page in pages:
            shutil.copytree(work / "pictures", work / page.stem)
            failures, text = run_page(page, work / page.stem)
            if write:
                page.write_text(text)
            for failure in failures:
                print(f"FAILED: {page.name}: {failure}")
            failed |= bool(failures)
            if not failures:
                print(f"ok: {page.name}")
    return failed


sys.exit(main())
