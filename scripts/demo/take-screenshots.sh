#!/usr/bin/env bash
# Inside scripts/demo-session.sh --screen: starts Gaugewell, opens each window and saves a picture
# of it into $1 with the prefix $2 (e.g. "light-"). Window names as in `gaugewell show`.
set -uo pipefail
out="$1"
prefix="${2:-}"
shift 2 || true
app="${GAUGEWELL:-$(dirname "$0")/../../build/debug/app/gaugewell}"
mkdir -p "$out"

"$app" >"$out/${prefix}app.log" 2>&1 &
pid=$!
sleep "${DEMO_SETTLE:-6}"

window() { # name -> a picture of the window with that title
  local id
  id=$(xwininfo -root -tree | grep -F "\"$1\":" | grep -v "has no name" | head -n1 | awk '{print $1}')
  [[ -n "$id" ]] && import -window "$id" "$2"
}

import -window root -crop 96x34+1184+0 "$out/${prefix}tray.png"
for target in "$@"; do
  case "$target" in
    popup)
      "$app" show popup; sleep 1.5
      import -window root -crop 380x600+900+0 "$out/${prefix}popup.png" ;;
    settings-*)
      page=${target#settings-}
      "$app" show settings "$page"; sleep 1.5
      window "Gaugewell Settings" "$out/${prefix}settings-$page.png" ;;
    dashboard)
      "$app" show dashboard; sleep 2
      window "Gaugewell" "$out/${prefix}dashboard.png" ;;
    root)
      import -window root "$out/${prefix}screen.png" ;;
  esac
done
"$app" quit
wait "$pid"
