#!/usr/bin/env bash
# Everything that has to hold before a change goes in: formatting, clang-tidy, a build without warnings, all tests, the
# package and page for browsers, the same results on other systems, the reference, the Debian packages, the thread tests
# under the thread sanitizer, the fuzzers for a short while and all tests, built with clang, under the address and
# undefined-behaviour sanitizers, both with the usual and with small limits. Each part says after how many seconds it begins.
# Needs Debian 12 and root, or sudo, for the packages that are missing.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

need_packages g++ clang clang-19 libclang-rt-14-dev cmake ninja-build libgtest-dev pkg-config clang-format clang-tidy git \
  locales python3-meshio abigail-tools libeigen3-dev libmetis-dev libcli11-dev python3-pytest python3-jsonschema groff mandoc zsh fish chromium libopenmpi-dev openmpi-bin libptscotch-dev \
  pybind11-dev python3-dev python3-mpi4py python3-hypothesis python3-matplotlib python3-networkx python3-scipy python3-vtk9 mypy xvfb xauth

part() { echo "== $1 ($SECONDS s)"; }

sources() { git -c safe.directory="$PWD" ls-files --cached --others --exclude-standard -- "$@"; }

# Some tests ask for a locale with a decimal comma.
export LOCPATH=$PWD/build/locale
if [[ ! -d $LOCPATH/de_DE.UTF-8 ]]; then
  mkdir -p "$LOCPATH"
  localedef -i de_DE -f UTF-8 "$LOCPATH/de_DE.UTF-8"
fi

part "formatting"
sources '*.h' '*.cpp' | xargs clang-format --dry-run -Werror

part "release build"
cmake --preset release -DQEL_GRIDWORK_BUILD_MPI=ON -DQEL_GRIDWORK_BUILD_PYTHON=ON -DPython_EXECUTABLE=/usr/bin/python3 \
  > /dev/null
cmake --build --preset release

part "clang-tidy"
{ sources '*.cpp' ':!tests' ':!benchmarks' ':!examples' ':!fuzz' ':!docs' ':!editions'; sources 'editions/cli/*.cpp'; } |
  xargs -n 1 -P "$(nproc)" clang-tidy --quiet -p build/release 2> /dev/null

part "tests"
ctest --preset release

part "package and page for browsers"
scripts/web.sh --test

part "the reference"
scripts/docs.sh

part "the same results on other systems"
scripts/check_systems.sh --quick aarch64 i386 musl s390x windows

part "Debian packages"
scripts/package_deb.sh --quick

# The thread sanitizer of this compiler does not bear every layout of the address space.
fixed_layout=()
if setarch -R true 2> /dev/null; then fixed_layout=(setarch -R); fi

part "threads, under the thread sanitizer"
cmake --preset tsan > /dev/null
cmake --build --preset tsan --target threads_test
"${fixed_layout[@]}" build/tsan/tests/threads_test --gtest_brief=1

part "fuzzers"
scripts/fuzz.sh all 3
scripts/fuzz.sh --small all 3

for build in asan small; do
  part "tests, under the address and undefined-behaviour sanitizers: $build"
  cmake --preset "$build" -DQEL_GRIDWORK_BUILD_MPI=$([[ $build == small ]] && echo ON || echo OFF) > /dev/null
  cmake --build --preset "$build"
  ctest --preset "$build"
  "build/$build/tests/determinism" | diff build/release/determinism.txt -
done
