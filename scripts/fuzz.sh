#!/usr/bin/env bash
# Builds the fuzzers (with clang, in build/asan) and runs them from their seeds and from what they found before, which is
# kept in build/asan/found. Stops at the first input that fails, and says how to run it again. With --small, the limits
# of core/limits.h are small, and everything lies in build/small.
# Usage: scripts/fuzz.sh [--small] [TARGET|all [SECONDS]]
# All of them, two at a time, and 60 seconds each if not told otherwise.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

need_packages clang libclang-rt-14-dev cmake ninja-build libgtest-dev
export preset=asan
if [[ ${1:-} == --small ]]; then
  preset=small
  shift
fi
cmake --preset "$preset" > /dev/null
cmake --build --preset "$preset" --target fuzzers

run() {
  local program=build/$preset/fuzz/fuzz_$1 found=build/$preset/found/$1 options=()
  mkdir -p "$found"
  if [[ -f fuzz/$1.dict ]]; then options+=("-dict=fuzz/$1.dict"); fi
  if [[ -d fuzz/seeds/$1 ]]; then options+=("fuzz/seeds/$1"); fi
  if "$program" -max_total_time="$2" -max_len=2048 -len_control=20 -timeout=20 -rss_limit_mb=2048 \
    -artifact_prefix="$found-" "$found" "${options[@]}" > "$found.log" 2>&1; then
    echo "$1: $(grep DONE "$found.log")"
    return
  fi
  echo "$1:" && tail -n 40 "$found.log" && echo "again: $program $(sed -n 's/.*Test unit written to //p' "$found.log")"
  return 255  # stops xargs
}
export -f run

targets=${1:-all}
if [[ $targets == all ]]; then targets=$(basename -s .cpp fuzz/*.cpp | grep -vx replay); fi
xargs -P 2 -I '{}' bash -c "run '{}' ${2:-60}" <<< "$targets"
