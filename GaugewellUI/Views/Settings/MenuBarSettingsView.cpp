#include "MenuBarSettingsView.h"

#include "GaugewellUI/Model/UsageAppModel.h"
#include "GaugewellUI/Support/Localizable.h"
#include "GaugewellUI/Views/DesignSystem/Palette.h"
#include "GaugewellUI/Views/Tray/TrayIcon.h"
#include "MenuBarPreview.h"
#include "SettingBinding.h"
#include "SettingsPage.h"

#include <QCheckBox>
#include <QComboBox>
#include <QVBoxLayout>

namespace gaugewell {

namespace {

QComboBox* picker(const QString& name, std::initializer_list<std::pair<QString, const char*>> items) {
    auto* combo = new QComboBox;
    combo->setAccessibleName(name);
    for (const auto& [title, stored] : items) {
        combo->addItem(title, QString::fromUtf8(stored));
    }
    return combo;
}

} // namespace

MenuBarSettingsView::MenuBarSettingsView(UsageAppModel& model, std::shared_ptr<UserDefaults> defaults,
                                         std::shared_ptr<const ResetTimeFormatter> resetTime, QWidget* parent)
    : SettingsPage(Localizable::tr("Menu Bar"),
                   Localizable::tr("Choose the information that remains visible at a glance."), parent)
    , model(model)
    , defaults(defaults)
    , resetTime(std::move(resetTime))
    , preview(new MenuBarPreview(this)) {
    setObjectName(QStringLiteral("page-menuBar"));
    auto* content = addSection(Localizable::tr("Content"));
    const auto toggle = [&](const QString& title, const char* objectName, std::string_view key,
                            const QString& detail = QString()) {
        auto* row = new SettingsToggleRow(title, detail, this);
        row->toggle()->setObjectName(QString::fromUtf8(objectName));
        SettingBinding::toggle(row->toggle(), defaults, key);
        content->addWidget(row);
    };
    toggle(Localizable::tr("Icons only"), "icons-only", settingsKey::iconsOnly);
    toggle(Localizable::tr("Show percentage"), "show-percentage", settingsKey::showPercentage);
    auto* mode = picker(Localizable::tr("Percentage"), {{Localizable::tr("Consumed"), "consumed"},
                                                        {Localizable::tr("Remaining"), "remaining"}});
    mode->setObjectName(QStringLiteral("percentage-mode"));
    SettingBinding::choice(mode, defaults, settingsKey::percentageMode);
    content->addWidget(labelledRow(Localizable::tr("Percentage"), mode, this));
    toggle(Localizable::tr("Show reset time"), "show-reset", settingsKey::showReset,
           Localizable::tr("Uses your system clock format"));

    auto* layout = addSection(Localizable::tr("Layout"));
    auto* density = picker(Localizable::tr("Density"), {{Localizable::tr("Compact"), "compact"},
                                                        {Localizable::tr("Detailed"), "detailed"}});
    density->setObjectName(QStringLiteral("density"));
    SettingBinding::choice(density, defaults, settingsKey::density);
    layout->addWidget(labelledRow(Localizable::tr("Density"), density, this));
    // "Best available" stores a kind no window has, so the most recently observed window is shown.
    auto* window = picker(Localizable::tr("Usage window"), {{Localizable::tr("Short / session"), "fiveHour"},
                                                            {Localizable::tr("Weekly"), "sevenDay"},
                                                            {Localizable::tr("Best available"), "unknown"}});
    window->setObjectName(QStringLiteral("usage-window"));
    SettingBinding::choice(window, defaults, settingsKey::windowKind);
    layout->addWidget(labelledRow(Localizable::tr("Usage window"), window, this));

    auto* previewSection = addSection(Localizable::tr("Preview"));
    previewSection->addWidget(preview);

    connect(&model, &UsageAppModel::providersChanged, this, &MenuBarSettingsView::refreshPreview);
    subscription = defaults->observe([this](const std::string&) {
        QMetaObject::invokeMethod(this, &MenuBarSettingsView::refreshPreview, Qt::QueuedConnection);
    });
    refreshPreview();
    finish();
}

void MenuBarSettingsView::refreshPreview() {
    const auto snapshots = model.menuSnapshots();
    const auto configuration = MenuBarConfiguration::fromDefaults(*defaults);
    const auto projection = MenuBarProjection::project(snapshots, configuration, *resetTime);
    preview->setProjection(projection, drawTrayIcon(trayIconRings(projection, snapshots, configuration), 22,
                                                    devicePixelRatioF(), true));
}

} // namespace gaugewell
