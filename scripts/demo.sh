#!/usr/bin/env bash
# Builds the host and runs the main job on the embedded store (a SQLite file).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
cmake --preset default >/dev/null
cmake --build --preset default -j"$(nproc)" --target pxlreg_cli
STORE="${PXLREG_STORE:-build/demo.db}"
rm -f "$STORE" "$STORE-wal" "$STORE-shm"
./build/pxlreg demo "$STORE"
