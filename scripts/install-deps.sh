#!/usr/bin/env bash
# Installs every Debian package that building, running and testing Tavrinsonic needs.
# Non-interactive; does nothing (and needs no root) when everything is present.
set -euo pipefail

packages=(
  # tool chain
  build-essential cmake ninja-build pkg-config clang libclang-rt-14-dev
  # the player's libraries
  qt6-base-dev qt6-l10n-tools qt6-tools-dev libsdl2-dev libmad0-dev
  libvorbisidec-dev libogg-dev libavcodec-dev libfaad-dev
  # tests and benchmarks
  libgtest-dev libgmock-dev libbenchmark-dev
  # tools that make and check test media, and the radio server of the network tests
  lame mpg123 vorbis-tools sox ffmpeg icecast2
  # a private session bus, and the MPRIS client the desktop tests drive the player with
  dbus dbus-bin playerctl curl
  # the stand-in ModemManager of the call tests
  python3-dbus python3-gi
  # a display for headless runs and screenshots
  xvfb xauth
  # the base skin's and the test skin's pictures are drawn by Python scripts
  python3-pil fonts-dejavu-core
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "install-deps: installing ${missing[*]}"
as_root=(env DEBIAN_FRONTEND=noninteractive)
if [ "$(id -u)" -ne 0 ]; then as_root=(sudo env DEBIAN_FRONTEND=noninteractive); fi
"${as_root[@]}" apt-get update -q
"${as_root[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
