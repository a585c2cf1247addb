#!/usr/bin/env bash
# Installs the built library into a temporary prefix, then builds and runs a
# program outside the project against it: through find_package(pxlreg),
# static and shared, and through pkg-config.
#   testa.sh BUILD_DIR CXX [SANITIZER_FLAGS]
set -euo pipefail
build="$1"
cxx="$2"
san="${3:-}"
aqui="$(cd "$(dirname "$0")" && pwd)"
tmp="$(mktemp -d)"
trap 'rm -rf "$tmp"' EXIT
cmake --install "$build" --prefix "$tmp/prefixo" >/dev/null
cmake -S "$aqui" -B "$tmp/fora" -DCMAKE_PREFIX_PATH="$tmp/prefixo" -DCMAKE_CXX_COMPILER="$cxx" \
  -DCMAKE_CXX_FLAGS="$san" -DCMAKE_EXE_LINKER_FLAGS="$san" >/dev/null
cmake --build "$tmp/fora" >/dev/null
libdir_so="$(dirname "$(find "$tmp/prefixo" -name 'libpxlreg.so' | head -1)")"
"$tmp/fora/fora"
LD_LIBRARY_PATH="$libdir_so" "$tmp/fora/fora_compartilhado"
libdir="$(find "$tmp/prefixo" -name pxlreg.pc -printf '%h\n' | head -1)"
flags="$(PKG_CONFIG_PATH="$libdir" pkg-config --cflags --libs --static pxlreg)"
# shellcheck disable=SC2086
"$cxx" $san "$aqui/fora.cpp" -o "$tmp/fora_pc" $flags
LD_LIBRARY_PATH="$libdir_so" "$tmp/fora_pc"
