#include "ApplicationCore.h"

#include "GaugewellUI/Notifications/NotificationBackend.h"
#include "GaugewellUI/WidgetFeed/WidgetFeedSource.h"

namespace gaugewell {

ApplicationCore::ApplicationCore(std::shared_ptr<UserDefaults> defaults,
                                 std::shared_ptr<NotificationBackend> notificationBackend,
                                 const ModelFactory& makeModel, WidgetLiveServerOptions feedOptions)
    : notifications_(std::move(notificationBackend), std::move(defaults))
    , model_(makeModel({[this] { return notifications_.refreshPermission(); },
                        [this](const std::vector<ProviderViewState>& providers) {
                            return notifications_.process(providers);
                        }}))
    , widgetFeed_(widgetFeedSource(*model_), feedOptions) {}

ApplicationCore::~ApplicationCore() {
    stop();
}

void ApplicationCore::start(bool startModel) {
    widgetFeed_.start();
    if (startModel) {
        model_->start();
    }
}

void ApplicationCore::stop() {
    widgetFeed_.stop();
}

} // namespace gaugewell
