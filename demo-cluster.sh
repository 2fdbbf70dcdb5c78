#!/usr/bin/env bash
# From one machine to many, on one machine: installs the Python package into a fresh virtual environment, processes 2,000 small pages
# on a Dask cluster of two worker processes of which one is killed in the middle, and then as a Slurm job array of four shards of
# which one is killed and queued again, and in four shards under GNU parallel. All results are compared byte for byte with those of one
# process. Works on a fresh Debian 12 machine, leaves pages and reports in out/cluster, and leaves nothing running.
# usage: demo-cluster.sh [PAGES]   (default: 2000)
set -euo pipefail
cd "$(dirname "$0")"
pages=${1:-2000}
out=$PWD/out/cluster
steps='clean 60 | rotate 90 | scale 50%'

say() { printf '\n== %s\n' "$*"; }

./tools/setup.sh --cluster
mkdir -p build
say "building (log: build/native.log)"
{ cmake --preset native && cmake --build --preset native --target vorel codec_modules _vorel32; } >build/native.log 2>&1 ||
  { tail -40 build/native.log; echo "the native preset does not build"; exit 1; }

say "building the wheel and installing it into a fresh virtual environment"
rm -rf build/cluster "$out"
mkdir -p "$out"
VOREL32_BUILT=$PWD/build/native/bin /usr/bin/python3 -m pip wheel --quiet --no-index --no-build-isolation --no-deps --wheel-dir build/cluster ./python
/usr/bin/python3 -m venv --system-site-packages build/cluster/venv
build/cluster/venv/bin/python -m pip install --quiet --no-index --no-deps build/cluster/*.whl
ls build/cluster/*.whl

say "Dask: two worker processes, one killed in the middle"
build/cluster/venv/bin/python tools/demo_dask.py "$steps" "$out/dask" "$pages"

say "Slurm: an array of four shards, one killed and queued again"
./tools/one-machine-slurm.sh "$out/slurm" ./tools/demo-slurm.sh "$steps" "$out/dask/in" "$out/slurm-pages"

say "GNU parallel: four shards on this machine"
cd "$out/slurm-pages"
VOREL=$OLDPWD/build/native/bin/vorel "$OLDPWD/python/examples/parallel.sh" "$steps" list.txt "$out/parallel" 4
diff -r --exclude=.vorel-batch alone "$out/parallel"
echo "   outputs: $(find "$out/parallel" -name '*.tif' | wc -l) equal byte for byte, none missing, none more than there should be"
