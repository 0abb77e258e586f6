#!/usr/bin/env bash
# Checks the built Debian package: its dependencies resolve on this system, its files are where a
# desktop looks for them, and the binary runs from the unpacked tree.
set -euo pipefail
cd "$(dirname "$0")/.."

deb=$(ls build/package/gaugewell_*_amd64.deb 2>/dev/null | head -n1 || true)
[[ -n "$deb" ]] || { echo "check-package: no build/package/gaugewell_*_amd64.deb; run make package" >&2; exit 1; }

echo "check-package: dependencies of $deb"
apt-get install --simulate --no-install-recommends "./$deb" >/dev/null

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
dpkg-deb -x "$deb" "$scratch/root"
for path in usr/bin/gaugewell \
            usr/share/applications/app.gaugewell.Gaugewell.desktop \
            usr/share/metainfo/app.gaugewell.Gaugewell.metainfo.xml \
            usr/share/dbus-1/services/app.gaugewell.Gaugewell.service \
            usr/share/icons/hicolor/scalable/apps/app.gaugewell.Gaugewell.svg \
            usr/share/icons/hicolor/22x22/apps/app.gaugewell.Gaugewell.png \
            usr/share/man/man1/gaugewell.1.gz \
            usr/share/bash-completion/completions/gaugewell; do
  [[ -e "$scratch/root/$path" ]] || { echo "check-package: missing $path" >&2; exit 1; }
done
desktop-file-validate "$scratch/root/usr/share/applications/app.gaugewell.Gaugewell.desktop"
appstreamcli validate --no-net "$scratch/root/usr/share/metainfo/app.gaugewell.Gaugewell.metainfo.xml" >/dev/null

echo "check-package: running the unpacked binary"
"$scratch/root/usr/bin/gaugewell" --version
# A signed-out machine still gets a status, whatever the services say.
scripts/test-session.sh "$scratch/root/usr/bin/gaugewell" status >/dev/null || {
  status=$?
  [[ $status -eq 1 ]] || { echo "check-package: gaugewell status exited $status" >&2; exit 1; }
}
echo "check-package: ok"
