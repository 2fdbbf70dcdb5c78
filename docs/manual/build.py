#!/usr/bin/env python3
"""Builds the manual: a site of static pages and a PDF. The same sources give the same bytes.

usage: build.py --source ROOT --output FOLDER --tool VOREL --pictures PROGRAM --windows-pictures PROGRAM [--lax] [--no-pdf]
  --tool      the command line tool, which makes pictures
  --pictures  the program built from pictures.cpp; --windows-pictures names the one for Windows, which runs under Wine if it is there
  --lax       warns of missing examples and of Sphinx's warnings instead of failing
"""

import argparse
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

import check
import draw
import pages
import pdf

# The pages that the site takes from the project, with the folders that they have there, so that links between them hold.
STAGED = ["*.md", "docs/*.md", "docs/howto/*.md", "docs/examples/*", "python/README.md"]


def stage_linked(root, source):
    """Adds the files that pages link to. Folders have no page, so links to them become plain text; links that show the name of a
    page's file show its title."""
    for page in sorted(source.rglob("*.md")):
        text = page.read_text()
        for target in re.findall(r"\]\(([^)#:\s]+)\)", text):
            original = (root / page.relative_to(source).parent / target).resolve()
            if original.is_dir():
                text = re.sub(rf"\[([^\]]*)\]\({re.escape(target)}\)", r"\1", text)
            elif original.is_file() and not (source / original.relative_to(root)).exists():
                (source / original.relative_to(root)).parent.mkdir(parents=True, exist_ok=True)
                shutil.copyfile(original, source / original.relative_to(root))
        page.write_text(re.sub(r"\[[\w/]+\.md\](?=\([\w/]+\.md)", "[]", text))


def stage(root, source):
    for pattern in STAGED:
        for path in sorted(root.glob(pattern)):
            target = source / path.relative_to(root)
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(path, target)
    stage_linked(root, source)
    howto = source / "docs/howto/README.md"
    listed = "\n".join(re.findall(r"\]\(([\w-]+)\.md\)", howto.read_text()))
    howto.write_text(f"{howto.read_text()}\n```{{toctree}}\n:hidden:\n\n{listed}\n```\n")
    for path in sorted((root / "docs/manual").iterdir()):
        if path.suffix == ".md":
            shutil.copyfile(path, source / path.name)


def complete_styles(html):
    """Debian's style sheets import others from a web server's root. Puts those in their places, so that pages need no server."""
    for sheet in sorted(html.rglob("*.css")):
        imported = re.compile(r"@import url\((/javascript/[^)]+)\);")
        sheet.write_text(imported.sub(lambda found: Path(f"/usr/share{found[1]}").read_text(), sheet.read_text()))


def function_pictures(folder, tool, programs):
    """Pictures of what functions do: lists of (file, caption) by function."""
    found = {}
    for path in sorted(folder.glob("*.png")):
        subprocess.run([tool, "convert", path.name, path.with_suffix(".bmp").name], cwd=folder, check=True)
    for program in programs:
        lines = subprocess.run(program, cwd=folder, check=True, stdout=subprocess.PIPE, text=True).stdout.splitlines()
        for line in lines:
            function, name, caption = line.split("|")
            found.setdefault(function, []).append((str(Path(name).with_suffix(".png")), caption))
    for path in sorted(folder.glob("*.bmp")):
        if not path.with_suffix(".png").exists():
            subprocess.run([tool, "convert", path.name, path.with_suffix(".png").name], cwd=folder, check=True)
        path.unlink()
    return found


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--source", type=Path, required=True)
    parser.add_argument("--output", type=Path, required=True)
    parser.add_argument("--tool", required=True)
    parser.add_argument("--pictures", required=True)
    parser.add_argument("--windows-pictures", type=Path, required=True)
    parser.add_argument("--lax", action="store_true")
    parser.add_argument("--no-pdf", action="store_true")
    options = parser.parse_args()
    root, source, html = options.source.resolve(), options.output / "source", options.output / "html"
    for folder in (source, html):
        shutil.rmtree(folder, ignore_errors=True)
    source.mkdir(parents=True)

    stage(root, source)
    draw.main(source / "pictures")
    programs = [[options.pictures]]
    if options.windows_pictures.exists():
        programs.append([root / "tools/run-wine.sh", options.windows_pictures])
    else:
        print("manual: no pictures of device bitmaps: build manual_pictures in the preset win32 first", file=sys.stderr)
    subprocess.run([options.tool, "dither", "photo.png", "hero.png"], cwd=source / "pictures", check=True)
    pictures = function_pictures(source / "pictures", options.tool, programs)
    declarations = options.output / "declarations"
    subprocess.run([sys.executable, "-B", root / "tools/declarations/make.py", declarations], check=True)
    reference = pages.Reference(root, source / "reference", pages.examples(root), pictures, declarations)
    reference.write()
    version = re.search(r"project\(vorel32 VERSION ([\d.]+)", (root / "CMakeLists.txt").read_text())[1]

    sphinx = ["/usr/bin/sphinx-build", "-q", "-b", "html", "-c", root / "docs/manual", "-d", options.output / "doctrees",
              "-D", f"version={version}", "-D", f"release={version}", "-D", f"vorel={options.tool}",
              *([] if options.lax else ["-W", "--keep-going"]), "-E", source, html]
    # No hash order, date or language of the machine gets into the pages, nor into the fonts of the PDF.
    os.environ.update({"PYTHONHASHSEED": "0", "SOURCE_DATE_EPOCH": "0", "TZ": "UTC", "LC_ALL": "C.UTF-8", "PYTHONDONTWRITEBYTECODE": "1"})
    subprocess.run(sphinx, check=True)
    complete_styles(html)
    for name in (".buildinfo", "objects.inv"):
        (html / name).unlink(missing_ok=True)

    faults = reference.missing + check.faults(html, reference)
    if not options.no_pdf:
        pdf.write(html, options.output / "vorel32.pdf", version)
    for fault in faults:
        print(f"manual: {fault}", file=sys.stderr)
    print(f"manual: {len(list(html.rglob('*.html')))} pages, {len(faults)} faults, in {html}")
    return 1 if faults and not options.lax else 0


if __name__ == "__main__":
    sys.exit(main())
