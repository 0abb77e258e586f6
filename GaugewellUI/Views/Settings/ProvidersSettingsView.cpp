#include "ProvidersSettingsView.h"

#include "GaugewellUI/Model/UsageAppModel.h"
#include "GaugewellUI/Support/Localizable.h"
#include "GaugewellUI/Views/Connections/ConnectionPresenter.h"
#include "GaugewellUI/Views/Connections/ProviderConnectionBadge.h"
#include "GaugewellUI/Views/Connections/ProviderConnectionButton.h"
#include "GaugewellUI/Views/DesignSystem/ProviderMark.h"
#include "GaugewellUI/Views/DesignSystem/Typography.h"
#include "SettingBinding.h"
#include "SettingsPresenter.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

namespace gaugewell {

namespace {

QWidget* connectionRow(UsageAppModel& model, ProviderService service, QWidget* parent) {
    auto* row = new QWidget(parent);
    row->setObjectName(QStringLiteral("connection-row-%1").arg(QString::fromUtf8(rawValue(service))));
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 2, 0, 2);
    layout->setSpacing(10);
    layout->addWidget(new ProviderMark(service, 22, row));
    auto* texts = new QVBoxLayout;
    texts->setSpacing(0);
    texts->addWidget(makeLabel(QString::fromUtf8(displayName(service)), TextStyle::headline, row));
    texts->addWidget(new ProviderConnectionBadge(model, service, row));
    // The tool is the user's own: when it is missing or too old, point at its official guide.
    auto* guide = new QLabel(QStringLiteral("<a href=\"%1\">%2</a>")
                                 .arg(QString::fromUtf8(codexInstallGuideURL),
                                      Localizable::tr("Install Codex CLI").toHtmlEscaped()),
                             row);
    guide->setObjectName(QStringLiteral("install-guide"));
    guide->setAccessibleName(Localizable::tr("Open the official Codex CLI installation guide"));
    guide->setOpenExternalLinks(true);
    guide->hide();
    // Under the status, so that the row stays narrow enough for the window's smallest width.
    texts->addWidget(guide, 0, Qt::AlignLeft);
    layout->addLayout(texts, 1);
    layout->addWidget(new ProviderConnectionButton(model, service, false, row));
    const auto showGuide = [&model, service, guide] {
        const auto status = model.connectionState(service).status;
        guide->setVisible(status == ProviderConnectionStatus::notInstalled ||
                          status == ProviderConnectionStatus::unsupportedVersion);
    };
    QObject::connect(&model, &UsageAppModel::connectionStatesChanged, guide, showGuide);
    showGuide();
    return row;
}

} // namespace

ProvidersSettingsView::ProvidersSettingsView(UsageAppModel& model, std::shared_ptr<UserDefaults> defaults,
                                             QWidget* parent)
    : SettingsPage(Localizable::tr("Accounts"),
                   Localizable::tr("Connect the services whose live limits you want to see."), parent) {
    setObjectName(QStringLiteral("page-accounts"));
    auto* connections = addSection(Localizable::tr("Connections"));
    auto* note = makeLabel(
        Localizable::tr("Credentials stay in each service or your keyring. Usage values are never cached."),
        TextStyle::callout, this);
    note->setWordWrap(true);
    makeSecondary(note);
    connections->addWidget(note);
    for (const auto service : allProviderServices) {
        connections->addWidget(connectionRow(model, service, this));
    }

    auto* menuBar = addSection(Localizable::tr("Menu bar"));
    for (const auto service : allProviderServices) {
        auto* show = new QCheckBox(
            formatted(Localizable::tr("Show %@"), {QString::fromUtf8(displayName(service))}), this);
        show->setObjectName(QStringLiteral("show-%1").arg(QString::fromUtf8(rawValue(service))));
        show->setAccessibleName(show->text());
        SettingBinding::toggle(show, defaults,
                               service == ProviderService::codex ? settingsKey::showCodex
                                                                 : settingsKey::showClaude);
        menuBar->addWidget(show);
    }
    auto* order = new QComboBox;
    order->setObjectName(QStringLiteral("provider-order"));
    order->addItem(Localizable::tr("Codex, then Claude"), QStringLiteral("codex,claude"));
    order->addItem(Localizable::tr("Claude, then Codex"), QStringLiteral("claude,codex"));
    SettingBinding::choice(order, defaults, settingsKey::providerOrder);
    auto* reverse = new QPushButton(Localizable::tr("Reverse"));
    reverse->setObjectName(QStringLiteral("reverse-order"));
    reverse->setAccessibleName(Localizable::tr("Reverse"));
    QObject::connect(reverse, &QPushButton::clicked, this, [defaults] {
        defaults->set(settingsKey::providerOrder, SettingsPresenter::reversedProviderOrder(
                                                      defaults->stringValue(settingsKey::providerOrder)));
    });
    auto* orderControls = new QWidget;
    auto* orderLayout = new QHBoxLayout(orderControls);
    orderLayout->setContentsMargins(0, 0, 0, 0);
    orderLayout->addWidget(order);
    orderLayout->addWidget(reverse);
    order->setAccessibleName(Localizable::tr("Provider order"));
    menuBar->addWidget(labelledRow(Localizable::tr("Provider order"), orderControls, this));
    finish();
}

} // namespace gaugewell
