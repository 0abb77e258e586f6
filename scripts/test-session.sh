#!/usr/bin/env bash
# Runs a command as a test run should: a fresh HOME and XDG folders, a private D-Bus
# session bus with an unlocked gnome-keyring of its own, Qt's offscreen platform, no
# display. Nothing of the user's desktop, keyring or settings is reachable from inside.
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
unset DISPLAY WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS GNOME_KEYRING_CONTROL SSH_AUTH_SOCK

# Inside the private bus: a keyring unlocked with a throw-away password, so that secret-store
# calls never meet an unlock prompt. It lives in the fresh XDG_DATA_HOME and ends with the bus.
# Without gnome-keyring the command still runs (secret-store tests then fail with a clear message).
inner='
if command -v gnome-keyring-daemon >/dev/null; then
  printf %s gaugewell-test | gnome-keyring-daemon --unlock --components=secrets >/dev/null
  if command -v gdbus >/dev/null; then
    gdbus wait --session --timeout 10 org.freedesktop.secrets || echo "test-session: keyring did not start" >&2
  fi
fi
exec "$@"
'

status=0
dbus-run-session -- bash -c "$inner" test-session "$@" || status=$?
exit "$status"
