#pragma once

#include "GaugewellUI/Views/DesignSystem/GlassSurface.h"
#include "PopoverPresenter.h"

#include <vector>

class QLabel;
class QVBoxLayout;

namespace gaugewell {

class UsageAppModel;
class WindowRow;

// One provider in the popup: its mark and name, then a row per current window, or why there is
// none with a connect button when a sign-in would help.
class CompactProviderCard : public GlassSurface {
    Q_OBJECT

public:
    CompactProviderCard(UsageAppModel& model, ProviderService service, QWidget* parent = nullptr);

    ProviderService service() const { return service_; }
    void setContent(const ProviderCardContent& content);

private:
    ProviderService service_;
    QWidget* columns;
    QVBoxLayout* rowsLayout;
    std::vector<WindowRow*> rows;
    QWidget* unavailable;
    QLabel* unavailableMessage;
    QWidget* connectButton;
};

} // namespace gaugewell
