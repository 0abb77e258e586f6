#include "WidgetUsageLoaderError.h"

namespace gaugewell {

namespace {

struct Texts {
    std::string_view operator()(WidgetUsageLoaderError) const {
        return "Gaugewell gave the widget an unexpected answer.";
    }
    std::string_view operator()(WidgetSnapshotDecodingError) const {
        return "Gaugewell sent usage data that the widget cannot read.";
    }
    std::string_view operator()(WidgetTransportError error) const {
        switch (error) {
        case WidgetTransportError::cannotConnect:
            return "Gaugewell is not running.";
        case WidgetTransportError::timedOut:
            return "Gaugewell did not answer in time.";
        case WidgetTransportError::connectionFailed:
            break;
        }
        return "The connection to Gaugewell failed.";
    }
};

} // namespace

std::string_view describe(const WidgetFetchError& error) {
    return std::visit(Texts{}, error);
}

} // namespace gaugewell
