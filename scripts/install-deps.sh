#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need. Idempotent:
# does nothing (and needs no network) when every package is present.
set -euo pipefail

packages=(
  build-essential cmake ninja-build clang ccache
  # libFuzzer's runtime, for the fuzz targets of fuzz/.
  libclang-rt-dev
  libxerces-c-dev libeigen3-dev nlohmann-json3-dev libgtest-dev
  libreadstat-dev libexpat1-dev
  # The sparse Cholesky factorisation of the mixed-model equations.
  libsuitesparse-dev
  # The eigen-decompositions of many rows.
  liblapack-dev
  # The browser check of the HTML report, and the font its charts are
  # measured for.
  chromium fonts-dejavu-core
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "Installing: ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
