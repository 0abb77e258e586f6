#!/usr/bin/env bash
# Installs what Gaugewell needs to build, run and test on Debian 12.
# Installs only what is missing; safe to run again; works as root or through sudo.
set -euo pipefail

packages=(
  # toolchain
  g++ cmake ninja-build make clang-format pkg-config
  # libraries
  libsimdjson-dev nlohmann-json3-dev libicu-dev libssl-dev libcurl4-openssl-dev libsecret-1-dev
  qt6-base-dev qt6-charts-dev qt6-svg-dev libqt6opengl6-dev qt6-l10n-tools qt6-tools-dev
  # tests and benchmarks
  libgtest-dev libgmock-dev libbenchmark-dev libcpp-httplib-dev
  dbus dbus-daemon libglib2.0-bin gnome-keyring libsecret-tools python3 python3-dbusmock
  curl xdg-utils chromium xvfb xauth x11-utils imagemagick trayer fonts-dejavu-core
  # packaging checks
  desktop-file-utils appstream
  nodejs
)

sudo=()
if ((EUID != 0)); then sudo=(sudo); fi

missing=()
for package in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
  [[ "$status" == installed ]] || missing+=("$package")
done

if ((${#missing[@]} > 0)); then
  echo "setup: installing ${missing[*]}"
  if ((EUID != 0)) && ! command -v sudo >/dev/null; then
    echo "setup: need root or sudo to install packages" >&2
    exit 1
  fi
  export DEBIAN_FRONTEND=noninteractive
  "${sudo[@]}" apt-get update -qq
  "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

# npm ships with some Node.js builds and is a separate package in Debian's.
if ! command -v npm >/dev/null; then
  "${sudo[@]}" apt-get install -y -qq --no-install-recommends npm >/dev/null
fi

# The real `codex` CLI that the Codex collector's tests talk to, pinned and kept inside the project.
codex_version=0.169.0
codex_prefix="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)/.deps/codex"
installed_codex=$(node -p "require('$codex_prefix/node_modules/@openai/codex/package.json').version" 2>/dev/null || true)
if [[ "$installed_codex" != "$codex_version" ]]; then
  echo "setup: installing @openai/codex@$codex_version into .deps/codex"
  npm install --prefix "$codex_prefix" --no-audit --no-fund "@openai/codex@$codex_version" >/dev/null
fi
