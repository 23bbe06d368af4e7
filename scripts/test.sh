#!/usr/bin/env bash
# Builds the project and runs its tests (the default preset: RelWithDebInfo),
# then runs every benchmark briefly: its timings decide nothing, the run
# shows that each benchmark still works.
#
#   bash scripts/test.sh
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

bash scripts/install-deps.sh
cmake --preset default
cmake --build --preset default
ctest --preset default --label-exclude bench

# The benchmarks' smoke runs are the tests labelled "bench" (bench/).
if grep -q '^ICP_BUILD_BENCHMARKS:BOOL=ON$' build/default/CMakeCache.txt; then
  ctest --preset default --label-regex bench --no-tests=error
fi
