#!/usr/bin/env bash
# Prints the tray application's figures: time from start to the tray icon, and resident memory, CPU time
# and wake-ups after an idle period with the popup never opened, then after opening it five times.
# Runs inside scripts/demo-session.sh --screen (Xvfb with a tray host), against a release build:
#   make package && scripts/demo-session.sh --screen 1280x800 scripts/measure-tray.sh build/package/app/gaugewell
# IDLE_SECONDS (default 600) sets the idle period. Needs xdotool (to click the popup away).
set -uo pipefail
app="${1:?the gaugewell binary}"
idle="${IDLE_SECONDS:-600}"

trayIcons() { xwininfo -root -tree 2>/dev/null | grep -c '("gaugewell" "gaugewell")'; }
cpuTicks() { awk '{print $14 + $15}' "/proc/$1/stat"; }
rssKiB() { awk '/^VmRSS/ {print $2}' "/proc/$1/status"; }
# The main thread's: where the timers fire. (Worker threads come and go, and take their counts along.)
switches() { awk '/^voluntary_ctxt_switches/ {print $2}' "/proc/$1/status"; }
report() { # label pid ticks0 switches0 seconds
  awk -v label="$1" -v rss="$(rssKiB "$2")" -v ticks=$(($(cpuTicks "$2") - $3)) -v hz="$(getconf CLK_TCK)" \
    -v wakeups=$(($(switches "$2") - $4)) -v seconds="$5" 'BEGIN {
      printf "%-36s RSS %.1f MB  CPU %.2f s (%.3f %%)  wake-ups %.1f/min\n", label, rss / 1024, ticks / hz,
        ticks / hz * 100 / seconds, wakeups * 60 / seconds }'
}

before=$(trayIcons)
start=$(date +%s%N)
"$app" >/dev/null 2>&1 &
pid=$!
until (($(trayIcons) > before)); do
  sleep 0.005
  kill -0 "$pid" 2>/dev/null || { echo "gaugewell exited" >&2; exit 1; }
done
echo "start to tray icon: $((($(date +%s%N) - start) / 1000000)) ms"

sleep 20 # the first refresh and its children are done
ticks=$(cpuTicks "$pid") wakes=$(switches "$pid")
sleep "$idle"
report "idle ${idle} s, popup never opened:" "$pid" "$ticks" "$wakes" "$idle"

for _ in 1 2 3 4 5; do "$app" show popup; sleep 1; xdotool mousemove 600 700 click 1; sleep 1; done
sleep 20
ticks=$(cpuTicks "$pid") wakes=$(switches "$pid")
sleep "$idle"
report "idle ${idle} s after 5 popup opens:" "$pid" "$ticks" "$wakes" "$idle"
"$app" quit
wait "$pid"
