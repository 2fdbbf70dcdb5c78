"""Pictures: the same pixels as the command, arrays, files in memory, failures, threads, memory."""

import gc
import io
import os
import pickle
import resource
import threading
from concurrent.futures import ThreadPoolExecutor

import numpy as np
import PIL.Image
import pytest
from conftest import noise

import vorel32
from vorel32 import Image
from vorel32.cluster import process

# An operation of the package, and the arguments of the verb that does the same.
SAME_AS_VERBS = [
    (lambda p: p.rotate(90), "rotate", "90"),
    (lambda p: p.rotate(-7, white=True), "rotate", "-7", "--white"),
    (lambda p: p.rotate(0), "rotate", "0"),
    (lambda p: p.rotate(1.25), "rotate", "1.25"),
    (lambda p: p.mirror(), "mirror", "horizontal"),
    (lambda p: p.mirror("vertical"), "mirror", "vertical"),
    (lambda p: p.skew("horizontal", 9), "skew", "horizontal", "9"),
    (lambda p: p.skew("vertical", -4, white=True), "skew", "vertical", "-4", "--white"),
    (lambda p: p.scale((31, 77), method="cubic"), "scale", "31x77", "--method", "cubic"),
    (lambda p: p.scale(1.37, keep_dpi=True), "scale", "137%", "--keep-dpi", "--method", "linear"),
    (lambda p: p.scale((90, 90), fit=True, method="nearest"), "scale", "90x90", "--fit", "--method", "nearest"),
    (lambda p: p.scale(dpi=(100, 50)), "scale", "--dpi", "100x50"),
    (lambda p: p.scale(0.4, gray=True), "scale", "40%", "--gray"),
    (lambda p: p.crop(3, 5, 40, 20), "crop", "3,5", "40x20"),
    (lambda p: p.crop(0, 0, *p.size), "crop", "0,0", "{size}"),
    (lambda p: p.invert(), "invert"),
    (lambda p: p.gray(weighted=True), "gray", "--weighted"),
    (lambda p: p.gray(smooth=2), "gray", "--smooth", "2"),
    (lambda p: p.expand(), "expand"),
    (lambda p: p.tone(20, -30), "tone", "--brightness", "20", "--contrast", "-30"),
    (lambda p: p.lut(9, 80, (0, 0)), "lut", "--brightness", "9", "--contrast", "80", "--square", "0,0"),
    (lambda p: p.filter("sharpen", 5), "filter", "sharpen", "--size", "5"),
    (lambda p: p.filter("kernel", kernel=[1, 2, 1, 2, 4, 2, 1, 2, 1], weighted=True),
     "filter", "kernel", "--kernel", "1 2 1 2 4 2 1 2 1", "--weighted"),
    (lambda p: p.clean(60), "clean", "60"),
    (lambda p: p.clean(40, gentle=True), "clean", "40", "--gentle"),
    (lambda p: p.dither(), "dither"),
    (lambda p: p.dither("jjn", 4), "dither", "--method", "jjn", "--bits", "4"),
    (lambda p: p.halftone(), "halftone"),
    (lambda p: p.halftone("threshold", 30), "halftone", "--method", "threshold", "--brightness", "30"),
    (lambda p: p.with_dpi((300, 150)), "convert", "--dpi", "300x150"),
    (lambda p: p.threshold(), "threshold"),
    (lambda p: p.threshold("sauvola", window="9px", k=0.2), "threshold", "sauvola", "--window", "9px", "--k", "0.2"),
    (lambda p: p.deskew(confidence=0, black=True), "deskew", "--confidence", "0", "--black"),
    (lambda p: p.orient(confidence=0), "orient", "--confidence", "0"),
    (lambda p: p.despeckle("3px", colors="both"), "despeckle", "--size", "3px", "--colors", "both"),
    (lambda p: p.crop_to_content("2px"), "crop", "auto", "--margin", "2px"),
]  # fmt: skip


def pictures():
    """Names and pictures of every depth, and forms of them that operations have to change before they begin."""
    h, w = 53, 75
    yield "bits", Image.from_array(noise((h, w)) > 90, dpi=(200, 100))
    yield "white first", Image.from_array(noise((h, w)) > 90, palette=[(255, 255, 255), (0, 0, 0)], dpi=(200, 100))
    four = Image.new(w, h, 4, palette=[(i * 16, 255 - i * 10, i) for i in range(16)], dpi=(200, 100))
    four.packed[...] = noise(four.packed.shape)
    yield "four", four
    yield "grays", Image.from_array(noise((h, w)), dpi=(200, 100))
    yield "palette", Image.from_array(noise((h, w)) % 9, palette=[(90, i * 20, 250 - i) for i in range(9)], dpi=(200, 100))
    yield "colors", Image.from_array(noise((h, w, 3)), dpi=(200, 100))
    yield "unused byte", Image.from_array(noise((h, w, 4)), dpi=(200, 100))


@pytest.mark.parametrize("name,picture", [pytest.param(*case, id=case[0]) for case in pictures()])
def test_operations_give_the_pixels_of_the_command_and_leave_their_picture_alone(name, picture, vorel, tmp_path):
    picture.save(tmp_path / "in.bmp")
    before = (tmp_path / "in.bmp").read_bytes()
    done = 0
    for operation, verb, *options in SAME_AS_VERBS:
        size = f"{picture.width}x{picture.height}"
        arguments = [verb, tmp_path / "in.bmp", tmp_path / "out.bmp", "--overwrite", *(o.format(size=size) for o in options)]
        try:
            result = operation(picture)
        except vorel32.FormatError:
            with pytest.raises(Exception, match="exit status 4"):
                vorel(*arguments)
        else:
            vorel(*arguments)
            assert result.to_bytes("bmp") == (tmp_path / "out.bmp").read_bytes(), (verb, options)
            done += 1
        assert picture.to_bytes("bmp") == before, (verb, options)
    assert done > 15


def test_steps_run_as_by_the_command(vorel, folder):
    page = vorel32.open("scan.tif")
    before = page.to_bytes("bmp")
    steps = "clean 60 --gentle | rotate -3 --white | scale 50% | mirror vertical | dpi 300x200 | invert"
    made = page.run(steps)
    vorel("run", "scan.tif", "out.bmp", steps, "--page", "1")
    assert made.to_bytes("bmp") == (folder / "out.bmp").read_bytes() and page.to_bytes("bmp") == before
    assert page.run("dpi 100").dpi == (100, 100) and page.dpi == (200, 200)  # a change of the header alone
    assert page.run("blank --most 100 --drop") is None
    assert made.file == "scan.tif" and [report["step"] for report in made.reports][-1] == "invert"
    with pytest.raises(vorel32.UsageError, match="did you mean"):
        page.run("claen 60")
    with pytest.raises(vorel32.FormatError, match='scan.tif, page 1: step 2, "tone"'):
        page.run("clean 60 | tone --brightness 5")


def test_top_down_bitmaps_stay_as_they_are_until_an_operation_turns_them(vorel, tmp_path):
    rows = bytes(range(1, 13))
    header = b"BM" + (66).to_bytes(4, "little") + bytes(4) + (54).to_bytes(4, "little")
    info = np.array([40, 1, -3, 24 << 16 | 1, 0, 12, 0, 0, 0, 0], "<i4").tobytes()
    (tmp_path / "down.bmp").write_bytes(header + info + rows)
    picture = vorel32.open(tmp_path / "down.bmp")
    assert np.asarray(picture)[:, 0, 0].tolist() == [1, 5, 9]
    assert np.asarray(picture.mirror("vertical"))[:, 0, 0].tolist() == [9, 5, 1]
    assert np.asarray(picture)[:, 0, 0].tolist() == [1, 5, 9] and picture.to_bytes("bmp") == (tmp_path / "down.bmp").read_bytes()


def test_arrays_share_the_memory_of_their_picture_and_keep_it_alive():
    picture = Image.new(5, 3)
    pixels = np.asarray(picture)
    pixels[0, 0] = (255, 128, 1)
    assert np.shares_memory(pixels, np.asarray(picture)) and picture.rgb[0, 0].tolist() == [1, 128, 255]
    assert picture.rotate(90).rgb[0, 2].tolist() == [1, 128, 255]  # the top row lies on the right then
    assert not np.shares_memory(pixels, np.asarray(picture.picture.expanded()))  # or it would outlive its memory
    again = Image.from_array(pixels, copy=False)
    assert np.shares_memory(np.asarray(again), pixels)
    assert not np.shares_memory(np.asarray(Image.from_array(pixels, copy=True)), pixels)
    for other in (pixels[1:], pixels[:, ::-1], pixels[..., ::-1], pixels.copy()):
        with pytest.raises(vorel32.UsageError):
            Image.from_array(other, copy=False)
    picture.close()
    again.close()
    with pytest.raises(vorel32.UsageError, match="closed"):
        picture.rotate(90)
    gc.collect()
    junk = [Image.new(5, 3) for _ in range(1000)]
    assert pixels[0, 0].tolist() == [255, 128, 1] and len(junk) == 1000


def test_arrays_are_read_only_where_writing_would_be_lost(folder):
    readonly = vorel32.open("photo.png", readonly=True)
    for pixels in (np.asarray(Image.new(9, 2, 1)), np.asarray(Image.new(9, 2, 4)), np.asarray(readonly), readonly.rgb):
        with pytest.raises(ValueError, match="read-only"):
            pixels[0, 0] = 1
    assert np.asarray(readonly.rotate(90)).flags.writeable and np.asarray(readonly.copy()).flags.writeable


@pytest.mark.parametrize("shape,kind", [((7, 13), bool), ((7, 13), np.uint8), ((7, 13, 3), np.uint8), ((7, 13, 4), np.uint8)])
def test_arrays_come_back(shape, kind):
    pixels = noise(shape) > 100 if kind is bool else noise(shape)
    assert (np.asarray(Image.from_array(pixels)).astype(kind) == pixels).all()
    assert (np.asarray(Image.from_array(pixels[::-1, ::-1])).astype(kind) == pixels[::-1, ::-1]).all()
    if kind is not bool and len(shape) == 3:
        assert (Image.from_array(pixels, order="rgb").rgb == pixels[..., :3]).all()


@pytest.mark.parametrize("mode", ["1", "L", "P", "RGB", "RGBA", "CMYK"])
def test_pillow_images_come_back(mode):
    colors = PIL.Image.fromarray(noise((9, 11, 3))).convert(mode)
    if mode == "RGBA":
        colors.putalpha(PIL.Image.fromarray(noise((9, 11)) // 128 * 255))
    colors.info["dpi"] = (300, 150)
    picture = Image.from_pil(colors)
    assert picture.dpi == (300, 150)
    expected = colors.convert("RGB")
    if mode == "RGBA":
        expected = PIL.Image.composite(expected, PIL.Image.new("RGB", colors.size, "white"), colors.getchannel("A"))
    assert (picture.expand().rgb == np.asarray(expected)).all()
    assert (np.asarray(picture.to_pil().convert("RGB")) == np.asarray(expected)).all()
    assert (np.asarray(picture.invert().to_pil().convert("RGB")) == 255 - np.asarray(expected)).all()


@pytest.mark.parametrize("format", ["tiff", "pcx", "dcx", "gif", "tga", "bmp", "jpeg", "png", "cals", "ppm"])
def test_files_in_memory_are_those_on_disk(format, tmp_path, vorel):
    pixels = noise((40, 30)) > 90 if format == "cals" else noise((40, 30)) if format == "gif" else noise((40, 30, 3))
    picture = Image.from_array(pixels, dpi=300)
    path = tmp_path / f"file.{'cal' if format == 'cals' else format}"
    picture.save(path)
    content = picture.to_bytes(format)
    assert content == path.read_bytes()
    stream = io.BytesIO()
    picture.save(stream, format)
    assert stream.getvalue() == content
    name = path.name if format == "tga" else None
    vorel("convert", path, tmp_path / "same.bmp")
    for source in (path, str(path), content, memoryview(content), io.BytesIO(content)):
        assert vorel32.open(source, name=name).to_bytes("bmp") == (tmp_path / "same.bmp").read_bytes()
    assert vorel32.count_pages(content, name=name) == 1


def test_jpeg_takes_the_options_of_the_command(tmp_path, vorel):
    picture = Image.from_array(noise((40, 30, 3)), dpi=300)
    picture.save(tmp_path / "in.bmp")
    for options, words in [({"quality": 20}, ["--quality", 20]), ({"progressive": True}, ["--progressive"])]:
        picture.save(tmp_path / "ours.jpg", **options)
        vorel("convert", tmp_path / "in.bmp", tmp_path / "theirs.jpg", "--overwrite", *words)
        content = (tmp_path / "ours.jpg").read_bytes()
        assert content == (tmp_path / "theirs.jpg").read_bytes() == picture.to_bytes("jpeg", **options) != picture.to_bytes("jpeg")
    for format, options in [("jpeg", {"quality": 0}), ("jpeg", {"quality": 101}), ("png", {"quality": 50}), ("gif", {"progressive": True})]:
        with pytest.raises(vorel32.UsageError):
            picture.to_bytes(format, **options)


def test_tga_is_known_by_its_name_wherever_it_lies(tmp_path):
    content = Image.from_array(noise((4, 4))).to_bytes("tga", compression="none")
    with pytest.raises(vorel32.FormatError, match="not recognised"):
        vorel32.open(content)
    with open(tmp_path / "scan.TGA", "wb") as file:
        file.write(content)
    with open(tmp_path / "scan.TGA", "rb") as file:
        assert vorel32.open(file).file.endswith("scan.TGA")


def test_pages_are_added_and_replaced_whole(folder):
    first, second = vorel32.pages("scan.tif")
    assert (np.asarray(second.rotate(180)) == np.asarray(first)).all()
    second.save("scan.tif", append=True)
    assert [page.page for page in vorel32.pages("scan.tif")] == [1, 2, 3]
    before = (folder / "scan.tif").read_bytes()

    def failing():
        yield first
        raise RuntimeError("stop")

    with pytest.raises(RuntimeError):
        vorel32.save_pages("scan.tif", failing())
    with pytest.raises(vorel32.OutputError):
        first.save("scan.tif", overwrite=False)
    assert (folder / "scan.tif").read_bytes() == before
    assert sorted(os.listdir()) == ["photo.png", "scan.tif"]


def test_failures_have_a_class_a_file_a_page_and_a_code(folder):
    (folder / "cut.png").write_bytes((folder / "photo.png").read_bytes()[:900])
    (folder / "text.txt").write_text("no picture\r\n")
    missing = os.path.join("no", "folder", "x.png")
    cases = [
        (vorel32.InputError, "no.tif", None, lambda: vorel32.open("no.tif")),
        (vorel32.FormatError, "text.txt", 1, lambda: vorel32.open("text.txt")),
        (vorel32.FormatError, "cut.png", 1, lambda: vorel32.open("cut.png")),
        (vorel32.FormatError, "mail.tif", 1, lambda: vorel32.open(b"II*\0 and nothing more", name="mail.tif")),
        (vorel32.UsageError, "scan.tif", 3, lambda: vorel32.open("scan.tif", 3)),
        (vorel32.UsageError, "scan.tif", 2, lambda: vorel32.open("scan.tif", 2).crop(0, 0, 9999, 1)),
        (vorel32.FormatError, "scan.tif", 2, lambda: vorel32.open("scan.tif", 2).tone(5)),
        (vorel32.LimitError, "photo.png", 1, lambda: vorel32.open("photo.png").scale((65535, 65535))),
        (vorel32.LimitError, "photo.png", 1, lambda: vorel32.open("photo.png").scale((70000, 1))),
        (vorel32.OutputError, missing, None, lambda: vorel32.open("photo.png").save(missing)),
        (vorel32.OutputError, ".", None, lambda: vorel32.open("photo.png").save(".", "png")),
        (vorel32.UsageError, "photo.xyz", None, lambda: vorel32.open("photo.png").save("photo.xyz")),
        (vorel32.UsageError, "", None, lambda: vorel32.open("photo.png").with_dpi(-1)),
        (vorel32.UsageError, "", None, lambda: vorel32.open("photo.png").crop(0, 0, 2**31, 1)),
        (vorel32.FormatError, "photo.png", 1, lambda: vorel32.open("photo.png").to_bytes("gif", strict=True)),
        (vorel32.UsageError, "photo.png", 1, lambda: vorel32.open("photo.png").rotate(5).dither("best")),
    ]
    for kind, file, page, work in cases:
        with pytest.raises(kind) as caught:
            work()
        error = caught.value
        assert type(error) is kind and (error.file or "").endswith(file) and error.page == page, error
        assert str(error).endswith(error.message) and "; " in error.message or kind is vorel32.UsageError
        assert str(pickle.loads(pickle.dumps(error))) == str(error)
    with pytest.raises(MemoryError):
        vorel32.open("photo.png").scale((65535, 65535))
    with pytest.raises(vorel32.FormatError) as caught:
        vorel32.open(b"BM" + bytes(60))
    assert pickle.loads(pickle.dumps(vorel32.open("scan.tif", 2))).page == 2


def test_wrong_arguments_are_told_in_the_names_of_the_method():
    picture = Image.new(8, 8)
    for work, message in [
        (lambda: picture.scale(0.5, method="lanczos"), 'scale: method: "lanczos" is none of linear, cubic, nearest, area'),
        (lambda: picture.scale(dpi=72, keep_dpi=True), "scale: dpi and keep_dpi do not go together"),
        (lambda: picture.scale(), "scale: it takes either size or dpi; give one of them"),
        (lambda: picture.mirror("DOWN"), 'mirror: direction: "DOWN" is none of horizontal, vertical'),
        (lambda: picture.deskew(confidence=200), "deskew: confidence: 200 is not within 0 and 100"),
        (lambda: picture.tone(101), 'tone: brightness: "101" is no whole number from -100 to 100'),
    ]:
        with pytest.raises(vorel32.UsageError) as caught:
            work()
        assert caught.value.message == message
    for work in (lambda: vorel32.open(5), lambda: vorel32.open(io.StringIO("no bytes")), lambda: Image("scan.tif"),
                 lambda: picture.filter("kernel", kernel=[0.5] * 9)):  # fmt: skip
        with pytest.raises(TypeError) as caught:
            work()
        assert "incompatible" not in str(caught.value)


def test_names_need_not_be_utf8(folder, vorel):
    name = os.fsdecode(b"caf\xe9.tif")
    vorel32.open("scan.tif").save(name)
    page = vorel32.open(name)
    assert page.file == name and page.deskew().reports and vorel32.open(page.to_bytes("tiff"), name=name).file == name
    with pytest.raises(vorel32.FormatError) as caught:
        page.run("invert | tone --brightness 5")
    assert str(caught.value).startswith(f"{name}, page 1: step 2")
    os.rename(name, "scan.tif")
    with pytest.raises(vorel32.InputError, match="No such file"):
        vorel32.open(name)


def test_a_full_disk_leaves_files_as_they_were(folder):
    photo = vorel32.open("photo.png")
    photo.save("photo.bmp")
    before = {path.name: path.read_bytes() for path in folder.iterdir()}
    soft, hard = resource.getrlimit(resource.RLIMIT_FSIZE)
    resource.setrlimit(resource.RLIMIT_FSIZE, (5000, hard))
    try:
        for work in (lambda: photo.save("photo.bmp"), lambda: photo.save("new.png"), lambda: vorel32.save_pages("new.tif", [photo]),
                     lambda: photo.to_bytes("bmp")):  # fmt: skip
            with pytest.raises(vorel32.OutputError):
                work()
        (record,) = process(["photo.png"], "invert", "out")
        assert record.is_passing and record.attempts == 3 and record.failure and os.listdir("out") == []
    finally:
        resource.setrlimit(resource.RLIMIT_FSIZE, (soft, hard))
    assert before == {path.name: path.read_bytes() for path in folder.iterdir() if path.is_file()}


def test_only_plain_files_are_replaced(folder):
    photo = vorel32.open("photo.png")
    os.mkfifo("pipe")
    with ThreadPoolExecutor(1) as pool:
        for save in (lambda: photo.save("pipe", "png"), lambda: vorel32.save_pages("pipe", [photo], format="png")):
            read = pool.submit(lambda: vorel32.open("pipe").rgb)
            save()
            assert (read.result(10) == photo.rgb).all()
    os.symlink("photo.png", "link.png")
    photo.invert().save("link.png")
    assert os.path.islink("link.png") and (vorel32.open("photo.png").rgb == photo.invert().rgb).all()
    os.chmod("photo.png", 0o444)
    for options in ({}, {"overwrite": False}):
        with pytest.raises(vorel32.OutputError):
            photo.save("photo.png", **options)


def test_threads_work_side_by_side_each_with_its_own_failures(folder):
    def work(seed, results):
        picture = Image.from_array(noise((200, 300, 3), seed))
        for _ in range(40):
            if seed % 2:
                with pytest.raises(vorel32.LimitError):
                    picture.scale((65535, 65535))
            results[seed] = picture.rotate(90).gray(weighted=True).halftone().to_bytes("png")
            assert vorel32.open(results[seed]).size == (200, 300)

    alone, together = {}, {}
    for seed in range(4):
        work(seed, alone)
    threads = [threading.Thread(target=work, args=(seed, together)) for seed in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert together == alone


def test_the_lock_of_the_interpreter_is_free_during_a_call():
    picture, done, ticks, during = Image.from_array(noise((4000, 4000, 3))), threading.Event(), 0, []

    def work():
        for _ in range(3):
            before = ticks
            picture.filter("sharpen", 5)
            during.append(ticks - before)
        done.set()

    thread = threading.Thread(target=work)
    thread.start()
    while not done.is_set():
        ticks += 1
    thread.join()
    assert min(during) > 0  # with the lock held the other thread stands still in most calls


def test_nothing_leaks_over_100000_calls():
    def resident():
        with open("/proc/self/statm", encoding="ascii") as file:
            return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")

    picture = Image.from_array(noise((60, 60, 3)))
    content = picture.to_bytes("bmp")

    def calls(count):
        for i in range(count // 5):
            picture.rotate(90)
            np.asarray(picture.mirror())
            Image.from_array(np.zeros((60, 60), np.uint8))
            if i % 10 == 0:
                vorel32.open(content)
            with pytest.raises(vorel32.UsageError):
                picture.crop(0, 0, 61, 1)
            picture.scale(0.5)

    calls(5000)
    before, files = resident(), len(os.listdir("/proc/self/fd"))
    calls(100_000)
    assert resident() - before < 2_000_000 and len(os.listdir("/proc/self/fd")) == files
