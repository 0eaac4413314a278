// SPDX-License-Identifier: MIT
#include "Desk.h"

#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/appkit/SnapshotWindow.h>
#include <VXKit/platform/desktop/WindowEffects.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <QEventLoop>
#include <QGuiApplication>
#include <QHash>
#include <QLinearGradient>
#include <QPainter>
#include <QPixmap>
#include <QScreen>
#include <QThread>
#include <QTimer>

#include <cmath>

namespace {

constexpr int interval = 40;    // milliseconds between two looks at the screen
constexpr int mostLooks = 75;   // until it is taken as it is
constexpr int looksTheSame = 4; // one after another, until nothing changes any more
constexpr QRgb groundTop = 0xff8fa3b8;
constexpr QRgb groundBottom = 0xffc9b79c;

void paintGroundOn(QPainter& painter, const QRectF& rect) {
    QLinearGradient ground(rect.topLeft(), rect.bottomLeft());
    ground.setColorAt(0, QColor::fromRgb(groundTop));
    ground.setColorAt(1, QColor::fromRgb(groundBottom));
    painter.fillRect(rect, ground);
}

/// The ground of a screen, below every window.
class Ground : public QWidget {
public:
    Ground() : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus) {
        // As which the window manager keeps it below all others.
        setAttribute(Qt::WA_X11NetWmWindowTypeDesktop);
        setAttribute(Qt::WA_ShowWithoutActivating);
        setGeometry(QGuiApplication::primaryScreen()->geometry());
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        paintGroundOn(painter, rect());
    }
};

/// Remembers what windows ask for, where no window server would show it.
class ComposedEffects : public WindowEffects {
public:
    [[nodiscard]] bool isAvailable(Effect effect) const override {
        return effect == Effect::Shadow || WindowEffects::isAvailable(effect);
    }
    void setShadow(QWidget& window, const std::optional<WindowShadow>& shadow) override {
        if (!shadow) {
            m_shadows.remove(&window);
            return;
        }
        m_shadows[&window] = *shadow;
        forgetWithItsWindow(window);
    }
    void setShadowShape(QWidget& window, const QImage& coverage) override {
        m_shapes[&window] = coverage;
        forgetWithItsWindow(window);
    }

    void paintShadow(QPainter& painter, const QWidget& window) const {
        const auto found = m_shadows.find(&window);
        if (found == m_shadows.end()) {
            return;
        }
        const WindowShadow& shadow = *found;
        const int margin = windowShadowMargin(shadow);
        const QImage image =
            windowShadowImage(window.size(), m_shapes.value(&window), shadow, painter.device()->devicePixelRatioF());
        painter.drawImage(window.pos() + QPoint(shadow.offsetX - margin, shadow.offsetY - margin), image);
    }

private:
    void forgetWithItsWindow(const QWidget& window) {
        connect(&window, &QObject::destroyed, this, &ComposedEffects::forget, Qt::UniqueConnection);
    }
    void forget(const QObject* window) {
        m_shadows.remove(window);
        m_shapes.remove(window);
    }

    QHash<const QObject*, WindowShadow> m_shadows;
    QHash<const QObject*, QImage> m_shapes;
};

void waitInEventLoop() {
    QEventLoop loop;
    QTimer::singleShot(interval, &loop, &QEventLoop::quit);
    loop.exec();
}

void waitWithoutEvents() {
    QThread::msleep(interval);
}

/// All windows of the application as they are painted, on the ground.
QImage composedPicture(const QRect& area) {
    const double ratio = QGuiApplication::primaryScreen()->devicePixelRatio();
    QImage image(area.size() * ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    Desk::paintGround(image);
    QPainter painter(&image);
    painter.translate(-area.topLeft());
    const auto* const effects = dynamic_cast<const ComposedEffects*>(&WindowEffects::sharedEffects());
    for (NSWindow* const window : NSWindow::windows()) {
        if (!window->isVisible() || window->alphaValue() <= 0) {
            continue;
        }
        painter.setOpacity(window->alphaValue());
        if (effects) {
            effects->paintShadow(painter, *window);
        }
        if (const std::shared_ptr<NSImage> picture = snapshotOfWindow(*window)) {
            painter.drawImage(window->geometry(), picture->imageForScale(ratio));
        }
    }
    return image;
}

} // namespace

Desk::Desk() : m_isScreen(QGuiApplication::platformName() == u"xcb") {
    if (m_isScreen) {
        m_ground = std::make_unique<Ground>();
        m_ground->show();
    } else {
        WindowEffects::setSharedEffects(std::make_unique<ComposedEffects>());
    }
}

Desk::~Desk() = default;

void Desk::paintGround(QImage& image) {
    QPainter painter(&image);
    paintGroundOn(painter, QRectF(QPointF(), QSizeF(image.size()) / image.devicePixelRatio()));
}

QImage Desk::picture(const NSRect& area) const {
    QRect rect = NSScreenRectToGlobal(area).toAlignedRect();
    if (!m_isScreen) {
        return composedPicture(rect);
    }
    QScreen* const screen = QGuiApplication::primaryScreen();
    rect &= screen->geometry();
    return screen->grabWindow(0, rect.x(), rect.y(), rect.width(), rect.height())
        .toImage()
        .convertToFormat(QImage::Format_RGB32);
}

QImage Desk::settled(const NSRect& area, void (*pause)()) const {
    QImage last;
    int same = 0;
    for (int look = 0; look < mostLooks && same < looksTheSame; ++look) {
        pause();
        QImage now = picture(area);
        same = now == last ? same + 1 : 0;
        last = std::move(now);
        if (!m_isScreen) {
            break; // what windows have painted is all there is
        }
    }
    return last;
}

QImage Desk::settledPicture(const NSRect& area) const {
    return settled(area, waitInEventLoop);
}

QImage Desk::frozenPicture(const NSRect& area) const {
    return settled(area, waitWithoutEvents);
}
