#include "ApplicationCore.h"

#include "NotificationBackend.h"

namespace gaugewell {

ApplicationCore::ApplicationCore(std::shared_ptr<UserDefaults> defaults,
                                 std::shared_ptr<NotificationBackend> notificationBackend,
                                 const ModelFactory& makeModel, WidgetLiveServerOptions feedOptions)
    : notifications_(std::move(notificationBackend), std::move(defaults))
    , model_(makeModel(&notifications_))
    , widgetFeed_([this](WidgetLiveServer::SnapshotReply reply) { model_->widgetSnapshot(std::move(reply)); },
                  feedOptions) {}

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
