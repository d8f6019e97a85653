#!/usr/bin/env bash
# Installs what is missing, builds the benchmarks and runs them.
# usage: Scripts/bench.sh [workload and options of CorvaneBench; --help lists them]
set -euo pipefail
cd "$(dirname "$0")/.."

Scripts/setup.sh --bench
[ -f build/bench/build.ninja ] || cmake --preset bench
cmake --build --preset bench --target CorvaneBench
exec build/bench/Benchmarks/CorvaneBench "$@"
