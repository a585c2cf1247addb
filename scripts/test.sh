#!/usr/bin/env bash
# Builds and runs the test suite. Usage: scripts/test.sh [default|asan|tsan]
#   default  the release build (RelWithDebInfo)
#   asan     AddressSanitizer + UndefinedBehaviorSanitizer
#   tsan     ThreadSanitizer
set -euo pipefail
cd "$(dirname "$0")/.."
PRESET="${1:-default}"
bash scripts/deps.sh
cmake --preset "$PRESET" -DPXLREG_TESTS=ON >/dev/null
cmake --build --preset "$PRESET" -j"$(nproc)"
ctest --preset "$PRESET" -j"$(nproc)"
