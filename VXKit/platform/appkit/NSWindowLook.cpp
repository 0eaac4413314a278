// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSWindow.h>

#include <VXKit/platform/appkit/Backdrop.h>
#include <VXKit/platform/appkit/WindowList.h>
#include <VXKit/platform/desktop/WindowEffects.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>

#include <QMetaObject>
#include <QPainter>
#include <QPalette>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

using WindowList::areScreenUpdatesDisabled;

namespace {

constexpr int solidAlpha = 128; // from here on a pixel belongs to the window where it cannot be translucent
constexpr int transparent = 0;

/// The pixels of `look` whose alpha is at least `least`, in points.
QRegion regionOfAlpha(const QImage& look, int least) {
    const QImage pixels = look.devicePixelRatio() == 1
                              ? look
                              : look.scaled((QSizeF(look.size()) / look.devicePixelRatio()).toSize(),
                                            Qt::IgnoreAspectRatio, Qt::FastTransformation);
    // Bands of rows that are alike, as a region wants them, and a row is one run almost everywhere.
    std::vector<QRect> rects;
    std::size_t bandStart = 0;
    for (int y = 0; y < pixels.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(pixels.constScanLine(y));
        const auto* const end = row + pixels.width();
        const auto isSolid = [least](QRgb pixel) { return qAlpha(pixel) >= least; };
        const std::size_t rowStart = rects.size();
        for (const auto* from = std::find_if(row, end, isSolid); from != end;) {
            const auto* const to = std::find_if_not(from, end, isSolid);
            rects.emplace_back(static_cast<int>(from - row), y, static_cast<int>(to - from), 1);
            from = std::find_if(to, end, isSolid);
        }
        const auto band = std::span(rects).subspan(bandStart, rowStart - bandStart);
        const auto added = std::span(rects).subspan(rowStart);
        const bool isAlike = !band.empty() && band.front().bottom() == y - 1 &&
                             std::equal(band.begin(), band.end(), added.begin(), added.end(),
                                        [](const QRect& above, const QRect& below) {
                                            return above.left() == below.left() && above.right() == below.right();
                                        });
        if (isAlike) {
            std::for_each(band.begin(), band.end(), [y](QRect& rect) { rect.setBottom(y); });
            rects.resize(rowStart);
        } else {
            bandStart = rowStart;
        }
    }
    QRegion region;
    region.setRects(rects.data(), static_cast<int>(rects.size()));
    return region;
}

/// The same colours without their transparency.
QImage madeOpaque(const QImage& look) {
    QImage opaque = look.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < opaque.height(); ++y) {
        auto* const row = reinterpret_cast<QRgb*>(opaque.scanLine(y));
        std::transform(row, row + opaque.width(), row, [](QRgb pixel) { return pixel | 0xff000000U; });
    }
    return opaque.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

} // namespace

void NSWindow::setOpaque(bool flag) {
    m_isOpaque = flag;
    setAttribute(Qt::WA_TranslucentBackground, !flag);
    scheduleShapeUpdate();
}

void NSWindow::setAlphaValue(double alpha) {
    m_alphaValue = std::clamp(std::isnan(alpha) ? 1.0 : alpha, 0.0, 1.0);
    applyAlpha();
}

void NSWindow::applyAlpha() {
    if (areScreenUpdatesDisabled()) {
        m_changesAlphaLater = true;
        return;
    }
    const bool canBeTranslucent = WindowEffects::sharedEffects().isAvailable(WindowEffects::Effect::Translucency);
    if (canBeTranslucent) {
        setWindowOpacity(m_alphaValue);
    } else {
        scheduleShapeUpdate();
    }
}

/// What waited for screen updates: at once, because what goes on the screen next may rely on it.
void NSWindow::applyLateAlpha() {
    m_comesInLater = false;
    applyAlpha();
    if (m_shapeIsStale && !m_goesOutLater) {
        updateShape();
    }
}

void NSWindow::setBackgroundColor(const NSColor& color) {
    m_backgroundColor = color;
    scheduleShapeUpdate();
    update();
}

void NSWindow::setBackgroundBlurRadius(double radius) {
    m_backgroundBlurRadius = radius;
    WindowEffects::sharedEffects().setBlur(*this, radius, {});
    scheduleShapeUpdate();
}

void NSWindow::blurWindowBelow(NSWindow& below) {
    const bool isBlurredAnyway = WindowEffects::sharedEffects().isAvailable(WindowEffects::Effect::Blur);
    if (m_backgroundBlurRadius > 0 && !m_isOpaque && !isBlurredAnyway) {
        m_backdrop = blurredBackdrop(below, NSWindow::frame(), m_backgroundBlurRadius, coverage());
        update();
    }
}

void NSWindow::setIgnoresMouseEvents(bool flag) {
    if (flag == m_ignoresMouseEvents) {
        return;
    }
    m_ignoresMouseEvents = flag;
    takeInput(std::nullopt);
    scheduleShapeUpdate();
}

/// `region` of the window takes clicks, all of it where that is nothing, unless none of it does.
void NSWindow::takeInput(const std::optional<QRegion>& region) {
    WindowEffects::sharedEffects().setInputRegion(*this, m_ignoresMouseEvents ? std::optional(QRegion()) : region);
}

void NSWindow::display() {
    if (!QWidget::isVisible()) {
        return;
    }
    if (m_shapeIsStale && !WindowEffects::sharedEffects().isAvailable(WindowEffects::Effect::Translucency)) {
        // It is part of what is shown.
        updateShape();
    }
    repaint();
}

void NSWindow::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    paintBackground(painter, event->rect());
}

/// Puts the background in place of what is in `dirty`, by a painter in the window's coordinates as Qt has them.
void NSWindow::paintBackground(QPainter& painter, const QRect& dirty) const {
    if (!m_opaqueBackground.isNull() && !m_shapeIsStale) {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.drawImage(QPointF(0, 0), m_opaqueBackground);
        return;
    }
    {
        const NSGraphicsContext context(painter, height(), false);
        m_backgroundColor.setFill();
        NSRectFill(NSMakeRect(dirty.x(), height() - dirty.y() - dirty.height(), dirty.width(), dirty.height()));
    }
    if (!m_backdrop.isNull()) {
        painter.setCompositionMode(QPainter::CompositionMode_DestinationOver);
        painter.drawImage(QPointF(0, 0), m_backdrop);
    }
}

void NSDrawWindowBackground(const NSRect& rect) {
    const ViewCore* view = ViewCore::focusView();
    if (!view || NSIsEmptyRect(rect)) {
        return;
    }
    const NSGraphicsContext& context = *NSGraphicsContext::currentContext();
    const QWidget& window = *view->widget()->window();
    // The phase is the window's bottom left corner in the view's coordinates.
    const NSPoint corner = context.patternPhase();
    const double top = context.isFlipped() ? corner.y - window.height() : corner.y + window.height();
    const double down = context.isFlipped() ? 1 : -1;
    const QTransform windowToView(1, 0, 0, down, corner.x, top);
    QPainter& painter = context.painter();
    painter.save();
    painter.setClipRect(NSRectToQRectF(rect), Qt::IntersectClip);
    painter.setTransform(windowToView, true);
    const QRect dirty = windowToView.inverted().mapRect(NSRectToQRectF(rect)).toAlignedRect();
    if (const auto* own = qobject_cast<const NSWindow*>(&window)) {
        own->paintBackground(painter, dirty);
    } else {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(dirty, window.palette().brush(window.backgroundRole()));
    }
    painter.restore();
}

void NSWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    m_windowNumber = static_cast<int>(winId());
    updateShape();
}

void NSWindow::scheduleShapeUpdate() {
    if (!QWidget::isVisible() || std::exchange(m_shapeIsStale, true)) {
        return;
    }
    const auto update = [this] {
        if (m_shapeIsStale) {
            updateShape();
        }
    };
    QMetaObject::invokeMethod(this, update, Qt::QueuedConnection);
}

/// What drawCoverage draws, in pixels; null for a window without a size.
QImage NSWindow::coverage() const {
    QImage look(size() * devicePixelRatioF(), QImage::Format_ARGB32_Premultiplied);
    if (!look.isNull()) {
        look.setDevicePixelRatio(devicePixelRatioF());
        look.fill(Qt::transparent);
        QPainter painter(&look);
        const NSGraphicsContext context(painter, height(), false);
        drawCoverage();
    }
    return look;
}

void NSWindow::drawCoverage() const {
    m_backgroundColor.setFill();
    NSRectFill(NSMakeRect(0, 0, width(), height()));
}

/// Cuts the window to what it covers: its clicks where it can be translucent, itself where it cannot.
void NSWindow::updateShape() {
    m_shapeIsStale = false;
    WindowEffects& effects = WindowEffects::sharedEffects();
    const bool canBeTranslucent = effects.isAvailable(WindowEffects::Effect::Translucency);
    m_opaqueBackground = QImage();
    if (!canBeTranslucent && (m_alphaValue <= 0 || m_comesInLater)) {
        // Nothing of it: a region beside the window.
        setMask(QRegion(-1, -1, 1, 1));
        return;
    }
    if (m_isOpaque) {
        clearMask();
        return;
    }
    const QImage look = coverage();
    if (look.isNull()) {
        return;
    }
    const QRegion region = regionOfAlpha(look, canBeTranslucent ? transparent + 1 : solidAlpha);
    effects.setShadowShape(*this, look);
    if (m_backgroundBlurRadius > 0) {
        effects.setBlur(*this, m_backgroundBlurRadius, region);
    }
    if (canBeTranslucent) {
        clearMask();
        // A window without a background shows something all the same: what its views draw.
        takeInput(region.isEmpty() ? std::nullopt : std::optional(region));
        return;
    }
    if (region.isEmpty()) {
        clearMask();
        return;
    }
    m_opaqueBackground = madeOpaque(look);
    setMask(region);
    update();
}
