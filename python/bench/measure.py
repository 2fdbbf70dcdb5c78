"""Measures the package and prints tables: calls, arrays, a chain on an A4 page beside Pillow and OpenCV, cores, threads and
workers.

usage: measure.py [calls] [arrays] [chain] [cores] [threads] [workers]   (default: all; the package is installed, and cc is there for calls)
"""

import contextlib
import multiprocessing
import os
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import numpy as np
import vorel32
from pages import a4_page, make_pages
from vorel32 import Image

HERE = Path(__file__).resolve().parent


def best(work, repeats=5, loops=1, clock=time.process_time):
    """The shortest time of one loop, in seconds of the processor."""
    times = []
    for _ in range(repeats):
        start = clock()
        for _ in range(loops):
            work()
        times.append((clock() - start) / loops)
    return min(times)


def calls():
    package = Path(vorel32.__file__).parent
    with tempfile.TemporaryDirectory() as folder:
        program = Path(folder) / "calls"
        command = ["cc", "-O2", "-std=gnu11", HERE / "calls.c", "-I", HERE.parent.parent / "include", package / "libvorel32.so.5"]
        subprocess.run([*command, f"-Wl,-rpath,{package}", "-o", program], check=True)
        lines = subprocess.run([program], check=True, capture_output=True, text=True).stdout.split("\n")
    native = {name: int(nanoseconds) / 1000 for name, nanoseconds in (line.split() for line in lines if line)}
    picture = Image.new(8, 8)
    same = {"rotate": lambda: picture.rotate(90), "mirror": lambda: picture.mirror(),
            "scale": lambda: picture.scale((4, 4), method="linear"), "gray": lambda: picture.gray()}  # fmt: skip
    print("| call on 8 x 8 pixels | C, µs | Python, µs | more, µs |\n|---|---|---|---|")
    for name, work in same.items():
        took = best(work, 5, 20000) * 1e6
        print(f"| {name} | {native[name]:.2f} | {took:.2f} | {took - native[name]:.2f} |")


def arrays():
    picture = Image.from_array(a4_page())
    pixels = np.asarray(picture)
    print("| A4, 300 dpi, 24 bits (26 MB) | µs |\n|---|---|")
    print(f"| numpy.asarray(image), no copy | {best(lambda: np.asarray(picture), 5, 5000) * 1e6:.1f} |")
    print(f"| Image.from_array of such an array, no copy | {best(lambda: Image.from_array(pixels, copy=False), 5, 2000) * 1e6:.1f} |")
    print(f"| Image.from_array of another array, a copy | {best(lambda: Image.from_array(pixels, copy=True), 5, 5) * 1e6:.0f} |")


def chain():
    import cv2
    import PIL.Image
    import PIL.ImageFilter

    cv2.setNumThreads(1)
    pixels = a4_page()
    ours, theirs = Image.from_array(pixels), PIL.Image.fromarray(pixels)
    steps = {
        "grey": (lambda p: p.gray(weighted=True), lambda p: p.convert("L"), lambda a: cv2.cvtColor(a, cv2.COLOR_BGR2GRAY)),
        "quarter turn": (lambda p: p.rotate(90), lambda p: p.transpose(PIL.Image.Transpose.ROTATE_270),
                         lambda a: cv2.rotate(a, cv2.ROTATE_90_CLOCKWISE)),
        "mean of 3 x 3": (lambda p: p.filter("box"), lambda p: p.filter(PIL.ImageFilter.BoxBlur(1)), lambda a: cv2.blur(a, (3, 3))),
        "half size, bilinear": (lambda p: p.scale(0.5, method="linear"),
                                lambda p: p.resize((p.width // 2, p.height // 2), PIL.Image.Resampling.BILINEAR),
                                lambda a: cv2.resize(a, None, fx=0.5, fy=0.5, interpolation=cv2.INTER_LINEAR)),
        "threshold to 1 bit": (lambda p: p.halftone("threshold"), lambda p: p.convert("1", dither=PIL.Image.Dither.NONE),
                               lambda a: np.packbits(cv2.threshold(a, 127, 1, cv2.THRESH_BINARY)[1], axis=1)),
    }  # fmt: skip

    def run(which, picture):
        for step in steps.values():
            picture = step[which](picture)
        return picture

    print("| A4, 300 dpi, 24 bits | vorel32, ms | Pillow, ms | OpenCV, ms |\n|---|---|---|---|")
    inputs = [ours, theirs, pixels]
    for name, step in steps.items():
        print(f"| {name} |" + "".join(f" {best(lambda s=s, p=p: s(p), 20) * 1e3:.1f} |" for s, p in zip(step, inputs)))
        inputs = [s(p) for s, p in zip(step, inputs)]
    print("| the chain |" + "".join(f" {best(lambda w=w, p=p: run(w, p), 20) * 1e3:.1f} |" for w, p in enumerate([ours, theirs, pixels])))


A4 = (2480, 3508, 300)
STEPS = "clean 60 | rotate 90 | scale 50%"


def rates(work, pages, runs=6):
    """Pages per second of work(1) and work(2), each the best of runs in turn: other guests of a virtual machine's host only slow down."""
    times = {1: [], 2: []}
    for _ in range(runs):
        for count, taken in times.items():
            taken.append(best(lambda: work(count), 1, clock=time.perf_counter))
    return {count: pages / min(taken) for count, taken in times.items()}


def show_rates(title, rates):
    print(f"| {title} | pages per second | times |\n|---|---|---|")
    for count, pages in rates.items():
        print(f"| {count} | {pages:.0f} | {pages / rates[1]:.2f} |")


def arithmetic(count):
    for i in range(count):
        i * i % 7


def cores():
    """How much more two processes do than one if they only compute: the most that two threads or workers can reach here."""

    def in_processes(count):
        processes = [multiprocessing.Process(target=arithmetic, args=(4_000_000,)) for _ in range(count)]
        for process in processes:
            process.start()
        for process in processes:
            process.join()

    found = rates(in_processes, 1)
    print(f"two processes of arithmetic alone do {2 * found[2] / found[1]:.2f} times as much as one")


def threads():
    from vorel32.cluster import process

    with tempfile.TemporaryDirectory() as folder:
        paths = make_pages(folder, 100, *A4)

        def page(path):
            image = vorel32.open(path).run(STEPS)
            image.save(os.path.join(folder, "out-" + os.path.basename(path)), compression="g4")

        def all_pages(count):
            with ThreadPoolExecutor(count) as pool:
                list(pool.map(page, paths))

        show_rates("A4, 300 dpi, 1 bit; threads in one process", rates(all_pages, len(paths)))
        took = best(lambda: list(process(paths, STEPS, os.path.join(folder, "here"))), clock=time.perf_counter)
        print(f"\n`process` without a cluster: {len(paths) / took:.0f} pages per second")


def workers():
    from distributed import Client, LocalCluster
    from vorel32.cluster import process

    with tempfile.TemporaryDirectory() as folder, contextlib.ExitStack() as stack:
        paths = make_pages(folder, 240, *A4)
        clients, beside = {}, {1: [], 2: []}
        for count in (1, 2):
            cluster = stack.enter_context(LocalCluster(n_workers=count, threads_per_worker=1, processes=True, dashboard_address=":0"))
            clients[count] = stack.enter_context(Client(cluster))

        def all_pages(count):
            start = time.process_time()
            list(process(paths, STEPS, os.path.join(folder, f"out{count}"), client=clients[count]))
            beside[count].append((time.process_time() - start) / len(paths) * 1000)

        for count in (1, 2):
            all_pages(count)  # warms up
        show_rates("A4, 300 dpi, 1 bit; Dask workers", rates(all_pages, len(paths)))
        print("\nclient and scheduler, ms of processor time for a page: " + ", ".join(f"{min(times):.2f}" for times in beside.values()))


if __name__ == "__main__":
    tables = {"calls": calls, "arrays": arrays, "chain": chain, "cores": cores, "threads": threads, "workers": workers}
    for name in sys.argv[1:] or tables:
        tables[name]()
        print()
