"""Processes small pages on a Dask cluster of two worker processes, kills one in the middle, and compares with one process.

usage: demo_dask.py STEPS FOLDER COUNT
"""

import filecmp
import os
import signal
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "python" / "bench"))
from distributed import Client, LocalCluster  # noqa: E402
from pages import make_pages  # noqa: E402
from vorel32.cluster import process  # noqa: E402


def timed(records):
    start = time.perf_counter()
    records = list(records)
    return records, len(records) / (time.perf_counter() - start)


def killing_one(records, after):
    for number, record in enumerate(records):
        if number == after:
            pid = int(record.worker.split(":")[1])
            os.kill(pid, signal.SIGKILL)
            print(f"   worker {pid} killed after {after} files")
        yield record


def main(steps, folder, count):
    print(f"   making {count} pages")
    (folder / "in").mkdir(parents=True, exist_ok=True)
    paths = make_pages(folder / "in", count)
    alone, rate = timed(process(paths, steps, folder / "alone", compression="g4"))
    print(f"   one process: {rate:.0f} pages per second")
    with LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=":0") as cluster, Client(cluster) as client:
        together, rate = timed(killing_one(process(paths, steps, folder / "dask", client=client, compression="g4", batch=32), count // 3))
    print(f"   two workers, one killed and started again: {rate:.0f} pages per second")

    names = sorted(os.listdir(folder / "alone"))
    equal, different, missing = filecmp.cmpfiles(folder / "alone", folder / "dask", names, shallow=False)
    again = sum(record.attempts > 1 for record in together)
    workers = len({record.worker for record in together})
    print(f"   {len(together)} records for {len({record.path for record in together})} files by {workers} workers; "
          f"{sum(bool(r.failure) for r in together)} failures, {again} files tried again by themselves")  # fmt: skip
    print(f"   outputs: {len(equal)} equal byte for byte, {len(different)} different, {len(missing)} missing, "
          f"{len(set(os.listdir(folder / 'dask')) - set(names))} more than there should be")  # fmt: skip
    done = [record.path for record in together if not record.failure]
    if len(alone) != count or sorted(done) != sorted(paths) or len(equal) != count or len(os.listdir(folder / "dask")) != count:
        sys.exit("the results differ")


if __name__ == "__main__":
    main(sys.argv[1], Path(sys.argv[2]), int(sys.argv[3]))
