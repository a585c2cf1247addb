#!/usr/bin/env bash
# Builds the host and runs the main job on the embedded store (a SQLite
# file): a demo plant, then a save the rules allow and one they refuse.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
cmake --preset default >/dev/null
cmake --build --preset default -j"$(nproc)" --target pxlreg_cli
PXLREG=./build/pxlreg
STORE="${PXLREG_STORE:-build/demo.db}"
rm -f "$STORE" "$STORE-wal" "$STORE-shm"

echo
echo "\$ pxlreg init --demo $STORE"
"$PXLREG" init --demo "$STORE"

echo
echo "# A new priority: allowed, and saved with its code and description trimmed."
RECORD='{"Codigo": " LUB ", "Descricao": " Lubrificação de rotina ", "PrioridadeBase": 30}'
echo "\$ echo '$RECORD' | pxlreg save $STORE Prioridade -"
echo "$RECORD" | "$PXLREG" save "$STORE" Prioridade -

echo
echo "# Another priority with the code URG, which the plant already uses: refused."
RECORD='{"Codigo": "URG", "Descricao": "Urgentíssima", "PrioridadeBase": 90}'
echo "\$ echo '$RECORD' | pxlreg save $STORE Prioridade -"
status=0
echo "$RECORD" | "$PXLREG" save "$STORE" Prioridade - || status=$?
if [ "$status" -ne 1 ]; then
  echo "demo: expected exit status 1 (refused by the rules), got $status" >&2
  exit 1
fi
echo "(exit status $status: refused by the rules)"
