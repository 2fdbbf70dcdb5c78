"""Pictures."""

from __future__ import annotations

import functools
import operator
import os
import re
from typing import TYPE_CHECKING, Any, Iterable, Iterator, Sequence

from . import _vorel32
from ._errors import Error, FormatError, OutputError, UsageError
from ._files import Readable, Source, Writable, format_of, replaced, saving, whole

if TYPE_CHECKING:
    import numpy
    import PIL.Image

Color = tuple[int, int, int]  # red, green, blue

_GRAYS = [(i, i, i) for i in range(256)]
_INCHES_PER_METRE = 100 / 2.54
_MOST_DPI = 50_000


def _pair(name: str, value: Any) -> tuple[Any, Any]:
    """Two numbers, or one that stands for both."""
    numbers = tuple(value) if isinstance(value, Iterable) and not isinstance(value, str) else (value, value)
    if len(numbers) != 2:
        raise UsageError(f"{name} takes two numbers; these are {len(numbers)}")
    return numbers[0], numbers[1]


def _per_metre(dpi: float | tuple[float, float] | None) -> tuple[int, int]:
    if dpi is None:
        return 0, 0
    x, y = _pair("dpi", dpi)
    if not (0 < x <= _MOST_DPI and 0 < y <= _MOST_DPI):
        raise UsageError(f"a resolution is above 0 and up to {_MOST_DPI} dpi; None states none")
    return round(x * _INCHES_PER_METRE), round(y * _INCHES_PER_METRE)


class Image:
    """A picture in memory: a packed device-independent bitmap of 1, 4, 8, 16, 24 or 32 bits per pixel.

    Operations do not change the picture. They return a new one with the matching resolution.

    >>> page = Image.open("scan.tif")
    >>> page
    <vorel32.Image 1700 x 2200, 1 bit, 200 dpi, from scan.tif, page 1>
    """

    __slots__ = ("_picture", "_readonly", "file", "page", "reports", "losses", "__weakref__")

    #: The file that the picture was loaded from, for messages; None without a file.
    file: str | None
    #: The page in that file.
    page: int | None
    #: Reports of steps, a dict for each step: its name under "step", and its facts. Empty for steps without reports.
    reports: Sequence[dict[str, Any]]
    #: Unrequested losses in loading or in the steps of `run`, each as "loss; remedy".
    losses: Sequence[str]

    def __init__(self, picture: _vorel32.Picture, file: str | None = None, page: int | None = None, readonly: bool = False) -> None:
        if not isinstance(picture, _vorel32.Picture):
            raise TypeError("images come from Image.open(), Image.new(), Image.from_array() and Image.from_pil()")
        self._picture: Any = picture
        self._readonly = readonly
        self.file, self.page = file, page
        self.reports = self.losses = ()

    # ---- Making ----

    @classmethod
    def open(cls, source: Readable, page: int = 1, *, name: str | None = None, readonly: bool = False) -> Image:
        """Loads a page.

        source    a path, the bytes of a file, or a file object open in binary mode; bytes go through memory alone
        page      counted from 1
        name      of bytes, for messages and to recognise TGA files, which have no signature
        readonly  the picture's arrays cannot be written to

        >>> Image.open("scan.tif", page=2).size
        (1700, 2200)
        >>> import pathlib
        >>> Image.open(pathlib.Path("scan.tif").read_bytes()).depth
        1
        """
        return cls._loaded(Source(source, name), whole("page", page), readonly)

    @classmethod
    def _loaded(cls, file: Source, page: int, readonly: bool = False) -> Image:
        picture, losses = file.load(page)
        image = cls(picture, file.name, page, readonly)
        image.losses = losses
        return image

    @classmethod
    def new(cls, width: int, height: int, depth: int = 24, *, palette: Sequence[Color] | None = None,
            dpi: float | tuple[float, float] | None = None) -> Image:  # fmt: skip
        """A picture whose pixels are all 0.

        palette  for 1 to 8 bits, as (red, green, blue); default: black and white, or greys from black to white

        >>> Image.new(100, 50, 8, dpi=300)
        <vorel32.Image 100 x 50, 8 bits, 300 dpi>
        """
        if depth not in (1, 4, 8, 16, 24, 32):
            raise UsageError(f"there are no pictures of {depth} bits; choose 1, 4, 8, 16, 24 or 32")
        colors: Sequence[Color] = ()
        if depth <= 8:
            count = 1 << depth
            colors = palette if palette is not None else _GRAYS[:: 255 // (count - 1)]
            if not 0 < len(colors) <= count:
                raise UsageError(f"a palette of {depth} bits has 1 to {count} colours, this one has {len(colors)}")
            if not all(len(color) == 3 and all(0 <= value <= 255 for value in color) for color in colors):
                raise UsageError("the colours of a palette are (red, green, blue), each from 0 to 255")
        elif palette is not None:
            raise UsageError(f"pictures of {depth} bits have no palette; leave it out")
        return cls(_vorel32.blank(whole("width", width), whole("height", height), depth, [(red, green, blue) for red, green, blue in colors], _per_metre(dpi)))

    @classmethod
    def from_array(cls, array: numpy.ndarray, *, order: str = "bgr", palette: Sequence[Color] | None = None,
                   dpi: float | tuple[float, float] | None = None, copy: bool | None = None) -> Image:  # fmt: skip
        """Makes a picture of an array, top row first.

        array    (h, w) of bool: 1 bit, True is white. (h, w) of uint8: 8 bits, greys or indices into `palette`.
                 (h, w, 3) of uint8: 24 bits. (h, w, 4) of uint8: 32 bits, the fourth byte is unused
        order    of colours: "bgr" as in pictures, or "rgb"
        copy     None: an array of all pixels of a picture is shared, any other is copied. False: raises UsageError instead
                 of copying. True: always copies

        Pictures lie in memory that the library allocates. To fill one without a copy, write into the array of a new one:

        >>> import numpy
        >>> canvas = numpy.asarray(Image.new(300, 200))
        >>> canvas[50:100] = (0, 0, 255)  # blue, green, red
        >>> Image.from_array(canvas, copy=False).size
        (300, 200)
        """
        import numpy as np

        array = np.asarray(array)
        if order not in ("bgr", "rgb"):
            raise UsageError(f'the order of colours is "bgr" or "rgb", not "{order}"')
        plain = order == "bgr" and palette is None and dpi is None
        owner = _owner(array) if plain and not copy else None
        if owner is not None:
            return cls(owner, readonly=not array.flags.writeable)
        if copy is False:
            raise UsageError("this array's memory is not that of a picture; leave copy=False out, or fill the array of Image.new()")
        if array.dtype == np.bool_ and array.ndim == 2:
            image = cls.new(array.shape[1], array.shape[0], 1, palette=palette, dpi=dpi)
            image._picture.pack(np.ascontiguousarray(array).view(np.uint8))
            return image
        if array.dtype != np.uint8 or array.ndim not in (2, 3) or (array.ndim == 3 and array.shape[2] not in (3, 4)):
            raise UsageError(f"arrays are (h, w) of bool or uint8, or (h, w, 3 or 4) of uint8; this is {array.shape} of {array.dtype}")
        depth = 8 if array.ndim == 2 else 8 * array.shape[2]
        image = cls.new(array.shape[1], array.shape[0], depth, palette=palette, dpi=dpi)
        pixels = np.asarray(image._picture)
        pixels[...] = array
        if order == "rgb" and depth > 8:
            pixels[..., :3] = array[..., 2::-1]
        return image

    @classmethod
    def from_pil(cls, picture: PIL.Image.Image) -> Image:
        """Copies a Pillow image. Transparent pixels become white; the resolution is kept.

        >>> import PIL.Image
        >>> Image.from_pil(PIL.Image.new("L", (20, 10))).depth
        8
        """
        import PIL.Image

        dpi = picture.info.get("dpi")
        dpi = tuple(map(float, dpi)) if dpi and all(0 < value <= _MOST_DPI for value in dpi) else None
        if picture.mode in ("RGBA", "LA", "PA") or "transparency" in picture.info:
            shown = picture.convert("RGBA")
            picture = PIL.Image.new("RGB", shown.size, "white")
            picture.paste(shown, mask=shown.getchannel("A"))
        palette = None
        if picture.mode == "P":
            values = picture.getpalette("RGB") or []
            palette = list(zip(values[::3], values[1::3], values[2::3]))[:256]
        elif picture.mode not in ("1", "L"):
            picture = picture.convert("RGB")
        depth, raw = {"1": (1, "1"), "L": (8, "L"), "P": (8, "P")}.get(picture.mode, (24, "BGR"))
        image = cls.new(picture.width, picture.height, depth, palette=palette, dpi=dpi)
        image._picture.set_stored_rows(picture.tobytes("raw", raw, image._picture.stride, -1))
        return image

    # ---- Facts ----

    @property
    def picture(self) -> _vorel32.Picture:
        if self._picture is None:
            raise UsageError("the image is closed", self.file, self.page)
        return self._picture

    @property
    def width(self) -> int:
        """In pixels."""
        return self.picture.width

    @property
    def height(self) -> int:
        """In rows."""
        return self.picture.height

    @property
    def size(self) -> tuple[int, int]:
        """Width and height."""
        return self.width, self.height

    @property
    def depth(self) -> int:
        """Bits to a pixel: 1, 4, 8, 16, 24 or 32."""
        return self.picture.depth

    @property
    def dpi(self) -> tuple[float, float] | None:
        """Dots per inch across and down; None if the picture does not state them.

        >>> Image.open("scan.tif").dpi
        (200.0, 200.0)
        """
        x, y = self.picture.per_metre
        return (round(x / _INCHES_PER_METRE, 1), round(y / _INCHES_PER_METRE, 1)) if x > 0 and y > 0 else None

    @property
    def palette(self) -> list[Color] | None:
        """The colours of 1 to 8 bits as (red, green, blue); None above.

        >>> Image.new(8, 8, 1).palette
        [(0, 0, 0), (255, 255, 255)]
        """
        return self.picture.palette if self.depth <= 8 else None

    def __repr__(self) -> str:
        if self._picture is None:
            return "<vorel32.Image, closed>"
        dpi = self.dpi
        shown = "" if dpi is None else f", {dpi[0]:g} dpi" if dpi[0] == dpi[1] else f", {dpi[0]:g} x {dpi[1]:g} dpi"
        place = "" if self.file is None else f", from {self.file}, page {self.page}"
        return f"<vorel32.Image {self.width} x {self.height}, {self.depth} bit{'s' if self.depth > 1 else ''}{shown}{place}>"

    # ---- Pixels ----

    def __array__(self, dtype: Any = None, copy: bool | None = None) -> numpy.ndarray:
        """The result of numpy.asarray(image), top row first.

        24 and 32 bits: the picture's own memory as (h, w, 3 or 4) of uint8, in the order blue, green, red. 16 bits: the same
        as (h, w) of uint16. 8 bits: the same as (h, w) of uint8, indices into the palette or greys. Writing to these changes
        the picture, whose memory lives as long as its arrays. 1 and 4 bits, and run-length compressed pictures: a read-only
        copy with one byte per pixel; `packed` is the memory itself.

        >>> import numpy
        >>> numpy.asarray(Image.open("photo.png")).shape
        (480, 640, 3)
        """
        import numpy as np

        picture = self.picture
        is_copy = picture.is_compressed or picture.depth < 8
        if is_copy and copy is False:
            raise ValueError("pixels of fewer than 8 bits, and compressed ones, have no array without a copy")
        if picture.is_compressed:
            picture = picture.expanded()
        if picture.depth < 8:
            pixels = np.empty((picture.height, picture.width), np.uint8)
            picture.unpack(pixels)
        else:
            pixels = np.asarray(picture)
        if copy and not is_copy:
            pixels = pixels.copy()
        elif not copy and (is_copy or self._readonly):
            pixels.flags.writeable = False
        return pixels if dtype is None else pixels.astype(dtype, copy=False)

    @property
    def rgb(self) -> numpy.ndarray:
        """The picture's memory of 24 or 32 bits as (h, w, 3) in the order red, green, blue, without a copy.

        >>> Image.open("photo.png").rgb.shape
        (480, 640, 3)
        """
        import numpy as np

        if self.depth < 24:
            raise FormatError("only 24 and 32 bits hold red, green and blue; call expand() first", self.file, self.page)
        return np.asarray(self)[..., 2::-1]

    @property
    def packed(self) -> numpy.ndarray:
        """The picture's memory of 1 to 8 bits as (h, bytes of a row) of uint8, without a copy. The leftmost pixel of a byte
        is in its highest bits.

        >>> Image.new(20, 5, 1).packed.shape
        (5, 3)
        """
        import numpy as np

        if self.depth > 8 or self.picture.is_compressed:
            raise FormatError("only pictures of 1 to 8 bits without run-length codes are packed", self.file, self.page)
        pixels = np.asarray(self.picture)
        if self._readonly:
            pixels.flags.writeable = False
        return pixels

    def to_pil(self) -> PIL.Image.Image:
        """Copies the picture into a Pillow image of mode 1, L, P or RGB.

        >>> Image.open("scan.tif").to_pil().mode
        '1'
        """
        import PIL.Image

        picture = self.picture
        if picture.is_compressed:
            picture = picture.expanded()
        palette = picture.palette if picture.depth <= 8 else []
        if picture.depth == 1 and palette in (_GRAYS[::255], _GRAYS[::-255]):
            mode, raw = "1", "1" if palette[0] == (0, 0, 0) else "1;I"
        elif picture.depth <= 8:
            mode, raw = ("L", "L") if picture.has_gray_ramp else ("P", {1: "P;1", 4: "P;4", 8: "P"}[picture.depth])
        else:
            mode, raw = "RGB", {16: "BGR;15", 24: "BGR", 32: "BGRX"}[picture.depth]
        order = 1 if picture.is_top_down else -1
        shown = PIL.Image.frombytes(mode, (picture.width, picture.height), picture.stored_rows(), "raw", raw, picture.stride, order)
        if mode == "P":
            shown.putpalette([value for color in palette for value in color])
        if self.dpi:
            shown.info["dpi"] = self.dpi
        return shown

    def _repr_png_(self) -> bytes:
        """The picture as PNG, for notebooks."""
        return self.to_bytes("png")

    # ---- Saving ----

    def save(self, target: Writable, format: str | None = None, *, compression: str | None = None, interlaced: bool = False,
             quality: int | None = None, progressive: bool = False, append: bool = False, overwrite: bool = True,
             strict: bool = False) -> None:  # fmt: skip
        """Writes the picture. Raises OutputError if a byte cannot be written; the file is not read back.

        target       a path, whose file appears whole or not at all, or a file object open in binary mode
        format       tiff, pcx, dcx, gif, tga, bmp, cals, jpeg, png, or a portable map (pnm, pbm, pgm, ppm); without it the
                     ending of the name tells
        compression  of TIFF none, huffman, g3, g4, lzw, jpeg, deflate, packbits; of TGA none, rle
        interlaced   of GIF
        quality      of JPEG, from 1 to 100; without it 75
        progressive  of JPEG: the picture builds up while it loads
        append       adds a page to a TIFF, DCX or PNM file that is there; that happens in place
        overwrite    False: a file that is there is left alone, and OutputError raised
        strict       FormatError where the file has no room for something, such as the resolution in a GIF file

        >>> page = Image.open("scan.tif")
        >>> page.save("page.png")
        >>> page.save("pages.tif", compression="g4")
        >>> page.rotate(180).save("pages.tif", compression="g4", append=True)
        >>> count_pages("pages.tif")
        2
        """
        how = saving(format_of(target, format), compression, interlaced, quality, progressive)
        if not isinstance(target, (str, os.PathLike)):
            if append:
                raise UsageError("pages are added to files with a path")
            target.write(self._bytes(how, strict))
            return
        path = os.fsdecode(target)
        if append and os.path.exists(path):
            file = Source(path, None)
            if file.format != how.format:
                raise UsageError(f"a {how.format} page cannot be added to a {file.format} file", path)
            self._write(path, how, file.count_pages() + 1, strict)
            return
        with replaced(path, overwrite) as scratch:
            self._write(scratch, how, 1, strict)

    def to_bytes(self, format: str, *, compression: str | None = None, interlaced: bool = False, quality: int | None = None,
                 progressive: bool = False, strict: bool = False) -> bytes:  # fmt: skip
        """The bytes of the file that `save` would write.

        >>> Image.open("scan.tif").to_bytes("png")[1:4]
        b'PNG'
        """
        return self._bytes(saving(format_of("", format), compression, interlaced, quality, progressive), strict)

    def _bytes(self, how: _vorel32.Saving, strict: bool) -> bytes:
        try:
            memory = _vorel32.MemoryFile()
            self._write(str(memory.path), how, 1, strict)
            return memory.content()
        except OSError as error:
            raise OutputError(f"{error.strerror}; free some memory or room for temporary files", self.file, self.page) from error

    def _write(self, path: str, how: _vorel32.Saving, page: int, strict: bool) -> list[str]:
        """Returns what the file has no room for."""
        try:
            return _vorel32.save(self.picture, path, how, page, strict)
        except Error as error:
            raise error.about(self.file, self.page)

    # ---- Life ----

    def copy(self) -> Image:
        """A copy of the picture in its own writable memory."""
        return Image(self.picture.copy(), self.file, self.page)

    def close(self) -> None:
        """Releases the memory now, or with the last array of the picture."""
        self._picture = None

    def __enter__(self) -> Image:
        return self

    def __exit__(self, *unused: object) -> None:
        self.close()

    def __reduce__(self):
        return _restored, (self.to_bytes("bmp"), self.file, self.page, self._readonly)

    # ---- Operations ----

    def run(self, steps: str) -> Image | None:
        """Runs steps, written as for `vorel run`, in memory. Returns None if a step drops the page.

        >>> page = Image.open("scan.tif").run("clean 60 | rotate -90 | scale 50%")
        >>> page.size, [report["step"] for report in page.reports]
        ((1100, 850), ['clean', 'rotate', 'scale'])
        """
        return self._told(_chain(steps))

    @staticmethod
    def check_steps(steps: str) -> str:
        """The canonical spelling of steps. Raises UsageError for steps that `run` refuses.

        >>> Image.check_steps("clean  60|scale '50%'")
        'clean 60 | scale 50%'
        """
        return _chain(steps).text

    def _stepped(self, *words: object) -> Image:
        try:
            return Image(_step(*words).make(self.picture), self.file, self.page)
        except Error as error:
            raise error.about(self.file, self.page)

    def _told(self, chain: Any) -> Image | None:
        """The same with reports and losses; None if a step drops the page."""
        try:
            picture, reports, losses = chain.apply(self.picture)
        except Error as error:
            raise error.about(self.file, self.page)
        if picture is None:
            return None
        image = Image(picture, self.file, self.page)
        image.reports, image.losses = reports, losses
        return image

    def _page_step(self, *words: object) -> Image:
        try:
            step = _step(*words)
        except Error as error:
            raise error.about(self.file, self.page)
        image = self._told(step)
        assert image is not None  # no step called so drops a page
        return image

    def rotate(self, degrees: float, *, white: bool = False) -> Image:
        """Turns clockwise. Quarter turns keep every pixel; other whole degrees pick the nearest, and fractions mix four pixels
        of greys and true colours. The picture becomes large enough for its corners, black or white.

        >>> Image.open("scan.tif").rotate(90).size
        (2200, 1700)
        """
        return self._stepped("rotate", degrees, "--white" if white else None)

    def mirror(self, direction: str = "horizontal") -> Image:
        """Swaps left and right ("horizontal") or top and bottom ("vertical").

        >>> Image.open("photo.png").mirror("vertical").size
        (640, 480)
        """
        return self._stepped("mirror", direction)

    def skew(self, direction: str, pixels: int, *, white: bool = False) -> Image:
        """Shears. "horizontal" moves rows right: upper rows most, or lower rows most for negative `pixels`. "vertical" moves
        columns up: right columns most, or left columns most for negative `pixels`.

        >>> Image.open("photo.png").skew("horizontal", 40).size
        (680, 480)
        """
        return self._stepped("skew", direction, pixels, "--white" if white else None)

    def scale(self, size: float | tuple[int, int] | None = None, *, dpi: float | tuple[float, float] | None = None,
              fit: bool = False, keep_dpi: bool = False, method: str | None = None, gray: bool = False) -> Image:  # fmt: skip
        """Makes the picture larger or smaller.

        size      (width, height) in pixels, or a factor for both
        dpi       instead of size: the resolution to reach at the same size on paper
        fit       keeps the proportions: the largest picture within size
        keep_dpi  keeps the stated resolution, so that the size on paper changes
        method    "area", "linear", "cubic" or "nearest"; None: "area" to reduce, "linear" to enlarge
        gray      turns 1 bit into greys, which stay readable at small sizes; default: black and white

        >>> Image.open("photo.png").scale(0.5).size
        (320, 240)
        >>> Image.open("photo.png").scale((100, 100), fit=True).size
        (100, 75)
        >>> Image.open("scan.tif").scale(dpi=100).dpi
        (100.0, 100.0)
        >>> Image.open("scan.tif").scale((85, 110), gray=True).depth
        8
        """
        asked: list[object] = []
        if isinstance(size, Iterable):
            width, height = _pair("size", size)
            asked.append(f"{operator.index(width)}x{operator.index(height)}")
        elif size is not None:
            asked.append(f"{float(size) * 100:.12g}%")
        if dpi is not None:
            x, y = _pair("dpi", dpi)
            asked += ["--dpi", f"{x:.12g}x{y:.12g}"]
        options = ["--fit" if fit else None, "--keep-dpi" if keep_dpi else None, "--gray" if gray else None]
        options += [] if method is None else ["--method", method]
        return self._stepped("scale", *asked, *options)

    def crop(self, left: int, top: int, width: int, height: int) -> Image:
        """A rectangle of the picture. All of it must lie inside.

        >>> Image.open("photo.png").crop(100, 50, 200, 150).size
        (200, 150)
        """
        piece = whole("left", left), whole("top", top), whole("width", width), whole("height", height)
        try:
            return Image(_vorel32.crop(self.picture, *piece), self.file, self.page)
        except Error as error:
            raise error.about(self.file, self.page)

    def cut(self, line: int) -> tuple[Image, Image]:
        """Two pictures: the upper `line` rows, and the rest.

        >>> [half.height for half in Image.open("photo.png").cut(100)]
        [100, 380]
        """
        try:
            above, below = _vorel32.cut(self.picture, whole("line", line))
        except Error as error:
            raise error.about(self.file, self.page)
        return Image(above, self.file, self.page), Image(below, self.file, self.page)

    def invert(self) -> Image:
        """The negative. Up to 8 bits only the palette changes.

        >>> Image.new(8, 8, 1).invert().palette
        [(255, 255, 255), (0, 0, 0)]
        """
        return self._stepped("invert")

    def gray(self, *, weighted: bool = False, smooth: int = 0) -> Image:
        """Greys of 8 bits, or of 4 for a picture of 4.

        weighted  weighs green most and blue least; default: all alike
        smooth    for 1 bit: 1 mixes 3 x 3 pixels, 2 mixes 5 x 5

        >>> Image.open("photo.png").gray(weighted=True).depth
        8
        """
        return self._stepped("gray", "--weighted" if weighted else None, "--smooth", smooth)

    def expand(self) -> Image:
        """The same picture with 24 bits per pixel.

        >>> Image.open("scan.tif").expand().depth
        24
        """
        return self._stepped("expand")

    def tone(self, brightness: int = 0, contrast: int = 0) -> Image:
        """Brightness and contrast, in percent from -100 to 100.

        >>> Image.open("photo.png").tone(brightness=20).size
        (640, 480)
        """
        return self._stepped("tone", "--brightness", brightness, "--contrast", contrast)

    def lut(self, brightness: int = 0, contrast: int = 0, square: tuple[int, int] | None = None) -> Image:
        """Maps level i of 8 bits to i + contrast * (i - mean) / 255 + brightness. The mean is taken over the 256 x 256 pixels
        whose upper left corner is `square`, else it is 128.

        >>> Image.open("photo.png").gray().lut(contrast=100, square=(0, 0)).depth
        8
        """
        where = () if square is None else ("--square", f"{square[0]},{square[1]}")
        return self._stepped("lut", "--brightness", brightness, "--contrast", contrast, *where)

    def filter(self, name: str, size: int = 3, *, kernel: Sequence[int] | Sequence[Sequence[int]] = (), weighted: bool = False) -> Image:
        """Filters 8 and 24 bits: "box", "blur", "sharpen", "sharpen-more", or "kernel" with size * size whole numbers from
        the top row on, in one list or one for each row, and a divisor behind them if that is not their sum.

        >>> Image.open("photo.png").filter("sharpen", 5).depth
        24
        >>> edges = Image.open("photo.png").gray().filter("kernel", kernel=[[-1, -1, -1], [-1, 8, -1], [-1, -1, -1]])
        """
        rows = (row if isinstance(row, Iterable) else (row,) for row in kernel)
        numbers = ("--kernel", " ".join(str(operator.index(number)) for row in rows for number in row)) if len(kernel) > 0 else ()
        return self._stepped("filter", name, "--size", size, "--weighted" if weighted else None, *numbers)

    def clean(self, level: int, *, gentle: bool = False) -> Image:
        """Removes specks from black and white or grey pages.

        level   20 to 100: 20 thickens black, 60 to 70 remove specks, 100 thins black
        gentle  leaves pixels with four or more black neighbours alone

        >>> sorted(Image.open("scan.tif").clean(60).reports[0])
        ['changed', 'pixels', 'sentence', 'step']
        """
        return self._page_step("clean", level, "--gentle" if gentle else None)

    def dither(self, method: str = "jjn", bits: int = 1) -> Image:
        """Reduces colours by error diffusion to 1, 4 or 8 bits: "jjn", "fs", or for 1 and 4 bits "smooth" and "sharp". A picture
        that has no more bits stays as it is.

        >>> Image.open("photo.png").dither("jjn", bits=8).depth
        8
        """
        return self._stepped("dither", "--method", method, "--bits", bits)

    def halftone(self, method: str = "ordered", brightness: int = 0) -> Image:
        """Black and white by "threshold", "diffusion" or "ordered". `brightness` adds -255 to 255 levels first.

        >>> Image.open("photo.png").halftone("threshold", brightness=40).depth
        1
        """
        return self._stepped("halftone", "--method", method, "--brightness", brightness)

    def threshold(self, level: int | str = "otsu", *, window: str = "3.5mm", k: float = 0.34) -> Image:
        """Black and white: white from a level of 0 to 256 on, from the level that "otsu" finds, or by "sauvola" from local levels.

        window  of "sauvola", in millimetres or pixels ("20px")
        k       of "sauvola", 0 to 1: higher means less ink

        >>> Image.open("photo.png").threshold().reports[0]["method"]
        'otsu'
        """
        local = ("--window", window, "--k", k) if level == "sauvola" else ()
        return self._page_step("threshold", level, *local)

    def deskew(self, *, confidence: float = 50, same_size: bool = False, black: bool = False) -> Image:
        """Straightens a slanted page of text, unless its slant is less sure than `confidence` percent.

        same_size  cuts off corners; default: the page grows to keep them
        black      fills the new corners with black; default: white

        >>> page = Image.open("scan.tif").deskew()
        >>> sorted(page.reports[0])
        ['confidence', 'sentence', 'slant', 'step', 'turned', 'uncertainty']
        """
        options = ("--same-size" if same_size else None, "--black" if black else None)
        return self._page_step("deskew", "--confidence", confidence, *options)

    def orient(self, *, confidence: float = 50) -> Image:
        """Turns a page of Latin text upright, by quarters, unless its orientation is less sure than `confidence` percent.

        >>> Image.open("scan.tif").orient().reports[0]["turned"]
        0
        """
        return self._page_step("orient", "--confidence", confidence)

    def is_blank(self, *, most: float = 0.02, margin: float = 3) -> bool:
        """Whether a page has at most so many percent of ink, inside margins of so many percent on each side and without dark
        borders of the scanner and specks of less than about half a millimetre. A line of small text is about 0.1 percent.

        >>> Image.open("scan.tif").is_blank()
        False
        """
        return self._page_step("blank", "--most", most, "--margin", margin).reports[0]["blank"]

    def despeckle(self, size: str = "0.25mm", *, colors: str = "ink") -> Image:
        """Removes connected specks up to a size, in millimetres or pixels ("4px"), from a black and white page: specks of "ink",
        of "paper" (holes in the ink) or "both".

        >>> Image.open("scan.tif").despeckle("2px").reports[0]["most_pixels_across"]
        2
        """
        return self._page_step("despeckle", "--size", size, "--colors", colors)

    def crop_to_content(self, margin: str = "5mm") -> Image:
        """Cuts a scanned page to its content and a margin, without the scanner's dark borders.

        >>> Image.open("scan.tif").crop_to_content("0px").reports[0]["step"]
        'crop'
        """
        return self._page_step("crop", "auto", "--margin", margin)

    def combine(self, overlay: Image, at: tuple[int, int] = (0, 0), *, mask: Image | None = None, mode: str = "replace") -> Image:
        """Paints another picture onto this one, its upper left corner at `at`. Where a 1-bit mask of the overlay's size is black,
        this picture shows. `mode` is "replace", "or" or "xor".

        >>> stamp = Image.new(40, 20)
        >>> Image.open("photo.png").combine(stamp, (10, 10)).size
        (640, 480)
        """
        x, y = _pair("at", at)
        hole = None if mask is None else mask.picture
        try:
            return Image(_vorel32.combine(self.picture, overlay.picture, (whole("x", x), whole("y", y)), hole, mode), self.file, self.page)
        except Error as error:
            raise error.about(self.file, self.page)

    def with_dpi(self, dpi: float | tuple[float, float] | None) -> Image:
        """The same pixels with another stated resolution; None states none.

        >>> Image.open("photo.png").with_dpi(150).dpi
        (150.0, 150.0)
        """
        return Image(self.picture.with_resolution(*_per_metre(dpi)), self.file, self.page)


@functools.lru_cache(maxsize=1024)
def _step(name: str, *words: object) -> Any:
    """A chain of one step. Messages about its words use the names of the method's arguments."""
    texts = [f"{word:.12g}" if isinstance(word, float) else str(word) for word in words if word is not None]
    try:
        return _vorel32.Chain.of_step(name, texts)
    except UsageError as error:
        text = re.sub("--([a-z-]+)", lambda option: option[1].replace("-", "_"), error.message)
        raise UsageError(f"{name}: " + re.sub('(?<!")\\b[A-Z]{4,}\\b', lambda word: word[0].lower(), text)) from None


@functools.lru_cache(maxsize=64)
def _chain(steps: str) -> Any:
    return _vorel32.Chain(steps)


def _restored(content: bytes, file: str | None, page: int | None, readonly: bool) -> Image:
    return Image(_vorel32.Source.in_memory(content, "").load(1), file, page, readonly)


def _owner(array: numpy.ndarray) -> Any:
    """The picture whose pixels an array shows, all of them and in their order; None if there is no such picture."""
    import numpy as np

    holder: Any = array
    while isinstance(holder, np.ndarray):
        holder = holder.base
    picture = getattr(holder, "obj", None)  # a memoryview's
    if not isinstance(picture, _vorel32.Picture) or picture.depth < 8:
        return None
    whole = np.asarray(picture)
    keys = ("data", "shape", "strides", "typestr")
    same = all(array.__array_interface__[key][:1] == whole.__array_interface__[key][:1] if key == "data"
               else array.__array_interface__[key] == whole.__array_interface__[key] for key in keys)  # fmt: skip
    return picture if same else None


def open(source: Readable, page: int = 1, *, name: str | None = None, readonly: bool = False) -> Image:
    """Loads a page: the same as Image.open."""
    return Image.open(source, page, name=name, readonly=readonly)


def count_pages(source: Readable, *, name: str | None = None) -> int:
    """The number of pages of a file.

    >>> count_pages("scan.tif")
    2
    """
    return Source(source, name).count_pages()


def pages(source: Readable, *, name: str | None = None, readonly: bool = False) -> Iterator[Image]:
    """The pages of a file one after the other; one is in memory at a time unless the caller keeps them.

    >>> [page.depth for page in pages("scan.tif")]
    [1, 1]
    """
    file = Source(source, name)
    for page in range(1, file.count_pages() + 1):
        yield Image._loaded(file, page, readonly)


def save_pages(target: str | os.PathLike[str], images: Iterable[Image | None], *, format: str | None = None,
               compression: str | None = None, interlaced: bool = False, quality: int | None = None, progressive: bool = False,
               overwrite: bool = True, strict: bool = False) -> int:  # fmt: skip
    """Writes pictures as the pages of one TIFF, DCX or PNM file, which appears whole or not at all. Skips None, which `run` returns
    for a dropped page. Returns the number of pages. The options are those of Image.save.

    >>> save_pages("clean.tif", (page.clean(60) for page in pages("scan.tif")), compression="g4")
    2
    """
    how = saving(format_of(target, format), compression, interlaced, quality, progressive)
    path = os.fsdecode(target)
    count = 0
    with replaced(path, overwrite) as scratch:
        for count, image in enumerate((image for image in images if image is not None), 1):
            image._write(scratch, how, count, strict)
        if count == 0:
            raise UsageError("there are no pages to save", path)
    return count
