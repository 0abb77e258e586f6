#!/usr/bin/env bash
# Runs a command (by default the tray application) against stand-ins with real-looking data: a
# signed-in `codex` and a Claude account whose usage endpoint is served on 127.0.0.1. Everything
# lives in a throw-away HOME and a private session bus and keyring, as in scripts/test-session.sh.
#   scripts/demo-session.sh                          # the tray application, on your display
#   scripts/demo-session.sh --screen 1280x800 CMD    # inside Xvfb with a tray (trayer), for screenshots
#   DEMO_CLAUDE=signedOut scripts/demo-session.sh    # Claude not connected
#   DEMO_PANEL=202124 ...                            # the tray panel's colour (default: trayer's grey)
#   DEMO_CODEX=missing ...                           # no `codex` on the PATH
#   DEMO_TRAY=none ...                               # no tray host: the fallback window
#   DEMO_ONBOARDED=false ...                         # a first start: onboarding
# With --screen, DISPLAY is exported to CMD; `import -window root shot.png` takes a screenshot.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
repo="$(dirname "$here")"

screen=""
if [[ "${1:-}" == "--screen" ]]; then
  screen="$2"
  shift 2
fi
(($# > 0)) || set -- "$repo/build/debug/app/gaugewell"

root=$(mktemp -d "${TMPDIR:-/tmp}/gaugewell-demo.XXXXXX")
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$root"' EXIT
mkdir -p "$root/home" "$root/config/gaugewell" "$root/data" "$root/cache" "$root/runtime" "$root/bin"
chmod 0700 "$root/runtime"
[[ "${DEMO_CODEX:-}" == missing ]] || cp "$here/demo/codex" "$root/bin/codex"
export HOME="$root/home" XDG_CONFIG_HOME="$root/config" XDG_DATA_HOME="$root/data" XDG_CACHE_HOME="$root/cache"
export XDG_RUNTIME_DIR="$root/runtime" PATH="$root/bin:$PATH"
unset DBUS_SESSION_BUS_ADDRESS GNOME_KEYRING_CONTROL
cat > "$root/config/gaugewell/defaults.json" <<JSON
{"connections.oauth-authorized.v2.codex": $([[ "${DEMO_CODEX:-}" == missing ]] && echo false || echo true), "onboarding.completed.v1": ${DEMO_ONBOARDED:-true}}
JSON
chmod 0600 "$root/config/gaugewell/defaults.json"

port_file="$root/claude-port"
/usr/bin/python3 "$here/demo/claude-usage-server.py" > "$port_file" &
for _ in $(seq 50); do [[ -s "$port_file" ]] && break; sleep 0.1; done
export GAUGEWELL_CLAUDE_API_URL="http://127.0.0.1:$(head -n1 "$port_file")"
export GAUGEWELL_CLAUDE_PLATFORM_URL="$GAUGEWELL_CLAUDE_API_URL" GAUGEWELL_CLAUDE_SIGNIN_URL="$GAUGEWELL_CLAUDE_API_URL"
export GAUGEWELL_WIDGET_PORT="${GAUGEWELL_WIDGET_PORT:-47399}"

# A year-long Claude token: expiresAt counts seconds since 2001-01-01.
expires=$(($(date +%s) - 978307200 + 365 * 86400))
credential="{\"accessToken\":\"demo-access\",\"refreshToken\":\"demo-refresh\",\"expiresAt\":$expires,\"scopes\":[\"user:profile\"]}"

inner='
printf %s demo | gnome-keyring-daemon --unlock --components=secrets >/dev/null
gdbus wait --session --timeout 10 org.freedesktop.secrets
if [[ "${DEMO_CLAUDE:-signedIn}" == signedIn ]]; then
  printf %s "$DEMO_CREDENTIAL" | secret-tool store --label="Gaugewell demo" xdg:schema app.gaugewell.GenericPassword \
    service app.gaugewell.claude.oauth account primary
fi
trap "kill \$(jobs -p) 2>/dev/null" EXIT
/usr/bin/python3 -m dbusmock --session -t notification_daemon >/dev/null 2>&1 &
if [[ -n "$DEMO_SCREEN" ]]; then
  Xvfb -displayfd 1 -screen 0 "${DEMO_SCREEN}x24" -nolisten tcp > "$DEMO_ROOT/display" 2>/dev/null &
  for _ in $(seq 50); do [[ -s "$DEMO_ROOT/display" ]] && break; sleep 0.1; done
  export DISPLAY=":$(head -n1 "$DEMO_ROOT/display")"
  [[ "${DEMO_TRAY:-}" == none ]] || {
  if [[ -n "${DEMO_PANEL:-}" ]]; then panel=(--transparent true --alpha 0 --tint "0x$DEMO_PANEL"); else panel=(--transparent false); fi
  trayer --edge top --align right --widthtype pixel --width 64 --height 30 "${panel[@]}" >/dev/null 2>&1 &
  sleep 0.5
  }
fi
"$@"
'
export DEMO_CREDENTIAL="$credential" DEMO_SCREEN="$screen" DEMO_ROOT="$root"
dbus-run-session -- bash -c "$inner" demo-session "$@"
