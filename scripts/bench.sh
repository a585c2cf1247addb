#!/usr/bin/env bash
# Builds and runs the benchmarks (Release), then prints:
# - each save validation against the same reads issued directly with the
#   sqlite3 C API (validation / raw reads, in memory and on file);
# - import of n priorities (PXLREG_BENCH_IMPORTA, 1M) against sqlite3
#   inserting the same rows through one prepared INSERT in one transaction;
# - the peak memory of `pxlreg import` of 1M and 10M records
#   (PXLREG_BENCH_MEMORIA: the sizes, "1000000 10000000"; empty skips it).
# - one alert run over 1,000 and 2,000 plans (100 resource links each), in
#   memory and on file, each case in a process of its own: time, the 2x/1x
#   ratio and the peak memory (PXLREG_BENCH_ALERTAS=0 skips it).
# Usage: scripts/bench.sh [extra Google Benchmark options]
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
BUILD="${PXLREG_BENCH_BUILD:-build-bench}"
cmake -S . -B "$BUILD" -DCMAKE_BUILD_TYPE=Release -DPXLREG_TESTS=OFF -DPXLREG_BENCHMARKS=ON >/dev/null
cmake --build "$BUILD" -j"$(nproc)" --target pxlreg_bench pxlreg_cli
OUT="$BUILD/bench.json"
# The machines are shared: each case runs in repetitions interleaved at
# random with the others, and the medians are compared.
# The alert runs are measured below, each in a process of its own.
"./$BUILD/pxlreg_bench" --benchmark_out="$OUT" --benchmark_out_format=json \
  --benchmark_filter=-BM_ExecucaoAlertas --benchmark_repetitions=3 --benchmark_enable_random_interleaving=true \
  --benchmark_report_aggregates_only=true "$@"
if [ "${PXLREG_BENCH_ALERTAS:-1}" != 0 ]; then
  # The alert run: each case alone, so its peak memory is its own.
  for arquivo in 0 1; do
    for planos in 1000 2000; do
      "./$BUILD/pxlreg_bench" --benchmark_filter="^BM_ExecucaoAlertas/planos:$planos/arquivo:$arquivo/" \
        --benchmark_out="$BUILD/alertas_${planos}_${arquivo}.json" --benchmark_out_format=json >/dev/null
    done
  done
  python3 - "$BUILD" <<'PY'
import json, sys
casos = {}
for arquivo in (0, 1):
    for planos in (1000, 2000):
        r = json.load(open(f"{sys.argv[1]}/alertas_{planos}_{arquivo}.json"))["benchmarks"][0]
        if r.get("error_occurred"):
            sys.exit(f"{r['name']}: {r.get('error_message')}")
        casos[(arquivo, planos)] = (r["real_time"], r["pico_MB"])
print()
print(f"{'alert run':10} {'1x ms':>8} {'2x ms':>8} {'2x/1x':>6} {'peak 1x MiB':>12} {'peak 2x MiB':>12}  (goal: under 1000 ms, ratio within 2.20)")
for arquivo, nome in ((0, "memory"), (1, "file")):
    (t1, m1), (t2, m2) = casos[(arquivo, 1000)], casos[(arquivo, 2000)]
    print(f"{nome:10} {t1:>8.0f} {t2:>8.0f} {t2 / t1:>6.2f} {m1:>12.1f} {m2:>12.1f}")
PY
fi
python3 - "$OUT" "./$BUILD/pxlreg" "${PXLREG_BENCH_MEMORIA-1000000 10000000}" <<'PY'
import json, os, re, resource, subprocess, sys, tempfile, time

runs = json.load(open(sys.argv[1]))["benchmarks"]
rate, cpu = {}, {}
for r in runs:
    if r.get("error_occurred"):
        sys.exit(f"{r['name']}: {r.get('error_message')}")
    # The median of the repetitions where there are any, else the one run.
    if r.get("run_type") == "aggregate" and r.get("aggregate_name") != "median":
        continue
    if "items_per_second" in r:
        rate[r.get("run_name", r["name"])] = r["items_per_second"]
        cpu[r.get("run_name", r["name"])] = r.get("cpu_time")
runs = [r for r in runs if r.get("run_type") != "aggregate" or r.get("aggregate_name") == "median"]
for r in runs:
    r["name"] = r.get("run_name", r["name"])

# Validation / raw reads: each workload ran both in turns and gave the median
# of its rounds' ratios, and each side's time per run.
casos = {}
for r in runs:
    m = re.match(r"(.+)/par/arquivo:(\d)/n:(\d+)", r["name"])
    if m and "razao" in r:
        casos.setdefault((m[1], int(m[3])), {})[m[2]] = r
if casos:
    print()
    print(f"{'validation / raw reads':24} {'records':>8} {'memory':>7} {'us':>13} {'file':>7} {'us':>13}  (goal: at most 1.10)")
    for (nome, n), c in sorted(casos.items()):
        colunas = ""
        for arquivo in "01":
            r = c.get(arquivo)
            colunas += (f" {r['razao']:>7.2f} {r['valida_us']:>6.2f}/{r['leituras_us']:<6.2f}" if r
                        else f" {'-':>7} {'':>13}")
        print(f"{nome:24} {n:>8}{colunas}")

def importa(nome):
    return next((v for k, v in rate.items() if k.split("/")[:2] == ["importa", nome]), None)
json_rate, sqlite_rate = importa("json"), importa("sqlite3")
if json_rate and sqlite_rate:
    print()
    print(f"import: {json_rate:,.0f} records/s; sqlite3, one prepared INSERT: {sqlite_rate:,.0f} rows/s; "
          f"ratio {json_rate / sqlite_rate:.2f} (goal: at least 0.50)")
    # On a shared machine the wall clock also counts the waits for a core;
    # the process's CPU time (both of import's threads) does not.
    json_cpu = next((v for k, v in cpu.items() if k.split("/")[:2] == ["importa", "json"]), None)
    sqlite_cpu = next((v for k, v in cpu.items() if k.split("/")[:2] == ["importa", "sqlite3"]), None)
    if json_cpu and sqlite_cpu:
        print(f"import by CPU time: sqlite3 {sqlite_cpu:,.0f} ms, import {json_cpu:,.0f} ms, "
              f"ratio {sqlite_cpu / json_cpu:.2f}")

# Peak memory of the command line's import, each size in a process of its own.
pxlreg = sys.argv[2]
for n in [int(x) for x in sys.argv[3].split()]:
    with tempfile.TemporaryDirectory(prefix="pxlreg_bench_") as d:
        entrada, armazem = os.path.join(d, "p.jsonl"), os.path.join(d, "p.db")
        with open(entrada, "w") as f:
            for i in range(1, n + 1):
                f.write('{"type":"CQZDadosPX_Prioridade","Posicao":%d,"Codigo":"P%07d","Descricao":"Prioridade %d",'
                        '"PrioridadeBase":%d,"DmaHmsAtualizacao":"2026-01-02T03:04:05+00:00"}\n' % (i, i, i, i % 101))
        subprocess.run([pxlreg, "init", armazem], check=True, stdout=subprocess.DEVNULL)
        # getrusage's high-water mark covers every child so far: each size
        # runs in a child of its own to be measured alone.
        codigo = ("import resource, subprocess, sys, time\n"
                  "t = time.monotonic()\n"
                  "subprocess.run(sys.argv[1:], check=True, stdout=subprocess.DEVNULL)\n"
                  "print(time.monotonic() - t, resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)\n")
        saida = subprocess.run([sys.executable, "-c", codigo, pxlreg, "import", armazem, entrada],
                               check=True, capture_output=True, text=True).stdout.split()
        segundos, pico_kib = float(saida[0]), int(saida[1])
        print(f"pxlreg import of {n:,} records: {n / segundos:,.0f} records/s, peak memory {pico_kib / 1024:.1f} MiB "
              f"(goal: under 64 MiB)")
# The PostgreSQL server's validations (PXLREG_BENCH_PG set) beside the file's,
# and the saves per second of 8 concurrent clients.
servidor = {}
for r in runs:
    m = re.match(r"(\w+)/(valida|par)/arquivo:(\d)/n:(\d+)", r["name"])
    if m and m[3] == "2" and "items_per_second" in r:
        servidor.setdefault((m[1], int(m[4])), {})["2"] = r["items_per_second"]
    elif m and m[3] == "1" and "valida_us" in r:
        servidor.setdefault((m[1], int(m[4])), {})["1"] = 1e6 / r["valida_us"]
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
