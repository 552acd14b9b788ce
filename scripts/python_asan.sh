#!/usr/bin/env bash
# Runs the tests of the Python package with its module under the address sanitizer, all but those of types and pictures.
# Needs a release build with -DQEL_GRIDWORK_BUILD_PYTHON=ON.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

build=build/python_asan
rm -rf "$build" && mkdir -p "$build/gridwork"
read -ra includes < <(/usr/bin/python3 -m pybind11 --includes)
printf '%s\n' editions/python/src/*.cpp | xargs -P "$(nproc)" -I{} sh -c \
  'g++ -std=c++20 -O1 -g1 -fno-omit-frame-pointer -fsanitize=address -fPIC -fvisibility=hidden -DNDEBUG "$@" \
    -c {} -o '"$build"'/$(basename {}).o' sh -Iinclude "${includes[@]}"
g++ -shared -fsanitize=address "$build"/*.o -o "$build/gridwork/_core$(/usr/bin/python3-config --extension-suffix)" \
  -Lbuild/release -lqel_gridwork -Wl,-rpath,"$PWD/build/release"
ln -s "$PWD"/editions/python/gridwork/* "$build/gridwork/"

# The interpreter keeps what it has until it ends: leaks of its own say nothing. Its allocator would hide what is freed.
runtime="$(g++ -print-file-name=libasan.so) $(g++ -print-file-name=libstdc++.so)"
PYTHONPATH=$PWD/$build PYTHONDONTWRITEBYTECODE=1 PYTHONMALLOC=malloc ASAN_OPTIONS=detect_leaks=0 LD_PRELOAD=$runtime \
  /usr/bin/python3 -m pytest -q -p no:cacheprovider -W error::gridwork.CopyWarning editions/python/tests \
  --deselect editions/python/tests/test_gallery.py --deselect editions/python/tests/test_types.py
