#!/usr/bin/env bash
# Installs the build and test dependencies on Debian 12 (as root, or with sudo).
set -euo pipefail
PACKAGES=(g++ cmake make pkg-config libsqlite3-dev sqlite3 nlohmann-json3-dev libcli11-dev
          libgtest-dev libgmock-dev libbenchmark-dev libcurl4-openssl-dev python3
          libre2-dev python3-aiosmtpd clang libclang-rt-14-dev libpq-dev postgresql-15)
missing=()
for p in "${PACKAGES[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  SUDO=""
  [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
