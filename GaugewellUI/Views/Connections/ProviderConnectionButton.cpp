#include "ProviderConnectionButton.h"

#include "ConnectionPresenter.h"
#include "GaugewellUI/Model/UsageAppModel.h"
#include "GaugewellUI/Support/Localizable.h"

#include <QDesktopServices>
#include <QUrl>

namespace gaugewell {

ProviderConnectionButton::ProviderConnectionButton(UsageAppModel& model, ProviderService service,
                                                   bool compact, QWidget* parent)
    : QPushButton(parent)
    , model(model)
    , service(service) {
    setObjectName(QStringLiteral("connect-%1").arg(QString::fromUtf8(rawValue(service))));
    if (compact) {
        setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    }
    setAccessibleDescription(Localizable::tr("Use the provider's official sign-in flow"));
    connect(this, &QPushButton::clicked, this, &ProviderConnectionButton::activate);
    connect(&model, &UsageAppModel::connectionStatesChanged, this, &ProviderConnectionButton::refresh);
    connect(&model, &UsageAppModel::authenticationActionChanged, this, &ProviderConnectionButton::refresh);
    refresh();
}

void ProviderConnectionButton::refresh() {
    const auto control = connectionControl(model.connectionState(service), model.authenticationAction());
    setText(control.title);
    setToolTip(control.help);
    // The service's name in the accessible name: a screen reader lists several Connect buttons.
    setAccessibleName(control.title + QStringLiteral(" ") + QString::fromUtf8(displayName(service)));
    setEnabled(control.enabled);
}

void ProviderConnectionButton::activate() {
    switch (connectionControl(model.connectionState(service), model.authenticationAction()).action) {
    case ConnectionAction::connect:
        model.connectService(service);
        break;
    case ConnectionAction::disconnect:
        model.disconnectService(service);
        break;
    case ConnectionAction::cancelSignIn:
        model.cancelSignIn();
        break;
    case ConnectionAction::openInstallGuide:
        QDesktopServices::openUrl(QUrl(QString::fromUtf8(codexInstallGuideURL)));
        break;
    case ConnectionAction::none:
        break;
    }
}

} // namespace gaugewell
