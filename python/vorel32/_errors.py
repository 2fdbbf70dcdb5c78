"""The kinds of failure. Each is a class; all carry the file, the page and the library's error code."""

from __future__ import annotations


class Error(Exception):
    """A failure of this package.

    ``str(error)`` is "FILE, page N: what is wrong; what to do".
    """

    #: The file's path or name, or None for a picture that came from no file.
    file: str | None
    #: The page, counted from 1, or None.
    page: int | None
    #: The library's error code of the call, 0 where it leaves none. ``docs/behaviour.md`` and ``vorel32.h`` list the codes.
    code: int
    #: The text without file and page.
    message: str

    def __init__(self, message: str, file: str | None = None, page: int | None = None, code: int = 0) -> None:
        super().__init__(message)
        self.message, self.file, self.page, self.code = message, file, page, code

    def about(self, file: str | None, page: int | None) -> Error:
        """Names the file and the page unless the error already does."""
        if self.file is None:
            self.file, self.page = file, page
        return self

    def __str__(self) -> str:
        place = self.file or ""
        if place and self.page is not None:
            place += f", page {self.page}"
        return f"{place}: {self.message}" if place else self.message

    def __reduce__(self):
        return type(self), (self.message, self.file, self.page, self.code)


class UsageError(Error, ValueError):
    """An argument is out of range, or arguments do not go together."""


class InputError(Error):
    """A file cannot be read."""


class FormatError(Error, ValueError):
    """A file is damaged or of an unknown format, or the operation is not for this kind of picture."""


class OutputError(Error):
    """A file cannot be written."""


class LimitError(Error, MemoryError):
    """Memory is short, or a picture would be larger than pictures can be."""


class CodecError(Error):
    """A codec module is missing or does not load."""


class ClusterError(Error):
    """The connection to the scheduler of a cluster is lost."""
