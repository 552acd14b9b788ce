#!/usr/bin/env bash
# Everything that has to hold before a change goes in: formatting, clang-tidy, a build without warnings, all tests, with
# g++ and with clang, which must give the same results, the reference, the Debian packages, the thread tests under the
# thread sanitizer, all tests under the address and undefined-behaviour sanitizers, also with small limits, and the
# fuzzers for a short while, with both sets of limits.
# Needs Debian 12 and root, or sudo, for the packages that are missing.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

need_packages g++ clang libclang-rt-14-dev cmake ninja-build libgtest-dev pkg-config clang-format clang-tidy git \
  locales python3-meshio abigail-tools libeigen3-dev libmetis-dev libcli11-dev python3-pytest python3-jsonschema libopenmpi-dev openmpi-bin libptscotch-dev

sources() { git -c safe.directory="$PWD" ls-files --cached --others --exclude-standard -- "$@"; }

# Some tests ask for a locale with a decimal comma.
export LOCPATH=$PWD/build/locale
if [[ ! -d $LOCPATH/de_DE.UTF-8 ]]; then
  mkdir -p "$LOCPATH"
  localedef -i de_DE -f UTF-8 "$LOCPATH/de_DE.UTF-8"
fi

echo "== formatting"
sources '*.h' '*.cpp' | xargs clang-format --dry-run -Werror

echo "== release build"
cmake --preset release -DQEL_GRIDWORK_BUILD_MPI=ON > /dev/null
cmake --build --preset release

echo "== clang-tidy"
sources '*.cpp' ':!tests' ':!benchmarks' ':!examples' ':!fuzz' ':!docs' ':!editions' |
  xargs -n 1 -P "$(nproc)" clang-tidy --quiet -p build/release 2> /dev/null

echo "== tests"
ctest --preset release

echo "== the reference"
scripts/docs.sh

echo "== build and tests, with clang"
cmake --preset clang > /dev/null
cmake --build --preset clang
ctest --preset clang --exclude-regex '^(clients|consumer|public_headers_compile_alone)$'

echo "== the same results from both compilers"
for build in release clang; do "build/$build/tests/determinism" > "build/$build/determinism.txt"; done
diff build/release/determinism.txt build/clang/determinism.txt

echo "== Debian packages"
scripts/package_deb.sh

# The thread sanitizer of this compiler does not bear every layout of the address space.
fixed_layout=()
if setarch -R true 2> /dev/null; then fixed_layout=(setarch -R); fi

echo "== threads, under the thread sanitizer"
cmake --preset tsan > /dev/null
cmake --build --preset tsan --target threads_test
"${fixed_layout[@]}" build/tsan/tests/threads_test --gtest_brief=1

echo "== fuzzers"
scripts/fuzz.sh all 20
scripts/fuzz.sh --small all 20

for build in asan small; do
  echo "== tests, under the address and undefined-behaviour sanitizers: $build"
  cmake --preset "$build" -DQEL_GRIDWORK_BUILD_MPI=$([[ $build == small ]] && echo ON || echo OFF) > /dev/null
  cmake --build --preset "$build"
  ctest --preset "$build"
done
