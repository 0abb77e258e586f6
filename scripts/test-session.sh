#!/usr/bin/env bash
# Runs a command as a test run should: a fresh HOME and XDG folders, a private D-Bus
# session bus, Qt's offscreen platform, no display. Nothing of the user's desktop,
# keyring or settings is reachable from inside.
set -euo pipefail

root=$(mktemp -d "${TMPDIR:-/tmp}/gaugewell-test.XXXXXX")
trap 'rm -rf "$root"' EXIT
mkdir -p "$root/home" "$root/config" "$root/data" "$root/cache" "$root/runtime"
chmod 0700 "$root/runtime"

export HOME="$root/home"
export XDG_CONFIG_HOME="$root/config"
export XDG_DATA_HOME="$root/data"
export XDG_CACHE_HOME="$root/cache"
export XDG_RUNTIME_DIR="$root/runtime"
export QT_QPA_PLATFORM=offscreen
unset DISPLAY WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS

exec dbus-run-session -- "$@"
