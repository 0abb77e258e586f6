#pragma once

#include "ProviderKit/Authentication/ProviderService.h"
#include "UsagePresentation/MenuBarConfiguration.h"
#include "UsagePresentation/MenuBarProjection.h"
#include "UsagePresentation/ProviderMenuSnapshot.h"

#include <QImage>
#include <QString>
#include <optional>
#include <vector>

namespace gaugewell {

// One ring of the tray icon: a provider of the projection, in order, with the share its menu-bar
// window shows (used or remaining, as configured) and its used share (which picks the colour).
struct TrayIconRing {
    ProviderService service;
    std::optional<double> shownFraction;
    std::optional<double> usedFraction;
    // The percentage to print when the icon holds one ring and it fits; absent otherwise.
    std::optional<int> percent;

    bool operator==(const TrayIconRing&) const = default;
};

// The rings for a projection: its entries in order (unknown providers left out), each measured
// on the window the menu bar chose for it.
std::vector<TrayIconRing> trayIconRings(const MenuBarProjection& projection,
                                        const std::vector<ProviderMenuSnapshot>& snapshots,
                                        const MenuBarConfiguration& configuration);

// The tray icon, drawn for a square slot of `size` logical pixels at `devicePixelRatio`: the
// gauge when no provider is shown; one ring with its percentage inside for one provider; two
// concentric rings (the first outside) for two. Colours suit a dark or a light panel.
QImage drawTrayIcon(const std::vector<TrayIconRing>& rings, int size, qreal devicePixelRatio, bool darkPanel);

// The projection's spoken label in the user's language.
QString spokenLabel(const MenuBarProjection& projection);

} // namespace gaugewell
