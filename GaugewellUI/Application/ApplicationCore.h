#pragma once

#include "GaugewellUI/Model/UsageAppModel.h"
#include "GaugewellUI/Notifications/UsageNotificationController.h"
#include "GaugewellUI/WidgetFeed/WidgetLiveServer.h"

#include <functional>
#include <memory>

namespace gaugewell {

class NotificationBackend;
class UserDefaults;

// What runs for as long as Gaugewell runs, with or without a tray: the notification controller,
// the model and the widget feed, built once and started and stopped in one order. `gaugewell
// daemon` and the tray application both stand on it.
class ApplicationCore {
public:
    using ModelFactory = std::function<std::unique_ptr<UsageAppModel>(UsageAppModel::RefreshHooks)>;

    ApplicationCore(std::shared_ptr<UserDefaults> defaults,
                    std::shared_ptr<NotificationBackend> notificationBackend, const ModelFactory& makeModel,
                    WidgetLiveServerOptions feedOptions = WidgetLiveServerOptions::fromEnvironment());
    ~ApplicationCore();

    UsageAppModel& model() { return *model_; }
    UsageNotificationController& notifications() { return notifications_; }
    WidgetLiveServer& widgetFeed() { return widgetFeed_; }

    // Opens the widget feed; a taken port leaves it off (see `widgetFeed().lastError()`). The model
    // starts refreshing when something first shows it, or here with `startModel`.
    void start(bool startModel);
    // Closes the widget listener. Work in flight is not waited for.
    void stop();

private:
    UsageNotificationController notifications_;
    std::unique_ptr<UsageAppModel> model_;
    WidgetLiveServer widgetFeed_;
};

} // namespace gaugewell
