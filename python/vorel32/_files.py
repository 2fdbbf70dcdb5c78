"""Where pictures come from and go to: paths, bytes, file objects."""

from __future__ import annotations

import os
import secrets
from contextlib import contextmanager
from typing import BinaryIO, Iterator, Union

from . import _vorel32
from ._errors import Error, InputError, OutputError

#: A path, the bytes of a file, or a file object open for reading in binary mode.
Readable = Union[str, "os.PathLike[str]", bytes, bytearray, memoryview, BinaryIO]
#: A path, or a file object open for writing in binary mode.
Writable = Union[str, "os.PathLike[str]", BinaryIO]


class Source:
    """A file that pages are loaded from."""

    def __init__(self, readable: Readable, name: str | None) -> None:
        in_memory: bytes | bytearray | memoryview | None = None
        self.name: str | None = name
        if isinstance(readable, (bytes, bytearray, memoryview)):
            in_memory = readable
        elif isinstance(readable, (str, os.PathLike)):
            self.name = os.fspath(readable)
        else:
            in_memory = readable.read()
            if self.name is None and isinstance(getattr(readable, "name", None), str):
                self.name = readable.name
        try:
            if in_memory is not None:
                self._source = _vorel32.Source.in_memory(in_memory, self.name or "")
            else:
                with open(self.name, "rb"):  # tells at once what the system has against the file
                    pass
                self._source = _vorel32.Source(self.name)
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
        """A page, and what loading takes from it."""
        with self._named(page):
            return self._source.load(page), self._source.losses(page)

    @contextmanager
    def _named(self, page: int | None = None) -> Iterator[None]:
        try:
            yield
        except Error as error:
            raise error.about(self.name, page)


def format_of(target: Writable, format: str | None) -> str:
    """The format's word: as asked for or, without that, by the ending of the target's name."""
    if format is not None:
        return format.lower().lstrip(".")
    name = target if isinstance(target, (str, os.PathLike)) else getattr(target, "name", "")
    word = _vorel32.format_for_name(os.fspath(name)) if isinstance(name, (str, os.PathLike)) else None
    if word is None:
        raise OutputError("this name's ending belongs to no format that can be saved; give format=", str(name) or None)
    return word


@contextmanager
def replaced(path: str) -> Iterator[str]:
    """A new file beside `path` that takes its place when the block ends. If that fails, `path` stays as it was."""
    # Without the target's name, so that it is not too long where the target's is not.
    scratch = os.path.join(os.path.dirname(path), f".vorel32-{secrets.token_hex(8)}.tmp")
    try:
        with open(scratch, "xb"):
            pass
        yield scratch
        if os.path.exists(path):
            os.chmod(scratch, os.stat(path).st_mode & 0o7777)
        os.replace(scratch, path)
    except OSError as error:
        raise OutputError(f"{error.strerror or error}; check that the folder is there and has room", path) from error
    except Error as error:
        raise error.about(path, None)
    finally:
        if os.path.exists(scratch):
            os.unlink(scratch)
