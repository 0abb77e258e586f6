#include "GeneralSettingsView.h"

#include "GaugewellUI/Desktop/LoginItemController.h"
#include "GaugewellUI/Diagnostics/DiagnosticsReport.h"
#include "GaugewellUI/Model/UsageAppModel.h"
#include "GaugewellUI/Notifications/UsageNotificationController.h"
#include "GaugewellUI/Support/Localizable.h"
#include "GaugewellUI/Views/DesignSystem/SymbolLabel.h"
#include "GaugewellUI/Views/DesignSystem/Typography.h"
#include "SettingBinding.h"
#include "SettingsPresenter.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace gaugewell {

namespace {

// "While viewing: %d min" as a stepper: the text around the number becomes its prefix and suffix.
QSpinBox* minutesStepper(const QString& format, const char* objectName) {
    auto* stepper = new QSpinBox;
    stepper->setObjectName(QString::fromUtf8(objectName));
    const qsizetype at = format.indexOf(QStringLiteral("%d"));
    stepper->setPrefix(format.left(at));
    stepper->setSuffix(format.mid(at + 2));
    stepper->setAccessibleName(format.left(at).trimmed().remove(QLatin1Char(':')));
    return stepper;
}

QWidget* lineWithSymbol(const char* symbol, const QString& text, QWidget* parent) {
    auto* row = new QWidget(parent);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    if (symbol != nullptr) {
        layout->addWidget(new SymbolLabel(symbol, 14, row));
    } else {
        layout->addSpacing(14);
    }
    auto* label = makeLabel(text, TextStyle::body, row);
    label->setWordWrap(true);
    layout->addWidget(label, 1);
    return row;
}

const char* severitySymbol(DiagnosticSeverity severity) {
    switch (severity) {
    case DiagnosticSeverity::error:
        return "exclamationmark.octagon.fill";
    case DiagnosticSeverity::warning:
        return "exclamationmark.triangle.fill";
    case DiagnosticSeverity::info:
        break;
    }
    return "info.circle";
}

} // namespace

GeneralSettingsView::GeneralSettingsView(UsageAppModel& model, UsageNotificationController& notifications,
                                         std::shared_ptr<UserDefaults> defaults,
                                         LoginItemController& loginItem,
                                         SaveLocationChooser chooseSaveLocation, QWidget* parent)
    : SettingsPage(Localizable::tr("General"),
                   Localizable::tr("Startup, refresh behavior and information about the app."), parent)
    , model(model)
    , notifications(notifications)
    , loginItem(loginItem)
    , chooseSaveLocation(std::move(chooseSaveLocation)) {
    setObjectName(QStringLiteral("page-general"));

    auto* startup = addSection(Localizable::tr("Startup"));
    launchAtLogin = new SettingsToggleRow(Localizable::tr("Launch at login"), QString(), this);
    launchAtLogin->toggle()->setObjectName(QStringLiteral("launch-at-login"));
    connect(launchAtLogin->toggle(), &QCheckBox::toggled, this,
            [this](bool on) { this->loginItem.setEnabled(on); });
    connect(&loginItem, &LoginItemController::changed, this, &GeneralSettingsView::refreshLoginItem);
    startup->addWidget(launchAtLogin);

    auto* refresh = addSection(Localizable::tr("Refresh"));
    auto* active = minutesStepper(Localizable::tr("While viewing: %d min"), "refresh-active");
    SettingBinding::minutes(active, defaults, settingsKey::refreshActiveSeconds);
    auto* idle = minutesStepper(Localizable::tr("In background: %d min"), "refresh-idle");
    SettingBinding::minutes(idle, defaults, settingsKey::refreshIdleSeconds);
    for (auto* stepper : {active, idle}) {
        auto* row = new QHBoxLayout;
        row->addWidget(stepper);
        row->addStretch();
        refresh->addLayout(row);
    }

    auto* alerts = addSection(Localizable::tr("Notifications"));
    auto* enabled = new SettingsToggleRow(Localizable::tr("Usage alerts"), QString(), this);
    enabled->toggle()->setObjectName(QStringLiteral("usage-alerts"));
    SettingBinding::toggle(enabled->toggle(), defaults, settingsKey::notificationsEnabled);
    connect(enabled->toggle(), &QCheckBox::toggled, this, [this](bool on) {
        if (on) {
            this->notifications.requestPermission();
        }
    });
    alerts->addWidget(enabled);
    auto* thresholds = new QHBoxLayout;
    thresholds->setSpacing(12);
    auto* alertAt = makeLabel(Localizable::tr("Alert at"), TextStyle::body, this);
    thresholds->addWidget(alertAt);
    const std::pair<const char*, std::string_view> levels[] = {{"50%", settingsKey::threshold50},
                                                               {"75%", settingsKey::threshold75},
                                                               {"90%", settingsKey::threshold90},
                                                               {"95%", settingsKey::threshold95}};
    for (const auto& [title, key] : levels) {
        auto* box = new QCheckBox(QString::fromUtf8(title), this);
        box->setObjectName(QStringLiteral("threshold-%1").arg(QString::fromUtf8(title).chopped(1)));
        box->setAccessibleName(formatted(Localizable::tr("Alert at %@"), {QString::fromUtf8(title)}));
        SettingBinding::toggle(box, defaults, key);
        thresholds->addWidget(box);
    }
    thresholds->addStretch();
    alerts->addLayout(thresholds);
    auto* resets =
        new SettingsToggleRow(Localizable::tr("Window resets"),
                              Localizable::tr("Notify when an allowance becomes available again"), this);
    resets->toggle()->setObjectName(QStringLiteral("window-resets"));
    SettingBinding::toggle(resets->toggle(), defaults, settingsKey::windowReset);
    alerts->addWidget(resets);
    permission = makeLabel(QString(), TextStyle::caption, this);
    permission->setObjectName(QStringLiteral("permission-note"));
    makeSecondary(permission);
    alerts->addWidget(permission);
    const auto showPermission = [this] {
        permission->setText(SettingsPresenter::permissionNote(this->notifications.permission()));
    };
    connect(&notifications, &UsageNotificationController::permissionChanged, this, showPermission);
    showPermission();

    auto* diagnostics = addCollapsibleSection(Localizable::tr("Diagnostics"), "stethoscope",
                                              QStringLiteral("show-diagnostics"));
    diagnosticsList = new QWidget(this);
    diagnosticsRows = new QVBoxLayout(diagnosticsList);
    diagnosticsRows->setContentsMargins(0, 0, 0, 0);
    diagnostics->addWidget(diagnosticsList);
    auto* sanitized =
        makeLabel(Localizable::tr("Messages are sanitized; raw payloads, paths, prompts and account "
                                  "identifiers are never recorded."),
                  TextStyle::caption, this);
    sanitized->setWordWrap(true);
    makeSecondary(sanitized);
    diagnostics->addWidget(sanitized);
    auto* exportRow = new QHBoxLayout;
    auto* exportButton = new QPushButton(Localizable::tr("Export Diagnostics…"), this);
    exportButton->setObjectName(QStringLiteral("export-diagnostics"));
    exportButton->setAccessibleName(exportButton->text());
    exportButton->setAccessibleDescription(
        Localizable::tr("Save a sanitized report with app, system and provider compatibility information."));
    connect(exportButton, &QPushButton::clicked, this, &GeneralSettingsView::exportDiagnostics);
    exportRow->addWidget(exportButton);
    exportStatusLabel = makeLabel(QString(), TextStyle::caption, this);
    exportStatusLabel->setObjectName(QStringLiteral("export-status"));
    exportRow->addWidget(exportStatusLabel, 1);
    diagnostics->addLayout(exportRow);
    auto* explanation = makeLabel(
        Localizable::tr("Save a sanitized report with app, system and provider compatibility information."),
        TextStyle::caption, this);
    explanation->setWordWrap(true);
    makeSecondary(explanation);
    diagnostics->addWidget(explanation);
    connect(&model, &UsageAppModel::providersChanged, this, &GeneralSettingsView::refreshDiagnostics);
    refreshDiagnostics();

    auto* privacy =
        addCollapsibleSection(Localizable::tr("Privacy"), "hand.raised", QStringLiteral("show-privacy"));
    privacy->addWidget(
        lineWithSymbol("memorychip", Localizable::tr("Usage exists in memory for this launch only."), this));
    privacy->addWidget(lineWithSymbol(
        nullptr, Localizable::tr("Authentication stays in the provider or your keyring."), this));
    privacy->addWidget(
        lineWithSymbol("text.badge.xmark", Localizable::tr("Conversation content is never read."), this));
    privacy->addWidget(lineWithSymbol(
        nullptr,
        Localizable::tr(
            "Codex uses its account app-server. Claude uses direct OAuth and its personal usage endpoint."),
        this));

    auto* about = addSection(Localizable::tr("About"));
    about->addWidget(makeLabel(QStringLiteral("Gaugewell %1").arg(QString::fromUtf8(GAUGEWELL_VERSION)),
                               TextStyle::headline, this));
    auto* aboutText = makeLabel(
        Localizable::tr(
            "Shows how much of your Codex and Claude subscription allowances you have used, and when "
            "each window resets. The widget feed serves the same numbers on 127.0.0.1 for status bars."),
        TextStyle::callout, this);
    aboutText->setWordWrap(true);
    makeSecondary(aboutText);
    about->addWidget(aboutText);
    finish();
    refreshLoginItem();
}

void GeneralSettingsView::showEvent(QShowEvent* event) {
    // The autostart folder and the notification server may have changed behind our back.
    loginItem.refresh();
    notifications.refreshPermission();
    SettingsPage::showEvent(event);
}

void GeneralSettingsView::refreshLoginItem() {
    const QSignalBlocker quiet(launchAtLogin->toggle());
    launchAtLogin->toggle()->setChecked(loginItem.isEnabled());
    launchAtLogin->toggle()->setEnabled(loginItem.state() != LoginItemController::State::unavailable);
    launchAtLogin->setDetail(loginItem.detail().value_or(QString()));
}

void GeneralSettingsView::refreshDiagnostics() {
    while (auto* item = diagnosticsRows->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    const auto providers = SettingsPresenter::diagnostics(model.providers());
    if (providers.empty()) {
        auto* none = makeLabel(Localizable::tr("Diagnostics appear after the first refresh."),
                               TextStyle::callout, diagnosticsList);
        makeSecondary(none);
        diagnosticsRows->addWidget(none);
        return;
    }
    for (const auto& provider : providers) {
        diagnosticsRows->addWidget(makeLabel(provider.name, TextStyle::headline, diagnosticsList));
        if (provider.lines.empty()) {
            diagnosticsRows->addWidget(
                lineWithSymbol(nullptr, Localizable::tr("No issues reported."), diagnosticsList));
        }
        for (const auto& line : provider.lines) {
            auto* row = lineWithSymbol(severitySymbol(line.severity), line.message, diagnosticsList);
            row->setObjectName(QStringLiteral("diagnostic-row"));
            row->setToolTip(line.code);
            row->setAccessibleName(line.code + QStringLiteral(": ") + line.message);
            diagnosticsRows->addWidget(row);
        }
    }
}

void GeneralSettingsView::exportDiagnostics() {
    const QString path = chooseSaveLocation(this, QStringLiteral("Gaugewell-Diagnostics.txt"));
    if (path.isEmpty()) {
        return; // cancelled: nothing changes
    }
    const auto failed = writeDiagnosticsReport(path.toStdString(), diagnosticsReport(model));
    exportStatusLabel->setText(failed ? Localizable::tr("Diagnostics could not be exported.")
                                      : Localizable::tr("Diagnostics exported."));
}

std::optional<QString> GeneralSettingsView::exportStatus() const {
    if (exportStatusLabel->text().isEmpty()) {
        return std::nullopt;
    }
    return exportStatusLabel->text();
}

} // namespace gaugewell
