#!/usr/bin/python3
"""Reads files that others made, one process each with limits, and says what came of each.

usage: public_files.py VOREL FOLDER_OR_FILE... [--seconds N] [--megabytes N] [--list FILE]

A file's outcome is one of
  same       read, and another decoder (ImageMagick or Pillow) has the same pixels, up to 3 levels of 255
  differs    read, and both others have other pixels
  alone      read, and the others do not read it or has other colours (inks, Lab), which have no exact counterpart
  refused    refused, as by the others
  missed     refused, though another decoder reads it
  not ours   another format, refused as unknown
  crashed    ended by a signal, or with an exit code that the program does not have
  limit      stopped by the limit of time or memory
Exit code: 1 if a file crashed, met a limit or differs.
"""
import argparse
import collections
import concurrent.futures
import os
import pathlib
import resource
import signal
import subprocess
import sys
import tempfile

LEVELS = 3
WITH_PILLOW = """
import sys
from PIL import Image, ImageOps
picture = ImageOps.exif_transpose(Image.open(sys.argv[1]))
if "A" in picture.getbands() or "transparency" in picture.info:
    picture = picture.convert("RGBA")
    picture = Image.alpha_composite(Image.new("RGBA", picture.size, "white"), picture)
picture.convert("RGB").save(sys.argv[2])
"""
ENDINGS = {".tif", ".tiff", ".cal", ".cals", ".pcx", ".dcx", ".gif", ".tga", ".jpg", ".jpeg", ".png", ".bmp", ".dib"}


def limited(seconds, megabytes):
    def set_limits():
        resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds + 1))
        resource.setrlimit(resource.RLIMIT_AS, (megabytes << 20, megabytes << 20))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

    return set_limits


def run(command, seconds, megabytes):
    """Exit code, output; a negative code is a signal."""
    try:
        done = subprocess.run(command, preexec_fn=limited(seconds, megabytes), stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=seconds * 20)
        return done.returncode, done.stdout.decode(errors="replace").strip()
    except subprocess.TimeoutExpired:
        return -signal.SIGXCPU, "no end"


class Reader:
    def __init__(self, options):
        self.options = options

    def others(self, file, folder):
        """Bitmaps of the first page as other decoders read it."""
        bitmap = os.path.join(folder, "other.bmp")
        for command in (["convert", f"{file}[0]", "-auto-orient", "-background", "white", "-alpha", "remove", "-alpha", "off",
                         "+profile", "*", "-type", "TrueColor", f"bmp3:{bitmap}"],
                        [sys.executable, "-c", WITH_PILLOW, str(file), bitmap]):
            if run(command, 60, 4096)[0] == 0 and os.path.exists(bitmap):
                yield bitmap
                os.remove(bitmap)

    def difference(self, file, bitmap, folder):
        """The smallest of the largest differences to others, in levels; None if there is nothing to compare."""
        code, colors = run(["convert", f"{file}[0]", "-format", "%[colorspace]", "info:"], 60, 4096)
        if code == 0 and colors not in ("sRGB", "Gray", "RGB", "LinearGray"):
            return None
        least = None
        for other in self.others(file, folder):
            code, text = run(["compare", "-metric", "PAE", bitmap, other, "null:"], 60, 4096)
            levels = float(text.split("(")[-1].split(")")[0]) * 255 if code in (0, 1) else 255.0
            least = levels if least is None else min(least, levels)
            if least <= LEVELS:
                break
        return least

    def outcome(self, file):
        with tempfile.TemporaryDirectory(prefix="public-files-") as folder:
            bitmap = os.path.join(folder, "ours.bmp")
            code, text = run([self.options.vorel, "convert", "--page", "1", str(file), bitmap], self.options.seconds, self.options.megabytes)
            note = text.splitlines()[-1] if text else ""
            if code in (-signal.SIGXCPU, -signal.SIGKILL) or code == 6:
                return "limit", note
            if code < 0 or code > 7:
                return "crashed", f"exit {code} {note}"
            if code != 0:
                if file.suffix.lower() not in ENDINGS:
                    return "not ours", note
                return ("missed" if any(self.others(file, folder)) else "refused"), note
            difference = self.difference(file, bitmap, folder)
            if difference is None:
                return "alone", note
            return ("same", "") if difference <= LEVELS + 0.01 else ("differs", f"by {difference:.0f} levels")


def files_of(names):
    for name in map(pathlib.Path, names):
        yield from sorted(p for p in name.rglob("*") if p.is_file()) if name.is_dir() else [name]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("vorel")
    parser.add_argument("files", nargs="+")
    parser.add_argument("--seconds", type=int, default=20, help="of processor time for a file")
    parser.add_argument("--megabytes", type=int, default=2048, help="of address space for a file")
    parser.add_argument("--list", help="receives a line for each file")
    options = parser.parse_args()
    files = list(files_of(options.files))
    counts = collections.Counter()
    reader = Reader(options)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool, open(options.list or os.devnull, "w") as listing:
        for file, (outcome, note) in zip(files, pool.map(reader.outcome, files)):
            counts[outcome] += 1
            line = f"{outcome:9} {file} {note}".rstrip()
            print(line, file=listing)
            if outcome in ("crashed", "limit", "differs", "missed"):
                print(line)
    print(", ".join(f"{count} {outcome}" for outcome, count in counts.most_common()) or "no files")
    return 1 if counts["crashed"] + counts["limit"] + counts["differs"] > 0 or not files else 0


if __name__ == "__main__":
    sys.exit(main())
