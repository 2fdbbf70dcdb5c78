"""The pages of a folder on a Spark cluster. Not run: Spark could not be installed where this was written.

    spark-submit spark_pages.py /data/scans /data/out 'clean 60 | scale 50%'

The package is installed on every node, and the folders are on a file system that all nodes see.
"""

import sys
from pathlib import Path

from pyspark.sql import SparkSession


def shard(out, steps):
    def process_shard(paths):
        from vorel32.cluster import process

        # Outputs appear by rename and are left out when they are there: an attempt that Spark repeats does no harm.
        for record in process(paths, steps, out, resume=True):
            yield record.path, record.pages, record.seconds, record.failure

    return process_shard


def main(scans, out, steps):
    session = SparkSession.builder.appName("vorel32").getOrCreate()
    # Of one folder: the outputs of files of one name in two folders would replace each other.
    paths = sorted(str(path) for path in Path(scans).glob("*.tif"))
    shards = max(1, len(paths) // 500)
    records = session.sparkContext.parallelize(paths, shards).mapPartitions(shard(out, steps))
    table = records.toDF("path string, pages int, seconds double, failure string")
    table.write.mode("overwrite").json(f"{out}/records")

    # The command instead of the package: a partition's paths go to standard input, JSON comes back line by line.
    #   session.sparkContext.parallelize(paths, shards).pipe(f"vorel batch '{steps}' --files-from - --out {out} --resume --json")


if __name__ == "__main__":
    main(*sys.argv[1:])
