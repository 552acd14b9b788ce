#!/usr/bin/env bash
# Builds the page and the npm package for browsers, and serves the page on the loopback interface:
# scripts/web.sh [--build-only | --test] [PORT]. The package is left in build/web/package, the page in build/web/page.
# --test runs the tests instead; those in Chromium are skipped where it is not installed. What they compare with is built
# natively, unless GRIDWORK_NATIVE_BUILD names a folder where it is.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

need_packages clang-22 lld-22 libc++-22-dev-wasm32 libclang-rt-22-dev-wasm32 wasi-libc cmake ninja-build
if ! command -v node > /dev/null; then need_packages nodejs npm; fi

cmake --preset web > /dev/null
cmake --build --preset web
node editions/web/assemble.mjs build/web

case ${1:-} in
  --build-only) ;;
  --test)
    if [[ -z ${GRIDWORK_NATIVE_BUILD:-} ]]; then
      cmake --preset release > /dev/null
      cmake --build --preset release --target gridwork determinism
    fi
    cmake --build --preset web --target determinism
    version=$(node -p "require('./editions/web/package.json').devDependencies['playwright-core']")
    if [[ ! -d build/web/node_modules/playwright-core ]]; then
      npm install --silent --no-audit --no-fund --no-save --prefix build/web "playwright-core@$version" ||
        echo "playwright-core cannot be installed: the tests in Chromium are skipped"
    fi
    node --test editions/web/test/*.test.mjs
    ;;
  *) node editions/web/serve.mjs build/web/page "${1:-8000}" ;;
esac
