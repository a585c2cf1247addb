#!/usr/bin/env bash
# Builds and runs the benchmarks (Release), then prints the save validations
# per second of each workload on the file store and in memory, and the ratio.
# Usage: scripts/bench.sh [extra Google Benchmark options]
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
BUILD="${PXLREG_BENCH_BUILD:-build-bench}"
cmake -S . -B "$BUILD" -DCMAKE_BUILD_TYPE=Release -DPXLREG_TESTS=OFF -DPXLREG_BENCHMARKS=ON >/dev/null
cmake --build "$BUILD" -j"$(nproc)" --target pxlreg_bench
OUT="$BUILD/bench.json"
"./$BUILD/pxlreg_bench" --benchmark_out="$OUT" --benchmark_out_format=json "$@"
python3 - "$OUT" <<'PY'
import json, sys, re
runs = json.load(open(sys.argv[1]))["benchmarks"]
rate = {}
for r in runs:
    if r.get("error_occurred"):
        sys.exit(f"{r['name']}: {r.get('error_message')}")
    m = re.match(r"(\w+)/arquivo:(\d)/n:(\d+)", r["name"])
    if m and "items_per_second" in r:
        rate[(m[1], int(m[3]), m[2] == "1")] = r["items_per_second"]
print()
print(f"{'workload':24} {'records':>8} {'memory/s':>12} {'file/s':>12} {'file/memory':>12}")
for (nome, n, arquivo) in sorted(rate):
    if arquivo:
        continue
    mem, arq = rate[(nome, n, False)], rate.get((nome, n, True))
    if arq:
        print(f"{nome:24} {n:>8} {mem:>12,.0f} {arq:>12,.0f} {arq / mem:>12.2f}")
# The PostgreSQL server's validations (PXLREG_BENCH_PG set) beside the file's,
# and the saves per second of 8 concurrent clients.
servidor = {}
for r in runs:
    m = re.match(r"(\w+)/valida/arquivo:(\d)/n:(\d+)", r["name"])
    if m and m[2] in "12" and "items_per_second" in r:
        servidor.setdefault((m[1], int(m[3])), {})[m[2]] = r["items_per_second"]
if any("2" in v for v in servidor.values()):
    print()
    print(f"{'validation':24} {'records':>8} {'file/s':>12} {'server/s':>12}")
    for (nome, n), v in sorted(servidor.items()):
        if "2" in v:
            print(f"{nome:24} {n:>8} {v.get('1', 0):>12,.0f} {v['2']:>12,.0f}")
for r in runs:
    m = re.match(r"GravacaoConcorrente/armazem:(\d)", r["name"])
    if m and "items_per_second" in r:
        print(f"8 clients saving, {'server' if m[1] == '2' else 'file'}: {r['items_per_second']:,.0f} saves/s")
PY
