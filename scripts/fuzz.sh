#!/usr/bin/env bash
# Builds the libFuzzer targets with clang (preset "fuzz", AddressSanitizer and
# UndefinedBehaviorSanitizer) and runs each for SECONDS (60 by default) from
# its seed corpus in fuzz/corpus/<target>/. A finding stops the script with a
# non-zero status; the input that caused it is kept in build-fuzz/achados/.
# Usage: scripts/fuzz.sh [SECONDS] [TARGET...]
set -euo pipefail
cd "$(dirname "$0")/.."
SEGUNDOS="${1:-60}"
shift || true
ALVOS=("$@")
((${#ALVOS[@]})) || ALVOS=(leitura_json registro_json valores)

bash scripts/deps.sh
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j"$(nproc)" --target "${ALVOS[@]/#/fuzz_}"

mkdir -p build-fuzz/achados
for alvo in "${ALVOS[@]}"; do
  # New inputs go to a scratch folder; the seeds in the repository stay as they are.
  trabalho="build-fuzz/corpus/$alvo"
  mkdir -p "$trabalho"
  # JSON records run to a few kilobytes; the text forms to a few dozen bytes.
  opcoes=(-max_len=512)
  [[ "$alvo" == *json ]] && opcoes=(-max_len=4096 -dict=fuzz/json.dict)
  echo "== $alvo: $SEGUNDOS s"
  registro="build-fuzz/$alvo.log"
  estado=0
  "build-fuzz/fuzz_$alvo" "${opcoes[@]}" -max_total_time="$SEGUNDOS" -timeout=10 \
    -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="build-fuzz/achados/$alvo-" \
    "$trabalho" "fuzz/corpus/$alvo" >"$registro" 2>&1 || estado=$?
  grep -E '^(stat::number_of_executed_units|stat::average_exec_per_sec|stat::peak_rss_mb|#[0-9]+ +DONE)' "$registro" || true
  if ((estado != 0)); then
    tail -n 60 "$registro" >&2
    echo "fuzz_$alvo: achado (estado $estado); a entrada está em build-fuzz/achados/" >&2
    exit 1
  fi
done
