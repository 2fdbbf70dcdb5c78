#!/usr/bin/env bash
# Builds the wheel from a finished build, installs it into a fresh virtual environment without network, and runs the tests there.
# usage: run.sh PYTHON BUILD_FOLDER [PYTEST_ARGUMENT]...
set -euo pipefail
python=$1 build=$(realpath "$2")
shift 2
root=$(realpath "$(dirname "$0")/..")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
VOREL32_BUILT=$build/bin "$python" -m pip wheel --quiet --no-index --no-build-isolation --no-deps --wheel-dir "$work" "$root"
"$python" -m venv --system-site-packages "$work/venv"
"$work/venv/bin/python" -m pip install --quiet --no-index --no-deps "$work"/*.whl
cd "$work"
VOREL=$build/bin/vorel "$work/venv/bin/python" -m pytest -q -p no:cacheprovider --basetemp="$work/tmp" "$root/tests" "$@"
