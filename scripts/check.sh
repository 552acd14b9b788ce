#!/usr/bin/env bash
# Everything that has to hold before a change goes in: formatting, clang-tidy, a build without warnings, all tests,
# the thread tests under the thread sanitizer, and all tests under the address and undefined-behaviour sanitizers.
# Needs Debian 12 and root, or sudo, for the packages that are missing.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

need_packages g++ clang libclang-rt-14-dev cmake ninja-build libgtest-dev pkg-config clang-format clang-tidy git \
  locales python3-meshio

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
cmake --preset release > /dev/null
cmake --build --preset release

echo "== clang-tidy"
sources '*.cpp' ':!tests' ':!benchmarks' ':!examples' ':!fuzz' |
  xargs -n 1 -P "$(nproc)" clang-tidy --quiet -p build/release 2> /dev/null

echo "== tests"
ctest --preset release

# The thread sanitizer of this compiler does not bear every layout of the address space.
fixed_layout=()
if setarch -R true 2> /dev/null; then fixed_layout=(setarch -R); fi

echo "== threads, under the thread sanitizer"
cmake --preset tsan > /dev/null
cmake --build --preset tsan --target threads_test
"${fixed_layout[@]}" build/tsan/tests/threads_test --gtest_brief=1

echo "== tests, under the address and undefined-behaviour sanitizers"
cmake --preset asan > /dev/null
cmake --build --preset asan
ctest --preset asan
