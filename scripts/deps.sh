#!/usr/bin/env bash
# Installs the Debian packages the project needs, only those that are missing.
set -euo pipefail

PACKAGES=(
  build-essential cmake ninja-build pkg-config git python3
  qt6-base-dev qt6-base-dev-tools libqt6sql6-sqlite libgl-dev
  qt6-webengine-dev qt6-webengine-dev-tools qt6-webchannel-dev libqscintilla2-qt6-dev
  libgumbo-dev libvmime-dev libfreeimage-dev
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  clang libclang-rt-14-dev clang-format
  xvfb xauth breeze-icon-theme libqt6svg6
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -gt 0 ]; then
  SUDO=""
  if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
  echo "Installing: ${missing[*]}"
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
