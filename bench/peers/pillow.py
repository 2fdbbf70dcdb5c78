"""Pillow as a participant: the lines and answers of worker.cpp."""

import sys

from PIL import Image, ImageFilter

Image.MAX_IMAGE_PIXELS = None
SQUARE = 256
TURNS = {"kQuarterTurn": Image.Transpose.ROTATE_270, "kHalfTurn": Image.Transpose.ROTATE_180,
         "kBackTurn": Image.Transpose.ROTATE_90, "kMirrorSides": Image.Transpose.FLIP_LEFT_RIGHT,
         "kMirrorTop": Image.Transpose.FLIP_TOP_BOTTOM}
SCALES = {"kLinear": Image.Resampling.BILINEAR, "kCubic": Image.Resampling.BICUBIC, "kNearest": Image.Resampling.NEAREST}
DIFFUSIONS = ("kDiffuse", "kDiffuseWide", "kDiffuseSmooth", "kDiffuseSharp", "kHalftoneDiffuse")


def picture(file, depth, size):
    with open(file, "rb") as source:
        data = source.read()
    if depth == 24:
        return Image.frombytes("RGB", size, data, "raw", "BGR")
    return Image.frombytes("1" if depth == 1 else "L", size, data)


def palette(bits):
    """Red, green and blue on or off, or eight reds, eight greens and four blues."""
    levels = [(r, g, b) for r in (0, 255) for g in (0, 255) for b in (0, 255)] if bits == 4 else \
        [(r * 36, g * 36, b * 85) for r in range(8) for g in range(8) for b in range(4)]
    image = Image.new("P", (1, 1))
    image.putpalette([component for color in levels for component in color])
    return image


def work(file, operation, amount, depth, width, height, colored, result_width, result_height):
    if operation in ("kEncode", "kDecode", "kExpand") or colored:
        return None
    image = picture(file, depth, (width, height))
    if operation in TURNS:
        return lambda: image.transpose(TURNS[operation])
    if operation == "kRotate":
        return lambda: image.rotate(amount, Image.Resampling.NEAREST, expand=True)
    if operation == "kSkew":
        matrix = (1, amount / height, -amount, 0, 1, 0)
        return lambda: image.transform((result_width, height), Image.Transform.AFFINE, matrix, Image.Resampling.NEAREST)
    if operation in SCALES:
        return lambda: image.resize((result_width, result_height), SCALES[operation])
    if operation == "kGray" or operation == "kSmoothBits" and amount == 0:
        return lambda: image.convert("L")
    if operation in ("kBrighten", "kLookUp"):
        table = [int(max(0, min(255, min(i + 12, 255) * 1.2 - 25))) for i in range(256)] * len(image.getbands())
        return lambda: image.point(table)
    if operation in ("kCount", "kDrag"):
        return lambda: image.crop((0, 0, SQUARE, SQUARE)).histogram()
    if operation == "kMedian":
        return lambda: image.filter(ImageFilter.RankFilter(3, 4))
    if operation in DIFFUSIONS and amount == 1:
        return lambda: image.convert("1")
    if operation in DIFFUSIONS:
        colors = palette(amount)
        return lambda: image.quantize(palette=colors, dither=Image.Dither.FLOYDSTEINBERG)
    if operation == "kThreshold":
        table = [255 if i > 128 else 0 for i in range(256)]
        return lambda: image.point(table, "1")
    if operation == "kSave":
        return lambda: image.save(file + ".bmp")
    return None


def main():
    job = None
    for line in sys.stdin:
        verb, *words = line.split()
        if verb == "prepare":
            job = work(words[1], words[2], *map(int, words[3:]))
            answer = "ready" if job else "none"
        else:
            for _ in range(int(words[0])):
                job()
            answer = "done"
        print(answer, flush=True)


main()
