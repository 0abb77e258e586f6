# `make package`: a Debian package of what `cmake --install` puts in place.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME gaugewell)
set(CPACK_PACKAGE_VENDOR "The Gaugewell developers")
set(CPACK_PACKAGE_CONTACT "The Gaugewell developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "See your Codex and Claude allowances at a glance")
set(CPACK_PACKAGE_DESCRIPTION
    "Gaugewell sits in your tray and shows how much of your Codex and Claude subscription allowances you have "
    "used and when each window resets, with a dashboard, notifications and a loopback feed for status bars.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# Debian 12's runtime packages for what we link, plus the xcb platform plugin and the SVG icon engine
# that Qt loads at run time, and xdg-open for the browser sign-in.
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "libqt6core6 (>= 6.4), libqt6gui6 (>= 6.4), libqt6widgets6 (>= 6.4), libqt6network6 (>= 6.4), \
libqt6dbus6 (>= 6.4), libqt6svg6 (>= 6.4), libqt6charts6 (>= 6.4), qt6-qpa-plugins (>= 6.4), \
libsecret-1-0, libcurl4, libicu72, libsimdjson14, libssl3, libstdc++6 (>= 12), xdg-utils")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "gnome-keyring")
include(CPack)
