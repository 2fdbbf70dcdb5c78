"""Draws the pictures that the manual starts from: a photograph of nowhere, a page of text, and the same page scanned badly.

Only additions, products, quotients and square roots, so that every machine draws the same bytes.
usage: draw.py FOLDER
"""
import math
import sys
from pathlib import Path

from PIL import Image, ImageDraw, ImageFont

FONTS = Path("/usr/share/fonts/truetype/dejavu")


def mixed(a, b, share):
    return tuple(x + (y - x) * share for x, y in zip(a, b))


def noise(x, y, seed):
    """A number from 0 to 1 for a point of the grid."""
    n = (x * 374761393 + y * 668265263 + seed * 982451653) & 0xFFFFFFFF
    n = ((n ^ (n >> 13)) * 1274126177) & 0xFFFFFFFF
    return ((n ^ (n >> 16)) & 0xFFFF) / 65535


def smooth_noise(x, y, seed):
    x0, y0 = math.floor(x), math.floor(y)
    u, v = x - x0, y - y0
    u, v = u * u * (3 - 2 * u), v * v * (3 - 2 * v)
    top = noise(x0, y0, seed) * (1 - u) + noise(x0 + 1, y0, seed) * u
    bottom = noise(x0, y0 + 1, seed) * (1 - u) + noise(x0 + 1, y0 + 1, seed) * u
    return top * (1 - v) + bottom * v


def clouds(x, y, seed, octaves=4):
    total, weight = 0.0, 0.5
    for octave in range(octaves):
        total += weight * smooth_noise(x, y, seed + octave)
        x, y, weight = x * 2, y * 2, weight / 2
    return total


# height of the crest, roughness, seed, colour at the crest and in the valley
RIDGES = [
    (0.43, 0.16, 11, (146, 160, 190), (186, 190, 204)),
    (0.52, 0.13, 23, (94, 120, 140), (140, 158, 160)),
    (0.60, 0.08, 37, (48, 84, 76), (84, 116, 84)),
]
SHORE = 0.66
# centre, radius, the colours of the gores
BALLOONS = [
    (0.30, 0.27, 0.150, [(214, 48, 40), (250, 196, 60)]),
    (0.68, 0.19, 0.078, [(34, 92, 168), (244, 240, 228), (34, 150, 140)]),
    (0.86, 0.33, 0.050, [(150, 60, 140), (246, 150, 60)]),
]


def land(u, v):
    """The colour of the view at a point, 0 to 1 each way, without balloons."""
    color = mixed((66, 122, 196), (246, 206, 164), min(1, v / 0.55))
    cloud = clouds(u * 5, v * 13, 5)
    if cloud > 0.5:
        color = mixed(color, (255, 244, 232), min(0.8, (cloud - 0.5) * 4))
    sun = math.sqrt((u - 0.80) * (u - 0.80) * 2.25 + (v - 0.42) * (v - 0.42))
    color = mixed(color, (255, 246, 206), max(0, 1 - sun / 0.20) * 0.9)
    for crest, rough, seed, high, low in RIDGES:
        top = crest - rough * (clouds(u * 4 + seed, 0.5, seed, 6) - 0.45)
        if v > top:
            depth = min(1, (v - top) / 0.16)
            grain = clouds(u * 46, v * 60, seed + 9, 2) - 0.4
            color = tuple(c + 46 * grain * (1 - 0.5 * depth) for c in mixed(high, low, depth))
    return color


def balloon(u, v, color):
    for x, y, radius, gores in BALLOONS:
        dx, dy = (u - x) * 1.5, v - y
        narrow = 1 if dy < 0 else 1 - 0.32 * (dy / radius) * (dy / radius)
        across = dx / (radius * narrow)
        height = dy / radius / (1.0 if dy < 0 else 1.25)
        if across * across + height * height < 1:
            gore = across / math.sqrt(1 - height * height + 0.0001)
            bulge = gore / (1 + math.sqrt(max(0, 1 - gore * gore))) * 1.0  # about half the angle of the gore
            shade = 0.62 + 0.46 * max(0, (0.45 * across - 0.5 * height + 0.6) / 1.2)
            color = tuple(c * shade for c in gores[math.floor((bulge + 1) * 4) % len(gores)])
        basket = radius * 1.62
        if basket < dy < basket + radius * 0.24 and -0.13 < dx / radius < 0.13:
            color = (92, 60, 36)
        elif radius * 1.1 < dy <= basket and min(abs(dx / radius - 0.12), abs(dx / radius + 0.12)) < 0.016:
            color = (70, 56, 48)
    return color


def photo_color(u, v):
    if v < SHORE:
        return balloon(u, v, land(u, v))
    depth = (v - SHORE) / (1 - SHORE)
    ripple = (smooth_noise(u * 30, depth * 70, 71) - 0.5) * 0.05 * (0.3 + depth)
    mirror = SHORE - (v - SHORE) * 1.25 - ripple
    water = mixed(balloon(u + ripple * 0.4, mirror, land(u, mirror)), (38, 74, 96), 0.30 + 0.25 * depth)
    glint = smooth_noise(u * 24, depth * 90, 91)
    return mixed(water, (255, 250, 236), max(0, glint - 0.80) * 1.4)


def photo(width, height):
    picture = Image.new("RGB", (width, height))
    pixels = picture.load()
    for y in range(height):
        for x in range(width):
            grain = (noise(x, y, 3) - 0.5) * 5
            color = photo_color((x + 0.5) / width, (y + 0.5) / height)
            pixels[x, y] = tuple(max(0, min(255, round(c + grain))) for c in color)
    return picture


LINES = """The harbour office has received your letter of the
third and the two drawings that came with it.
The crane on the north quay will be moved in May.
Until then all timber is landed at the old pier,
where the depth at low water is four metres.
Please send the list of ships one week ahead."""


def page(width, height):
    """A letter with a table, 8 bits of grey."""
    sheet = Image.new("L", (width, height), 255)
    draw = ImageDraw.Draw(sheet)
    def font(size, bold=False):
        return ImageFont.truetype(str(FONTS / ("DejaVuSerif-Bold.ttf" if bold else "DejaVuSerif.ttf")), size,
                                  layout_engine=ImageFont.Layout.BASIC)
    left, right = 24, width - 24
    draw.text((left, 20), "Harbour Office", 0, font(22, True))
    draw.line((left, 52, right, 52), 0, 2)
    for number, line in enumerate(LINES.split("\n")):
        draw.text((left, 60 + number * 18), line, 0, font(13))
    table = [("Ship", "Tonnes", "Quay"), ("Anna", "1,250", "North"), ("Meridian", "840", "Old pier")]
    top = height - 84
    for row, words in enumerate(table):
        for column, word in enumerate(words):
            draw.text((left + 8 + column * 122, top + 3 + row * 22), word, 0, font(13, row == 0))
    for row in range(4):
        draw.line((left, top + row * 22, right, top + row * 22), 0, 1)
    for column in range(4):
        x = left + (right - left) * column // 3
        draw.line((x, top, x, top + 66), 0, 1)
    return sheet


def specked(sheet, count):
    sheet = sheet.copy()
    pixels = sheet.load()
    for n in range(count):
        x, y = int(noise(n, 1, 5) * (sheet.width - 2)), int(noise(n, 2, 5) * (sheet.height - 2))
        for dx in range(1 + n % 2):
            for dy in range(1 + n // 3 % 2):
                pixels[x + dx, y + dy] = 255 - pixels[x + dx, y + dy] if n % 5 == 0 else 0
    return sheet


def badly_lit(sheet):
    """The shadow of a book's spine, and grain."""
    result = sheet.copy()
    pixels = result.load()
    for y in range(sheet.height):
        for x in range(sheet.width):
            u = x / sheet.width
            light = 0.95 - 0.62 * u * u * u - 0.1 * y / sheet.height
            pixels[x, y] = max(0, min(255, int((60 + pixels[x, y] * 0.74) * light + (noise(x, y, 7) - 0.5) * 16)))
    return result


def letter(size, frame):
    """An F, which has no symmetry, in a frame of one pixel."""
    sheet = Image.new("RGB", size, "white")
    draw = ImageDraw.Draw(sheet)
    draw.rectangle((0, 0, size[0] - 1, size[1] - 1), None, frame)
    for box in ((4, 3, 6, 12), (4, 3, 14, 4), (4, 7, 11, 8)):
        draw.rectangle(box, "black")
    return sheet


def red_at_index_0(sheet):
    """The same picture with a colour table of red, black and white."""
    result = sheet.point(lambda level: 2 if level else 1, "P")
    result.putpalette([200, 30, 30, 0, 0, 0, 255, 255, 255] + [128] * 759)
    return result


def main(folder):
    folder = Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    width, height = 400, 267
    two = lambda sheet: sheet.point(lambda level: 255 if level > 150 else 0).convert("1", dither=0)
    sheet = page(width, height)
    slanted = sheet.rotate(3.2, Image.Resampling.BICUBIC, fillcolor=255)
    picture = photo(width, height)
    save = lambda image, name: image.save(folder / name, dpi=(100, 100))
    save(picture, "photo.png")
    save(picture.crop((240, 28, 300, 68)), "detail.png")
    stamp = Image.new("RGB", (120, 120), (196, 30, 40))
    ring = ImageDraw.Draw(stamp)
    ring.ellipse((14, 14, 105, 105), None, "white", 4)
    ring.rectangle((30, 54, 89, 66), "white")
    mask = Image.new("1", (120, 120), 0)
    ImageDraw.Draw(mask).ellipse((4, 4, 115, 115), 1)
    save(stamp, "stamp.png")
    save(mask, "mask.png")
    save(picture.convert("P", palette=Image.Palette.WEB, dither=0), "web.png")
    save(picture.convert("L"), "grey.png")
    save(two(sheet), "page.png")
    save(two(specked(sheet, 420)), "specks.png")
    save(two(specked(slanted, 60)), "crooked.png")
    save(badly_lit(sheet), "lit.png")
    save(two(letter((22, 16), "white").convert("L")), "letter.png")
    save(letter((22, 16), "#2060d0"), "even.png")
    save(letter((21, 15), "#2060d0"), "odd.png")
    dotted = letter((32, 16), "white").convert("L")
    for n in range(48):
        dotted.putpixel((n * 7 % 32, n * 5 // 3 % 16), 0)
    save(two(dotted), "dotted.png")
    save(red_at_index_0(letter((22, 16), "black").convert("L")), "red.png")
    save(Image.new("RGB", (22, 16), (170, 170, 170)), "flat.png")
    save(Image.new("L", (22, 16), 100), "hundred.png")
    ramp = Image.new("L", (width, 48))
    ramp.putdata([x * 256 // width for _ in range(48) for x in range(width)])
    save(ramp, "ramp.png")


if __name__ == "__main__":
    main(sys.argv[1])
