#!/usr/bin/env bash
# Builds the library and tests for other systems and compilers, runs them, and compares the hash of every call with that of
# the build for this machine: the same bits everywhere. A user's project finds what was installed there and runs, too.
# Usage: scripts/check_systems.sh [--quick] [NAME ...]    without names: all of them
# With --quick, the hashes and the tests that tell most, at -O1; else all tests that do not look at the library from
# outside, as a release.
# Each system is a toolchain file in cmake/systems. Needs Debian 12 on x86-64, and root, or sudo, for missing packages.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

all=(clang19 libc++19 aarch64 s390x i386 musl windows)
quick=false folder=$PWD/build/systems
if [[ ${1:-} == --quick ]]; then quick=true folder+=/quick && shift; fi
names=("$@")
if ((${#names[@]} == 0)); then names=("${all[@]}"); fi

packages() {
  case $1 in
    clang19) echo clang-19 ;;
    libc++19) echo clang-19 libc++-19-dev libc++abi-19-dev ;;
    aarch64 | s390x) echo "g++-$1-linux-gnu" qemu-user ;;
    i386) echo g++-i686-linux-gnu ;;
    musl) echo clang-19 libc++-19-dev libc++abi-19-dev musl-tools ;;
    windows) echo g++-mingw-w64-x86-64-posix wine64 ;;
  esac
}

# The programs that run on a system, one a line.
programs() {
  if $quick; then
    printf '%s\n' elementary_test file_test numbers_test
  else
    sed -n '/^qel_gridwork_tests(/,/)/p' tests/CMakeLists.txt | grep -oE '\b[a-z0-9_]+_test\b'
    if [[ $1 != windows ]]; then printf '%s\n' hostile_files_test io_faults_test sharing_test threads_test; fi
    # In a static program the requests of the C library itself, as for a file, would fail, too.
    if [[ $1 != windows && $1 != musl ]]; then echo allocation_test; fi
  fi
}

# Systems are built side by side, one on each processor; one alone has them all.
jobs=$((($(nproc) + ${#names[@]} - 1) / ${#names[@]}))

build() {  # NAME PROGRAM ...
  local name=$1 options=()
  shift
  if [[ $name == musl ]]; then options+=(-DBUILD_SHARED_LIBS=OFF); fi
  if $quick; then options+=("-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG"); fi
  cmake -G Ninja -S . -B "$folder/$name" --toolchain "$PWD/cmake/systems/$name.cmake" "${options[@]}" \
    -DCMAKE_BUILD_TYPE=Release -DQEL_GRIDWORK_DEVELOPER=ON -DQEL_GRIDWORK_BUILD_EXAMPLES=OFF \
    -DQEL_GRIDWORK_BUILD_TOOL=OFF -DQEL_GRIDWORK_GOOGLETEST=/usr/src/googletest \
    -DCMAKE_PROJECT_qel_gridwork_INCLUDE="$PWD/cmake/systems/precompile.cmake" > /dev/null
  cmake --build "$folder/$name" -j "$jobs" --target qel_gridwork determinism "$@"
}

# A program of a system, by what runs it here.
run() {  # NAME PROGRAM [ARGUMENT ...]
  local program=$folder/$1/$2 emulator
  if [[ $1 == windows ]]; then program+=.exe; fi
  emulator=$(sed -n 's/^CMAKE_CROSSCOMPILING_EMULATOR:[A-Z]*=//p' "$folder/$1/CMakeCache.txt")
  ${emulator//;/ } "$program" "${@:3}" | tr -d '\r'
}

# A user's project, which finds the library where it was installed.
use() {  # NAME
  local prefix=$folder/$1/prefix
  cmake --install "$folder/$1" --prefix "$prefix" > /dev/null
  cmake -G Ninja -S tests/consumer -B "$folder/$1/consumer" --toolchain "$PWD/cmake/systems/$1.cmake" \
    -DCMAKE_PREFIX_PATH="$prefix" > /dev/null
  cmake --build "$folder/$1/consumer"
  (cd "$folder/$1/consumer" && WINEPATH=$prefix/bin run "$1" consumer/consumer)
}

check() {  # NAME
  local name=$1 passed=0 count program chosen
  mapfile -t chosen < <(programs "$name")
  build "$name" "${chosen[@]}"
  use "$name"
  for program in "${chosen[@]}"; do
    run "$name" "tests/$program" --gtest_brief=1 | tee "$folder/$name/$program.txt"
    count=$(sed -n 's/^\[  PASSED  \] \([0-9]*\) tests*\.$/\1/p' "$folder/$name/$program.txt")
    passed=$((passed + count))
  done
  run "$name" tests/determinism > "$folder/$name/determinism.txt"
  diff build/release/determinism.txt "$folder/$name/determinism.txt"
  echo "$name: $passed tests passed, $(hash "$folder/$name/determinism.txt")" > "$folder/$name.row"
}

# One hash of all calls.
hash() { echo "$(wc -l < "$1") calls, $(sha256sum "$1" | cut -c1-16)"; }

# Wine keeps its files apart, asks for nothing, and writes names of files in the encoding of the locale.
export WINEPREFIX=$PWD/build/systems/wine LC_ALL=C.UTF-8 WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml=' DISPLAY=

need_packages g++ cmake ninja-build libgtest-dev googletest
for name in "${names[@]}"; do
  [[ -f cmake/systems/$name.cmake ]] || { echo "there is no system $name; there are: ${all[*]}" >&2 && exit 1; }
  read -ra wanted < <(packages "$name")
  need_packages "${wanted[@]}"
done

cmake --preset release > /dev/null
cmake --build --preset release --target determinism
build/release/tests/determinism > build/release/determinism.txt

mkdir -p "$folder"
for name in "${names[@]}"; do
  rm -f "$folder/$name.row"
  if (($(jobs -rp | wc -l) >= $(nproc))); then wait -n || true; fi
  check "$name" &> "$folder/$name.log" &
done
wait

failures=0
echo "this machine: $(hash build/release/determinism.txt)"
for name in "${names[@]}"; do
  if cat "$folder/$name.row" 2> /dev/null; then continue; fi
  echo "$name: FAILED, as $folder/$name.log tells:" && tail -n 40 "$folder/$name.log"
  failures=1
done
exit "$failures"
