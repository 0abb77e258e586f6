#include "DesktopAppearance.h"

#include <QApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QStyle>
#include <QStyleFactory>

namespace gaugewell {

namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString gnomeInterfaceGroup = QStringLiteral("org.gnome.desktop.interface");
constexpr int portalTimeoutMilliseconds = 2000;

// Portals before 1.15 wrap the value in one more variant.
QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>() && value.userType() == qMetaTypeId<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    return value;
}

} // namespace

DesktopAppearance::DesktopAppearance(QDBusConnection bus, QObject* parent)
    : QObject(parent)
    , bus(std::move(bus)) {}

bool DesktopAppearance::desktopProvidesPalette() {
    const QByteArray desktop = qgetenv("XDG_CURRENT_DESKTOP").toUpper();
    return desktop.contains("KDE") || desktop.contains("LXQT") ||
           !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORMTHEME");
}

void DesktopAppearance::start(bool apply) {
    applyPalette = apply;
    // For desktops without a portal (many tiling window managers): the user says which.
    const QByteArray forced = qgetenv("GAUGEWELL_COLOR_SCHEME");
    if (forced == "dark" || forced == "light") {
        applyPalette = true;
        update(appearanceGroup, QStringLiteral("color-scheme"), forced == "dark" ? 1u : 2u);
        return;
    }
    if (!bus.isConnected()) {
        return;
    }
    bus.connect(portalService, portalPath, settingsInterface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    read(appearanceGroup, QStringLiteral("color-scheme"));
    read(gnomeInterfaceGroup, QStringLiteral("enable-animations"));
}

void DesktopAppearance::read(const QString& group, const QString& key) {
    auto call =
        QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface, QStringLiteral("Read"));
    call << group << key;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, portalTimeoutMilliseconds), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, group, key] {
        watcher->deleteLater();
        const QDBusMessage reply = watcher->reply();
        if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty()) {
            update(group, key, unwrapped(reply.arguments().front()));
        }
    });
}

void DesktopAppearance::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    update(group, key, unwrapped(value.variant()));
}

void DesktopAppearance::update(const QString& group, const QString& key, const QVariant& value) {
    if (group == appearanceGroup && key == QStringLiteral("color-scheme")) {
        const uint preference = value.toUInt();
        const Scheme next = preference == 1   ? Scheme::dark
                            : preference == 2 ? Scheme::light
                                              : Scheme::noPreference;
        if (next == scheme_) {
            return;
        }
        scheme_ = next;
        if (applyPalette && qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr) {
            QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
            QApplication::setPalette(palette(scheme_));
        }
        emit changed();
    } else if (group == gnomeInterfaceGroup && key == QStringLiteral("enable-animations")) {
        const bool reduce = !value.toBool();
        if (reduce != reduceMotion_) {
            reduceMotion_ = reduce;
            emit changed();
        }
    }
}

QPalette DesktopAppearance::palette(Scheme scheme) {
    QStyle* fusion = QStyleFactory::create(QStringLiteral("Fusion"));
    QPalette light = fusion != nullptr ? fusion->standardPalette() : QPalette();
    delete fusion;
    if (scheme != Scheme::dark) {
        return light;
    }
    QPalette dark;
    const QColor window(0x2b, 0x2d, 0x31);
    const QColor base(0x1f, 0x21, 0x24);
    const QColor text(0xe8, 0xe9, 0xeb);
    const QColor disabledText(0x7c, 0x7f, 0x85);
    dark.setColor(QPalette::Window, window);
    dark.setColor(QPalette::WindowText, text);
    dark.setColor(QPalette::Base, base);
    dark.setColor(QPalette::AlternateBase, window.lighter(110));
    dark.setColor(QPalette::ToolTipBase, base);
    dark.setColor(QPalette::ToolTipText, text);
    dark.setColor(QPalette::PlaceholderText, QColor(0xa4, 0xa7, 0xad));
    dark.setColor(QPalette::Text, text);
    dark.setColor(QPalette::Button, QColor(0x3a, 0x3d, 0x42));
    dark.setColor(QPalette::ButtonText, text);
    dark.setColor(QPalette::BrightText, Qt::white);
    dark.setColor(QPalette::Light, window.lighter(150));
    dark.setColor(QPalette::Midlight, window.lighter(125));
    dark.setColor(QPalette::Mid, window.darker(120));
    dark.setColor(QPalette::Dark, window.darker(150));
    dark.setColor(QPalette::Shadow, Qt::black);
    dark.setColor(QPalette::Highlight, QColor(0x6b, 0x85, 0xff));
    dark.setColor(QPalette::HighlightedText, Qt::white);
    dark.setColor(QPalette::Link, QColor(0x9e, 0xad, 0xff));
    dark.setColor(QPalette::LinkVisited, QColor(0xb9, 0x9e, 0xff));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        dark.setColor(QPalette::Disabled, role, disabledText);
    }
    return dark;
}

} // namespace gaugewell
