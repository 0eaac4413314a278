// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/WindowEffects.h>

#include <VXKit/platform/desktop/ColorInversion.h>
#include <VXKit/platform/desktop/X11Connection.h>
#include <VXKit/platform/desktop/X11WindowEffects.h>

#include <QCoreApplication>
#include <QPointer>
#include <QWidget>

#include <utility>

namespace {

/// The effects that were put in the place of the platform's own, if any.
std::unique_ptr<WindowEffects>& replacementEffects() {
    static std::unique_ptr<WindowEffects> effects;
    return effects;
}

/// The effects of the platform; they live as long as the application object.
WindowEffects& platformEffects() {
    static QPointer<WindowEffects> effects;
    if (effects) {
        return *effects;
    }
    if (!qApp) {
        static WindowEffects none;
        return none;
    }
    effects = X11Connection::shared() ? new X11WindowEffects(qApp) : new WindowEffects(qApp);
    return *effects;
}

} // namespace

WindowEffects::WindowEffects(QObject* parent) : QObject(parent) {}

WindowEffects::~WindowEffects() = default;

WindowEffects& WindowEffects::sharedEffects() {
    return replacementEffects() ? *replacementEffects() : platformEffects();
}

void WindowEffects::setSharedEffects(std::unique_ptr<WindowEffects> effects) {
    replacementEffects() = std::move(effects);
}

bool WindowEffects::isAvailable(Effect effect) const {
    return effect == Effect::ColorInversion || effect == Effect::Translucency;
}

void WindowEffects::setShadow(QWidget& /*window*/, const std::optional<WindowShadow>& /*shadow*/) {}

void WindowEffects::setShadowShape(QWidget& /*window*/, const QImage& /*coverage*/) {}

void WindowEffects::setBlur(QWidget& /*window*/, double /*radius*/, const QRegion& /*region*/) {}

void WindowEffects::setColorInversion(QWidget& window, bool inverts) {
    auto* inversion = window.findChild<ColorInversion*>(QString(), Qt::FindDirectChildrenOnly);
    if (inverts == (inversion != nullptr)) {
        return;
    }
    if (inverts) {
        new ColorInversion(window);
    } else {
        delete inversion;
    }
    window.update();
}

void WindowEffects::setOnAllDesktops(QWidget& /*window*/, bool /*isOnAll*/) {}

void WindowEffects::setInputRegion(QWidget& /*window*/, const std::optional<QRegion>& /*region*/) {}

void WindowEffects::order(QWidget& window, Place place, QWidget* sibling) {
    QWidget& upper = sibling && place == Place::Below ? *sibling : window;
    if (!sibling && place == Place::Below) {
        window.lower();
    } else {
        upper.raise();
    }
}

void WindowEffects::takeKeyboard(QWidget& window) {
    window.activateWindow();
}

bool WindowEffects::hasKeyboard() const {
    return false;
}

void WindowEffects::moveToPixel(QWidget& /*window*/, const QPointF& /*topLeft*/) {}

std::optional<QRect> WindowEffects::serverFrame(const QWidget& /*window*/) const {
    return std::nullopt;
}

void WindowEffects::setWatchesPresses(QObject& watcher, bool watches) {
    const bool wasWatched = !m_watchers.isEmpty();
    if (watches && !m_watchers.contains(&watcher)) {
        m_watchers.insert(&watcher);
        connect(&watcher, &QObject::destroyed, this, [this](QObject* gone) { setWatchesPresses(*gone, false); });
    } else if (!watches && m_watchers.remove(&watcher)) {
        watcher.disconnect(this);
    }
    const bool isWatched = !m_watchers.isEmpty();
    if (isWatched != wasWatched) {
        setEmitsPresses(isWatched);
    }
}

void WindowEffects::setEmitsPresses(bool /*emits*/) {}
