#include "Logging.h"

Q_LOGGING_CATEGORY(refreshLog, "gaugewell.refresh", QtInfoMsg)
Q_LOGGING_CATEGORY(diagnosticsLog, "gaugewell.diagnostics", QtInfoMsg)
Q_LOGGING_CATEGORY(widgetFeedLog, "gaugewell.widget", QtInfoMsg)
Q_LOGGING_CATEGORY(signInLog, "gaugewell.signin", QtInfoMsg)
