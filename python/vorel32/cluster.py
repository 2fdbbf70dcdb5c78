"""The same steps over many files, in this process or on a Dask cluster.

>>> from vorel32.cluster import process
>>> records = list(process(["scan.tif"], "clean 60 | scale 50%", "out", format="png"))
>>> [os.path.basename(path) for path in records[0].outputs]
['scan-1.png', 'scan-2.png']

On a cluster, records arrive as files are done::

    from distributed import Client
    with Client("tcp://scheduler:8786") as client:
        for record in process(paths, "clean 60 | scale 50%", "/shared/out", client=client):
            if record.failure:
                print(record.path, record.failure)

Workers need this package and see the files under the same paths. Outputs appear whole, by rename, under names that depend on the
input alone: the file of a worker that dies is processed again elsewhere, and its output is there once.
"""

from __future__ import annotations

import contextlib
import ctypes
import hashlib
import itertools
import json
import os
import re
import shutil
import socket
import time
import uuid
from dataclasses import dataclass, field, replace
from typing import TYPE_CHECKING, Any, Callable, Iterable, Iterator, Sequence, Union

from ._errors import ClusterError, Error, FormatError, InputError, LimitError, OutputError, UsageError
from ._files import Source, format_of, saving
from ._image import Image

if TYPE_CHECKING:
    from distributed import Client

#: Steps as `Image.run` takes them, or a function of an image that makes an image, or None to drop the page. A cluster's workers must
#: be able to import it.
Steps = Union[str, Callable[[Image], "Image | None"]]

_SECONDS_BETWEEN_LOOKS = 1.0
_NOTES = ".dropped-pages"


@dataclass
class Record:
    """The result for one file."""

    path: str
    outputs: list[str] = field(default_factory=list)
    pages: int = 0
    steps: str = ""
    #: Reports of the steps for each page, by its number in the file; see Image.reports.
    reports: dict[int, Sequence[dict[str, Any]]] = field(default_factory=dict)
    #: Unrequested losses in loading, steps and saving, without repeats; see Image.losses.
    losses: list[str] = field(default_factory=list)
    seconds: float = 0.0
    worker: str = ""
    attempts: int = 1
    #: With resume=True: whether the outputs existed already and were newer than the file.
    skipped: bool = False
    #: The message of a failure; None after success.
    failure: str | None = None
    #: Whether another attempt may succeed, as after an error of a disk or a network.
    is_passing: bool = False


@dataclass
class _Job:
    """Everything that a worker needs besides the paths."""

    steps: Steps
    out: str
    scratch: str
    format: str
    #: Of `saving`, besides the format.
    options: tuple[str | None, bool, int | None, bool]
    strict: bool
    resume: bool
    #: By file, where a numbered output could have the name of another file's output: the first such number, and the other file.
    clashes: dict[str, tuple[int, str]] = field(default_factory=dict)

    @property
    def how(self) -> Any:
        return saving(self.format, *self.options)

    @property
    def holds_pages(self) -> bool:
        return self.how.holds_pages

    def target(self, path: str) -> str:
        ending = {"tiff": "tif", "jpeg": "jpg", "cals": "cal"}.get(self.format, self.format)
        return os.path.join(self.out, f"{os.path.splitext(os.path.basename(path))[0]}.{ending}")

    @property
    def name_of_steps(self) -> str:
        return self.steps if isinstance(self.steps, str) else getattr(self.steps, "__name__", "function")

    def apply(self, image: Image) -> Image | None:
        return image.run(self.steps) if isinstance(self.steps, str) else self.steps(image)

    def outputs(self, path: str, file: Source) -> dict[int, str]:
        """The names of all possible outputs of a file, by page; page 0 stands for all pages in one output."""
        target = self.target(path)
        if self.holds_pages:
            return {0: target}
        count = file.count_pages()
        if count == 1:
            return {1: target}
        number, other = self.clashes.get(path, (count + 1, ""))
        if number <= count:
            raise UsageError(f"its page {number} would become the same file as {other}; process them into two folders", path)
        stem, ending = os.path.splitext(target)
        return {page: f"{stem}-{page}{ending}" for page in range(1, count + 1)}

    def is_done(self, path: str, outputs: dict[int, str]) -> list[str] | None:
        """The outputs of a file if they are newer than it. Those of pages that the same steps dropped may be missing."""
        try:
            born = os.stat(path).st_mtime_ns
            dropped = self.read_note(path, born)
            found = [name for page, name in outputs.items() if page not in dropped]
            return found if all(os.stat(name).st_mtime_ns >= born for name in found) else None
        except (OSError, ValueError):
            return None

    def note(self, path: str) -> str:
        """The note of the dropped pages of a file. Without it a missing output could also mean unfinished work."""
        return os.path.join(self.out, _NOTES, hashlib.sha256(os.fsencode(self.target(path))).hexdigest()[:32])

    def read_note(self, path: str, born: int) -> list[int]:
        try:
            with open(self.note(path), encoding="utf-8") as file:
                steps, dropped = json.load(file)
                is_newer = os.fstat(file.fileno()).st_mtime_ns >= born
        except FileNotFoundError:
            return []
        return dropped if is_newer and steps == self.name_of_steps else []

    def write_note(self, path: str, dropped: list[int]) -> None:
        scratch = self.unfinished()
        with open(scratch, "x", encoding="utf-8") as file:
            json.dump([self.name_of_steps, dropped], file)
        os.makedirs(os.path.join(self.out, _NOTES), exist_ok=True)
        os.replace(scratch, self.note(path))

    def run(self, path: str) -> Record:
        started = time.perf_counter()
        record = Record(path, steps=self.name_of_steps, worker=f"{socket.gethostname()}:{os.getpid()}")
        try:
            self._process(path, record)
        except Exception as error:  # noqa: BLE001 - a file that fails must not stop the others
            record.failure = str(error) if isinstance(error, Error) else f"{path}: {type(error).__name__}: {error}"
            record.outputs, record.pages = [], 0
            record.is_passing = isinstance(error, (InputError, OutputError, LimitError, OSError)) and os.path.exists(path)
        record.seconds = time.perf_counter() - started
        return record

    def _process(self, path: str, record: Record) -> None:
        file = Source(path, None)
        outputs = self.outputs(path, file)
        if self.resume and (found := self.is_done(path, outputs)) is not None:
            record.outputs, record.skipped = found, True
            return
        scratch = self.unfinished()
        try:
            numbers = range(1, file.count_pages() + 1)
            dropped = [number for number in numbers if not self._process_page(file, number, scratch, outputs, record)]
            if self.holds_pages and record.pages > 0:
                self._place(scratch, outputs[0], record)
        except BaseException:
            with contextlib.suppress(OSError):
                os.unlink(scratch)
            raise
        # A file that holds pages and has some tells by itself that it is done.
        if dropped and not (self.holds_pages and record.outputs):
            self.write_note(path, dropped if record.outputs else [0, *dropped])

    def _process_page(self, file: Source, number: int, scratch: str, outputs: dict[int, str], record: Record) -> bool:
        """False if the steps drop the page. One page is in memory at a time."""
        page = Image._loaded(file, number)
        losses, image = page.losses, self.apply(page)
        del page
        if image is None:
            return False
        record.pages += 1
        record.reports[number] = image.reports
        self._write(image, scratch, record, [*losses, *image.losses])
        if not self.holds_pages:
            self._place(scratch, outputs[number], record)
        return True

    def _write(self, image: Image, scratch: str, record: Record, losses: list[str]) -> None:
        if self.strict and losses:
            raise FormatError(f"{losses[0]}, or leave strict out", image.file, image.page)
        losses += image._write(scratch, self.how, record.pages if self.holds_pages else 1, self.strict)
        record.losses = list(dict.fromkeys([*record.losses, *losses]))

    def _place(self, scratch: str, target: str, record: Record) -> None:
        os.replace(scratch, target)
        record.outputs.append(target)

    def unfinished(self) -> str:
        """The name of a new file. The end of a run removes its folder, so that a late worker leaves nothing behind."""
        return os.path.join(self.scratch, uuid.uuid4().hex)


def _keep_freed_memory() -> None:
    """Dask starts its workers so that malloc returns freed memory at once, and every picture costs a page fault for each 4 KB."""
    libc = ctypes.CDLL(None)
    if hasattr(libc, "mallopt"):  # of the GNU library
        libc.mallopt(-3, 32 << 20)  # M_MMAP_THRESHOLD: the most that it takes
        libc.mallopt(-1, 64 << 20)  # M_TRIM_THRESHOLD


def _run_all(job: _Job, paths: list[str]) -> list[Record]:
    """A task."""
    _keep_freed_memory()
    return [job.run(path) for path in paths]


def process(paths: Iterable[str | os.PathLike[str]], steps: Steps, out: str | os.PathLike[str], *, client: Client | None = None,
            format: str = "tiff", compression: str | None = None, interlaced: bool = False, quality: int | None = None,
            progressive: bool = False, strict: bool = False, resume: bool = False, retries: int = 2, batch: int = 8,
            window: int = 4) -> Iterator[Record]:  # fmt: skip
    """Processes all pages of files and yields a record for each file when it is done.

    steps        see Image.run; or a function of an image that returns an image, or None to drop the page
    out          the folder of the outputs, which are named after their inputs. TIFF, DCX and PNM files hold all pages of an input;
                 other formats hold one each, with the page's number in the name if the input has several. An input whose pages
                 are all dropped has neither output nor failure
    client       of a Dask cluster; without it this process does everything
    format       of the outputs; compression, interlaced, quality and progressive are its options, as for Image.save
    strict       unrequested losses in loading, steps or saving make a file fail; default: its record lists them
    resume       skips files whose outputs exist and are newer, or were dropped by the same steps. The folder .dropped-pages in
                 `out` notes dropped pages
    retries      further attempts after failures of a disk, the network, memory or a worker
    batch        files per task: more for small pages, which take less time than a task costs
    window       tasks per thread of the cluster that wait or run at a time, so that memory does not grow with the files

    Wrong arguments raise UsageError before anything is done.
    """
    if isinstance(paths, (str, bytes, os.PathLike)):
        raise TypeError("process() takes a list of paths; put this one into brackets")
    if retries < 0 or batch < 1 or window < 1:
        raise UsageError("retries are 0 or more, batch and window 1 or more")
    if isinstance(steps, str):
        Image.check_steps(steps)
    elif not callable(steps):
        raise TypeError(f"steps are a text or a function, not {type(steps).__name__}")
    given = [os.fsdecode(path) for path in paths]
    files = [os.path.abspath(path) for path in given] if client else given  # workers may have another current folder
    folder = os.path.abspath(os.fsdecode(out))
    scratch = os.path.join(folder, f".vorel32-{uuid.uuid4().hex}")
    job = _Job(steps, folder, scratch, format_of("", format), (compression, interlaced, quality, progressive), strict, resume)
    taken: dict[str, str] = {}
    for path in files:
        target = job.target(path)
        if target in taken:
            raise UsageError(f"{taken[target]} would become the same file as this, {target}; process them into two folders", path)
        if os.path.abspath(path) == target or _is_same_file(target, path):
            raise UsageError("the output would replace the file itself; choose another folder", path)
        taken[target] = path
    if not job.holds_pages:
        job.clashes = _clashes(taken)
    return _here(job, files, retries) if client is None else _on_cluster(job, dict(zip(files, given)), client, retries, batch, window)


def _is_same_file(target: str, path: str) -> bool:
    """True for links of any kind."""
    try:
        return os.path.samefile(target, path)
    except OSError:  # usually there is no such target
        return False


def _clashes(taken: dict[str, str]) -> dict[str, tuple[int, str]]:
    """See _Job.clashes: page 3 of a.tif and the only page of a-3.tif would have one name. Processing a.tif shows whether it has a
    page 3."""
    found: dict[str, tuple[int, str]] = {}
    for target, path in taken.items():
        stem, ending = os.path.splitext(target)
        if (parts := re.fullmatch("(.*)-([1-9][0-9]*)", stem, re.DOTALL)) and (base := taken.get(parts[1] + ending)):
            found[base] = min(found.get(base, (int(parts[2]), path)), (int(parts[2]), path))
    return found


def _prepare(job: _Job) -> None:
    try:
        os.makedirs(job.scratch)
    except OSError as error:
        raise OutputError(f"{error.strerror}; check the folder", job.out) from error


def _end(job: _Job) -> None:
    """Renames the folder before it is removed, so that late workers cannot add files to it."""
    ended = f"{job.scratch}-ended"
    with contextlib.suppress(OSError):
        os.rename(job.scratch, ended)
    shutil.rmtree(ended, ignore_errors=True)


def _here(job: _Job, files: list[str], retries: int) -> Iterator[Record]:
    _prepare(job)
    try:
        for path in files:
            for attempt in range(1, retries + 2):
                record = job.run(path)
                record.attempts = attempt
                if not (record.failure and record.is_passing):
                    break
            yield record
    finally:
        _end(job)


def _is_lost(client: Client) -> bool:
    return client.status in ("closing", "closed")


def _lost() -> ClusterError:
    return ClusterError("the connection to the scheduler is lost; start it again, and go on with resume=True")


def _on_cluster(job: _Job, names: dict[str, str], client: Client, retries: int, batch: int, window: int) -> Iterator[Record]:
    """Records call files by their `names`."""
    from distributed import as_completed
    from distributed.scheduler import KilledWorker

    _prepare(job)
    files = list(names)
    waiting: Any = (files[i : i + batch] for i in range(0, len(files), batch))
    running: dict[str, list[str]] = {}
    attempts: dict[str, int] = {}
    counts = {"files": len(files), "done": 0, "failed": 0}
    completed = as_completed()

    def submit(paths: list[str]) -> None:
        # The first part of the key is what the dashboard's progress bars count by.
        part = replace(job, clashes={path: job.clashes[path] for path in paths if path in job.clashes})
        future = client.submit(_run_all, part, paths, key=f"vorel32-{uuid.uuid4().hex}", pure=False, retries=0)
        running[future.key] = paths
        completed.add(future)

    def result_of(future: Any) -> list[Record] | Exception:
        # Not by as_completed, which never tells of a result that is lost with its worker and then fails.
        try:
            return future.result()
        except Exception as error:  # noqa: BLE001 - whatever the scheduler or the network did
            return error

    def again(path: str, limit: int) -> bool:
        if attempts.get(path, 1) > limit:
            return False
        attempts[path] = attempts.get(path, 1) + 1
        submit([path])
        return True

    def look_around() -> int:
        """Logs the progress with the scheduler. Returns the number of threads, because clusters grow and shrink."""
        client.log_event("vorel32", dict(counts))
        return max(1, sum(client.nthreads().values()))

    def fill() -> None:
        for paths in itertools.islice(waiting, max(0, window * threads - len(running))):
            submit(paths)

    try:
        looked, threads = time.monotonic(), look_around()
        fill()
        for future in completed:
            paths, result = running.pop(future.key), result_of(future)
            if isinstance(result, list):
                records = [r for r in result if not (r.failure and r.is_passing and again(r.path, retries))]
            elif _is_lost(client):
                raise _lost()
            else:  # workers died, or the task could not be sent: each file is tried alone to find the faulty one
                what = "its worker died" if isinstance(result, KilledWorker) else f"{type(result).__name__}: {result}"
                records = [Record(p, failure=f"{p}: {what}") for p in paths if not again(p, retries if len(paths) == 1 else 1)]
            future.release()
            for record in records:
                record.attempts = attempts.get(record.path, 1)
                record.path = names[record.path]
                counts["failed" if record.failure else "done"] += 1
            if time.monotonic() > looked + _SECONDS_BETWEEN_LOOKS or not running:
                looked, threads = time.monotonic(), look_around()
            fill()
            yield from records
    except Exception as error:
        if _is_lost(client) and not isinstance(error, ClusterError):
            raise _lost() from error
        raise
    finally:
        try:
            if running and not _is_lost(client):
                client.cancel(list(completed.futures))
        finally:
            _end(job)
