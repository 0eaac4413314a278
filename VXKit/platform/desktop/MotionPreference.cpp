// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/MotionPreference.h>

#include <VXKit/platform/desktop/PortalSettings.h>
#include <VXKit/platform/desktop/XSettings.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QCoreApplication>
#include <QMetaType>
#include <QPointer>
#include <QVariant>

namespace {

QString gnomeInterface() {
    return QStringLiteral("org.gnome.desktop.interface");
}
QString appearance() {
    return QStringLiteral("org.freedesktop.appearance");
}
QString kdeGlobals() {
    return QStringLiteral("org.kde.kdeglobals.KDE");
}

/// Whether `value` is a number, or one written as text, and this one.
bool isNumber(const QVariant& value, double number) {
    bool isOne = value.isValid() && value.userType() != QMetaType::Bool;
    const double converted = isOne ? value.toDouble(&isOne) : 0;
    return isOne && converted == number;
}

/// What the desktop says, as far as it has answered. Belongs to the application object.
class DesktopMotion final : public QObject {
public:
    /// That of the running application, or null where it has none.
    static DesktopMotion* shared() {
        static QPointer<DesktopMotion> motion;
        if (!motion && qApp && !QCoreApplication::closingDown()) {
            motion = new DesktopMotion(qApp);
        }
        return motion;
    }

    [[nodiscard]] bool isReduced() const {
        const QVariant animations = m_portal->value(gnomeInterface(), QStringLiteral("enable-animations"));
        return (animations.userType() == QMetaType::Bool && !animations.toBool()) ||
               isNumber(m_portal->value(appearance(), QStringLiteral("reduced-motion")), 1) ||
               isNumber(m_portal->value(kdeGlobals(), QStringLiteral("AnimationDurationFactor")), 0) ||
               (m_xSettings && m_xSettings->integer("Gtk/EnableAnimations") == 0);
    }

private:
    explicit DesktopMotion(QObject* parent)
        : QObject(parent), m_portal(new PortalSettings({gnomeInterface(), appearance(), kdeGlobals()}, this)) {
        connect(m_portal, &PortalSettings::isMissing, this, [this] { m_xSettings = new XSettings(this); });
    }

    PortalSettings* m_portal;         // owned as a child, as is the other
    XSettings* m_xSettings = nullptr; // where there is no portal
};

} // namespace

bool prefersReducedMotion() {
    const DesktopMotion* desktop = DesktopMotion::shared();
    return NSUserDefaults::standardUserDefaults().boolForKey(VXReduceMotion) || (desktop && desktop->isReduced());
}

void askForMotionPreference() {
    DesktopMotion::shared();
}
