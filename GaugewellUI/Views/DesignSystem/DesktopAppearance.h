#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QPalette>
#include <optional>

namespace gaugewell {

// Follows the desktop's light or dark preference where Qt gets no palette from the desktop itself
// (GNOME, tiling window managers): it reads the freedesktop portal's "color-scheme" and GNOME's
// "enable-animations", applies a dark or light palette to the application, and keeps watching.
// On KDE the platform theme already provides the palette and nothing is changed. No portal on the
// bus leaves everything as it is. GAUGEWELL_COLOR_SCHEME=dark|light overrides the portal.
class DesktopAppearance : public QObject {
    Q_OBJECT

public:
    enum class Scheme { noPreference, dark, light };

    explicit DesktopAppearance(QDBusConnection bus = QDBusConnection::sessionBus(),
                               QObject* parent = nullptr);

    // Asks the portal (asynchronously, with a deadline) and starts watching. `applyPalette` false
    // only reads and reports (tests, and desktops whose theme already supplies a palette).
    void start(bool applyPalette);

    Scheme scheme() const { return scheme_; }
    bool reduceMotion() const { return reduceMotion_; }

    // Fusion's palette for a scheme; the light one is Fusion's own.
    static QPalette palette(Scheme scheme);
    // Whether Qt already took the palette from the desktop (KDE's platform theme).
    static bool desktopProvidesPalette();

signals:
    void changed();

private slots:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void read(const QString& group, const QString& key);
    void update(const QString& group, const QString& key, const QVariant& value);

    QDBusConnection bus;
    bool applyPalette = false;
    Scheme scheme_ = Scheme::noPreference;
    bool reduceMotion_ = false;
};

} // namespace gaugewell
