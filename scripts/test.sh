#!/usr/bin/env bash
# Builds and runs the test suite. Usage: scripts/test.sh [default|asan|tsan|postgres]
#   default   the release build (RelWithDebInfo)
#   asan      AddressSanitizer + UndefinedBehaviorSanitizer
#   tsan      ThreadSanitizer
#   postgres  the release build, its store, rule and command-line suites on a
#             PostgreSQL server of its own (a temporary cluster on a private
#             Unix socket, removed afterwards, also on failure)
set -euo pipefail
cd "$(dirname "$0")/.."
MODO="${1:-default}"
PRESET="$MODO"
[ "$MODO" = postgres ] && PRESET=default
bash scripts/deps.sh
cmake --preset "$PRESET" -DPXLREG_TESTS=ON >/dev/null
cmake --build --preset "$PRESET" -j"$(nproc)"
if [ "$MODO" != postgres ]; then
  ctest --preset "$PRESET" -j"$(nproc)"
  exit 0
fi

PGBIN=/usr/lib/postgresql/15/bin
PASTA="$(mktemp -d /tmp/pxlreg-pg.XXXXXX)"
# initdb refuses root: the server then runs as the postgres account.
COMO=()
if [ "$(id -u)" -eq 0 ]; then
  id -u postgres >/dev/null 2>&1 || useradd --system --no-create-home postgres
  chown postgres "$PASTA"
  COMO=(runuser -u postgres --)
fi
para() {
  "${COMO[@]}" "$PGBIN/pg_ctl" -D "$PASTA/dados" -m immediate stop >/dev/null 2>&1 || true
  rm -rf "$PASTA"
}
trap para EXIT
"${COMO[@]}" "$PGBIN/initdb" -D "$PASTA/dados" -U pxlreg -A trust -E UTF8 --locale=C --no-sync >/dev/null
# No TCP: the socket lives in the temporary folder. fsync off: the cluster
# is thrown away, and the SIGKILL test kills a client, not the server.
"${COMO[@]}" "$PGBIN/pg_ctl" -D "$PASTA/dados" -l "$PASTA/servidor.log" -w \
  -o "-k $PASTA -c listen_addresses= -c fsync=off -c max_connections=200" start >/dev/null
"$PGBIN/createdb" -h "$PASTA" -U pxlreg pxlreg
export PXLREG_TESTE_PG="postgresql:///pxlreg?host=$PASTA&user=pxlreg"
# Every suite: those that go through a store (store, service, rules, command
# line) take a schema of their own on the server; the installed-package
# check has nothing to do with it.
ctest --preset default -j"$(nproc)" -E 'PacoteInstalado'
