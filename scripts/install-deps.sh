#!/usr/bin/env bash
# Installs every Debian 12 package the build, the tests and the demo need.
# Safe to run again: it only asks apt for what is missing.
set -euo pipefail

packages=(
  build-essential cmake ninja-build ccache pkg-config git
  clang libclang-rt-14-dev
  qt6-base-dev qt6-base-dev-tools libqt6network6 libqt6dbus6 libgl-dev libxkbcommon-dev libxcb1-dev
  qcoro-qt6-dev
  nlohmann-json3-dev
  libicu-dev
  libssl-dev openssl
  libcpp-httplib-dev
  libgtest-dev libgmock-dev googletest
  libbenchmark-dev
  xvfb xauth curl procps iproute2
  dbus-daemon
  librsvg2-bin desktop-file-utils appstream pngcheck
  dpkg-dev lintian file fakeroot
  libqrencode-dev zlib1g-dev libzbar-dev
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if ((${#missing[@]} == 0)); then
  exit 0
fi

sudo=""
if [[ $(id -u) -ne 0 ]]; then
  sudo="sudo"
fi
echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
