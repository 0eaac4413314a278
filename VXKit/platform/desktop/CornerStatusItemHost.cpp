// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/CornerStatusItemHost.h>

#include <VXKit/platform/desktop/WindowEffects.h>

#include <QBitmap>
#include <QGuiApplication>
#include <QMetaObject>
#include <QPainter>
#include <QScreen>
#include <QWidget>

#include <vector>

namespace {

constexpr int itemMargin = 4;   // points to the screen's upper edge and between two items
constexpr int rightMargin = 32; // points, so that a window that keeps away from the edge can point at the item
constexpr double cornerRadius = 5;
constexpr double bodyWhite = 0.05;
constexpr double bodyAlpha = 0.85;
constexpr double outlineWhite = 0.2;
constexpr double outlineInset = 0.5;

/// Those that show an item, from the right to the left.
std::vector<CornerStatusItemHost*>& shownHosts() {
    static std::vector<CornerStatusItemHost*> hosts;
    return hosts;
}

bool canBeTranslucent() {
    return WindowEffects::sharedEffects().isAvailable(WindowEffects::Effect::Translucency);
}

} // namespace

CornerStatusItemHost::CornerStatusItemHost(QObject* parent) : StatusItemHost(parent) {
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, [this] {
        watchPrimaryScreen();
        placeAll();
    });
    watchPrimaryScreen();
    connect(&WindowEffects::sharedEffects(), &WindowEffects::compositingChanged, this, [this] { applyShape(); });
}

CornerStatusItemHost::~CornerStatusItemHost() {
    release();
}

void CornerStatusItemHost::watchPrimaryScreen() {
    disconnect(m_screenWatch);
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        m_screenWatch = connect(screen, &QScreen::availableGeometryChanged, this, [] { placeAll(); });
    }
}

void CornerStatusItemHost::attach() {
    prepareWindow(Qt::Window | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint | Qt::WindowStaysOnTopHint |
                      Qt::WindowDoesNotAcceptFocus,
                  Surface::Translucent);
    shownHosts().push_back(this);
    placeAll();
    window()->show();
    window()->raise();
    applyShape();
}

void CornerStatusItemHost::detach() {
    std::erase(shownHosts(), this);
    if (window()) {
        window()->clearMask();
    }
    dropNativeWindow();
    placeAll();
}

void CornerStatusItemHost::itemWidthHasChanged() {
    placeAll();
}

void CornerStatusItemHost::placeAll() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen) {
        return;
    }
    const QRect available = screen->availableGeometry();
    int right = available.left() + available.width() - rightMargin;
    for (CornerStatusItemHost* host : shownHosts()) {
        const int left = right - host->itemWidth();
        host->place(QRect(left, available.top() + itemMargin, host->itemWidth(), standardThickness));
        right = left - itemMargin;
    }
}

void CornerStatusItemHost::place(const QRect& frame) {
    const bool hasNewSize = frame.size() != m_frame.size();
    window()->setGeometry(frame);
    if (frame == m_frame) {
        return;
    }
    m_frame = frame;
    if (hasNewSize) {
        applyShape();
    }
    // Not before all have their places: whoever hears of it may take an item away.
    QMetaObject::invokeMethod(this, &StatusItemHost::frameChanged, Qt::QueuedConnection);
}

void CornerStatusItemHost::applyShape() {
    if (!window()) {
        return;
    }
    if (canBeTranslucent()) {
        window()->clearMask();
    } else {
        // Corners that cannot be see-through would be black.
        QBitmap shape(window()->size());
        shape.clear();
        QPainter painter(&shape);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::color1);
        painter.drawRoundedRect(shape.rect(), cornerRadius, cornerRadius);
        painter.end();
        window()->setMask(shape);
    }
    window()->update();
}

void CornerStatusItemHost::drawBackground(QPainter& painter) {
    const auto grey = [](double white, double alpha) {
        return QColor::fromRgbF(static_cast<float>(white), static_cast<float>(white), static_cast<float>(white),
                                static_cast<float>(alpha));
    };
    const QRectF outline = QRectF(window()->rect()).adjusted(outlineInset, outlineInset, -outlineInset, -outlineInset);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(grey(outlineWhite, 1));
    painter.setBrush(grey(bodyWhite, canBeTranslucent() ? bodyAlpha : 1));
    painter.drawRoundedRect(outline, cornerRadius, cornerRadius);
}
