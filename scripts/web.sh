#!/usr/bin/env bash
# Builds the page and the npm package for browsers, and serves the page on the loopback interface:
# scripts/web.sh [--build-only | --test | --twice | --speed] [PORT]. The package is left in build/web/package, the page in
# build/web/page. --test runs the tests instead; those in Chromium are skipped where it is not installed. What they compare
# with is built natively, unless GRIDWORK_NATIVE_BUILD names a folder where it is. --twice builds once more elsewhere, and
# fails where a byte differs. --speed measures, on a quiet machine, beside the native library, three.js and meshoptimizer.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

need_packages binaryen esbuild clang-22 lld-22 libc++-22-dev-wasm32 libclang-rt-22-dev-wasm32 wasi-libc cmake ninja-build
if ! command -v node > /dev/null; then need_packages nodejs npm; fi

build_native() {
  cmake --preset release > /dev/null
  cmake --build --preset release --target "$@"
}

# What tests and measurements need of npm; what cannot be installed is missing there.
install_peers() {
  npm install --silent --no-audit --no-fund --no-save --prefix build/web "$@" || echo "cannot be installed: $*"
}
peer() { node -p "'$1@' + require('./editions/web/package.json').devDependencies['$1']"; }

cmake --preset web > /dev/null
cmake --build --preset web
node editions/web/assemble.mjs build/web

case ${1:-} in
  --build-only) ;;
  --test)
    if [[ -z ${GRIDWORK_NATIVE_BUILD:-} ]]; then build_native gridwork determinism; fi
    cmake --build --preset web --target determinism
    if [[ ! -d build/web/node_modules/playwright-core || ! -d build/web/node_modules/typescript ]]; then
      install_peers "$(peer playwright-core)" "$(peer typescript)"
    fi
    node --test editions/web/test/*.test.mjs
    ;;
  --twice)
    cmake --preset web -B build/web-again > /dev/null
    CCACHE_DISABLE=1 cmake --build build/web-again
    node editions/web/assemble.mjs build/web-again
    for folder in package page; do diff -r "build/web/$folder" "build/web-again/$folder"; done
    ;;
  --speed)
    build_native qel_gridwork
    install_peers "$(peer playwright-core)" "$(peer three)" "$(peer meshoptimizer)" "$(peer typescript)"
    c++ -O2 -std=c++17 -Iinclude editions/web/benchmark/native.cpp -Lbuild/release -lqel_gridwork \
      -Wl,-rpath,"$PWD/build/release" -o build/web/native
    node editions/web/benchmark/speed.mjs
    ;;
  *) node editions/web/serve.mjs build/web/page "${1:-8000}" ;;
esac
