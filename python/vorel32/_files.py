"""Where pictures come from and go to: paths, bytes, file objects."""

from __future__ import annotations

import functools
import operator
import os
import secrets
import stat
from contextlib import contextmanager
from typing import BinaryIO, Iterator, SupportsIndex, Union

from . import _vorel32
from ._errors import Error, InputError, OutputError, UsageError

#: A path, the bytes of a file, or a file object open for reading in binary mode.
Readable = Union[str, "os.PathLike[str]", bytes, bytearray, memoryview, BinaryIO]
#: A path, or a file object open for writing in binary mode.
Writable = Union[str, "os.PathLike[str]", BinaryIO]


class Source:
    """A file that pages are loaded from."""

    def __init__(self, readable: Readable, name: str | None) -> None:
        content: bytes | bytearray | memoryview | None = None
        self.name: str | None = name
        try:
            if isinstance(readable, (bytes, bytearray, memoryview)):
                content = readable
            elif isinstance(readable, (str, os.PathLike)):
                self.name = os.fsdecode(readable)
                content = _content_unless_plain(self.name)
            else:
                content = _content_of(readable)
                if name is None and isinstance(getattr(readable, "name", None), str):
                    self.name = readable.name
            self._source = _vorel32.Source(self.name or "") if content is None else _vorel32.Source.in_memory(content, self.name or "")
        except OSError as error:
            raise InputError(f"{error.strerror or error}; check its name and that you may read it", self.name) from error
        except Error as error:
            raise error.about(self.name, None)

    @property
    def format(self) -> str:
        with self._named():
            return self._source.format

    def count_pages(self) -> int:
        with self._named():
            return self._source.count_pages() or 1

    def compression(self, page: int) -> str | None:
        with self._named(page):
            return self._source.compression(page)

    def load(self, page: int) -> tuple[_vorel32.Picture, list[str]]:
        """A page, and the losses in loading it."""
        with self._named(page):
            return self._source.load(page), self._source.losses(page)

    @contextmanager
    def _named(self, page: int | None = None) -> Iterator[None]:
        try:
            yield
        except Error as error:
            raise error.about(self.name, page)


def _content_unless_plain(path: str) -> bytes | None:
    """The content of a device or a pipe, which can be read once; None for plain files. Raises OSError if the file cannot be opened."""
    with open(path, "rb") as file:
        return None if stat.S_ISREG(os.fstat(file.fileno()).st_mode) else file.read()


def _content_of(file: BinaryIO) -> bytes:
    if not hasattr(file, "read"):
        raise TypeError(f"a path, the bytes of a file or a file object is needed, not {type(file).__name__}")
    content = file.read()
    if not isinstance(content, (bytes, bytearray, memoryview)):
        raise TypeError(f"the file object gives {type(content).__name__}; open it in binary mode")
    return content


def format_of(target: Writable, format: str | None) -> str:
    """The format's word: `format` if given, else by the ending of the target's name."""
    if format is not None:
        return format.lower().lstrip(".")
    name = target if isinstance(target, (str, os.PathLike)) else getattr(target, "name", None)
    if not isinstance(name, (str, os.PathLike)):
        raise UsageError("this target has no name whose ending tells the format; give format=")
    word = _vorel32.format_for_name(os.fsdecode(name))
    if word is None:
        raise UsageError("this name's ending belongs to no format that can be saved; give format=", os.fsdecode(name))
    return word


@functools.lru_cache(maxsize=64)
def saving(format: str, compression: str | None, interlaced: bool, quality: int | None, progressive: bool) -> _vorel32.Saving:
    """Checks how to save. Raises UsageError for options of another format or out of range."""
    return _vorel32.Saving(format, compression or "", interlaced, None if quality is None else whole("quality", quality), progressive)


def whole(name: str, value: SupportsIndex) -> int:
    """Checks that a number is whole and fits the library's integers."""
    number = operator.index(value)
    if not -(2**31) <= number < 2**31:
        raise UsageError(f"{name} is {number}; ask for less")
    return number


@contextmanager
def replaced(path: str, overwrite: bool = True) -> Iterator[str]:
    """A new file beside `path` that takes its place when the block ends. If that fails, `path` stays as it was. Links are followed.
    Devices and pipes get the bytes and are never replaced."""
    target = os.path.realpath(path)
    # The name does not contain the target's, so that it cannot be too long.
    scratch = os.path.join(os.path.dirname(target), f".vorel32-{secrets.token_hex(8)}.tmp")
    try:
        mode = os.stat(target).st_mode if os.path.exists(target) else None
        if mode is not None and not stat.S_ISREG(mode):
            with open(target, "wb") as device:
                memory = _vorel32.MemoryFile()
                yield str(memory.path)
                device.write(memory.content())
            return
        if mode is not None and not overwrite:
            raise OutputError("there is a file of this name already; give another name or overwrite=True", path)
        if mode is not None and not mode & 0o222:
            raise OutputError("the file is write-protected; lift that or give another name", path)
        with open(scratch, "xb"):
            pass
        yield scratch
        if mode is not None:
            os.chmod(scratch, mode & 0o7777)
        os.replace(scratch, target)
    except OSError as error:
        raise OutputError(f"{error.strerror or error}; check that the folder is there and has room", path) from error
    except Error as error:
        raise error.about(path, None)
    finally:
        if os.path.exists(scratch):
            os.unlink(scratch)
