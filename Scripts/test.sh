#!/usr/bin/env bash
# Installs what is missing, builds and runs the tests.
# usage: Scripts/test.sh [--preset default|debug|asan|tsan] [further arguments for ctest]
set -euo pipefail
cd "$(dirname "$0")/.."

preset=default
if [ "${1:-}" = "--preset" ]; then
	preset=$2
	shift 2
fi

Scripts/setup.sh --test
[ -f "build/$preset/build.ninja" ] || cmake --preset "$preset"
cmake --build --preset "$preset"
parallel=$(nproc)
[ "$preset" != default ] || parallel=$((2 * parallel)) # most tests wait more than they compute, but not under a sanitizer
ctest --preset "$preset" --parallel "$parallel" "$@"
