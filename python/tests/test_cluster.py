"""The same steps over many files, in one process and on a Dask cluster."""

import os
import signal
from pathlib import Path

import pytest

import vorel32
from vorel32.cluster import process

STEPS = "clean 60 | rotate 90 | scale 50%"


def outputs(folder):
    return {path.name: path.read_bytes() for path in Path(folder).iterdir()}


def make_files(count):
    page = vorel32.open("scan.tif")
    for i in range(count):
        page.crop(i, 0, 200, 300).save(f"page-{i}.tif")
    return [f"page-{i}.tif" for i in range(count)]


def test_a_record_for_each_file_whatever_becomes_of_it(folder):
    Path("broken.tif").write_bytes(b"II*\0 and nothing more")
    records = {r.path: r for r in process(["scan.tif", "broken.tif", "gone.tif", "photo.png"], STEPS, "out", format="png")}
    assert records["scan.tif"].pages == 2 and records["scan.tif"].failure is None
    assert records["broken.tif"].failure.startswith("broken.tif") and not records["broken.tif"].is_passing
    assert records["gone.tif"].failure and "clean" in records["photo.png"].failure
    expected = [page.run(STEPS).to_bytes("png") for page in vorel32.pages("scan.tif")]
    assert outputs("out") == {"scan-1.png": expected[0], "scan-2.png": expected[1]}

    again = {r.path: r.skipped for r in process(["scan.tif", "photo.png"], STEPS, "out", format="png", resume=True)}
    assert again == {"scan.tif": True, "photo.png": False}
    os.utime("scan.tif")
    assert not next(process(["scan.tif"], STEPS, "out", format="png", resume=True)).skipped


def test_wrong_use_is_refused_before_anything_is_done(folder):
    os.mkdir("more")
    vorel32.open("scan.tif").save("more/scan.tif")
    os.symlink(".", "link")
    twice = "scan.tif"
    for paths, steps, out, options in [
        (["scan.tif", "more/scan.tif"], STEPS, "out", {}), ([twice, twice], STEPS, "out", {}), (["scan.tif"], STEPS, ".", {}),
        (["scan.tif"], STEPS, "link", {}), (["scan.tif"], "clena 60", "out", {}), (["scan.tif"], STEPS, "out", {"format": "xyz"}),
        (["scan.tif"], STEPS, "out", {"format": "png", "quality": 50}), (["scan.tif"], STEPS, "out", {"compression": "g5"}),
        (["scan.tif"], STEPS, "out", {"batch": 0}),
    ]:  # fmt: skip
        with pytest.raises(vorel32.UsageError):
            process(paths, steps, out, **options)
    with pytest.raises(TypeError):
        process("scan.tif", STEPS, "out")
    assert not os.path.exists("out")


def test_outputs_have_the_options_of_save_and_records_tell_what_was_lost(folder):
    photo = vorel32.open("photo.png")
    (jpeg,) = process(["photo.png"], "invert", "out", format="jpg", quality=30, progressive=True)
    assert Path(jpeg.outputs[0]).read_bytes() == photo.invert().to_bytes("jpeg", quality=30, progressive=True)
    assert jpeg.losses == [] and jpeg.reports == {1: [{"step": "invert"}]}
    options = {"format": "gif", "interlaced": True}
    (gif,) = process(["photo.png"], "dither --bits 8", "out", **options)
    assert gif.failure is None and len(gif.losses) == 1 and "150 x 150 dpi" in gif.losses[0]
    (strict,) = process(["photo.png"], "dither --bits 8", "strict", strict=True, **options)
    assert strict.failure == f"photo.png, page 1: {gif.losses[0]}, or leave strict out" and os.listdir("strict") == []


def test_what_a_disk_spoils_is_tried_again(folder):
    calls = []

    def steps(page):
        calls.append(page.file)
        if len(calls) == 1:
            raise OSError("the network is away")
        return page

    (record,) = process(["photo.png"], steps, "out")
    assert (record.failure, record.attempts, record.pages, len(record.reports)) == (None, 2, 1, 1)


def test_dropped_pages_cost_no_other_page_and_are_not_done_again(folder):
    ink, blank = vorel32.open("scan.tif"), vorel32.Image.new(1700, 2200, 1).invert()
    vorel32.save_pages("mixed.tif", [ink, blank, ink])
    blank.save("empty.tif")
    inputs, steps = ["mixed.tif", "empty.tif"], "blank --drop"
    for format, names in [("png", ["mixed-1.png", "mixed-3.png"]), ("tiff", ["mixed.tif"])]:
        mixed, empty = process(inputs, steps, format, format=format)
        assert (mixed.failure, mixed.pages, [os.path.basename(o) for o in mixed.outputs]) == (None, 2, names)
        assert (empty.failure, empty.pages, empty.outputs) == (None, 0, [])
        assert sorted(path.name for path in Path(format).glob("[!.]*")) == names
        assert all(r.skipped for r in process(inputs, steps, format, format=format, resume=True))
        kept = [r.skipped for r in process(inputs, "invert", format, format=format, resume=True)]  # these drop nothing
        assert kept == [format == "tiff", False]
    os.remove("png/mixed-3.png")
    assert not next(process(["mixed.tif"], steps, "png", format="png", resume=True)).skipped and os.path.exists("png/mixed-3.png")
    os.utime("empty.tif")
    assert not next(process(["empty.tif"], steps, "png", format="png", resume=True)).skipped


def test_no_output_takes_the_name_of_another(folder):
    page = vorel32.open("scan.tif")
    for name in ("scan-1.tif", "scan-3.tif"):
        page.save(name)
    several, one, other = process(["scan.tif", "scan-1.tif", "scan-3.tif"], "invert", "out", format="png")
    assert "its page 1" in several.failure and not several.is_passing and one.failure is None and other.failure is None
    assert outputs("out").keys() == {"scan-1.png", "scan-3.png"}
    assert next(process(["scan.tif", "scan-3.tif"], "invert", "more", format="png")).pages == 2  # there is no page 3
    long = "纸" * 82
    page.save(f"{long}.tif")
    assert [r.failure for r in process([f"{long}.tif"], "invert", "out")] == [None]


def test_what_is_left_of_a_run_that_was_ended_writes_nothing(folder):
    run = process(["scan.tif", "photo.png"], lambda page: page, "out")
    job, _ = run.gi_frame.f_locals["job"], next(run)
    run.close()
    before = os.listdir("out")
    assert job.run("photo.png").failure and os.listdir("out") == before == ["scan.tif"]


def deadly(page):
    if page.file.endswith("page-3.tif"):
        os._exit(1)
    return page


def test_a_worker_that_dies_costs_no_page_and_makes_none_twice(folder):
    dask, distributed = pytest.importorskip("dask"), pytest.importorskip("distributed")
    files = make_files(60)
    list(process(files, STEPS, "alone"))
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=":0") as cluster:
        with distributed.Client(cluster) as client:
            seen = []
            client.run(os.chdir, "/")
            for record in process([*files, "gone.tif"], STEPS, "together", client=client, batch=2, retries=1):
                seen.append(record.path)
                if len(seen) == 10:
                    os.kill(int(record.worker.split(":")[1]), signal.SIGKILL)
            assert client.get_events("vorel32")[-1][1] == {"files": 61, "done": 60, "failed": 1}
            with dask.config.set({"distributed.scheduler.allowed-failures": 0}):
                records = list(process(files[:20], deadly, "deadly", client=client, batch=4))
            assert [(r.path, r.attempts) for r in records if r.failure] == [("page-3.tif", 3)] and len(records) == 20
            run = process(files, STEPS, "late", client=client, batch=1)
            next(run)
            client.close()
            with pytest.raises(vorel32.ClusterError):
                list(run)
            assert all(not path.name.startswith(".") for path in Path("late").iterdir())
    assert sorted(seen) == sorted([*files, "gone.tif"])
    assert outputs("together") == outputs("alone") and len(outputs("alone")) == 60
