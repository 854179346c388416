#!/usr/bin/env bash
# Installs the Debian packages the project needs, only those that are missing.
#   deps.sh          what building and running the editor needs (run.sh)
#   deps.sh --test   that, plus what building and running the tests adds (test.sh)
set -euo pipefail

RUN_PACKAGES=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev qt6-base-dev-tools libqt6sql6-sqlite libgl-dev
  qt6-webengine-dev qt6-webengine-dev-tools qt6-webchannel-dev libqscintilla2-qt6-dev
  libgumbo-dev libvmime-dev libfreeimage-dev libpng-dev libdeflate-dev
  # the spam check runs the filter (Debian ships its rules; no update from the network),
  # repeated checks through a private daemon and its client
  spamassassin spamc spamd
  xvfb xauth breeze-icon-theme libqt6svg6
  # cmake --install brings the desktop's file-type and menu caches up to date with these
  shared-mime-info desktop-file-utils
  # the imports: documents through LibreOffice, Outlook files through msgconvert (which
  # uses Email::Address, only a recommendation of its package)
  libreoffice-writer-nogui libemail-outlook-message-perl libemail-address-perl
  # the social icons and template pictures are drawn at build time with this font
  fonts-dejavu-core
)
TEST_PACKAGES=(
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  clang libclang-rt-14-dev clang-format
  python3
  # a real SMTP server for the test send, and the certificate it presents
  python3-aiosmtpd openssl
  # the image slicer's benchmark times the same work in vips and ImageMagick
  libvips-tools imagemagick
  # the editor's own tests: keys typed into its window, and the desktop's view of an install
  xdotool xdg-utils libfile-mimeinfo-perl
)

case "${1:-}" in
  "") packages=("${RUN_PACKAGES[@]}") ;;
  --test) packages=("${RUN_PACKAGES[@]}" "${TEST_PACKAGES[@]}") ;;
  *)
    echo "usage: $0 [--test]" >&2
    exit 2
    ;;
esac

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

SUDO=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "These Debian packages are missing: ${missing[*]}" >&2
    echo "This script is not running as root and sudo is not available; as root, run:" >&2
    echo "  apt-get update && apt-get install --no-install-recommends ${missing[*]}" >&2
    exit 1
  fi
  SUDO=(sudo)
fi
echo "Installing: ${missing[*]}"
"${SUDO[@]}" apt-get update -qq
# env, not a plain assignment: sudo would drop the variable from the environment.
"${SUDO[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
  "${missing[@]}" >/dev/null
