#!/usr/bin/env bash
# The module installed as Python users install it: `pip install` of the source tree
# into a fresh virtual environment, then the example and the typing checks run there
# against the installed package (not the build tree).
#   pip-install-in-venv.sh SOURCE_DIR WORK_DIR [PYTHON]
# The venv sees the system's packages only for the build back-end (setuptools, wheel)
# and the test tools (pytest, mypy); the CMake build inside pip stays in WORK_DIR/build
# between runs and uses the compiler cache, so a rerun rebuilds only what changed.
set -euo pipefail
source_dir=$1 work=$2 python=${3:-python3}
unset PYTHONPATH LD_PRELOAD ASAN_OPTIONS
rm -rf "$work/venv"
mkdir -p "$work"
"$python" -m venv --system-site-packages "$work/venv"
venv_python=$work/venv/bin/python
MERIDEX_PIP_BUILD_DIR=$work/build "$venv_python" -m pip install --no-build-isolation --no-deps --no-index \
  --disable-pip-version-check -q "$source_dir"
cd "$work"
"$venv_python" - <<'PY'
import sys
from pathlib import Path
import meridex
package = Path(meridex.__file__).parent
assert Path(sys.prefix) in package.parents, f"{package} is not in the venv {sys.prefix}"
assert {"__init__.pyi", "py.typed"} <= {p.name for p in package.iterdir()}, list(package.iterdir())
print("meridex", meridex.__version__, "from", package)
PY
"$venv_python" -m pytest -q -p no:cacheprovider "$source_dir/tests/python/test_example.py" \
  "$source_dir/tests/python/test_typing.py"
