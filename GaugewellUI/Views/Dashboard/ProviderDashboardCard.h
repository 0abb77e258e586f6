#pragma once

#include "DashboardPresenter.h"
#include "GaugewellUI/Views/DesignSystem/GlassSurface.h"

#include <vector>

class QGridLayout;
class QHBoxLayout;
class QLabel;
class QVBoxLayout;

namespace gaugewell {

class MetricTile;
class UsageAppModel;
class UsageRing;
class WindowRow;

// One provider on the dashboard: a ring for its most used window beside a meter per window, and
// tiles with the next reset, the number of windows and recent tokens; or the sign-in call.
class ProviderDashboardCard : public GlassSurface {
    Q_OBJECT

public:
    ProviderDashboardCard(UsageAppModel& model, ProviderService service, QWidget* parent = nullptr);

    ProviderService service() const { return service_; }
    void setContent(const DashboardCardContent& content);

private:
    ProviderService service_;
    QWidget* usage;
    UsageRing* ring;
    QVBoxLayout* rowsLayout;
    std::vector<WindowRow*> rows;
    QHBoxLayout* tilesLayout;
    std::vector<MetricTile*> tiles;
    QWidget* unavailable;
    QLabel* unavailableMessage;
    QWidget* connectButton;
};

} // namespace gaugewell
